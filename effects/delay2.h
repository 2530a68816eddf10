// Delays in time with the song, resonator and gated reverbs: family 2 of an effect slot.
#pragma once

#include <array>

#include "base/lanes.h"
#include "base/random.h"
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

// Audio thread only. Nothing allocates after construction.
class Delay2 {
public:
    // The random source gives the hiss of the tape.
    explicit Delay2(RandomSources& random);

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // Tempo of the song. Delay times follow at once.
    void setTempo(float beatsPerMinute);
    // The effect of the family; the type table lists those in use. A number not in use passes audio.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values held to 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Nothing happens for a
    // count of 0 or less.
    void process(float* left, float* right, int count);

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

    // One function a variant.
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
    void advance() { position_ = (position_ + 1) & Line::mask; }

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    float tempo_ = 120.0f;
    int variant_ = 0;
    Line ringA_, ringB_, ringC_, ringD_;
    SmallLine diffuseE_, diffuseF_;
    int position_ = 0, position2_ = 0;
    std::array<SideState, 2> state_;
    std::array<float, 8> lfoPhase_{};
    std::array<AllpassStage<SideLanes>, 40> dispersion_{};
    RandomSources& random_;
};

}  // namespace vantoric
