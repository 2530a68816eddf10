// The instrument's window as a VST 2.4 host sees it.
#pragma once

#include <memory>
#include <utility>

#include "faces/common/face_window.h"
#include "faces/vst2/editor.h"

namespace vantoric {

// See AEffEditor and FaceWindow.
class WindowEditor final : public AEffEditor {
public:
    explicit WindowEditor(std::unique_ptr<FaceWindow> window) : window_(std::move(window)) {}

    bool getRect(ERect** rect) override;
    bool open(void* parent) override { return window_->open(reinterpret_cast<std::uintptr_t>(parent)); }
    void close() override { window_->close(); }
    void idle() override { window_->idle(); }
    bool onKeyDown(const VstKeyCode& key) override;
    bool setKnobMode(std::int32_t) override { return false; }  // knobs are linear, for every host

private:
    std::unique_ptr<FaceWindow> window_;
    ERect rect_{};
};

}  // namespace vantoric
