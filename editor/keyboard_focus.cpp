#include "editor/keyboard_focus.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "base/parameters.h"
#include "editor/gui_module.h"
#include "editor/line_edit.h"

namespace vantoric {
namespace {

using VSTGUI::ModifierKey;
using VSTGUI::VirtualKey;

constexpr float arrowStep = 0.01f, fineStep = 0.001f, pageStep = 0.1f;
constexpr int pageRows = 8;

bool isMenuKey(const VSTGUI::KeyboardEvent& event) {
    if (event.virt == VirtualKey::F10) return event.modifiers.has(ModifierKey::Shift);
    const bool isUnknown = event.virt == VirtualKey::None && event.character == 0;
    return isUnknown && GuiModule::shared().isMenuKeyHeld();
}

// What has an amount.
bool isTurned(WidgetKind kind) {
    return kind == WidgetKind::Knob || kind == WidgetKind::LargeKnob || kind == WidgetKind::Value ||
           kind == WidgetKind::EffectValue || kind == WidgetKind::Step;
}

bool isSwitchLike(WidgetKind kind) { return kind == WidgetKind::Switch || kind == WidgetKind::Selector; }

bool hasParameter(const ControlFace& face) { return parameterOfTag(face.entry().tag) >= 0; }

// By which the keys that step do it; 0 for all others.
float stepOf(VirtualKey key, float step) {
    switch (key) {
        case VirtualKey::Up:
        case VirtualKey::Right: return step;
        case VirtualKey::Down:
        case VirtualKey::Left: return -step;
        case VirtualKey::PageUp: return pageStep;
        case VirtualKey::PageDown: return -pageStep;
        default: return 0;
    }
}

// Of all windows of the module, on their one thread; below 0: none.
float& copiedValue() {
    static float value = -1;
    return value;
}

}  // namespace

KeyboardFocus::KeyboardFocus(Q7Editor& editor, const ControlViews& views, Hints& hints, Overlay& overlay, KeyListener& listener)
    : editor_(editor), views_(views), hints_(hints), overlay_(overlay), listener_(listener) {}

// ---- what has the focus

void KeyboardFocus::leave() {
    clear();
    isTaken_ = false;
}

void KeyboardFocus::followPages() {
    if (focused_ != nullptr && !editor_.isVisible(focused_->entry())) clear();
}

void KeyboardFocus::setFocus(ControlFace* face) {
    setStop(-1);
    if (focused_ == face) return;
    if (focused_ != nullptr) focused_->setFocused(false);
    focused_ = face;
    if (focused_ == nullptr) return;
    focused_->setFocused(true);
    hints_.forgetNews();
    hints_.showHelp(focused_);
}

void KeyboardFocus::setStop(int wanted) {
    if (wanted == stop_) return;
    if (stop_ >= 0 && stop().left) stop().left();
    stop_ = wanted;
    if (stop_ < 0) return overlay_.setFocus(std::nullopt);
    overlay_.setFocus(stop().place);
    hints_.forgetNews();
    showStopHelp();
}

void KeyboardFocus::showStopHelp() {
    if (stop_ < 0) return;
    hints_.showLive([&shown = stop()] { return shown.name + ": " + shown.value(); });
}

// Along the signal's way: the band, then section by section in reading order. The table is sorted by kind.
void KeyboardFocus::moveFocus(int direction) {
    struct Place {
        std::tuple<int, int, double> order;
        ControlFace* face;
        int stop;
    };
    const auto orderOf = [](Section section, double x, double y) {
        const int group = y < bandHeight ? -1 : static_cast<int>(section);
        return std::tuple(group, static_cast<int>(y) / 24, x);
    };
    std::vector<Place> places;
    views_.forEach([&](ControlFace& face) {
        const ControlEntry& entry = face.entry();
        if (editor_.isVisible(entry))
            places.push_back({orderOf(entry.section, static_cast<double>(entry.x), entry.y), &face, -1});
    });
    for (int i = 0; i < static_cast<int>(stops_.size()); ++i) {
        const Stop& stop = stops_[static_cast<std::size_t>(i)];
        places.push_back({orderOf(stop.section, stop.place.left, stop.place.top), nullptr, i});
    }
    if (places.empty()) return;
    std::stable_sort(places.begin(), places.end(), [](const Place& a, const Place& b) { return a.order < b.order; });
    const auto at = std::find_if(places.begin(), places.end(), [&](const Place& place) {
        return place.face != nullptr ? place.face == focused_ : focused_ == nullptr && place.stop == stop_;
    });
    const int count = static_cast<int>(places.size());
    const int now = at == places.end() ? (direction > 0 ? -1 : count) : static_cast<int>(at - places.begin());
    const Place& next = places[static_cast<std::size_t>((now + direction + count) % count)];
    setFocus(next.face);
    setStop(next.stop);
}

// ---- keys

void KeyboardFocus::onKey(VSTGUI::KeyboardEvent& event) {
    event.consumed = true;
    if (onShortcut(event) || (isMenuKey(event) && openMenu())) return;
    const bool isShifted = event.modifiers.has(ModifierKey::Shift);
    if (event.virt == VirtualKey::Tab) return moveFocus(isShifted ? -1 : 1);
    if (event.virt == VirtualKey::Escape) {
        if (focused_ == nullptr && editor_.callOffLoad()) return;
        return leave();
    }
    if (stop_ >= 0) return onStopKey(event);
    if (focused_ != nullptr) return onControlKey(*focused_, event, isShifted ? fineStep : arrowStep);
    event.consumed = onPlainLetter(event.character);
}

// The menu of what has the focus, or is pointed at.
bool KeyboardFocus::openMenu() {
    if (stop_ >= 0) {
        const auto& menu = stop().menu;
        if (menu) menu();
        return static_cast<bool>(menu);
    }
    ControlFace* face = focused_ != nullptr ? focused_ : hints_.hovered();
    if (face == nullptr || !hasParameter(*face)) return false;
    listener_.controlMenuWanted(*face);
    return true;
}

bool KeyboardFocus::onShortcut(const VSTGUI::KeyboardEvent& event) {
    if (!event.modifiers.has(ModifierKey::Control)) return false;
    const bool isShifted = event.modifiers.has(ModifierKey::Shift);
    using Button = HistoryBar::Button;
    switch (letterWithControl(event)) {
        case U'z': listener_.historyPressed(isShifted ? Button::redo : Button::undo, false); return true;
        case U'y': listener_.historyPressed(Button::redo, false); return true;
        case U't': listener_.notesWanted(); return true;
        case U'c': copyValue(); return true;
        case U'v': pasteValue(); return true;
        default: return false;
    }
}

void KeyboardFocus::copyValue() const {
    if (focused_ != nullptr && hasParameter(*focused_)) copiedValue() = editor_.valueOf(focused_->entry().tag);
}

void KeyboardFocus::pasteValue() {
    if (focused_ != nullptr && copiedValue() >= 0 && hasParameter(*focused_) && !isList(focused_->entry()))
        listener_.valueSetByKey(*focused_, copiedValue());
}

// Keys that need no control: layers, patches, the search.
bool KeyboardFocus::onPlainLetter(char32_t character) {
    if (character >= U'1' && character <= U'4') {
        editor_.valueChanged(tag::layer1 + static_cast<int>(character - U'1'), 1, false);
        return true;
    }
    switch (character) {
        case U'/': editor_.valueChanged(tag::browser, 1, false); return true;
        case U'[': editor_.valueChanged(tag::previousPatch, 1, false); return true;
        case U']': editor_.valueChanged(tag::nextPatch, 1, false); return true;
        default: return false;
    }
}

void KeyboardFocus::onStopKey(VSTGUI::KeyboardEvent& event) {
    if (const float amount = stepOf(event.virt, arrowStep); amount != 0) {
        if (stop().nudge) stop().nudge(amount);
        return showStopHelp();
    }
    switch (event.virt) {
        case VirtualKey::Space:
        case VirtualKey::Return:
        case VirtualKey::Enter: stop().press(); return showStopHelp();
        default: event.consumed = onPlainLetter(event.character);
    }
}

void KeyboardFocus::onControlKey(ControlFace& face, VSTGUI::KeyboardEvent& event, float step) {
    if (auto* display = dynamic_cast<Wavedisplay*>(&face); display != nullptr && nudgeLoop(*display, event.virt, step)) return;
    if (const float amount = stepOf(event.virt, step); amount != 0) return nudge(face, amount);
    switch (event.virt) {
        case VirtualKey::Home: return setToEnd(face, false);
        case VirtualKey::End: return setToEnd(face, true);
        case VirtualKey::Delete: return listener_.controlResetWanted(face);
        case VirtualKey::Space:
            event.consumed = !isTurned(face.entry().kind);  // there is nothing to press: it is the host's
            return event.consumed ? press(face, event) : void();
        case VirtualKey::Return:
        case VirtualKey::Enter: return press(face, event);
        default: return onCharacter(face, event);
    }
}

// A digit begins a value where there is one to type.
void KeyboardFocus::onCharacter(ControlFace& face, VSTGUI::KeyboardEvent& event) {
    const bool isDigit = (event.character >= U'0' && event.character <= U'9') || event.character == U'-' ||
                         event.character == U'+' || event.character == U'.';
    const bool isTyping = isDigit && isTurned(face.entry().kind);
    event.consumed = isTyping || onPlainLetter(event.character);
    if (isTyping) listener_.typingBegun(face, utf8Of(event.character));
}

// Left and Right move the loop's start, Down and Up its end.
bool KeyboardFocus::nudgeLoop(Wavedisplay& display, VirtualKey key, float step) {
    const float start = key == VirtualKey::Right ? step : key == VirtualKey::Left ? -step : 0;
    const float end = key == VirtualKey::Up ? step : key == VirtualKey::Down ? -step : 0;
    if ((start == 0 && end == 0) || !display.nudgeLoop(start, end)) return false;
    hints_.forgetNews();
    hints_.showHelp(&display);
    return true;
}

void KeyboardFocus::nudge(ControlFace& face, float step) {
    if (isList(face.entry())) {
        const int rows = std::abs(step) >= pageStep ? pageRows : 1;
        return listener_.listStepped(face, step > 0 ? -rows : rows);
    }
    if (hasParameter(face)) listener_.valueSetByKey(face, editor_.valueOf(face.entry().tag) + step);
}

// Of a list its first or last row.
void KeyboardFocus::setToEnd(ControlFace& face, bool last) {
    const ControlEntry& entry = face.entry();
    if (!hasParameter(face)) return;
    if (!isList(entry)) return listener_.valueSetByKey(face, last ? 1 : 0);
    if (entry.labels.empty()) return;
    int row = last ? static_cast<int>(entry.labels.size()) - 1 : 0;
    while (row > 0 && std::string(entry.labels[row]) == "-") --row;
    listener_.rowChosen(face, row);
}

void KeyboardFocus::press(ControlFace& face, const VSTGUI::KeyboardEvent& event) {
    const ControlEntry& entry = face.entry();
    if (isList(entry) || entry.kind == WidgetKind::Menu) return listener_.controlListWanted(face);
    if (isSwitchLike(entry.kind)) {
        const bool turnsOff = editor_.valueOf(entry.tag) > 0.5f && entry.kind == WidgetKind::Switch;
        return listener_.switchedByKey(face, !turnsOff);
    }
    if (entry.kind == WidgetKind::Button || entry.kind == WidgetKind::SampleButton)
        return listener_.controlPressed(face, event.modifiers);
    listener_.controlTypingWanted(face);
}

}  // namespace vantoric
