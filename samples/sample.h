// The sample of one oscillator of a layer.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "base/flag.h"

namespace vantoric {

inline constexpr int sampleLevels = 5;    // the recording and four filtered copies
inline constexpr int sampleGuard = 2032;  // words allocated beyond the length
inline constexpr std::int32_t maxSampleLength = 16777216;
inline constexpr std::uint32_t maxSampleRate = 384000;

// Rows of the list `LoopMod`.
inline constexpr int loopModeSingle = 0, loopModeLoop = 1;

// A flag that goes along when what it is about is moved.
class MovableFlag : public Flag {
public:
    MovableFlag() = default;
    MovableFlag(MovableFlag&& other) noexcept { *this = std::move(other); }
    MovableFlag& operator=(MovableFlag&& other) noexcept {
        if (other.isSet())
            set();
        else
            clear();
        return *this;
    }
};

struct Sample {
    std::int32_t length = 0;           // samples; 0: none
    std::int32_t loopStart = 0;        // samples
    std::int32_t loopEnd = 0;          // samples
    std::uint32_t sampleRate = 44100;  // Hz
    std::unique_ptr<std::int16_t[]> levels[sampleLevels];
    MovableFlag levelsPending;  // the filtered copies are not made yet: the sample is silent

    // Frees the five buffers and allocates new ones of `newLength` + sampleGuard words each, zeroed.
    // Length and loop are left to the caller. False, with no buffer left, if memory is short. Only while
    // neither the audio thread nor the wave worker can read them.
    bool allocate(std::int32_t newLength);

    // Empties the holder without touching its buffers: length and loop 0, rate 44100.
    void clearHeader();
};

}  // namespace vantoric
