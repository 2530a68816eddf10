// What every format does with a host's calls: nothing that is thrown gets out, states come in pieces, and numbers from 0 to 1
// become bytes of MIDI.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/numbers.h"
#include "patch/patch_chunk.h"

namespace vantoric {

inline constexpr double mostRate = 1e9;  // Hz, beyond all use

// Runs `work`; nothing that is thrown inside reaches the host, which then gets `otherwise`.
template <class Work, class Answer>
Answer guarded(Work&& work, Answer otherwise) noexcept {
    try {
        return work();
    } catch (...) {
        return otherwise;
    }
}

// What becomes of a block in which something was thrown: silence in those of its channels that are there.
template <class Sample>
void silence(Sample* const* channels, std::size_t count, std::size_t frames) {
    for (std::size_t i = 0; channels != nullptr && i < count; ++i)
        if (channels[i] != nullptr) std::fill_n(channels[i], frames, Sample(0));
}

// Whether a number in Hz is a rate that the instrument can be set to. Hosts ask with other ones too.
inline bool isSampleRate(double rate) { return rate > 0 && rate <= mostRate; }

// 0 to 127 for 0 to 1; what lies outside counts as the end that it lies beyond, NaN as 0.
inline std::uint8_t midiByte(double unit) { return static_cast<std::uint8_t>(truncateTo(unit * 127.0 + 0.5, 0, 127)); }

inline constexpr std::size_t mostState = std::size_t{1} << 30;  // bytes that a host's stream may hold

// All that a host's stream holds. `read(to, size)` answers with how many bytes it gave, 0 at the end; anything else than 0 to
// `size` is an error. Nothing for an error, or for more than `mostState`. Throws for short memory.
template <class Read>
std::optional<std::vector<std::uint8_t>> readState(Read&& read) {
    constexpr std::size_t atOnce = 65536;
    std::vector<std::uint8_t> bytes;
    for (std::size_t size = 0; size <= mostState;) {
        bytes.resize(size + atOnce);
        const std::int64_t given = read(bytes.data() + size, atOnce);
        if (given < 0 || given > static_cast<std::int64_t>(atOnce)) return {};
        size += static_cast<std::size_t>(given);
        bytes.resize(size);
        if (given == 0) return bytes;
    }
    return {};
}

// Gives all bytes to a host's stream. `write(from, size)` answers with how many it took, 1 to `size`; anything else is an error.
// False for that, and for no bytes.
template <class Write>
bool writeState(const ChunkBytes& bytes, Write&& write) {
    const auto size = static_cast<std::size_t>(std::max(bytes.size, 0));
    for (std::size_t done = 0; done < size;) {
        const std::int64_t taken = write(bytes.data.get() + done, size - done);
        if (taken <= 0 || static_cast<std::uint64_t>(taken) > size - done) return false;
        done += static_cast<std::size_t>(taken);
    }
    return size > 0;
}

}  // namespace vantoric
