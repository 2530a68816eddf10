#include "tests/base/failing_allocation.h"

#include <algorithm>
#include <new>

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    using namespace vantoric::test;
    allocatedAtMost = std::max(allocatedAtMost, size);
    if (failingAllocation != 0 && size >= failingAllocation) return nullptr;
    return ::operator new[](size);
}
