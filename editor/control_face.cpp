#include "editor/control_face.h"

#include <cmath>

#include "parameters/label_lists.h"
#include "vstgui/lib/cframe.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {

using VSTGUI::CPoint;
using VSTGUI::CRect;

namespace {

CRect bodyOf(const ControlEntry& entry) { return CRect(CPoint(entry.x, entry.y), CPoint(entry.width, entry.height)); }

}  // namespace

Color functionColor(Section section) {
    switch (section) {
        case Section::Oscillators: return style::oscillators;
        case Section::Filters: return style::filters;
        case Section::Envelopes: return style::envelopes;
        case Section::Lfo: return style::lfo;
        case Section::Arpeggiator: return style::arpeggiator;
        default: return style::output;
    }
}

Color groundColor(const ControlEntry& entry) {
    constexpr int bandPanelsFrom = 602;
    if (entry.y >= bandHeight) return style::panel;
    return entry.x >= bandPanelsFrom ? style::bandPanel : style::band;
}

// By what a source is called.
Color sourceColor(int source) {
    const std::string label =
        source >= 0 && source < static_cast<int>(matrixSourceLabels.size()) ? matrixSourceLabels[source] : "";
    const auto has = [&label](const char* part) { return label.find(part) != std::string::npos; };
    if (has("Env") || has("Decay")) return style::envelopes;
    return has("Lfo") || has("Hz") ? style::lfo : style::output;
}

CRect ControlFace::body() { return bodyOf(entry_); }

void ControlFace::setText(std::string text) {
    if (text == text_) return;
    text_ = std::move(text);
    view().invalid();
}

void ControlFace::setValueQuietly(float value) {
    if (view().getValue() == value) return;
    view().setValue(value);
    view().invalid();
}

void ControlFace::setCcNumber(int number) {
    if (number == ccNumber_) return;
    ccNumber_ = number;
    view().invalid();
}

void ControlFace::setLearnGlow(double glow) {
    if (glow == learnGlow_) return;
    learnGlow_ = glow;
    if (ccNumber_ == -2) view().invalid();
}

void ControlFace::set(bool& flag, bool value) {
    if (flag == value) return;
    flag = value;
    view().invalid();
}

Color ControlFace::color() const {
    const Color full = functionColor(entry_.section);
    return isOff_ ? mix(full, ground(), 0.6) : full;
}

void ControlFace::drawFocus(Pen& pen, double radius) {
    if (!isFocused_) return;
    const CRect area = body();
    pen.roundLine(area.left - 3, area.top - 3, area.getWidth() + 6, area.getHeight() + 6, radius + 3, style::white, 1.4);
}

void ControlFace::drawDimming(Pen& pen, const CRect& area) {
    if (!isDimmed_) return;
    const bool isOnPlate = entry_.kind == WidgetKind::Button && entry_.tag != tag::shop;  // beside the patch's name
    pen.rect(area.left, area.top, area.getWidth(), area.getHeight(), fade(isOnPlate ? style::inset : ground(), 0.62));
}

ControlView::ControlView(const ControlEntry& entry, ControlListener& listener)
    : CControl(bodyOf(entry).inset(-4, -4), &listener, entry.tag), ControlFace(entry, listener) {  // with room for the focus
    setTransparency(true);
    setMouseableArea(bodyOf(entry));
}

void ControlView::onMouseEnterEvent(VSTGUI::MouseEnterEvent& event) {
    setHovered(true);
    window().controlHovered(*this, true);
    event.consumed = true;
}

void ControlView::onMouseExitEvent(VSTGUI::MouseExitEvent& event) {
    setHovered(false);
    window().controlHovered(*this, false);
    event.consumed = true;
}

void ControlView::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    kept_.show(pen, getViewSize(), [this](Pen& picture) {
        drawControl(picture);
        drawController(picture);
        drawFocus(picture, 3);
        drawDimming(picture, body());  // not the room around it, into which a neighbour's ring may reach
    });
    setDirty(false);
}

// A mark where a controller moves it, a ring while it waits for one.
void ControlView::drawController(Pen& pen) {
    if (ccNumber() >= 0) pen.dot(left() + width() - 1, top() + 1, 2.1, style::alarm);
    if (ccNumber() == -2)
        pen.roundLine(left() - 1, top() - 1, width() + 2, height() + 2, 4, fade(style::alarm, 0.35 + 0.65 * learnGlow()), 1.6);
}

// Comes with every change, also from `invalid`.
void ControlView::invalidRect(const CRect& rect) {
    kept_.changed();
    CControl::invalidRect(rect);
}

bool ClickPair::isSecond(VSTGUI::CPoint where) {
    constexpr std::uint64_t longest = 400;  // milliseconds
    const std::uint64_t now = VSTGUI::getPlatformFactory().getTicks();
    const bool isSecond = now - lastTicks_ <= longest && isNear(where);
    lastTicks_ = isSecond ? 0 : now;  // a third click begins anew
    last_ = where;
    return isSecond;
}

void ClickPair::moved(VSTGUI::CPoint where) {
    if (!isNear(where)) lastTicks_ = 0;
}

bool ClickPair::isNear(VSTGUI::CPoint where) const { return std::abs(where.x - last_.x) < 3 && std::abs(where.y - last_.y) < 3; }

}  // namespace vantoric
