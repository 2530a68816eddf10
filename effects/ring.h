// The delay line of the effect families: a ring of fixed length that can be emptied at any moment without
// making a block late.
//
// Emptying a long ring sample by sample would cost up to a megabyte of writes inside one audio block. So a
// ring holds two buffers. `clear` puts the clean one in use and leaves the other to be wiped a little at a
// time while the family runs; if that is still going on, what was written since is short, and is wiped at
// once. Buffers come zeroed from the system, which maps them only as they are first written: a ring that
// is never used costs no memory.
//
// What a family has to do:
// - construct its rings with itself, nothing later;
// - before the sample loop of each block call beginBlock(first, count) on every ring it writes, with the
//   index that its first write of the block uses and the number of neighbouring samples written. One too
//   many at either end does no harm, one too few leaves an old sample behind after a clear. Writes that
//   are scattered over the ring call beginBlock(0, size);
// - fetch data() or use the operators anew in each block: a pointer kept over a clear shows the old sound;
// - in reset(): clear() every ring and set its write indices to 0.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <utility>

#include "base/heard_while_written.h"
#include "platform/memory.h"

namespace vantoric {

// 2^Bits samples of T (float or double). Indices wrap at the length, negative ones too. Everything but
// construction and `touch` runs on the audio thread.
template <class T, int Bits>
class Ring {
public:
    static constexpr int size = 1 << Bits;
    static constexpr int mask = size - 1;

    // Reserves both buffers, zeroed. Throws std::bad_alloc if memory is short.
    Ring() = default;

    T operator[](int index) const { return inUse_[index & mask]; }
    T& operator[](int index) { return inUse_[index & mask]; }
    T* data() { return inUse_; }
    const T* data() const { return inUse_; }

    // Announces writes to `count` samples from index `first` on, and wipes a part of the other buffer.
    void beginBlock(int first, int count) {
        count = std::clamp(count, 0, size);
        mark(first & mask, count);
        if (stale_.count != 0) wipe(other(), stale_, wipeRate * count);
    }

    // All samples read as 0 from here on.
    void clear() {
        if (stale_.count == 0 && written_.count > shortExtent) {
            inUse_ = other();
            std::swap(stale_, written_);
        } else {
            wipe(inUse_, written_, size);
        }
    }

    // Has the system map the first `count` samples of the buffer in use, and of the other one once a clear would put that
    // in use, so that the audio thread does not find them missing. Any thread, also while audio runs: in every page a 0 is
    // exchanged for a 0, and other numbers stay.
    void touch(int count = size) {
        const HeardWhileWritten audioRunsOn;
        const int buffers = clearSwaps_.load(std::memory_order_relaxed) ? 2 : 1;
        for (int which = 0; which < buffers; ++which)
            for (int i = 0; i < count; i += page) touchSample(buffer(which)[i]);
    }

private:
    struct Extent {
        int first = 0, count = 0;  // wraps at the end of the ring
    };
    static constexpr int wipeRate = 8;                            // samples wiped for each one written
    static constexpr int shortExtent = std::min(size / 8, 2048);  // wiped at once

    static constexpr int page = 4096 / sizeof(T);  // of the systems that map the least at a time

    static void touchSample(T& sample) {
        T zero(0);
        std::atomic_ref<T>(sample).compare_exchange_strong(zero, T(0), std::memory_order_relaxed);
    }

    T* buffer(int which) const { return static_cast<T*>(memory_[which].data()); }
    T* other() const { return buffer(inUse_ == buffer(0) ? 1 : 0); }

    void mark(int first, int count) {
        const int offset = (first - written_.first) & mask;
        if (written_.count == 0)
            written_ = {first, count};
        else if (offset <= written_.count)
            written_.count = std::min(size, std::max(written_.count, offset + count));
        else
            written_ = {0, size};
        if (written_.count > shortExtent) clearSwaps_.store(true, std::memory_order_relaxed);
    }

    // Zeroes up to `limit` samples at the start of an extent and takes them off it.
    static void wipe(T* buffer, Extent& extent, int limit) {
        const int first = extent.first & mask, whole = std::clamp(extent.count, 0, size);
        const int count = std::min(whole, limit);
        const int head = std::min(count, size - first);
        std::fill_n(buffer + first, head, T(0));
        std::fill_n(buffer, count - head, T(0));
        extent = {(first + count) & mask, whole - count};
    }

    static constexpr std::size_t bytes = size * sizeof(T);
    const std::array<platform::ZeroedPages, 2> memory_{platform::ZeroedPages(bytes), platform::ZeroedPages(bytes)};
    T* inUse_ = buffer(0);
    Extent written_, stale_;  // of the buffer in use; of the other one
    // Whether the first buffer holds so much that a clear swaps them, or has done so: the second takes no memory until then.
    std::atomic<bool> clearSwaps_{false};
};

// Touches the first `count` of some lines.
template <class Line>
void touchLines(std::initializer_list<Line*> lines, int count) {
    std::for_each(lines.begin(), lines.begin() + count, [](Line* line) { line->touch(); });
}

}  // namespace vantoric
