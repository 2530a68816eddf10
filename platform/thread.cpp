#include "platform/thread.h"

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

void setLowestPriority() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_LOWEST); }

#else

void setLowestPriority() {
    // A thread inherits its maker's scheduling; niceness is a thread's own on this system.
    const sched_param ordinary{};
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &ordinary);
    setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 19);
}

#endif

}  // namespace vantoric::platform
