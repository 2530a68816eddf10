// How a thread sleeps until there is something to do, without looking again and again.
#pragma once

#include <condition_variable>
#include <mutex>

#include "base/flag.h"

namespace vantoric {

// One thread waits, any others ring. A ring that comes while nobody waits is not lost: the next wait() returns at once.
// What was written before ring() is seen after the wait() that it ends. Takes a lock: not for the audio thread.
class Doorbell {
public:
    void ring() {
        {
            const std::lock_guard guard(mutex_);
            rung_ = true;
        }
        ringing_.notify_one();
    }
    void wait() {
        std::unique_lock lock(mutex_);
        ringing_.wait(lock, [this] { return rung_; });
        rung_ = false;
    }

private:
    std::mutex mutex_;
    std::condition_variable ringing_;
    bool rung_ = false;
};

// A flag whose setting wakes the thread that waits at a doorbell. Clearing and looking are as cheap as a Flag's; only
// set() is not for the audio thread.
class RingingFlag {
public:
    explicit RingingFlag(Doorbell& bell) : bell_(bell) {}

    void set() {
        flag_.set();
        bell_.ring();
    }
    void clear() { flag_.clear(); }
    bool isSet() const { return flag_.isSet(); }
    operator const Flag&() const { return flag_; }

private:
    Doorbell& bell_;
    Flag flag_;
};

}  // namespace vantoric
