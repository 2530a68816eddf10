#include "tests/engine/failing_allocations.h"

#include <cstdlib>
#include <new>

namespace vantoric::test {

std::atomic<std::size_t> failingAllocations{0};

}  // namespace vantoric::test

void* operator new(std::size_t size) {
    const std::size_t failing = vantoric::test::failingAllocations;
    void* const memory = failing != 0 && size >= failing ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
