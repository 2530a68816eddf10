#include "platform/memory.h"

#include <algorithm>
#include <new>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace vantoric::platform {

#ifdef _WIN32

ZeroedPages::ZeroedPages(std::size_t bytes) : bytes_(std::max<std::size_t>(bytes, 1)) {
    data_ = VirtualAlloc(nullptr, bytes_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (data_ == nullptr) throw std::bad_alloc();
}

ZeroedPages::~ZeroedPages() { VirtualFree(data_, 0, MEM_RELEASE); }

#else

ZeroedPages::ZeroedPages(std::size_t bytes) : bytes_(std::max<std::size_t>(bytes, 1)) {
    data_ = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (data_ == MAP_FAILED) throw std::bad_alloc();
#ifdef MADV_NOHUGEPAGE
    // A huge page would map two megabytes at the first write, and take as long. A refusal changes nothing else.
    madvise(data_, bytes_, MADV_NOHUGEPAGE);
#endif
}

ZeroedPages::~ZeroedPages() { munmap(data_, bytes_); }

#endif

}  // namespace vantoric::platform
