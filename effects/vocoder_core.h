// Channel vocoders, left channel speech, right channel carrier: family 8 of an effect slot.
#pragma once

#include <array>

#include "effects/effect_tools.h"
#include "effects/vocoder_bands.h"

namespace vantoric {

// Audio thread only. Nothing allocates after construction.
class VocoderCore {
public:
    static constexpr int maxBands = 20;
    static constexpr int maxBlock = 16384;

    // A section of a band: y = b0 x + b1 x1 + b2 x2 + a1 y1 + a2 y2.
    struct Coefficients {
        float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, a1 = 0.0f, a2 = 0.0f;
    };

    // Silences the filters and followers of all bands; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // 2: twelve bands. 4: twenty bands. 5: twenty bands without gate and compressor. Others pass audio through.
    void setVariant(int variant);
    // Index 0 is the mix, 1 formant, 2 stereo, 3 compressor, 4 gate, values 0 to 1; other indices are ignored.
    void setParameter(int index, float value);
    // Processes `count` samples in place and does its own blending of dry and wet. Blocks of more than
    // maxBlock samples pass unchanged.
    void process(float* left, float* right, int count);

    // The number of bands of the present variant: 12, 20 or 0.
    int bands() const;
    // Of a band, 0 to bands() - 1, for the present settings: the sections of the speech and of the carrier side,
    // the gain that the twenty-band forms give it, and how loud the speech in it was at the last sample.
    Coefficients analysis(int band);
    Coefficients synthesis(int band);
    float bandGain(int band);
    float follower(int band) const;

private:
    static constexpr int stretch = 32;  // samples that all bands take before the next are looked at
    using Group = Lanes<float, 4>;      // neighbouring bands
    static constexpr int groupSize = 4;
    using Levels = float[stretch][maxBands];

    void update();
    template <int Groups, bool Gated>
    void run(float* left, float* right, int count);
    void analyse(int group, const float* speech, Levels& levels, int count);
    template <int Bands>
    void compress(Levels& levels, int count) const;
    void synthesise(int group, const float* carrier, Levels& levels, int count);
    template <int Bands>
    void mix(const Levels& bands, float* left, float* right, int count) const;

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    int variant_ = 0;
    std::array<BandAnalysis<Group>, maxBands / groupSize> analysis_;
    std::array<BandSynthesis<Group>, maxBands / groupSize> synthesis_;
    float follow_ = 0.0f;  // coefficient of the followers
    // The settings for which the coefficients stand; variant -1: none.
    int knownVariant_ = -1;
    float knownRate_ = 0.0f, knownFormant_ = 0.0f;
};

}  // namespace vantoric
