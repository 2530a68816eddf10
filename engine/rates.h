// What follows from the host's sample rate.
#pragma once

#include <limits>

#include "base/engine_state.h"
#include "base/numbers.h"

namespace vantoric {

struct Rates {
    float internalRate;  // Hz: the host's above 48000, else twice the host's
    bool oversampled;    // the block runs at twice the host's rate and is decimated
    int tickSamples;     // samples of a control tick, about 1 ms; the fraction is dropped
};

// hostRate in Hz; any value is taken. Below 500 the tick has no samples, which silences the engine; what is
// not a finite number of at least 1 counts as 1 Hz, what is above 10 MHz as that. Any thread.
constexpr Rates ratesOf(float hostRate) {
    constexpr float highest = 1e7f;  // any delay that an effect can have is still a count of samples in an int
    const bool isNumber = hostRate >= 1.0f && hostRate <= std::numeric_limits<float>::max();
    const float usable = isNumber ? clampTo(hostRate, 1.0f, highest) : 1.0f;
    const bool oversampled = !(usable > 48000.0f);
    const float internalRate = oversampled ? 2.0f * usable : usable;
    return {internalRate, oversampled, static_cast<int>(internalRate * 0.001f)};
}

constexpr bool runsOversampled(float hostRate) { return ratesOf(hostRate).oversampled; }
constexpr float internalRateOf(float hostRate) { return ratesOf(hostRate).internalRate; }

// Fills the rate fields and the key increments of `state` from the host's rate in Hz. While the tick has no
// samples its reciprocal and `ticksPerSecond` are those of a tick of one. Not while a block runs.
void setRates(EngineState& state, float hostRate);

}  // namespace vantoric
