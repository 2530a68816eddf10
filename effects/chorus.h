// Chorus, flanger, phaser, rotary, vibrato, tremolo and unison effects: family 3 of an effect slot.
#pragma once

#include <array>

#include "base/random.h"
#include "effects/effect_tools.h"
#include "effects/ring.h"

namespace vantoric {

// Coefficient of the phasers' allpass stages at u, from 0 (1 / sampleRate) down to lower frequencies as u
// grows. From 44100 Hz on the law itself keeps the stages stable, at -1 and above; below it is held there.
float phaserCoefficient(float u, float sampleRate);

// Audio thread only. Nothing allocates after construction.
class Chorus {
public:
    explicit Chorus(RandomSources& random);

    // Silences delay lines and states and stops the walkers; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family; the type table lists those in use. A number not in use passes audio.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values held to 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Nothing happens for a
    // count of 0 or less.
    void process(float* left, float* right, int count);

private:
    using Line = Ring<float, 15>;

    struct Pair {
        float left, right;
    };
    struct PhaserChain {
        std::array<AllpassStage<float>, 16> stages{};
        float run(float x, int count, float a);
    };

    // One function a variant.
    void flanger(float* left, float* right, int count);
    void rotary(float* left, float* right, int count);
    void chorus(float* left, float* right, int count);
    void ensemble(float* left, float* right, int count);
    void phaser(float* left, float* right, int count);
    void phaserFeedback(float* left, float* right, int count, bool opposite);
    void stereoFlanger(float* left, float* right, int count);
    void chorusWhite(float* left, float* right, int count);
    void vibrato(float* left, float* right, int count, bool opposite);
    void tremolo(float* left, float* right, int count, bool opposite);
    void chorusStandard(float* left, float* right, int count);
    void hyperUnison(float* left, float* right, int count);
    void haas(float* left, float* right, int count);

    template <int size>
    Pair unisonTaps(float depth, float base, float u, float phase) const;
    template <int size>
    void unison(float* left, float* right, int count);

    void announce(int count);
    void advance() { position_ = (position_ + 1) & Line::mask; }
    void write(float left, float right) {
        ringA_[position_] = left;
        ringB_[position_] = right;
    }
    void moveWalker(int index, float speed, float randomFactor);

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 0;
    Line ringA_, ringB_, ringC_, ringD_;  // left, right; the high bands of the rotary cabinet
    int position_ = 0;                    // where all lines write
    float phase1_ = 0.0f, phase2_ = 0.0f, phase3_ = 0.0f;
    float lowLeft_ = 0.0f, lowRight_ = 0.0f;
    std::array<float, 4> walk_{}, slope_{};
    float feedbackLeft_ = 0.0f, feedbackRight_ = 0.0f;
    PhaserChain allpassLeft_, allpassRight_;
    RandomSources& random_;
};

}  // namespace vantoric
