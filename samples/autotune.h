// The pitch of a recording.
#pragma once

#include <cstdint>

#include "samples/sample.h"

namespace vantoric {

inline constexpr int lowestLag = 44, highestLag = 2881;  // in samples: about 1000 to 15 Hz at 44.1 kHz

// The period in samples (44 to 2881) at which `count` samples repeat best: the lag L of the highest sum of
// x[n] (x[n + L] + 0.5 x[n + 2 L] + 0.25 x[n + 3 L]), x zero past its end; the lowest of equals. The sums are
// exact, so nothing depends on the order of additions. Takes a few tenths of a second for half a million
// samples; not for the audio thread. May throw std::bad_alloc.
int bestLag(const std::int16_t* samples, std::int32_t count);

// The rate at which a period of `lag` samples plays as the note C of the oscillator, 130.81277 Hz.
std::uint32_t rateOfLag(int lag);

}  // namespace vantoric
