// What a voice's tick hands to its filter.
#pragma once

namespace vantoric {

struct FilterSettings {
    float sampleRate = 88200.0f;  // Hz
    int tickSamples = 88;         // samples until the next setup
    int type = 0;                 // index into the list of filter types; separators and indices past its end pass audio through
    float cutoff = 0.5f;          // 0 to 1; clamped
    float resonance = 0.5f;       // 0 to 1; clamped
    float analog = 0.0f;          // not clamped
};

}  // namespace vantoric
