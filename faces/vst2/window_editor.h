// The instrument's window as a VST 2.4 host sees it.
#pragma once

#include "editor/editor_window.h"
#include "faces/vst2/editor.h"
#include "library/program_loader.h"

namespace vantoric {

// See AEffEditor. Nothing thrown leaves it: a window that cannot be made is none.
class WindowEditor final : public AEffEditor {
public:
    // While the window is open, it follows the program changes in place of `programs`. Both outlive it.
    WindowEditor(Instrument& instrument, ProgramLoader& programs, const std::string& hostProduct)
        : window_(instrument, programs, hostProduct) {}

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
