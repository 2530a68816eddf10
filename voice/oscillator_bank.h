// The oscillators' audio of a layer's sixteen voices between kernels and filters: buffers, tone stages and mix.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/lane_bank.h"
#include "sound/kernel_batch.h"
#include "sound/oscillator_control.h"
#include "sound/tone_stages.h"

namespace vantoric {

// Kernels and tone stages of the voices of several layers, gathered so that they run side by side.
class OscillatorRuns {
public:
    // The arguments, those of KernelBatch, must outlive it.
    OscillatorRuns(const EngineState& engine, const WaveStore& waves, RandomSources& random, int count)
        : kernels_{KernelBatch(engine, waves, random, count), KernelBatch(engine, waves, random, count),
                   KernelBatch(engine, waves, random, count)},
          count_(count) {}

    // Where the kernel of an oscillator (0 to 2) goes: one that hears the oscillator before runs after that one's tone stage.
    KernelBatch& kernels(int oscillator, bool hearsPrevious) { return kernels_[hearsPrevious ? oscillator : 0]; }
    // Adds an oscillator's tone stage; those that no next oscillator hears run last.
    void addTone(const ToneRun& run, int oscillator, bool nextHears) {
        Tones& tones = tones_[nextHears ? oscillator : oscillatorCount - 1];
        tones.runs[static_cast<std::size_t>(tones.count++)] = run;
    }
    // Runs all that was added.
    void run() {
        for (int i = 0; i < oscillatorCount; ++i) {
            kernels_[i].render();
            toneStages({tones_[i].runs.data(), static_cast<std::size_t>(tones_[i].count)}, count_);
        }
    }

private:
    struct Tones {
        std::array<ToneRun, KernelBatch::capacity> runs;
        int count = 0;
    };

    std::array<KernelBatch, oscillatorCount> kernels_;
    std::array<Tones, oscillatorCount> tones_;
    int count_;
};

// Audio thread only. Nothing here allocates. voice: 0 to 15, oscillator: 0 to 2.
class OscillatorBank {
public:
    using Buffer = std::array<std::int16_t, maxTickSamples>;

    Buffer& buffer(int voice, int oscillator) { return buffers_[voice][oscillator]; }

    // What a tick derives: gains into the filters, and the tone stage.
    void setMix(int voice, int oscillator, const MixGains& gains) { mix_[voice][oscillator] = gains; }
    void setTone(int voice, int oscillator, int coefficient, const ToneGains& gains) {
        tones_[voice][oscillator].coefficient = coefficient;
        tones_[voice][oscillator].gains = gains;
    }
    // The tone stage of a new note forgets.
    void clearTone(int voice, int oscillator) { tones_[voice][oscillator].state = 0; }
    // Clears a voice: silent buffers, no gains.
    void reset(int voice);

    // Whether the tone stage is heard, and the run of it over the oscillator's buffer.
    bool toneIsHeard(int voice, int oscillator) const { return tones_[voice][oscillator].gains.isHeard(); }
    ToneRun toneRun(int voice, int oscillator) {
        Tone& tone = tones_[voice][oscillator];
        return {buffers_[voice][oscillator].data(), &tone.state, tone.coefficient, tone.gains};
    }

    // Mixes `count` samples (1 to maxTickSamples) of the voices in `mask` into their lanes of the two filters' inputs,
    // once the tone stages have run. Lanes between them are silenced.
    void mix(int count, LaneMask mask, float* input1, float* input2) const;

private:
    struct Tone {
        std::int32_t state = 0;
        int coefficient = 0;
        ToneGains gains{};
    };
    template <class T>
    using PerOscillator = std::array<std::array<T, oscillatorCount>, voiceCount>;

    alignas(64) PerOscillator<Buffer> buffers_{};
    PerOscillator<MixGains> mix_{};
    PerOscillator<Tone> tones_{};
};

}  // namespace vantoric
