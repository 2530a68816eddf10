#include "tests/host/audio_watch.h"

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/prctl.h>
#include <ucontext.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

#ifndef PR_SET_SYSCALL_USER_DISPATCH
#define PR_SET_SYSCALL_USER_DISPATCH 59
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WATCH_AVAILABLE 0
#else
#define WATCH_AVAILABLE 1
#endif

namespace testhost {

namespace {

std::atomic<int> allocationCount{0}, releaseCount{0}, lockCount{0}, systemCallCount{0}, systemCallNumber{-1};
thread_local bool watching = false;
// Read by the kernel at each system call of the thread: 0 lets it pass, 1 turns it into SIGSYS.
thread_local volatile char blockSystemCalls = 0;

[[maybe_unused]] void count(std::atomic<int>& counter) {
    if (watching) ++counter;
}

// Counts the call, lets the thread's further calls pass and takes this one up again.
void onSystemCall(int, siginfo_t* info, void* context) {
    blockSystemCalls = 0;
    ++systemCallCount;
    systemCallNumber = info->si_syscall;
    auto* const machine = &static_cast<ucontext_t*>(context)->uc_mcontext;
    machine->gregs[REG_RAX] = info->si_syscall;
    machine->gregs[REG_RIP] -= 2;
}

bool catchSystemCalls() {
    static const bool handled = [] {
        struct sigaction action{};
        action.sa_sigaction = onSystemCall;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        return sigaction(SIGSYS, &action, nullptr) == 0;
    }();
    return handled && prctl(PR_SET_SYSCALL_USER_DISPATCH, 1L, 0L, 0L, &blockSystemCalls) == 0;
}

}  // namespace

AudioWatch::AudioWatch() {
    if (!available()) return;
    const bool caught = catchSystemCalls();
    watching = true;
    blockSystemCalls = caught;
}

AudioWatch::~AudioWatch() {
    blockSystemCalls = 0;
    watching = false;
    prctl(PR_SET_SYSCALL_USER_DISPATCH, 0L, 0L, 0L, 0L);
}

bool AudioWatch::available() { return WATCH_AVAILABLE != 0; }

bool AudioWatch::seesSystemCalls() {
    const bool seen = catchSystemCalls();
    prctl(PR_SET_SYSCALL_USER_DISPATCH, 0L, 0L, 0L, 0L);
    return seen;
}

int AudioWatch::allocations() { return allocationCount; }
int AudioWatch::releases() { return releaseCount; }
int AudioWatch::locks() { return lockCount; }
int AudioWatch::systemCalls() { return systemCallCount; }
int AudioWatch::lastSystemCall() { return systemCallNumber; }
void AudioWatch::clearCounts() { allocationCount = releaseCount = lockCount = systemCallCount = 0; }

}  // namespace testhost

#if WATCH_AVAILABLE

// The library's own functions under the names that modules call. operator new ends in malloc and needs none.
using namespace testhost;

#define INTERPOSED extern "C" __attribute__((visibility("default")))

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
}

INTERPOSED void* malloc(std::size_t size) noexcept {
    count(allocationCount);
    return __libc_malloc(size);
}

INTERPOSED void* calloc(std::size_t number, std::size_t size) noexcept {
    count(allocationCount);
    return __libc_calloc(number, size);
}

INTERPOSED void* realloc(void* memory, std::size_t size) noexcept {
    count(allocationCount);
    return __libc_realloc(memory, size);
}

INTERPOSED void* memalign(std::size_t alignment, std::size_t size) noexcept {
    count(allocationCount);
    return __libc_memalign(alignment, size);
}

INTERPOSED void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    count(allocationCount);
    return __libc_memalign(alignment, size);
}

INTERPOSED int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    count(allocationCount);
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}

INTERPOSED void free(void* memory) noexcept {
    if (memory) count(releaseCount);
    __libc_free(memory);
}

#define INTERPOSE_LOCK(name, type, exception)                                               \
    INTERPOSED int name(type* lock) exception {                                             \
        static const auto next = reinterpret_cast<int (*)(type*)>(dlsym(RTLD_NEXT, #name)); \
        count(lockCount);                                                                   \
        return next(lock);                                                                  \
    }

INTERPOSE_LOCK(pthread_mutex_lock, pthread_mutex_t, noexcept)
INTERPOSE_LOCK(pthread_mutex_trylock, pthread_mutex_t, noexcept)
INTERPOSE_LOCK(pthread_rwlock_rdlock, pthread_rwlock_t, noexcept)
INTERPOSE_LOCK(pthread_rwlock_wrlock, pthread_rwlock_t, noexcept)
INTERPOSE_LOCK(sem_wait, sem_t, )

#endif
