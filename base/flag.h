// One-byte flags between threads, and the one bounded wait on them.
#pragma once

#include <atomic>

namespace vantoric {

// A byte that threads set, clear and poll. Loads and stores only, never a read-modify-write. A set or clear
// publishes what was written before it. Two threads that each change a flag of their own and then look at the
// other's cannot both miss the change: all of it is sequentially consistent.
class Flag {
public:
    Flag() = default;
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

    void set() { value_.store(1, std::memory_order_seq_cst); }
    void clear() { value_.store(0, std::memory_order_seq_cst); }
    bool isSet() const { return value_.load(std::memory_order_seq_cst) != 0; }

private:
    std::atomic<unsigned char> value_{0};
};

// Sleeps for a number of milliseconds; the platform's, or a test's fake clock.
using SleepFunction = void (*)(int milliseconds);

// Polls `flag` until it is clear: at most `tries` sleeps of `pauseMilliseconds` each. If it is still
// set then and `force` is true, clears it and goes on. Returns true if the flag fell by itself. Not for the audio thread.
inline bool waitUntilClear(Flag& flag, int tries, int pauseMilliseconds, SleepFunction sleep, bool force = true) {
    for (int i = 0; flag.isSet(); ++i) {
        if (i == tries) {
            if (force) flag.clear();
            return false;
        }
        sleep(pauseMilliseconds);
    }
    return true;
}

}  // namespace vantoric
