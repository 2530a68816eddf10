// Channel vocoders, left channel speech, right channel carrier: family 8 of an effect slot.
#pragma once

#include <array>

#include "effects/effect_row.h"
#include "effects/effect_tools.h"
#include "effects/vocoder_bands.h"

namespace vantoric {

// Family 8: the voice of one side on the sound of the other. Audio thread only. Nothing allocates after construction.
class VocoderCore {
public:
    // The numbers of the effects within the family: twelve bands, twenty, and twenty without gate and compressor.
    enum class Variant : int { svc = 2, pro = 4, linear = 5 };

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
    // The effect of the family by its Variant. Numbers not in use pass audio through.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
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

    // One function an effect.
    void svc(float* left, float* right, int count);
    void pro(float* left, float* right, int count);
    void linear(float* left, float* right, int count);

    // What they show.
    struct Text {
        static constexpr ParameterText none{}, formant = shown::bipolar("Formant %d%%"), stereo = shown::percent("Stereo %d%%"),
                                               compressor = shown::percent("Compressor %d%%"), gate = shown::percent("Gate %d%%");
    };

public:
    using Row = EffectRow<Variant, void (VocoderCore::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::vocoder;

    // One row an effect.
    // clang-format off
    static constexpr Row rows[] = {
        {22, "Vocoder", "Vocoder SVC linear", Variant::linear, {1.0f, 0.5f, 0.0f, 0.5f, 0.5f}, &VocoderCore::linear,
         {Text::formant, Text::stereo, Text::none, Text::none}},
        {40, "Vocoder SVC", "Vocoder SVC", Variant::svc, {1.0f, 0.5f, 0.0f, 0.0f, 0.0f}, &VocoderCore::svc,
         {Text::formant, Text::stereo, Text::compressor, Text::gate}},
        {41, "Vocoder Pro", "Vocoder Pro", Variant::pro, {1.0f, 0.5f, 0.0f, 0.0f, 0.0f}, &VocoderCore::pro,
         {Text::formant, Text::stereo, Text::compressor, Text::gate}},
    };
    // clang-format on

private:
    bool isTwelve() const { return row_->variant == Variant::svc; }

    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    const Row* row_ = nullptr;
    std::array<BandAnalysis<Group>, maxBands / groupSize> analysis_;
    std::array<BandSynthesis<Group>, maxBands / groupSize> synthesis_;
    float follow_ = 0.0f;  // coefficient of the followers
    // The settings for which the coefficients stand; null: none.
    const Row* knownRow_ = nullptr;
    float knownRate_ = 0.0f, knownFormant_ = 0.0f;
};

}  // namespace vantoric
