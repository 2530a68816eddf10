// Chorus, flanger, phaser, rotary, vibrato, tremolo and unison effects: family 3 of an effect slot.
#pragma once

#include <array>

#include "base/random.h"
#include "effects/effect_row.h"
#include "effects/effect_tools.h"
#include "effects/ring.h"

namespace vantoric {

// Coefficient of the phasers' allpass stages at u, from 0 (1 / sampleRate) down to lower frequencies as u
// grows. From 44100 Hz on the law itself keeps the stages stable, at -1 and above; below it is held there.
float phaserCoefficient(float u, float sampleRate);

// Family 3: whatever swings a short delay line, a chain of allpasses or the level. Audio thread only. Nothing
// allocates after construction.
class Chorus {
public:
    // The numbers of the effects within the family.
    enum class Variant : int {
        flanger = 2,
        rotary = 3,
        chorus = 7,
        ensemble = 8,
        phaser = 9,
        phaserFeedback = 10,
        phaserStereo = 11,
        stereoFlanger = 12,
        chorusWhite = 13,
        vibrato = 14,
        vibratoStereo = 15,
        tremolo = 16,
        tremoloStereo = 17,
        chorusStandard = 18,
        hyperUnison = 19,
        haas = 20,
    };

    explicit Chorus(RandomSources& random);

    // Silences delay lines and states and stops the walkers; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family by its Variant. A number not in use passes audio.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
    // The slow sweep of the rotary cabinet's speed steps once a call by its length, as at first (0), or whenever so many
    // samples have passed: then the sound does not depend on how it is cut into blocks.
    void setSweepStep(int samples) { sweepStep_ = samples; }
    // Index 0 is the mix, 1 to 4 the parameters, values held to 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Nothing happens for a
    // count of 0 or less.
    void process(float* left, float* right, int count);

    // Has the system map what a variant's lines use. Any thread, also while audio runs.
    void touchMemory(int variant);

private:
    using Line = Ring<float, 15>;

    struct Pair {
        float left, right;
    };
    struct PhaserChain {
        std::array<AllpassStage<float>, 16> stages{};
        float run(float x, int count, float a);
    };

    // One function an effect.
    void flanger(float* left, float* right, int count);
    void rotary(float* left, float* right, int count);
    void chorus(float* left, float* right, int count);
    void ensemble(float* left, float* right, int count);
    void phaser(float* left, float* right, int count);
    void phaserFeedback(float* left, float* right, int count);
    void phaserStereo(float* left, float* right, int count);
    void stereoFlanger(float* left, float* right, int count);
    void chorusWhite(float* left, float* right, int count);
    void vibrato(float* left, float* right, int count);
    void vibratoStereo(float* left, float* right, int count);
    void tremolo(float* left, float* right, int count);
    void tremoloStereo(float* left, float* right, int count);
    void chorusStandard(float* left, float* right, int count);
    void hyperUnison(float* left, float* right, int count);
    void haas(float* left, float* right, int count);

    void sweepRotors(int samples);
    void turnRotors(float* left, float* right, int count);
    void sweepPhaser(float* left, float* right, int count, bool opposite);
    void bendPitch(float* left, float* right, int count, bool opposite);
    void swellLevel(float* left, float* right, int count, bool opposite);
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

    // What they show.
    struct Text {
        static constexpr ParameterText none{};
        static constexpr ParameterText speed = shown::percent("Speed %d%%");
        static constexpr ParameterText depth = shown::percent("Depth %d%%");
        static constexpr ParameterText feedback = shown::percent("Feedback %d%%");
        static constexpr ParameterText center = shown::percent("Center %d%%");
        static constexpr ParameterText vibratoSpeed = shown::number("Speed %.1fHz", [](float p) { return p * p * 20.0f + 1.0f; });
        static constexpr ParameterText tremoloSpeed =
            shown::number("Speed %.1fHz", [](float p) { return p * p * 23.0f + 0.25f; });
        static constexpr ParameterText upTo16Stages =
            shown::number("Stages %d", [](float p) { return static_cast<float>(2 + 2 * static_cast<int>(p * 7.999f)); });
        static constexpr ParameterText upTo12Stages =
            shown::number("Stages %d", [](float p) { return static_cast<float>(2 + 2 * static_cast<int>(p * 5.999f)); });
        static constexpr ParameterText unisonVoices =
            shown::number("Unison %d", [](float p) { return static_cast<float>(3 + 2 * static_cast<int>(p * 3.999f)); });
        static constexpr const char* sides[] = {"Left", "Right"};
        static constexpr ParameterText delayedSide = shown::oneOf(sides, "%s", [](float p) { return p < 0.5f ? 0.0f : 1.0f; });
    };

public:
    using Row = EffectRow<Variant, void (Chorus::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::modulation;

    // One row an effect. Lines: A and B, of the rotary C and D too.
    // clang-format off
    static constexpr Row rows[] = {
        {11, "Chorus", "Chorus", Variant::chorus, {0.5f, 0.2f, 0.16f, 0.5f, 0.5f}, &Chorus::chorus,
         {Text::speed, Text::depth, Text::none, Text::none}, {2}},
        {12, "Ensemble", "Ensemble", Variant::ensemble, {1.0f, 0.3f, 0.25f, 0.5f, 0.5f}, &Chorus::ensemble,
         {Text::speed, Text::depth, Text::none, Text::none}, {2}},
        {13, "Phaser", "Phaser", Variant::phaser, {1.0f, 0.25f, 0.85f, 0.45f, 0.75f}, &Chorus::phaser,
         {Text::speed, Text::depth, Text::upTo16Stages, Text::center}},
        {14, "Flanger", "Flanger", Variant::flanger, {1.0f, 0.25f, 1.0f, 0.5f, 0.98f}, &Chorus::flanger,
         {Text::speed, Text::depth, Text::feedback, Text::center}, {2}},
        {15, "Rotary", "Rotary", Variant::rotary, {1.0f, 0.5f, 0.66f, 0.5f, 0.5f}, &Chorus::rotary,
         {Text::speed, Text::depth, shown::percent("Modspeed %d%%"), shown::percent("Moddepth %d%%")}, {4}},
        {32, "Chorus White", "Smart Unison", Variant::chorusWhite, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::chorusWhite,
         {Text::speed, shown::percent("Detune %d%%"), Text::feedback, Text::none}, {2}},
        {33, "Phaser FB", "Phaser FB", Variant::phaserFeedback, {1.0f, 0.5f, 0.5f, 0.5f, 0.88f}, &Chorus::phaserFeedback,
         {Text::speed, Text::depth, Text::upTo12Stages, shown::bipolar("Feedback %d%%")}},
        {34, "Phaser Stereo ", "Phaser Stereo ", Variant::phaserStereo, {1.0f, 0.5f, 0.5f, 0.5f, 0.88f}, &Chorus::phaserStereo,
         {Text::speed, Text::depth, Text::upTo12Stages, shown::bipolar("Feedback %d%%")}},
        {35, "Vibrato", "Vibrato", Variant::vibrato, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::vibrato,
         {Text::vibratoSpeed, Text::depth, Text::none, Text::none}, {2}},
        {36, "Vibrato Stereo", "Vibrato Stereo", Variant::vibratoStereo, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::vibratoStereo,
         {Text::vibratoSpeed, Text::depth, Text::none, Text::none}, {2}},
        {37, "Tremolo", "Tremolo", Variant::tremolo, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::tremolo,
         {Text::tremoloSpeed, Text::none, Text::none, Text::none}},
        {38, "Tremolo Stereo", "Tremolo Stereo", Variant::tremoloStereo, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::tremoloStereo,
         {Text::tremoloSpeed, Text::none, Text::none, Text::none}},
        {65, "Chorus Standard", "Chorus 2", Variant::chorusStandard, {0.5f, 0.5f, 0.5f, 0.5f, 0.5f}, &Chorus::chorusStandard,
         {Text::speed, Text::depth, Text::none, Text::none}, {2}},
        {66, "Stereo Flanger", "Stereo Flanger", Variant::stereoFlanger, {1.0f, 0.33f, 0.5f, 0.7f, 0.5f}, &Chorus::stereoFlanger,
         {Text::speed, Text::depth, Text::feedback, Text::none}, {2}},
        {75, "Hyper Unison", "Hyper", Variant::hyperUnison, {1.0f, 0.5f, 0.5f, 0.167f, 1.0f}, &Chorus::hyperUnison,
         {shown::percent("Spread %d%%"), Text::unisonVoices,
          shown::number("Speed %.1fHz", [](float p) { return p * 3.6f + 0.4f; }), shown::percent("Stereo width %d%%")}, {2}},
        {76, "Haas Effect", "Haas Effect", Variant::haas, {1.0f, 0.5f, 0.0f, 0.5f, 0.5f}, &Chorus::haas,
         {shown::number("Delay %dms", [](float p) { return p * 40.0f; }), Text::delayedSide, Text::none, Text::none}, {2}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    const Row* row_ = nullptr;
    Line ringA_, ringB_, ringC_, ringD_;  // left, right; the high bands of the rotary cabinet
    int position_ = 0;                    // where all lines write
    float phase1_ = 0.0f, phase2_ = 0.0f, phase3_ = 0.0f;
    int sweepStep_ = 0, sweepLeft_ = 0;  // of phase 3, in samples; those until the next step
    float lowLeft_ = 0.0f, lowRight_ = 0.0f;
    std::array<float, 4> walk_{}, slope_{};
    float feedbackLeft_ = 0.0f, feedbackRight_ = 0.0f;
    PhaserChain allpassLeft_, allpassRight_;
    RandomSources& random_;
};

}  // namespace vantoric
