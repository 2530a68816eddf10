// The window of a plug-in as its host sees it.
#pragma once

#include "faces/vst2/interface.h"

namespace vantoric {

// All calls come on the host's GUI thread, and only between the plug-in's construction and its destructor.
class AEffEditor {
public:
    AEffEditor() = default;
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;
    virtual ~AEffEditor() = default;

    // Stores the address of the window's rectangle, which stays valid until the next call; false if there is none.
    // May come before open.
    virtual bool getRect(ERect** rect) = 0;
    // Builds the window inside the host's `parent` (on X11 the window's number as a pointer, never null).
    // May come again without a close between. False if no window came up.
    virtual bool open(void* parent) = 0;
    // Takes the window down. Comes only after an open that succeeded.
    virtual void close() = 0;
    // The host's regular call while the window is open.
    virtual void idle() {}
    // A key in the host's window; true if the editor used it.
    virtual bool onKeyDown(const VstKeyCode&) { return false; }
    virtual bool onKeyUp(const VstKeyCode&) { return false; }
    // How knobs are to follow the mouse: 0 circular, 1 circular relative, 2 linear. False if not followed.
    virtual bool setKnobMode(std::int32_t) { return false; }
};

}  // namespace vantoric
