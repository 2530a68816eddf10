// For tests of systems that give no more threads.
#pragma once

#include <pthread.h>

#include <cstddef>

namespace vantoric::test {

// While it stands no thread can be made in the process: each would want a stack larger than its address space.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_getstacksize(&attributes, &before_);
        pthread_attr_destroy(&attributes);
        setStack(std::size_t{1} << 47);
    }
    ~NoMoreThreads() { setStack(before_); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    static void setStack(std::size_t bytes) {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, bytes);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
    std::size_t before_ = 0;
};

}  // namespace vantoric::test
