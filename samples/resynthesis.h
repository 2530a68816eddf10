// A recording of any pitch becomes the single cycle of a custom wave: one period is cut out of its middle,
// made seamless and brought to full level. Not for the audio thread; from any other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/outcome.h"
#include "sound/oscillator_state.h"

namespace vantoric {

inline constexpr std::size_t maxResynthesisBytes = 1000000;      // of a file
inline constexpr double resynthesisFloatScale = 32766.0 * 0.45;  // of 32-bit float files that become cycles
inline constexpr std::size_t longestCycle = 4096;                // samples: up to here a sound is one cycle as a whole
inline constexpr int resynthesisPeak = 20000;                    // of the finished cycle

using CycleSpan = std::span<std::int16_t, cycleSamples>;

// How a cycle was found.
struct CycleSource {
    int lag = 0;         // samples of the period that was cut out; 0: the whole sound
    int peakBefore = 0;  // of the cycle before it was scaled to the peak of 20000
};

// Makes the cycle of a sound of any length. Up to 4096 samples are taken whole; of a longer one the best
// repeating period at its middle, whose second half crossfades to the same place one period earlier, so that
// its end joins its start. Silence, and no sound at all, give silence. Time: as bestLag. May throw
// std::bad_alloc.
CycleSource resynthesizeSound(std::span<const std::int16_t> sound, CycleSpan cycle);

// The same from the bytes of a wave file, with its first channel. A failure, told under `title`, with `cycle` as it
// was, if they are no wave file that can be read. Any bytes. May throw std::bad_alloc.
Outcome resynthesizeWave(std::span<const std::uint8_t> file, const std::string& title, CycleSpan cycle);

// The same from a file. One above 1000000 bytes and short memory are failures that are told; a file that cannot be
// opened is passed over in silence.
Outcome resynthesizeFile(const std::string& path, CycleSpan cycle);

}  // namespace vantoric
