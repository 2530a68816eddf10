#include "platform/thread.h"

#include <algorithm>
#include <chrono>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace vantoric::platform {

void sleepMilliseconds(int milliseconds) {
    if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

#ifdef _WIN32

void setLowPriority() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_LOWEST); }

#else

// As far below others as Windows' lowest: they get nine times its share. Were it the nicest, a patch would wait for its waves as
// long as anything else on the machine has work.
void setLowPriority() {
    constexpr int niceness = 10;
    // A thread inherits its maker's scheduling; niceness is a thread's own on this system.
    const sched_param ordinary{};
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &ordinary);
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    setpriority(PRIO_PROCESS, thread, std::max(niceness, getpriority(PRIO_PROCESS, thread)));
}

#endif

}  // namespace vantoric::platform
