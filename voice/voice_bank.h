// The audio side of a layer's sixteen voices, lane = voice: from the oscillators' buffers through filters and
// distortions to the layer's stereo sum.
#pragma once

#include "base/lane_bank.h"
#include "effects/distortion_bank.h"
#include "sound/filter_bank.h"
#include "voice/oscillator_bank.h"
#include "voice/output_stage.h"

namespace vantoric {

// Audio thread only. Nothing here allocates after construction.
class VoiceBank {
public:
    explicit VoiceBank(RandomSources& random)
        : filters{FilterBank(random), FilterBank(random)}, distortions{DistortionBank(random), DistortionBank(random)} {}

    OscillatorBank oscillators;
    std::array<FilterBank, filterCount> filters;
    std::array<DistortionBank, filterCount> distortions;
    OutputStage output;

    // The first filter's input of voice v: its samples stand 16 apart, from this address on.
    float* input1(int voice) { return f1_ + voice; }

    // Whether a voice holds an analog oscillator: its filters are driven through a soft clip.
    void setAnalog(int voice, bool on) { analog_ = withBit(analog_, voice, on); }
    // Whether a voice's second filter hears the first one's output on top of its own input.
    void setSerial(int voice, bool on) { serial_ = withBit(serial_, voice, on); }
    // Clears a voice's filters, distortions, gains and buffers.
    void reset(int voice);

    // Mixes the oscillators of the voices in `mask` into the filters' inputs, `count` samples (1 to maxTickSamples).
    void mix(int count, LaneMask mask) { oscillators.mix(count, mask, f1_, f2_); }
    // Adds `count` samples (1 to maxTickSamples) of the voices in `mask` to left and right.
    void render(int count, LaneMask mask, float* left, float* right);

private:
    static LaneMask withBit(LaneMask mask, int voice, bool on) {
        const auto bit = static_cast<LaneMask>(1u << voice);
        return on ? static_cast<LaneMask>(mask | bit) : static_cast<LaneMask>(mask & ~bit);
    }

    alignas(64) LaneBuffer f1_ = {};
    alignas(64) LaneBuffer f2_ = {};
    LaneMask analog_ = 0;
    LaneMask serial_ = 0;
};

}  // namespace vantoric
