// Drives, clippers, amplifiers and noise: family 6 of an effect slot.
#pragma once

#include <array>

#include "base/random.h"
#include "effects/drive_shapes.h"
#include "effects/effect_row.h"
#include "effects/effect_tools.h"

namespace vantoric {

// Family 6: every effect that bends the wave or adds to it, with no memory to speak of. Audio thread only. Nothing allocates
// after construction.
class DriveCore {
public:
    // The numbers of the effects within the family.
    enum class Variant : int {
        tubeAmp = 2,
        ampSim = 12,
        noise = 13,
        softClip = 14,
        rectify = 16,
        warp = 17,
        waveshape = 18,
        ripple = 19,
        hardClip = 21,
        bitcrush = 22,
        saturate = 24,
        multibandDist = 25,
    };

    explicit DriveCore(RandomSources& random);

    // Silences filters and states; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family by its Variant. Numbers not in use pass audio through.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. "Amp Sim" passes blocks of
    // more than 256 samples unchanged.
    void process(float* left, float* right, int count);

    // The coefficient of the "Multiband Dist" split, 0 to 1, for its parameter 2 and a rate in Hz.
    static float splitCoefficient(float p2, float sampleRate);

private:
    static constexpr int stretch = 64;  // samples taken at a time by the oversampled shapers
    static constexpr int ampBlock = 256;

    // What a channel remembers.
    struct Side {
        std::array<float, shaperTaps - 1> inputs;  // of the low-pass, oldest first
        std::array<float, 3> line;                 // values before the four points, oldest first
        float highPass, lowPass, fourPass, bass;   // one-poles of "Amp Sim"
        float tube;                                // state of "Tube Amp"
        float low, band;                           // split of "Multiband Dist"
    };

    template <class Shaper>
    void shape(float* left, float* right, int count, const Shaper& shaper);
    template <class Shaper>
    void shapeSide(Side& side, float* buffer, int count, const Shaper& shaper) const;
    void tubeAmpSide(Side& side, float* buffer, int count) const;
    void ampSimSide(Side& side, float* buffer, int count) const;
    void multibandSide(Side& side, float* buffer, int count) const;

    // One function an effect.
    void tubeAmp(float* left, float* right, int count);
    void ampSim(float* left, float* right, int count);
    void noise(float* left, float* right, int count);
    void softClip(float* left, float* right, int count);
    void rectify(float* left, float* right, int count);
    void warp(float* left, float* right, int count);
    void waveshape(float* left, float* right, int count);
    void ripple(float* left, float* right, int count);
    void hardClip(float* left, float* right, int count);
    void bitcrush(float* left, float* right, int count);
    void saturate(float* left, float* right, int count);
    void multibandDist(float* left, float* right, int count);

    // What they show.
    struct Text {
        static constexpr ParameterText none{}, drive = shown::percent("Drive %d%%"), postamp = shown::percent("Postamp %d%%");
    };

public:
    using Row = EffectRow<Variant, void (DriveCore::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::drive;

    // One row an effect.
    // clang-format off
    static constexpr Row rows[] = {
        {19, "Tube Amp", "Tube Amp", Variant::tubeAmp, {1.0f, 1.0f, 0.5f, 0.5f, 0.5f}, &DriveCore::tubeAmp,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {52, "Saturate", "Saturate", Variant::saturate, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::saturate,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {53, "Soft Clip", "Soft Clip", Variant::softClip, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::softClip,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {54, "Hard Clip", "Hard Clip", Variant::hardClip, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::hardClip,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {55, "Recitify", "Recitify", Variant::rectify, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::rectify,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {56, "Bitcrush", "Bitcrush", Variant::bitcrush, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::bitcrush,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {57, "Warp", "Warp", Variant::warp, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::warp,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {58, "Waveshape", "Waveshape", Variant::waveshape, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::waveshape,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {59, "Ripple", "Ripple", Variant::ripple, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::ripple,
         {Text::drive, Text::postamp, Text::none, Text::none}},
        {60, "Amp Sim", "Amp Sim", Variant::ampSim, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &DriveCore::ampSim,
         {Text::drive, shown::percent("Pre Damp %d%%"), shown::number("Bass +%ddB", [](float p) { return p * 12.0f; }),
          Text::none}},
        {61, "Multiband Dist", "Multiband Dist", Variant::multibandDist, {1.0f, 0.75f, 0.5f, 0.5f, 0.5f}, &DriveCore::multibandDist,
         {Text::drive, shown::percent("Frequency %d%%"), shown::percent("Balance %d%%"), Text::none}},
        {64, "Noise", "Noise", Variant::noise, {1.0f, 0.2f, 0.0f, 0.0f, 0.0f}, &DriveCore::noise,
         {shown::percent("White %d%%"), shown::percent("Pink %d%%"), shown::percent("Crackle %d%%"),
          shown::percent("Humm %d%%")}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    const Row* row_ = rowOf(rows, 2);
    const ShaperTaps& low_ = halfBand();
    RandomSources& random_;
    Side left_, right_;
    PinkSums pink_;
    float humPhase_ = 0.0f;
};

}  // namespace vantoric
