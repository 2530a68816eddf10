// The three-band equalizer: the master's own, and family 7 of an effect slot.
#pragma once

#include <array>

#include "base/lanes.h"
#include "effects/biquad_design.h"
#include "effects/effect_row.h"

namespace vantoric {

// Low shelf at 172 Hz, high shelf at 5500 Hz, peak with free frequency. Double precision inside, rounded
// to float after each band. A band whose value lies between 0.45 and 0.55 is not computed at all and keeps
// its memory. Audio thread only.
class Equalizer {
public:
    enum Band { low = 0, high = 1, mid = 2 };

    // The number of the effect within the family.
    enum class Variant : int { equalizer = 0 };

    Equalizer();

    // Each 0 to 1; 0.5 is flat. Acts at the next block.
    void setLowGain(float value) { lowGain_ = value; }
    void setMidGain(float value) { midGain_ = value; }
    void setMidFrequency(float value) { midFrequency_ = value; }
    void setHighGain(float value) { highGain_ = value; }
    // As an effect: 1 low gain, 2 mid gain, 3 mid frequency, 4 high gain. The mix, index 0, has no effect.
    void setParameter(int index, float value);

    // The family has one effect.
    void setVariant(int) {}

    // Hz, above 0. Computes all coefficients anew.
    void setSampleRate(double rate);
    // Clears the filter memory; the coefficients are computed anew at the next block.
    void reset();
    // Processes `count` samples in place. A block that would leave memory without finite numbers is
    // silenced and the memory cleared.
    void process(float* left, float* right, int count);

    // The coefficients of a band for the present values.
    BiquadCoefficients coefficients(Band band);

private:
    using Pair = Lanes<double, 2>;  // left, right
    struct Memory {
        Pair s1 = 0.0, s2 = 0.0, s3 = 0.0;
    };

    // What they show.
    struct Text {
        static constexpr auto decibels = [](float p) { return static_cast<float>(-10 + static_cast<int>(20.0f * p)); };
    };

public:
    using Row = EffectRow<Variant, void (Equalizer::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::equalizer;

    // One row an effect.
    // clang-format off
    static constexpr Row rows[] = {
        {20, "Equalizer", "Equalizer", Variant::equalizer, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, &Equalizer::process,
         {shown::number("Low gain %d dB", Text::decibels), shown::number("Mid gain %d dB", Text::decibels),
          shown::number("Mid freq %d Hz", [](float p) { return static_cast<float>(250 + static_cast<int>(4000.0f * p * p)); }),
          shown::number("High gain %d dB", Text::decibels)}},
    };
    // clang-format on

private:
    void update();
    template <bool Low, bool High, bool Mid>
    void run(float* left, float* right, int count);

    float lowGain_ = 0.5f, midGain_ = 0.5f, midFrequency_ = 0.5f, highGain_ = 0.5f;
    double sampleRate_ = 44100.0;
    std::array<BiquadCoefficients, 3> coefficients_;
    std::array<Memory, 3> memory_;
    // The values for which the coefficients stand; -1: none.
    double knownLow_ = -1.0, knownHigh_ = -1.0, knownMid_ = -1.0, knownFrequency_ = -1.0;
};

}  // namespace vantoric
