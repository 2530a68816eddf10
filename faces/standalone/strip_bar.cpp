#include "faces/standalone/strip_bar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace vantoric::standalone {
namespace {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;
using Part = StripBar::Part;

// From the bar's left edge, or from its right one, in window units.
struct PlaceOfPart {
    Part part;
    double left, width;
};
constexpr PlaceOfPart places[] = {
    {Part::record, 12, 74},     {Part::keys, 96, 48},     {Part::octaveDown, 154, 20}, {Part::octaveUp, 220, 20},
    {Part::pedal, 250, 52},     {Part::panic, 308, 52},   {Part::tempo, -414, 84},     {Part::load, -320, 74},
    {Part::dropouts, -244, 70}, {Part::sound, -164, 152},
};
constexpr double buttonHeight = 20, newsLeft = 376, leastNews = 200;
constexpr std::array pressable = {Part::record, Part::keys,  Part::octaveDown, Part::octaveUp,
                                  Part::pedal,  Part::panic, Part::dropouts,   Part::sound};

std::string formatted(const char* format, double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return text.data();
}

}  // namespace

StripBar::StripBar(const CRect& area, std::function<void(Part)> pressed, std::function<void(double)> tempoWanted)
    : CView(area), pressed_(std::move(pressed)), tempoWanted_(std::move(tempoWanted)) {}

void StripBar::show(const Shown& shown) {
    if (shown == shown_) return;
    shown_ = shown;
    invalid();
}

const char* StripBar::tooltip(Part part) {
    switch (part) {
        case Part::record: return "Records what is played as a WAV file in the folder for music, until it is pressed again";
        case Part::panic: return "Ends all that sounds and lets the pedal up";
        case Part::tempo: return "Of arpeggiators, delays and LFOs: drag, turn the wheel, double click for 120";
        case Part::load: return "How much of its time the sound takes; above 100 % it crackles";
        case Part::dropouts: return "How often the sound came too late since the device was chosen. A click counts anew";
        default: return "";
    }
}

CRect StripBar::place(Part part) const {
    const CRect& area = getViewSize();
    const double top = area.top + (area.getHeight() - buttonHeight) / 2;
    for (const PlaceOfPart& known : places)
        if (known.part == part) {
            const double left = (known.left < 0 ? area.right : area.left) + known.left;
            return {left, top, left + known.width, top + buttonHeight};
        }
    return {};
}

// ---- the hand

Part StripBar::partAt(CPoint where) const {
    for (const PlaceOfPart& known : places)
        if (place(known.part).pointInside(where)) return known.part;
    return Part::none;
}

void StripBar::setHovered(Part part) {
    if (std::exchange(hovered_, part) != part) invalid();
}

void StripBar::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    const Part part = partAt(event.mousePosition);
    if (!event.buttonState.isLeft() || part != Part::tempo) event.ignoreFollowUpMoveAndUpEvents(true);
    if (!event.buttonState.isLeft()) return;
    if (part == Part::dropouts && shown_.dropouts == 0) return;
    if (std::find(pressable.begin(), pressable.end(), part) != pressable.end()) return pressed_(part);
    if (part != Part::tempo) return;
    if (event.clickCount > 1) return tempoWanted_(120);
    isDraggingTempo_ = true;
    dragFrom_ = event.mousePosition.y;
    tempoFrom_ = shown_.tempo;
}

void StripBar::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    setHovered(partAt(event.mousePosition));
    if (!isDraggingTempo_) return;
    event.consumed = true;
    const double step = event.modifiers.has(VSTGUI::ModifierKey::Shift) ? 0.1 : 0.5;
    tempoWanted_(std::round(10 * (tempoFrom_ + step * (dragFrom_ - event.mousePosition.y))) / 10);
}

void StripBar::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    isDraggingTempo_ = false;
}

void StripBar::onMouseExitEvent(VSTGUI::MouseExitEvent&) { setHovered(Part::none); }

void StripBar::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    if (partAt(event.mousePosition) != Part::tempo) return;
    event.consumed = true;
    tempoWanted_(std::round(shown_.tempo + (event.deltaY > 0 ? 1 : -1)));
}

// ---- drawing

void StripBar::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& area = getViewSize();
    pen.rect(area.left, area.top, area.getWidth(), area.getHeight(), style::band);
    pen.rect(area.left, area.top, area.getWidth(), pen.hair(), style::line);
    drawRecord(pen);
    drawButton(pen, Part::keys, "Keys", shown_.areKeysShown);
    drawOctave(pen);
    drawButton(pen, Part::pedal, "Pedal", shown_.isPedalDown);
    drawButton(pen, Part::panic, "Panic", false);
    // In a narrow window news stands where tempo and load are.
    const bool isNarrow = place(Part::tempo).left - 10 - area.left - newsLeft < leastNews;
    const double newsRight = place(isNarrow ? Part::sound : Part::tempo).left - 10;
    pen.text(area.left + newsLeft, area.getCenter().y + 3.5, shown_.news, Face::medium, 9.5, style::text2, Align::left,
             newsRight - area.left - newsLeft);
    if (!isNarrow || shown_.news.empty()) {
        drawTempo(pen);
        drawLoad(pen);
        drawDropouts(pen);
    }
    drawSound(pen);
    setDirty(false);
}

void StripBar::drawButton(Pen& pen, Part part, const std::string& label, bool isOn) {
    const CRect r = place(part);
    const bool isHovered = hovered_ == part;
    const Color fill = isOn ? mix(style::output, style::black, isHovered ? 0 : 0.08) : isHovered ? style::hover : style::raised;
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, fill);
    pen.text(r.getCenter().x, r.getCenter().y + 3.4, label, Face::semibold, 9.5, isOn ? hexColor(0x14181A) : style::text,
             Align::centre, r.getWidth() - 6);
}

void StripBar::drawRecord(Pen& pen) {
    const CRect r = place(Part::record);
    const bool isOn = shown_.isRecording;
    Color fill = hovered_ == Part::record ? style::hover : style::raised;
    if (isOn) fill = mix(fill, style::alarm, 0.28);
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, fill);
    const double x = r.left + 12, y = r.getCenter().y;
    if (isOn) {
        pen.glow(x, y, 9, fade(style::alarm, 0.5));
        pen.round(x - 3.5, y - 3.5, 7, 7, 1, style::alarm);
    } else {
        pen.dot(x, y, 4, mix(style::alarm, style::raised, 0.15));
    }
    std::array<char, 16> time{};
    std::snprintf(time.data(), time.size(), "%d:%02d", shown_.recordedSeconds / 60, shown_.recordedSeconds % 60);
    pen.text(r.left + 23, y + 3.4, isOn ? time.data() : "Record", Face::semibold, 9.5, style::text);
}

void StripBar::drawOctave(Pen& pen) {
    const CRect down = place(Part::octaveDown), up = place(Part::octaveUp);
    pen.round(down.left, down.top, up.right - down.left, down.getHeight(), 4, style::raised);
    for (const Part part : {Part::octaveDown, Part::octaveUp}) {
        const CRect r = place(part);
        if (hovered_ == part) pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, style::hover);
        pen.chevron(r.getCenter().x, r.getCenter().y, part == Part::octaveDown ? Pointing::left : Pointing::right, 3, style::text,
                    1.4);
    }
    pen.text((down.right + up.left) / 2, down.getCenter().y + 3.4, std::string("C").append(std::to_string(shown_.octave)),
             Face::semibold, 9.5, style::text, Align::centre);
}

void StripBar::drawTempo(Pen& pen) {
    const CRect r = place(Part::tempo);
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4,
              mix(style::band, style::black, hovered_ == Part::tempo ? 0.15 : 0.35));
    pen.text(r.left + 8, r.getCenter().y + 3.2, "Tempo", Face::medium, 9, style::text3);
    pen.text(r.right - 8, r.getCenter().y + 3.5, formatted("%.1f", shown_.tempo), Face::semibold, 10, style::text, Align::right);
}

void StripBar::drawLoad(Pen& pen) {
    const CRect r = place(Part::load);
    const double y = r.getCenter().y, left = r.left + 30, width = 44;
    pen.text(r.left, y + 3.2, "Load", Face::medium, 9, style::text3);
    pen.round(left, y - 3, width, 6, 3, style::inset);
    const double part = std::min(1.0, shown_.load / 100.0);
    const Color colour = shown_.load >= 90 ? style::alarm : shown_.load >= 65 ? style::oscillators : style::arpeggiator;
    if (part > 0) {
        const Pen::Clip clip(pen, left, y - 3, std::max(2.0, width * part), 6);
        pen.round(left, y - 3, width, 6, 3, colour);
    }
}

void StripBar::drawDropouts(Pen& pen) {
    const CRect r = place(Part::dropouts);
    const Color alarm = hovered_ == Part::dropouts ? mix(style::alarm, style::white, 0.3) : style::alarm;
    const std::string lost = shown_.dropouts == 0
                                 ? "no dropouts"
                                 : std::to_string(shown_.dropouts) + (shown_.dropouts == 1 ? " dropout" : " dropouts");
    pen.text(r.right, r.getCenter().y + 3.2, lost, Face::medium, 9, shown_.dropouts == 0 ? style::text3 : alarm, Align::right);
}

void StripBar::drawSound(Pen& pen) {
    const CRect r = place(Part::sound);
    const bool isHovered = hovered_ == Part::sound;
    pen.round(r.left, r.top, r.getWidth(), r.getHeight(), 4, isHovered || shown_.isPanelOpen ? style::hover : style::raised);
    const double y = r.getCenter().y;
    pen.dot(r.left + 11, y, 3, shown_.isHeard ? style::lampOn : style::alarm);
    pen.text(r.left + 20, y + 3.4, shown_.sound, Face::semibold, 9.5, style::text, Align::left, r.getWidth() - 40);
    pen.chevron(r.right - 11, y, shown_.isPanelOpen ? Pointing::down : Pointing::up, 2.8, style::text2);
}

}  // namespace vantoric::standalone
