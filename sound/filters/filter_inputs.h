// What the setup of every filter type starts from.
#pragma once

#include "base/numbers.h"

namespace vantoric::filters {

// What a filter's setup leaves for the setups after it, whatever their types.
struct SetupMemory {
    double drive = 0.0;  // of the state-variable filters and "LP Orvix"
    double delay = 0.0;  // samples, of the delay line types
};

// The inputs of a setup, clamped.
struct FilterInputs {
    double sampleRate;  // S, Hz
    int tickSamples;    // samples until the next setup
    double c;           // cutoff, 0 to 1
    double r;           // resonance, 1e-5 to 1
    double a;           // analog, as given
    SetupMemory& memory;

    // fastExp((1 - c) x -6): 1 with the cutoff open, six nepers below that closed.
    double openness() const { return fastExp((1.0 - c) * -6.0); }
    // Normalised frequency without the factor of 44100: 0.45 of 44100 Hz at c = 1, whatever the sample rate.
    double fn() const { return openness() * 0.45 / sampleRate; }
};

}  // namespace vantoric::filters
