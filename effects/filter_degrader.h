// The sample-rate reducer: family 4 of an effect slot.
#pragma once

#include "effects/effect_tools.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class Filter {
public:
    Filter();

    // Silences the sums and the held samples; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family: 6 is "Degrader", others pass audio through.
    void setVariant(int variant);
    // Index 0 is the mix, 1 the rate; 2 to 4 do nothing, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Blocks of more than 16384
    // samples pass unchanged.
    void process(float* left, float* right, int count);

    // Samples that are averaged into one, 1 or more, for parameter 1 and a rate in Hz.
    static int factor(float p1, float sampleRate);

private:
    static constexpr int longestBlock = 16384;

    // What a channel remembers.
    struct Side {
        float sum = 0.0f, held = 0.0f;
    };

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 2;
    Side left_, right_;
    int counter_ = 0;
};

}  // namespace vantoric
