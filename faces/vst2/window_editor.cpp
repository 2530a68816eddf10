#include "faces/vst2/window_editor.h"

#include <cstdint>

namespace vantoric {
namespace {

// Runs `work`; whatever goes wrong in it, the host goes on. `otherwise` is the answer then.
template <class Work, class Answer>
Answer guarded(Work&& work, Answer otherwise) {
    try {
        return work();
    } catch (...) {
        return otherwise;
    }
}

constexpr unsigned char shiftBit = 1, altBit = 2, controlBits = 4 | 8;

// The numbers of keys without a character are those of the window library.
VSTGUI::KeyboardEvent eventOf(const VstKeyCode& key) {
    VSTGUI::KeyboardEvent event;
    event.type = VSTGUI::EventType::KeyDown;
    event.character = static_cast<char32_t>(key.character);
    event.virt = static_cast<VSTGUI::VirtualKey>(key.virt);
    if ((key.modifier & shiftBit) != 0) event.modifiers.add(VSTGUI::ModifierKey::Shift);
    if ((key.modifier & altBit) != 0) event.modifiers.add(VSTGUI::ModifierKey::Alt);
    if ((key.modifier & controlBits) != 0) event.modifiers.add(VSTGUI::ModifierKey::Control);
    return event;
}

}  // namespace

bool WindowEditor::getRect(ERect** rect) {
    const EditorWindow::Size size = window_.size();
    rect_ = {0, 0, static_cast<std::int16_t>(size.height), static_cast<std::int16_t>(size.width)};
    *rect = &rect_;
    return true;
}

bool WindowEditor::open(void* parent) {
    return guarded(
        [&] {
            window_.close();  // a host that opens twice moves the window
            return window_.open(reinterpret_cast<std::uintptr_t>(parent));
        },
        false);
}

void WindowEditor::close() {
    guarded([&] { return window_.close(), true; }, false);
}

void WindowEditor::idle() {
    guarded([&] { return window_.idle(), true; }, false);
}

bool WindowEditor::onKeyDown(const VstKeyCode& key) {
    return guarded(
        [&] {
            VSTGUI::KeyboardEvent event = eventOf(key);
            return window_.onHostKey(event);
        },
        false);
}

}  // namespace vantoric
