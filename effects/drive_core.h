// Drives, clippers, amplifiers and noise: family 6 of an effect slot.
#pragma once

#include <array>

#include "base/random.h"
#include "effects/drive_shapes.h"
#include "effects/effect_tools.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class DriveCore {
public:
    explicit DriveCore(RandomSources& random);

    // Silences filters and states; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family; the type table lists those in use. Others pass audio through.
    void setVariant(int variant);
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
    void clip(float* left, float* right, int count);
    void tubeAmp(Side& side, float* buffer, int count) const;
    void ampSim(Side& side, float* buffer, int count) const;
    void multiband(Side& side, float* buffer, int count) const;
    void noise(float* left, float* right, int count);

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 2;
    const ShaperTaps& low_ = halfBand();
    RandomSources& random_;
    Side left_, right_;
    PinkSums pink_;
    float humPhase_ = 0.0f;
};

}  // namespace vantoric
