// Processor time of the calling thread: a busy machine does not spoil it.
#pragma once

#include <time.h>

#include <algorithm>

namespace bench {

inline double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}
inline double threadSeconds() { return seconds(CLOCK_THREAD_CPUTIME_ID); }

// Seconds of one call of `work`: the best of `rounds` rounds of `calls` calls.
template <class Work>
double bestTime(int rounds, int calls, Work&& work) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = threadSeconds();
        for (int i = 0; i < calls; ++i) work();
        best = std::min(best, (threadSeconds() - start) / calls);
    }
    return best;
}

}  // namespace bench
