// Delays in time with the song, resonator and gated reverbs: family 2 of an effect slot.
#pragma once

#include <array>

#include "base/lanes.h"
#include "base/random.h"
#include "effects/effect_row.h"
#include "effects/effect_tools.h"
#include "effects/ring.h"

namespace vantoric {

// Position in the list of twelve notes that a parameter of 0 to 1 selects, and the notes in beats.
int noteIndex(float p);
extern const std::array<float, 12> noteBeats;

// Length in samples of the note that p selects. Held to 0 to 2^27, also for a tempo of 0 or NaN.
int noteSamples(float p, float sampleRate, float beatsPerMinute);

// Levels of the eight steps of a Multitap pattern.
struct MultitapPattern {
    std::array<float, 8> left, right;
};
extern const std::array<MultitapPattern, 20> multitapPatterns;

// Family 2: every effect that repeats its input after a note or a time. Audio thread only. Nothing allocates after
// construction.
class Delay2 {
public:
    // The numbers of the effects within the family.
    enum class Variant : int {
        delay = 0,
        pingPong = 1,
        delayBand = 2,
        multitap = 3,
        echo = 4,
        delayDual = 5,
        delayDiffuse = 6,
        tapeDelay = 7,
        resonator = 8,
        delayFat = 9,
        reflections = 10,
        delayWide = 11,
        reverbGated = 12,
        reverbGatedEcho = 13,
        reverbReverse = 14,
    };

    // The random source gives the hiss of the tape.
    explicit Delay2(RandomSources& random);

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // Tempo of the song. Delay times follow at once.
    void setTempo(float beatsPerMinute);
    // The effect of the family by its Variant. A number not in use passes audio.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
    // Index 0 is the mix, 1 to 4 the parameters, values held to 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Nothing happens for a
    // count of 0 or less.
    void process(float* left, float* right, int count);

    // Has the system map what a variant's lines use. Any thread, also while audio runs.
    void touchMemory(int variant);

    // The taps of the gated and reverse reverbs at the present settings: distances in samples of tap 1 to
    // `count` (tap 0 does not sound).
    struct GatedTaps {
        int count = 0;
        std::array<std::array<int, 17>, 2> distance{};  // left, right
    };
    GatedTaps gatedTaps() const;

private:
    using Line = Ring<float, 18>;
    using SmallLine = Ring<float, 16>;
    using Sides = std::array<float*, 2>;  // left, right
    using SideLanes = Lanes<float, 4>;    // left, right, two idle lanes

    // A piece of a block on its way through the gated types.
    static constexpr int chunk = 64;
    struct alignas(16) Chunk {
        std::array<std::array<float, 4>, chunk> samples{};
    };

    // What one side of a delay remembers besides its line.
    struct SideState {
        OnePole<float> low, low2, cut;
        float feedback = 0.0f;
    };
    // Four half-gain allpass rings in series, two a side.
    struct Diffuser {
        int unit;
        float step(Delay2& delay, int side, float x) const;
    };

    // One function an effect; the gated and reverse reverbs share one.
    void delay(Sides io, int count);
    void pingPong(Sides io, int count);
    void delayBand(Sides io, int count);
    void multitap(Sides io, int count);
    void echo(Sides io, int count);
    void delayDual(Sides io, int count);
    void delayDiffuse(Sides io, int count);
    void tapeDelay(Sides io, int count);
    void resonator(Sides io, int count);
    void delayFat(Sides io, int count);
    void reflections(Sides io, int count);
    void delayWide(Sides io, int count);
    void reverbGated(Sides io, int count);

    Line& line(int side) { return side == 0 ? ringA_ : ringB_; }
    int note(float p) const { return noteSamples(p, sampleRate_, tempo_); }
    int wideNote(float p) const;
    float damping(float frequency) const { return quickDamping(frequency, sampleRate_); }
    float sweptDamping(float p) const;
    float lineDamping() const;
    void announceDiffuser(int count);
    void disperse(Chunk& x, int count, float c);
    bool is(Variant variant) const { return row_ != nullptr && row_->variant == variant; }
    void advance() { position_ = (position_ + 1) & Line::mask; }

    // What they show.
    struct Text {
        static constexpr const char* notes[] = {"1/8", "3/16", "1/4", "1/3", "3/8", "1/2", "2/3", "3/4", "1", "4/3", "3/2", "2"};
        static constexpr const char* tapTimes[] = {"1/8", "1/4", "1/2", "1", "2"};
        static constexpr const char* tapPatterns[] = {"C_C_",  "C_R_C_L_", "C_CC",           "C_LR",           "CCC_",
                                                      "CLR_",  "C__C",     "L__R",           "Dotted 1",       "Dotted 2",
                                                      "Fall",  "Fall LR",  "Fall and raise", "Raise and fall", "Reverse",
                                                      "Pan 1", "Pan 2",    "Pingpong echo1", "Pingpong echo2", "Chaos"};
        static constexpr auto noteNumber = [](float p) { return p * 11.99f; };
        static constexpr auto milliseconds = [](float p) { return p * p * 1000.0f; };
        static constexpr ParameterText none{},
            feedback = shown::percent("Feedback %d%%"), damp = shown::percent("Damp %d%%"),
            highDamp = shown::percent("High Damp %d%%"), lowDamp = shown::percent("Low Damp %d%%"),
            detune = shown::percent("Detune %d%%"), diffuse = shown::percent("Diffuse %d%%"),
            gatedDamp = shown::percent("Hi Damp %.1f"), gatedCut = shown::percent("Low cut %.1f");
        static constexpr ParameterText time = shown::oneOf(notes, "Time %s", noteNumber),
                                       leftTime = shown::oneOf(notes, "Left %s", noteNumber),
                                       rightTime = shown::oneOf(notes, "Right %s", noteNumber);
        static constexpr ParameterText tapTime = shown::oneOf(tapTimes, "Time %s", [](float p) { return p * 4.99f; }),
                                       tapPattern = shown::oneOf(tapPatterns, "%s", [](float p) { return p * 19.99f; });
    };

public:
    using Row = EffectRow<Variant, void (Delay2::*)(Sides io, int count)>;
    static constexpr EffectFamily family = EffectFamily::delay;

    // One row an effect. Lines: A to D; the short ones are the diffuser's, two of which lie in C and D.
    // clang-format off
    static constexpr Row rows[] = {
        {6, "Delay", "Delay", Variant::delay, {0.5f, 0.7f, 0.5f, 0.25f, 0.5f}, &Delay2::delay,
         {Text::time, Text::feedback, Text::damp, Text::detune}, {2}},
        {7, "Delay Band", "PingPong", Variant::delayBand, {0.5f, 0.7f, 0.66f, 0.7f, 0.5f}, &Delay2::delayBand,
         {Text::time, Text::feedback, shown::percent("Frequency %d%%"), Text::detune}, {2}},
        {8, "PingPong", "PingPong Band", Variant::pingPong, {0.5f, 0.5f, 0.5f, 0.4f, 0.33f}, &Delay2::pingPong,
         {Text::time, Text::feedback, Text::damp, Text::detune}, {4}},
        {9, "Multitap", "Multitap", Variant::multitap, {0.5f, 0.5f, 0.5f, 0.5f, 0.35f}, &Delay2::multitap,
         {Text::tapTime, Text::feedback, Text::tapPattern, Text::detune}, {4}},
        {43, "Delay Wide", "Delay wide", Variant::delayWide, {0.4f, 0.5f, 0.5f, 0.5f, 0.25f}, &Delay2::delayWide,
         {Text::time, Text::feedback, shown::percent("Hi Damp %d%%"), Text::lowDamp}, {3}},
        {44, "Delay Fat", "Delay Fat", Variant::delayFat, {0.5f, 0.5f, 0.25f, 0.125f, 0.5f}, &Delay2::delayFat,
         {Text::time, Text::highDamp, Text::lowDamp, Text::detune}, {2}},
        {45, "Delay Diffuse", "Delay Diffuse", Variant::delayDiffuse, {0.4f, 0.5f, 0.5f, 0.0f, 0.5f}, &Delay2::delayDiffuse,
         {Text::time, Text::feedback, Text::damp, Text::detune}, {2, true}},
        {46, "Delay Dual", "Delay Dual", Variant::delayDual, {0.4f, 0.7f, 0.5f, 0.5f, 0.5f}, &Delay2::delayDual,
         {Text::leftTime, Text::rightTime, Text::damp, Text::feedback}, {2}},
        {47, "Tape Delay", "Tape Delay", Variant::tapeDelay, {0.5f, 0.68f, 0.5f, 0.4f, 0.35f}, &Delay2::tapeDelay,
         {Text::time, shown::number("Feedback %d%%", [](float p) { return p * 150.0f; }), shown::percent("Noise %d%%"),
          shown::percent("Tape Wow %d%%")}, {2}},
        {48, "Echo", "Echo", Variant::echo, {0.3f, 0.495f, 0.505f, 0.5f, 0.5f}, &Delay2::echo,
         {shown::number("Left %dms", Text::milliseconds), shown::number("Right %dms", Text::milliseconds), Text::damp,
          shown::bipolar("Feedback %d%%")}, {2}},
        {49, "Resonator", "Resonator", Variant::resonator, {0.4f, 0.25f, 0.95f, 0.25f, 0.25f}, &Delay2::resonator,
         {shown::number("Time %dms", Text::milliseconds), shown::bipolar("Feedback %d%%"), Text::highDamp, Text::lowDamp}, {2}},
        {50, "Reflections", "Reflections", Variant::reflections, {0.5f, 0.3f, 1.0f, 0.25f, 0.5f}, &Delay2::reflections,
         {shown::percent("Size %d"), Text::diffuse, Text::damp, Text::none}, {4}},
        {71, "Reverb Gated", "Reverb Gated", Variant::reverbGated, {0.35f, 0.7f, 1.0f, 0.5f, 0.25f}, &Delay2::reverbGated,
         {Text::time, Text::diffuse, Text::gatedDamp, Text::gatedCut}, {2, true}},
        {72, "Reverb Gated Echo", "Reverb Gated Echo", Variant::reverbGatedEcho, {0.35f, 0.7f, 0.8f, 0.6f, 0.25f}, &Delay2::reverbGated,
         {Text::time, Text::diffuse, Text::gatedDamp, Text::gatedCut}, {2, true}},
        {73, "Reverb Reverse", "Reverb Reverse", Variant::reverbReverse, {0.4f, 1.0f, 1.0f, 0.25f, 0.2f}, &Delay2::reverbGated,
         {Text::time, Text::diffuse, Text::gatedDamp, Text::gatedCut}, {2, true}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    float tempo_ = 120.0f;
    const Row* row_ = rows;
    Line ringA_, ringB_, ringC_, ringD_;
    SmallLine diffuseE_, diffuseF_;
    int position_ = 0, position2_ = 0;
    std::array<SideState, 2> state_;
    std::array<float, 8> lfoPhase_{};
    std::array<AllpassStage<SideLanes>, 40> dispersion_{};
    RandomSources& random_;
};

}  // namespace vantoric
