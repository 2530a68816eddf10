// The audio side of a layer's sixteen voices, lane = voice: from the oscillators' buffers through filters and
// distortions to the layer's stereo sum.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "base/lane_bank.h"
#include "effects/distortion_bank.h"
#include "sound/filter_bank.h"
#include "sound/filter_rack.h"
#include "voice/oscillator_bank.h"
#include "voice/output_stage.h"

namespace vantoric {

// Where a layer may draw random numbers while it renders, in the order in which a layer alone comes to it.
enum class DrawStage : std::int8_t { oscillators, filter1, distortion1, filter2, distortion2, inserts };

// The first and the last of them.
class DrawStages {
public:
    void add(DrawStage stage) {
        first_ = std::min(first_, static_cast<int>(stage));
        last_ = std::max(last_, static_cast<int>(stage));
    }
    void add(const DrawStages& other) {
        first_ = std::min(first_, other.first_);
        last_ = std::max(last_, other.last_);
    }
    // Whether these draws all come before those of `next` where both run stage by stage.
    bool before(const DrawStages& next) const { return last_ <= next.first_; }

private:
    int first_ = 1000, last_ = -1;  // none
};

// Whether a distortion type (list index) may draw random numbers.
bool distortionMayDraw(int type);

class VoiceBank;

// What one bank renders: the voices of `mask`, added to left and right.
struct BankRun {
    VoiceBank* bank = nullptr;
    LaneMask mask = 0;
    float *left = nullptr, *right = nullptr;
};

// VoiceBank::render of several banks (up to layerCount), each filter beside those of the others: where few voices sound, a
// filter mostly waits for itself.
void renderBanks(std::span<const BankRun> runs, int count);

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
    // The types of a voice's filter or distortion (place 0 or 1), as list indices, once they are set up.
    void noteFilterType(int place, int voice, int type) {
        filterDraws_[place] = withBit(filterDraws_[place], voice, filters::mayDraw(type));
    }
    void noteDistortionType(int place, int voice, int type) {
        distortionDraws_[place] = withBit(distortionDraws_[place], voice, distortionMayDraw(type));
    }
    // Where the voices of `mask` may draw behind their oscillators.
    DrawStages drawStages(LaneMask mask) const;
    // Clears a voice's filters, distortions, gains and buffers.
    void reset(int voice);

    // Mixes the oscillators of the voices in `mask` into the filters' inputs, `count` samples (1 to maxTickSamples).
    void mix(int count, LaneMask mask) { oscillators.mix(count, mask, f1_, f2_); }
    // Adds `count` samples (1 to maxTickSamples) of the voices in `mask`, as mixed, to left and right.
    void render(int count, LaneMask mask, float* left, float* right);

private:
    friend void renderBanks(std::span<const BankRun> runs, int count);

    FilterPlace place(int which, LaneMask mask) { return {&filters[which], which == 0 ? f1_ : f2_, mask}; }
    bool filterDraws(int which, LaneMask mask) const { return (filterDraws_[which] & mask) != 0; }
    void clipInputs(int count, LaneMask mask);
    void joinSerial(int count, LaneMask mask);
    void scaleOutputs(int count, LaneMask mask);

    static LaneMask withBit(LaneMask mask, int voice, bool on) {
        const auto bit = static_cast<LaneMask>(1u << voice);
        return on ? static_cast<LaneMask>(mask | bit) : static_cast<LaneMask>(mask & ~bit);
    }

    FilterRack rack_;  // in which the filters run; of several banks, the first one's
    alignas(64) LaneBuffer f1_ = {};
    alignas(64) LaneBuffer f2_ = {};
    LaneMask analog_ = 0;
    LaneMask serial_ = 0;
    std::array<LaneMask, filterCount> filterDraws_{}, distortionDraws_{};
};

}  // namespace vantoric
