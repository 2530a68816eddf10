// Reverbs: family 1 of an effect slot.
#pragma once

#include "effects/effect_tools.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class ReverbCore {
public:
    ReverbCore();

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family; the type table lists those in use.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet.
    void process(float* left, float* right, int count);

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 0;
};

}  // namespace vantoric
