// Compressor, gate and stereo placing: family 5 of an effect slot.
#pragma once

#include "effects/effect_tools.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class Stereo {
public:
    Stereo();

    // Silences delay lines and states; parameters, variant, rate and tempo stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // Position (quarter notes) and tempo of the song.
    void setTempo(double songPosition, double beatsPerMinute);
    // The effect of the family; the type table lists those in use.
    void setVariant(int variant);
    // Index 0 is the mix, 1 to 4 the parameters, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet.
    void process(float* left, float* right, int count);

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    double songPosition_ = 0.0;
    double tempo_ = 120.0;
    int variant_ = 0;
};

}  // namespace vantoric
