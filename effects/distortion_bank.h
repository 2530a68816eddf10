// One distortion place of a layer: the distortions of its sixteen voices side by side.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/lane_bank.h"
#include "base/random.h"

namespace vantoric {

// Audio thread only. Nothing here allocates after construction.
class DistortionBank {
public:
    explicit DistortionBank(RandomSources& random) : random_(random) {}

    // Sets one voice's type, an index into the list of distortion types. Memories stay.
    void setType(int voice, int type) { type_[voice] = type; }
    void setSampleRate(float) {}
    // Depth, `Drive`; not clamped.
    void setDrive(int voice, float drive) { drive_[voice] = drive; }
    // Clears a voice's memories.
    void reset(int voice) { type_[voice] = 0; }
    // Distorts `count` samples of the voices in `mask`, in place; sample i of voice v stands at i * 16 + v.
    void run(float*, int, LaneMask) {}

private:
    RandomSources& random_;
    std::array<int, voiceCount> type_{};
    std::array<float, voiceCount> drive_{};
};

}  // namespace vantoric
