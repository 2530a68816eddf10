// For tests of short memory: which of the allocations that may fail without an exception do fail. A test program links
// failing_allocation.cpp, which replaces that operator.
#pragma once

#include <cstddef>

namespace vantoric::test {

inline std::size_t failingAllocation = 0;  // bytes from which on they fail; 0: none
inline std::size_t allocatedAtMost = 0;    // bytes of the largest that was asked for

}  // namespace vantoric::test
