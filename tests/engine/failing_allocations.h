// Memory that runs short when a test says so.
#pragma once

#include <atomic>
#include <cstddef>

namespace vantoric::test {

// Allocations by `new` of at least this many bytes throw std::bad_alloc, on all threads; 0: none does.
extern std::atomic<std::size_t> failingAllocations;

}  // namespace vantoric::test
