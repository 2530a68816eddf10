// Memory straight from the system, by whole pages.
#pragma once

#include <cstddef>

namespace vantoric::platform {

// A block of zeros that costs nothing until it is written: the system maps each page at its first write, and gets all
// back at the end. The allocator of the C library promises neither: what one owner freed it hands on to the next,
// clears it by hand and so maps it all. Any thread; one owner.
class ZeroedPages {
public:
    // Throws std::bad_alloc if the system refuses. 0 bytes count as one.
    explicit ZeroedPages(std::size_t bytes);
    ~ZeroedPages();
    ZeroedPages(const ZeroedPages&) = delete;
    ZeroedPages& operator=(const ZeroedPages&) = delete;

    // Begins at a page, zeros at first.
    void* data() const { return data_; }

private:
    std::size_t bytes_;
    void* data_;
};

}  // namespace vantoric::platform
