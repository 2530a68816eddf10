// What a voice's tick hands to its filter.
#pragma once

#include "base/numbers.h"

namespace vantoric {

struct FilterSettings {
    float sampleRate = 88200.0f;  // Hz, a whole number
    int tickSamples = 88;         // samples until the next setup
    int type = 0;                 // index into the list of filter types; separators and indices past its end pass audio through
    float cutoff = 0.5f;          // 0 to 1; clamped
    float resonance = 0.5f;       // 0 to 1; clamped
    float analog = 0.0f;          // not clamped
};

// The cutoff that a voice passes on: Cutoff, moved by the glided note around key 64 and by the filter
// envelope (`envelope` is clamped to 0 to 1). The parameters are those of the voice; the result is not clamped.
inline float voiceCutoff(double smoothedNote, float filKey, float filEnv, float cutoff, float envelope) {
    const float key = static_cast<float>((smoothedNote - 64.0) * (filKey - 0.5) * 0.0195);
    return key + (filEnv - 0.5f) * 2.0f * clampUnit(envelope) + cutoff;
}

}  // namespace vantoric
