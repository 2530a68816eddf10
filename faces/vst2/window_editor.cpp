#include "faces/vst2/window_editor.h"

namespace vantoric {
namespace {

constexpr unsigned char shiftBit = 1, altBit = 2, controlBits = 4 | 8;

}  // namespace

bool WindowEditor::getRect(ERect** rect) {
    const FaceWindow::Size size = window_->size();
    rect_ = {0, 0, static_cast<std::int16_t>(size.height), static_cast<std::int16_t>(size.width)};
    *rect = &rect_;
    return true;
}

bool WindowEditor::onKeyDown(const VstKeyCode& key) {
    return window_->onKeyDown({static_cast<char32_t>(key.character), key.virt, (key.modifier & shiftBit) != 0,
                               (key.modifier & altBit) != 0, (key.modifier & controlBits) != 0});
}

}  // namespace vantoric
