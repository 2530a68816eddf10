// The instrument's window as a VST 2.4 host sees it.
#pragma once

#include "editor/editor_window.h"
#include "faces/vst2/editor.h"

namespace vantoric {

// See AEffEditor. Nothing thrown leaves it: a window that cannot be made is none.
class WindowEditor final : public AEffEditor {
public:
    WindowEditor(Instrument& instrument, const std::string& hostProduct) : window_(instrument, hostProduct) {}

    bool getRect(ERect** rect) override;
    bool open(void* parent) override;
    void close() override;
    void idle() override;
    bool onKeyDown(const VstKeyCode& key) override;
    bool setKnobMode(std::int32_t) override { return false; }  // knobs are linear, for every host

private:
    EditorWindow window_;
    ERect rect_{};
};

}  // namespace vantoric
