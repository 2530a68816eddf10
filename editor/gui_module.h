// The window library's set-up, shared by all windows of this module.
#pragma once

#include <cstdint>
#include <string>

#include "editor/idle_run_loop.h"
#include "vstgui/lib/platform/platformfwd.h"
#include "vstgui/lib/vstguibase.h"

struct xcb_connection_t;

namespace vantoric {

// On the windows' one thread.
class GuiModule {
public:
    static GuiModule& shared();

    // One user more, one less; the library lives from the first to the last. `resources` is the folder with the fonts.
    void enter(const std::string& resources);
    void leave();

    // Whether there is a display, asked without harm to a process that has none. Held from the first success to the last
    // `leave`: the library would draw with what belonged to an earlier connection otherwise.
    bool connect();
    xcb_connection_t* connection() const;
    // A bitmap that lies on the display's side, where drawing it into a window costs a message and no pixels; opaque ones are
    // drawn faster yet. Null without a display, or if it has no room. It may not outlive the last `leave`.
    VSTGUI::SharedPointer<VSTGUI::IPlatformBitmap> displayBitmap(int width, int height, bool isOpaque) const;
    IdleRunLoop* loop() const { return loop_.get(); }

    // Whether the menu key is down, for which the library has no name. Asks the display.
    bool isMenuKeyHeld() const;

    struct Size {
        int width = 0, height = 0;
    };
    // Of the primary screen, in pixels; 0 without a display.
    Size screenSize();

private:
    VSTGUI::SharedPointer<IdleRunLoop> loop_;
    int users_ = 0;
    bool holdsConnection_ = false;
};

}  // namespace vantoric
