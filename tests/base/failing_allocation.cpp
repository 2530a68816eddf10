#include "tests/base/failing_allocation.h"

#include <algorithm>
#include <cstdlib>
#include <new>

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    using namespace vantoric::test;
    allocatedAtMost = std::max(allocatedAtMost, size);
    const bool fails =
        (failingAllocation != 0 && size >= failingAllocation) || (throwingAllocation != 0 && size >= throwingAllocation);
    return fails ? nullptr : std::malloc(size);
}

namespace {

// Whether one more may succeed; takes it off what is left.
bool anyLeft() {
    std::atomic<long>& left = vantoric::test::allocationsLeft;
    for (long now = left; now >= 0;) {
        if (now == 0) return false;
        if (left.compare_exchange_weak(now, now - 1)) return true;
    }
    return true;
}

}  // namespace

void* operator new(std::size_t size) {
    const std::size_t throwing = vantoric::test::throwingAllocation;
    const bool fails = (throwing != 0 && size >= throwing) || !anyLeft();
    void* const memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
