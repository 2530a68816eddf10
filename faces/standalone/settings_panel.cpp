#include "faces/standalone/settings_panel.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vantoric::standalone {
namespace {

using style::Face;
using VSTGUI::CPoint;
using VSTGUI::CRect;

// From the panel's corner, in window units.
constexpr double margin = 20, headHeight = 46, chipHeight = 22, rowHeight = 26;
constexpr double labelWidth = 62, soundWidth = 412, listTop = 112, listHeight = 122;
constexpr double systemTop = 58, rateTop = 238, periodTop = 272, footTop = 312;

const std::vector<std::pair<int, std::string>> systems = {
    {static_cast<int>(SoundKind::automatic), "Automatic"},
    {static_cast<int>(SoundKind::jack), "JACK"},
    {static_cast<int>(SoundKind::alsa), "ALSA"},
    {static_cast<int>(SoundKind::none), "None"},
};

std::vector<std::pair<int, std::string>> numbers(std::initializer_list<int> values, int inForce) {
    std::vector<int> all(values);
    if (inForce > 0 && std::find(all.begin(), all.end(), inForce) == all.end()) all.push_back(inForce);
    std::sort(all.begin(), all.end());
    std::vector<std::pair<int, std::string>> named;
    named.reserve(all.size());
    for (const int value : all) named.emplace_back(value, std::to_string(value));
    return named;
}

}  // namespace

SettingsPanel::SettingsPanel(const CRect& area, Told told) : CView(area), told_(std::move(told)) { layOut(); }

void SettingsPanel::show(const Shown& shown) {
    if (shown == shown_ && !items_.empty()) return;
    shown_ = shown;
    layOut();
    invalid();
}

// ---- places

CRect SettingsPanel::deviceList() const {
    const CRect& area = getViewSize();
    const double left = area.left + margin + labelWidth;
    return {left, area.top + listTop - 10, area.left + soundWidth, area.top + listTop - 10 + listHeight};
}

CRect SettingsPanel::inputList() const {
    const CRect& area = getViewSize();
    return {area.left + soundWidth + 36, area.top + systemTop + 22, area.right - margin,
            area.top + listTop - 10 + listHeight + 84};
}

void SettingsPanel::layOut() {
    items_.clear();
    const CRect& area = getViewSize();
    items_.push_back(
        {Kind::close, 0, CRect(area.right - 38, area.top + 10, area.right - 12, area.top + 36), "", "", false, false});
    addChips(Kind::system, systemTop, systems, static_cast<int>(shown_.choice.kind), false);
    const bool isFixed = shown_.system == "JACK";  // the server says
    addChips(Kind::rate, rateTop, numbers({44100, 48000, 88200, 96000}, shown_.rate), shown_.rate, isFixed);
    addChips(Kind::period, periodTop, numbers({64, 128, 256, 512, 1024}, shown_.period), shown_.period, isFixed);
    addRows();
}

void SettingsPanel::addChips(Kind kind, double top, const std::vector<std::pair<int, std::string>>& choices, int chosen,
                             bool isOff) {
    const CRect& area = getViewSize();
    double left = area.left + margin + labelWidth;
    for (const auto& [value, label] : choices) {
        const double chip = chipWidth(label);
        items_.push_back({kind, value, CRect(left, area.top + top, left + chip, area.top + top + chipHeight), label, "",
                          value == chosen, isOff});
        left += chip + 6;
    }
}

// Of both lists; those that are scrolled out of sight are left out.
void SettingsPanel::addRows() {
    const CRect devices = deviceList(), inputs = inputList();
    deviceBar_.setPlace(CRect(devices.right - 8, devices.top + 3, devices.right - 3, devices.bottom - 3),
                        rowHeight * static_cast<double>(shown_.devices.size()) + 8, devices.getHeight());
    inputBar_.setPlace(CRect(inputs.right - 8, inputs.top + 3, inputs.right - 3, inputs.bottom - 3),
                       rowHeight * static_cast<double>(shown_.inputs.size()) + 8, inputs.getHeight());
    const auto row = [](const CRect& list, double scrolled, int index) {
        const double top = list.top + 4 + rowHeight * index - scrolled;
        return CRect(list.left + 4, top, list.right - 10, top + rowHeight);
    };
    const bool isOff = !isDeviceOpen() || shown_.system == "JACK";
    for (int i = 0; i < static_cast<int>(shown_.devices.size()); ++i) {
        const auto& [name, description] = shown_.devices[static_cast<std::size_t>(i)];
        items_.push_back({Kind::device, i, row(devices, deviceBar_.position(), i), name, description,
                          name == shown_.choice.device && isDeviceOpen(), isOff});
    }
    for (int i = 0; i < static_cast<int>(shown_.inputs.size()); ++i) {
        const Input& input = shown_.inputs[static_cast<std::size_t>(i)];
        items_.push_back({Kind::input, i, row(inputs, inputBar_.position(), i), input.name, "", input.isWanted, false});
    }
}

// ---- the hand

int SettingsPanel::itemAt(CPoint where) const {
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const Item& item = items_[i];
        if (!item.place.pointInside(where)) continue;
        if (item.kind == Kind::device && !deviceList().pointInside(where)) continue;
        if (item.kind == Kind::input && !inputList().pointInside(where)) continue;
        return static_cast<int>(i);
    }
    return -1;
}

void SettingsPanel::choose(const Item& item) {
    SoundChoice choice = shown_.choice;
    switch (item.kind) {
        case Kind::close: return told_.closeWanted();
        case Kind::input: return told_.inputWanted(item.label, !item.isOn);
        case Kind::system: choice.kind = static_cast<SoundKind>(item.value); break;
        case Kind::device: choice.device = item.label; break;
        case Kind::rate: choice.rate = item.value; break;
        case Kind::period: choice.period = item.value; break;
    }
    if (!item.isOff) told_.chosen(choice);
}

void SettingsPanel::onMouseDownEvent(VSTGUI::MouseDownEvent& event) {
    event.consumed = true;
    const CPoint where = event.mousePosition;
    if (event.buttonState.isLeft() && (deviceBar_.press(where) || inputBar_.press(where))) {
        layOut();
        return invalid();
    }
    event.ignoreFollowUpMoveAndUpEvents(true);
    const int index = itemAt(where);
    if (!event.buttonState.isLeft() || index < 0) return;
    const Item item = items_[static_cast<std::size_t>(index)];  // what follows lays all out anew
    choose(item);
}

void SettingsPanel::onMouseMoveEvent(VSTGUI::MouseMoveEvent& event) {
    event.consumed = true;
    for (ScrollBar* bar : {&deviceBar_, &inputBar_})
        if (bar->isHeld()) {
            bar->drag(event.mousePosition);
            layOut();
            return invalid();
        }
    if (const int now = itemAt(event.mousePosition); std::exchange(hovered_, now) != now) invalid();
}

void SettingsPanel::onMouseUpEvent(VSTGUI::MouseUpEvent& event) {
    event.consumed = true;
    deviceBar_.release();
    inputBar_.release();
}

void SettingsPanel::onMouseExitEvent(VSTGUI::MouseExitEvent&) {
    if (std::exchange(hovered_, -1) != -1) invalid();
}

void SettingsPanel::onMouseWheelEvent(VSTGUI::MouseWheelEvent& event) {
    event.consumed = true;
    if (deviceList().pointInside(event.mousePosition)) deviceBar_.scrollBy(-rowHeight * event.deltaY);
    if (inputList().pointInside(event.mousePosition)) inputBar_.scrollBy(-rowHeight * event.deltaY);
    layOut();
    invalid();
}

// ---- drawing

void SettingsPanel::draw(VSTGUI::CDrawContext* context) {
    Pen pen(*context);
    const CRect& area = getViewSize();
    pen.rect(area.left, area.top, area.getWidth(), area.getHeight(), style::menu);
    pen.roundLine(area.left, area.top, area.getWidth(), area.getHeight() + 8, Corners(0), style::menuEdge);
    drawHeadings(pen);
    drawList(pen, deviceList(), Kind::device);
    drawList(pen, inputList(), Kind::input);
    for (std::size_t i = 0; i < items_.size(); ++i)
        if (items_[i].kind != Kind::device && items_[i].kind != Kind::input)
            drawItem(pen, items_[i], hovered_ == static_cast<int>(i));
    drawFoot(pen);
    setDirty(false);
}

void SettingsPanel::drawHeadings(Pen& pen) const {
    const CRect& area = getViewSize();
    pen.text(area.left + margin, area.top + 30, "Sound", Face::title, 15, style::text);
    pen.text(inputList().left, area.top + 30, "Keyboards", Face::title, 15, style::text);
    pen.rect(area.left + soundWidth + 17, area.top + 18, pen.hair(), footTop - 28, style::line);
    const auto label = [&](double top, const char* text) {
        pen.text(area.left + margin, area.top + top + 14.5, text, Face::medium, 9.5, style::text3);
    };
    label(systemTop, "System");
    label(listTop - 6, "Device");
    label(rateTop, "Rate");
    label(periodTop, "Period");
    pen.text(inputList().left, area.top + systemTop + 10, shown_.midi, Face::regular, 9.5, style::text3, Align::left,
             inputList().getWidth());
}

void SettingsPanel::drawItem(Pen& pen, const Item& item, bool isHovered) const {
    if (item.kind == Kind::close) return drawCross(pen, item.place.getCenter(), isHovered ? style::text : style::text2);
    if (!item.isOff) return drawChip(pen, item.place, item.label, item.isOn, isHovered, false);
    const double radius = item.place.getHeight() / 2;
    if (item.isOn)
        pen.round(item.place.left, item.place.top, item.place.getWidth(), item.place.getHeight(), radius, style::hover);
    pen.text(item.place.getCenter().x, item.place.getCenter().y + 3.4, item.label, Face::medium, 9.5,
             item.isOn ? style::text : mix(style::menu, style::text3, 0.6), Align::centre);
}

void SettingsPanel::drawList(Pen& pen, const CRect& list, Kind kind) const {
    pen.round(list.left, list.top, list.getWidth(), list.getHeight(), 5, style::inset);
    bool isEmpty = true;
    {
        const Pen::Clip clip(pen, list.left, list.top + 2, list.getWidth(), list.getHeight() - 4);
        for (std::size_t i = 0; i < items_.size(); ++i)
            if (items_[i].kind == kind) {
                isEmpty = false;
                drawRow(pen, items_[i], hovered_ == static_cast<int>(i));
            }
    }
    const ScrollBar& bar = kind == Kind::device ? deviceBar_ : inputBar_;
    if (bar.isNeeded()) bar.draw(pen, style::inset);
    if (!isEmpty) return;
    const char* const first = kind == Kind::device ? "No device" : shown_.hasMidi ? "No keyboard yet" : "No MIDI on this system";
    const char* const second = kind == Kind::device ? ""
                               : shown_.hasMidi     ? "Plug one in: it is connected by itself"
                                                    : "The keys below and the computer's play";
    pen.text(list.getCenter().x, list.getCenter().y - 2, first, Face::medium, 10, style::text2, Align::centre);
    pen.text(list.getCenter().x, list.getCenter().y + 14, second, Face::regular, 9.5, style::text3, Align::centre);
}

// A device with a dot where it is the one; a keyboard with a tick where it is connected.
void SettingsPanel::drawRow(Pen& pen, const Item& item, bool isHovered) const {
    const CRect& r = item.place;
    if (isHovered && !item.isOff) pen.round(r.left, r.top + 1, r.getWidth(), r.getHeight() - 2, 4, fade(style::white, 0.06));
    const double x = r.left + 14, y = r.getCenter().y;
    const Color ink = item.isOff ? style::text3 : item.isOn ? style::text : style::text2;
    if (item.kind == Kind::input) {
        pen.roundLine(x - 5.5, y - 5.5, 11, 11, 3, item.isOn ? style::text2 : style::menuEdge);
        if (item.isOn) pen.tick(x, y, style::text);
    } else {
        pen.dot(x, y, 5.5, style::menuEdge);
        pen.dot(x, y, 4.5, style::inset);
        if (item.isOn) pen.dot(x, y, 2.6, item.isOff ? style::text3 : style::text);
    }
    const std::string& main = item.detail.empty() ? item.label : item.detail;
    const double taken = pen.text(x + 14, y + 3.5, main, Face::medium, 10, ink, Align::left, r.getWidth() - 40);
    const double room = r.right - (x + 14 + taken) - 14;
    if (!item.detail.empty() && room > 40)
        pen.text(r.right - 6, y + 3.3, item.label, Face::regular, 9, style::text3, Align::right, room);
}

// What that comes to.
void SettingsPanel::drawFoot(Pen& pen) const {
    const CRect& area = getViewSize();
    const double y = area.top + footTop + 18;
    pen.rect(area.left + margin, area.top + footTop, area.getWidth() - 2 * margin, pen.hair(), style::line);
    if (!shown_.problem.empty()) {
        pen.dot(area.left + margin + 4, y - 3.2, 3, style::alarm);
        pen.text(area.left + margin + 14, y, shown_.problem, Face::medium, 9.5, style::text, Align::left,
                 area.getWidth() - 2 * margin - 14);
        return;
    }
    std::array<char, 96> text{};
    std::snprintf(text.data(), text.size(), "%s, %d Hz, %d frames: %.1f ms a block",
                  shown_.system == "none" ? "No sound" : shown_.system.c_str(), shown_.rate, shown_.period,
                  shown_.rate > 0 ? 1000.0 * shown_.period / shown_.rate : 0.0);
    std::string all = text.data();
    if (!shown_.priority.empty()) all += ", " + shown_.priority;
    if (shown_.system == "JACK") all += ". The server sets rate and period.";
    pen.text(area.left + margin, y, all, Face::medium, 9.5, style::text2, Align::left, area.getWidth() - 2 * margin);
}

}  // namespace vantoric::standalone
