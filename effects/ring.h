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
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace vantoric {

// 2^Bits samples of T (float or double). Indices wrap at the length, negative ones too. Everything but
// construction runs on the audio thread. A clear from another thread, even during a block or another clear, is
// heard as a click and never leaves the buffers: the two stay, and one pointer tells which is in use.
template <class T, int Bits>
class Ring {
public:
    static constexpr int size = 1 << Bits;
    static constexpr int mask = size - 1;

    // Allocates both buffers, zeroed. Throws std::bad_alloc if memory is short.
    Ring() : buffers_{allocate(), allocate()} {}

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

private:
    struct Extent {
        int first = 0, count = 0;  // wraps at the end of the ring
    };
    struct Free {
        void operator()(T* memory) const { std::free(memory); }
    };
    using Buffer = std::unique_ptr<T[], Free>;

    static constexpr int wipeRate = 8;                            // samples wiped for each one written
    static constexpr int shortExtent = std::min(size / 8, 2048);  // wiped at once

    static Buffer allocate() {
        T* memory = static_cast<T*>(std::calloc(size, sizeof(T)));
        if (memory == nullptr) throw std::bad_alloc();
        return Buffer(memory);
    }

    T* other() const { return buffers_[inUse_ == buffers_[0].get() ? 1 : 0].get(); }

    void mark(int first, int count) {
        const int offset = (first - written_.first) & mask;
        if (written_.count == 0)
            written_ = {first, count};
        else if (offset <= written_.count)
            written_.count = std::min(size, std::max(written_.count, offset + count));
        else
            written_ = {0, size};
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

    const std::array<Buffer, 2> buffers_;
    T* inUse_ = buffers_[0].get();
    Extent written_, stale_;  // of the buffer in use; of the other one
};

}  // namespace vantoric
