// The rates that follow from what the host asks for.
#pragma once

#include "base/numbers.h"

namespace vantoric {

struct Rates {
    float internalRate;  // Hz: the host's above 48000, else twice the host's
    bool oversampled;    // the block runs at twice the host's rate and is decimated
    int tickSamples;     // samples of a control tick, about 1 ms; the fraction is dropped
};

// hostRate in Hz. No rate is refused; below 500 the tick has no samples. Any thread.
constexpr Rates ratesOf(float hostRate) {
    const bool oversampled = !(hostRate > 48000.0f);
    const float internalRate = oversampled ? 2.0f * hostRate : hostRate;
    return {internalRate, oversampled, truncateTo(internalRate * 0.001f, 0, 1 << 24)};
}

}  // namespace vantoric
