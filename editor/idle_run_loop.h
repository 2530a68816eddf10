// The window library's run loop, driven by nothing but the host's regular idle call.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "vstgui/lib/platform/linux/x11platform.h"
#include "vstgui/lib/platform/platform_x11.h"
#include "vstgui/lib/vstguibase.h"

namespace vantoric {

// The library keeps one run loop and one display connection a module, whatever window brought them; every open window
// serves it from its idle call. On the windows' one thread.
class IdleRunLoop final : public VSTGUI::X11::IRunLoop, public VSTGUI::NonAtomicReferenceCounted {
public:
    // Takes the room for what is usually registered: the library counts its connection as made before it is, and one that fails
    // here for short memory would be deaf ever after.
    IdleRunLoop();

    bool registerEventHandler(int descriptor, VSTGUI::X11::IEventHandler* handler) override;
    bool unregisterEventHandler(VSTGUI::X11::IEventHandler* handler) override;
    bool registerTimer(std::uint64_t milliseconds, VSTGUI::X11::ITimerHandler* handler) override;
    bool unregisterTimer(VSTGUI::X11::ITimerHandler* handler) override;

    // Takes what events there are, then the timers that are due; never waits. A call from within does nothing.
    void service();

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        std::uint64_t id;
        Clock::duration interval;
        Clock::time_point due;
        VSTGUI::X11::ITimerHandler* handler;
    };

    void serveEvents();
    void serveTimers();
    bool isRegistered(const VSTGUI::X11::IEventHandler* handler) const;

    std::vector<VSTGUI::X11::IEventHandler*> handlers_;
    std::vector<Timer> timers_;
    std::uint64_t lastId_ = 0;
    bool isServing_ = false;
};

}  // namespace vantoric
