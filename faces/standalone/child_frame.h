// A part of the program's window that is drawn as the editor is: a frame of the window library at a place of its own.
#pragma once

#include <cstdint>
#include <memory>

#include "editor/holder_window.h"
#include "vstgui/lib/cframe.h"

namespace vantoric::standalone {

// On the program's main thread, while the GUI module is connected.
class ChildFrame final : private VSTGUI::VSTGUIEditorInterface {
public:
    struct Place {
        int x, y, width, height;  // pixels within the parent
    };

    ChildFrame() = default;
    ~ChildFrame() override { close(); }
    ChildFrame(const ChildFrame&) = delete;
    ChildFrame& operator=(const ChildFrame&) = delete;

    // Shows an empty frame of that many pixels a unit. Null if the window library cannot. Above what is in the parent already.
    VSTGUI::CFrame* open(std::uintptr_t parent, const Place& place, double zoom);
    void close();
    bool isOpen() const { return frame != nullptr; }
    // The regular call: redraws, and keys that stay with the parent.
    void idle();

private:
    bool beforeSizeChange(const VSTGUI::CRect&, const VSTGUI::CRect&) override { return true; }
    std::int32_t getKnobMode() const override { return VSTGUI::kLinearMode; }

    std::unique_ptr<HolderWindow> holder_;
};

}  // namespace vantoric::standalone
