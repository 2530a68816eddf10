// One filter place of a layer: the filters of its sixteen voices side by side.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/lane_bank.h"
#include "base/random.h"

namespace vantoric {

// What a voice's tick hands to its filter.
struct FilterSettings {
    float sampleRate = 88200.0f;  // Hz
    int tickSamples = 88;         // samples until the next setup
    int type = 0;                 // index into the list of filter types
    float cutoff = 0.5f;          // 0 to 1; clamped
    float resonance = 0.5f;       // 0 to 1; clamped
    float analog = 0.0f;          // not clamped
};

// Audio thread only. Nothing here allocates after construction.
class FilterBank {
public:
    explicit FilterBank(RandomSources& random) : random_(random) {}

    // Takes the settings of one voice (0 to 15) for the samples up to its next setup.
    void setup(int voice, const FilterSettings& settings) { type_[voice] = settings.type; }
    // Clears what a voice's filter remembers between notes, as its type asks for.
    void reset(int) {}
    // Clears a voice's filter altogether and sets it to pass audio through.
    void clear(int voice) { type_[voice] = 0; }
    // Filters `count` samples (up to maxTickSamples) of the voices in `mask`, in place; sample i of voice v
    // stands at i * 16 + v.
    void run(float*, int, LaneMask) {}

private:
    RandomSources& random_;
    std::array<int, voiceCount> type_{};
};

}  // namespace vantoric
