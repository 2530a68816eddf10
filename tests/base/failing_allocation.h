// For tests of short memory: which allocations fail. A test program links failing_allocation.cpp, which replaces the
// operators.
#pragma once

#include <atomic>
#include <cstddef>
#include <new>

namespace vantoric::test {

// Of arrays asked for without an exception.
inline std::size_t failingAllocation = 0;  // bytes from which on they fail; 0: none
inline std::size_t allocatedAtMost = 0;    // bytes of the largest that was asked for

// Of plain `new`, on all threads: bytes from which on it throws std::bad_alloc; 0: never.
inline std::atomic<std::size_t> throwingAllocation{0};
// How many plain `new` still succeed, on all threads, before every one throws; below 0: all do.
inline std::atomic<long> allocationsLeft{-1};

// Calls `make` with ever more allocations that succeed (each of the first 8, then about a fifth more each time) until none
// throws; `after` looks at what each of them left behind. Returns how often it failed.
template <class Make, class After>
int failuresUntilMade(Make make, After after) {
    long left = 0;
    for (int failures = 0;; ++failures) {
        allocationsLeft = left;
        left += 1 + left / 16 + left / 8;
        bool isMade = true;
        try {
            make();
        } catch (const std::bad_alloc&) {
            isMade = false;
        }
        allocationsLeft = -1;
        after();
        if (isMade) return failures;
    }
}

}  // namespace vantoric::test
