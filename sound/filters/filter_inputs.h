// What the setup of every filter type starts from, and the law of the cutoff.
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

// The cutoff that a voice passes on: Cutoff, moved by the glided note around key 64 and by the filter
// envelope (`envelope` is clamped to 0 to 1). The parameters are those of the voice; the result is not clamped.
inline float voiceCutoff(double smoothedNote, float filKey, float filEnv, float cutoff, float envelope) {
    const float key = static_cast<float>((smoothedNote - 64.0) * (filKey - 0.5) * 0.0195);
    return key + (filEnv - 0.5f) * 2.0f * clampUnit(envelope) + cutoff;
}

}  // namespace vantoric::filters
