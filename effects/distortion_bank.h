// One distortion place of a layer: the distortions of its sixteen voices side by side.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/lane_bank.h"
#include "base/random.h"
#include "effects/voice_distortions.h"

namespace vantoric {

// Audio thread only. Nothing here allocates after construction.
class DistortionBank {
public:
    explicit DistortionBank(RandomSources& random) : random_(random) {}

    // Sets one voice's type, an index into the list of distortion types; others pass audio through. Memories
    // stay. voice: 0 to 15, here and below.
    void setType(int voice, int type) { variant_[voice] = distortionVariant(type); }
    // Hz, above 0.
    void setSampleRate(float rate) { sampleRate_ = rate; }
    // Depth, `Drive`; not clamped, NaN reads as 0.
    void setDrive(int voice, float drive) { drive_[voice] = drive == drive ? drive : 0.0f; }
    // Clears a voice's memories; its type and depth stay.
    void reset(int voice) { memory_.put(voice, {}); }
    // Distorts `count` samples (0 to maxTickSamples) of the voices in `mask`, in place; sample i of voice v
    // stands at i * 16 + v, and the samples of silent voices may be overwritten. Random draws are those of one
    // voice after another. A voice whose memory stops being finite is cleared and silent for this run.
    void run(float* buffer, int count, LaneMask mask);

private:
    template <class Which>
    void runType(float* buffer, int count, LaneMask group, LaneMask mask);
    template <int N, class Which>
    void runLanes(float* buffer, int count, int first, LaneMask group, LaneMask mask);
    LaneMask membersOf(int variant, LaneMask mask) const;
    void dealRandom(int count, LaneMask mask);
    void silence(float* buffer, int count, LaneMask broken);

    RandomSources& random_;
    const ShaperTaps& low_ = halfBand();
    LaneBank<DistortionMemory> memory_;
    std::array<int, voiceCount> variant_{};
    std::array<float, voiceCount> drive_{};
    std::array<std::uint32_t, voiceCount> seed_{};  // of the present run
    float sampleRate_ = 88200.0f;
};

}  // namespace vantoric
