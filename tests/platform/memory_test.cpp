#include "platform/memory.h"

#ifndef _WIN32
#include <sys/mman.h>
#endif

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace vantoric::platform {
namespace {

TEST(ZeroedPages, AreZerosThatCanBeWritten) {
    constexpr std::size_t bytes = 1 << 20;
    const ZeroedPages pages(bytes);
    auto* data = static_cast<unsigned char*>(pages.data());
    EXPECT_TRUE(std::all_of(data, data + bytes, [](unsigned char byte) { return byte == 0; }));
    data[0] = data[bytes - 1] = 7;
    EXPECT_EQ(data[bytes - 1], 7);
}

TEST(ZeroedPages, OfNoBytesAreStillThere) { EXPECT_NE(ZeroedPages(0).data(), nullptr); }

TEST(ZeroedPages, ThatTheSystemHasNotEndAsAFailedAllocation) {
    EXPECT_THROW(ZeroedPages(std::numeric_limits<std::size_t>::max() / 2), std::bad_alloc);
}

#ifndef _WIN32
int pagesInMemory(const ZeroedPages& pages, std::size_t bytes) {
    std::vector<unsigned char> present((bytes + 4095) / 4096);
    if (mincore(pages.data(), bytes, present.data()) != 0) return -1;
    return static_cast<int>(std::count_if(present.begin(), present.end(), [](unsigned char p) { return (p & 1) != 0; }));
}

// The second owner gets zeros, and pays for none of what the first one wrote.
TEST(ZeroedPages, AreInMemoryOnlyWhereTheyWereWritten) {
    constexpr std::size_t bytes = 1 << 20;
    for (int owner = 0; owner < 3; ++owner) {
        const auto pages = std::make_unique<ZeroedPages>(bytes);
        EXPECT_EQ(pagesInMemory(*pages, bytes), 0);
        auto* data = static_cast<unsigned char*>(pages->data());
        data[5000] = 1;
        EXPECT_EQ(pagesInMemory(*pages, bytes), 1);
        std::fill_n(data, bytes, static_cast<unsigned char>(1));
        EXPECT_EQ(pagesInMemory(*pages, bytes), static_cast<int>(bytes / 4096));
    }
}
#endif

}  // namespace
}  // namespace vantoric::platform
