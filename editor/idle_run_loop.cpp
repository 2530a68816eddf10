#include "editor/idle_run_loop.h"

#include <algorithm>

#include <xcb/xcb.h>

namespace vantoric {

IdleRunLoop::IdleRunLoop() {
    constexpr std::size_t usualHandlers = 4, usualTimers = 64;
    handlers_.reserve(usualHandlers);
    timers_.reserve(usualTimers);
}

bool IdleRunLoop::registerEventHandler(int, VSTGUI::X11::IEventHandler* handler) {
    handlers_.push_back(handler);
    return true;
}

bool IdleRunLoop::unregisterEventHandler(VSTGUI::X11::IEventHandler* handler) {
    const bool removed = std::erase(handlers_, handler) != 0;
    // The library forgets its run loop right after this and can then no longer take back a timer that ends later.
    if (handlers_.empty()) timers_.clear();
    return removed;
}

bool IdleRunLoop::registerTimer(std::uint64_t milliseconds, VSTGUI::X11::ITimerHandler* handler) {
    const std::chrono::milliseconds interval(std::max<std::uint64_t>(milliseconds, 1));
    timers_.push_back({++lastId_, interval, Clock::now() + interval, handler});
    return true;
}

bool IdleRunLoop::unregisterTimer(VSTGUI::X11::ITimerHandler* handler) {
    return std::erase_if(timers_, [handler](const Timer& timer) { return timer.handler == handler; }) != 0;
}

bool IdleRunLoop::isRegistered(const VSTGUI::X11::IEventHandler* handler) const {
    return std::find(handlers_.begin(), handlers_.end(), handler) != handlers_.end();
}

void IdleRunLoop::service() {
    if (isServing_) return;
    isServing_ = true;
    const auto alive = VSTGUI::shared(this);
    struct NotServing {
        bool& flag;
        ~NotServing() { flag = false; }
    } const atEnd{isServing_};
    serveEvents();
    serveTimers();
}

void IdleRunLoop::serveEvents() {
    // The descriptor is not asked first: the connection may hold events that it read while it waited for an answer.
    for (VSTGUI::X11::IEventHandler* handler : std::vector(handlers_)) {
        if (!isRegistered(handler)) continue;
        xcb_connection_t* connection = VSTGUI::X11::RunLoop::instance().getXcbConnection();
        const unsigned first = xcb_no_operation(connection).sequence;
        handler->onEvent();
        // The library asks for the pointer's history at every move and never collects the answer, which would pile up.
        const unsigned last = xcb_no_operation(connection).sequence;
        for (unsigned sequence = first + 1; sequence != last; ++sequence) xcb_discard_reply(connection, sequence);
    }
}

void IdleRunLoop::serveTimers() {
    const Clock::time_point now = Clock::now();
    std::vector<std::uint64_t> due;
    for (const Timer& timer : timers_)
        if (timer.due <= now) due.push_back(timer.id);
    for (const std::uint64_t id : due) {  // what is called may add and remove timers
        const auto timer = std::find_if(timers_.begin(), timers_.end(), [id](const Timer& t) { return t.id == id; });
        if (timer == timers_.end()) continue;
        timer->due = now + timer->interval;  // no catching up after a pause
        timer->handler->onTimer();
    }
}

}  // namespace vantoric
