// How a thread sleeps until there is something to do, without looking again and again.
#pragma once

#ifdef _WIN32
#include <condition_variable>
#include <mutex>
#else
#include <atomic>
#endif

#include "base/flag.h"
#include "base/thread_check.h"

namespace vantoric {

// One thread waits, any others ring. A ring that comes while nobody waits is not lost: the next wait() returns at once.
// What was written before ring() is seen after the wait() that it ends. Whoever rings never waits for anybody, but wakes a
// thread by a call of the system: nothing that the audio thread does of its own.
class Doorbell {
public:
#ifdef _WIN32
    // Waiting at an atomic number loses rings there: the standard library looks at the number before it takes the lock that it
    // sleeps with (GCC bug 106183).
    void ring() {
        notInsideAnyBlock();
        {
            const std::lock_guard guard(door_);
            rung_ = true;
        }
        came_.notify_one();
    }
    void wait() {
        std::unique_lock lock(door_);
        came_.wait(lock, [this] { return rung_; });
        rung_ = false;
    }

private:
    std::mutex door_;
    std::condition_variable came_;
    bool rung_ = false;
#else
    void ring() {
        notInsideAnyBlock();
        if (rung_.exchange(1, std::memory_order_acq_rel) == 0) rung_.notify_one();
    }
    void wait() {
        while (rung_.exchange(0, std::memory_order_acq_rel) == 0) rung_.wait(0, std::memory_order_acquire);
    }

private:
    std::atomic<int> rung_{0};
#endif
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
