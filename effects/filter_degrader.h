// The sample-rate reducer: family 4 of an effect slot.
#pragma once

#include "effects/effect_row.h"
#include "effects/effect_tools.h"

namespace vantoric {

// Family 4: the degrader alone. Audio thread only. Nothing allocates after construction.
class Filter {
public:
    // The number of the effect within the family.
    enum class Variant : int { degrader = 6 };

    Filter();

    // Silences the sums and the held samples; parameters, variant and rate stay.
    void reset();
    // Hz, above 0.
    void setSampleRate(float rate);
    // The effect of the family by its Variant. Numbers not in use pass audio through.
    void setVariant(int variant) { row_ = rowOf(rows, variant); }
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

    void degrader(float* left, float* right, int count);

    // What it shows.
    struct Text {
        static constexpr ParameterText none{};
    };

public:
    using Row = EffectRow<Variant, void (Filter::*)(float* left, float* right, int count)>;
    static constexpr EffectFamily family = EffectFamily::degrade;

    // One row an effect.
    // clang-format off
    static constexpr Row rows[] = {
        {63, "Degrader", "Degrader", Variant::degrader, {1.0f, 0.63f, 0.5f, 0.5f, 0.5f}, &Filter::degrader,
         {shown::number("Samplerate %.1fkHz", [](float p) { return math::exp(5.0f * p) * 0.1f; }), Text::none, Text::none,
          Text::none}},
    };
    // clang-format on

private:
    EffectParameters parameters_;
    float sampleRate_ = 44100.0f;
    const Row* row_ = nullptr;
    Side left_, right_;
    int counter_ = 0;
};

}  // namespace vantoric
