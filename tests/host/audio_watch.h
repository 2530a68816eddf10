// Sees what a thread does that an audio thread must not: memory taken or given back, locks, system calls.
#pragma once

namespace testhost {

// While an object of this class lives, the calls of its thread are counted. One at a time per thread. The program
// must export its symbols (ENABLE_EXPORTS), so that a loaded module's calls of malloc and the like come here.
class AudioWatch {
public:
    AudioWatch();
    AudioWatch(const AudioWatch&) = delete;
    AudioWatch& operator=(const AudioWatch&) = delete;
    ~AudioWatch();

    // False under a sanitizer, which has its own allocator.
    static bool available();
    // False on a kernel without the means to see system calls; the counts of the others hold all the same.
    static bool seesSystemCalls();

    static int allocations();
    static int releases();
    static int locks();
    static int systemCalls();     // stops at the first one of a watch
    static int lastSystemCall();  // its number
    static void clearCounts();
};

}  // namespace testhost
