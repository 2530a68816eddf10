// Chains of first-order all-passes: phasers, and the formants that sound without the dry input.
#pragma once

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// How many stages sound.
enum class PhaserStages { two, four, six, eight, ten, twelve, count };

// "Phaser": 2 to 12 stages. A stage that is out of use keeps its memories.
template <class T>
struct Phaser {
    using S = ScalarOf<T>;
    using Variant = PhaserStages;
    static constexpr int stages(Variant number) { return 2 * static_cast<int>(number) + 2; }
    static constexpr DrawCounts draws(Variant) { return {}; }

    T a;
    T x[12], y[12];

    void clear() {
        for (int k = 0; k < 12; ++k) x[k] = y[k] = T(0);
    }

    template <Variant V>
    T step(T input, Draws<T>&) {
        const T dry = input + T(S(1e-6));
        T in = dry;
        for (int k = 0; k < stages(V); ++k) {
            y[k] = (y[k] - in) * a + x[k];
            x[k] = in;
            in = y[k];
        }
        return (in + dry) * T(S(0.5));
    }
};

PhaserStages setupPhaser(const FilterInputs& in, Phaser<float>& filter);
template <>
inline constexpr FilterRow<Phaser> filterRows<Phaser>[] = {{23, "Phaser", 150, setupPhaser}};

// The number of stages, and how the output is put together, by label.
enum class FeedbackForm { phaser2x, phaser3x, phaser4x, phaser5x, formant1x, formant2x, formant3x, formant4x, count };

// "Phaser 2x" to "Phaser 5x", "Formant 1x" to "Formant 4x": a clipped, noisy feedback from the last stage.
template <class T>
struct FeedbackPhaser {
    using S = ScalarOf<T>;
    using Variant = FeedbackForm;
    static constexpr int stages(Variant form) {
        constexpr int table[] = {4, 6, 8, 10, 2, 4, 6, 8};
        return table[static_cast<int>(form)];
    }
    static constexpr DrawCounts draws(Variant) { return {.hash = 1}; }

    T a, fbk, wet, analog;
    T in0, y[10];  // each stage's input is the output of the one before it
    T m;

    void clear() {
        for (T& memory : y) memory = T(0);
        in0 = m = T(0);
    }

    template <Variant V>
    T step(T x, Draws<T>& random) {
        constexpr bool formant = V >= FeedbackForm::formant1x;
        constexpr int last = stages(V) - 1;
        const T n = analog * T(S(4.656613e-10)) * random.hash() - analog;
        const T v = T(S(0.05)) * n + fbk * y[last] * T(S(formant ? 6 : 4));
        const T w = limit(softClip(v) * T(S(formant ? 0.166 : 0.25)), T(-1), T(1));
        const T dry = x + T(S(1e-6));
        T before = in0, in = dry - w;
        in0 = in;
        for (int k = 0; k <= last; ++k) {
            const T out = (y[k] - in) * a + before;
            before = y[k];
            y[k] = in = out;
        }
        return output<V>(dry, in);
    }

private:
    template <Variant V>
    T output(T dry, T last) {
        if constexpr (V == FeedbackForm::phaser3x || V == FeedbackForm::phaser5x) {
            return (dry + last) * wet;
        } else if constexpr (V == FeedbackForm::phaser2x || V == FeedbackForm::phaser4x) {
            const T sum = dry + last;
            const T t = T(S(0.625)) * sum;
            const T out = t - T(S(0.3125)) * fbk * sum + T(S(0.5)) * fbk * m;
            m = t;
            return out;
        } else {
            const T t = last * wet;
            const T out = T(S(0.5)) * m + T(S(0.25)) * t;
            m = T(S(0.5)) * t;
            return out;
        }
    }
};

void setupPositiveFeedback(const FilterInputs& in, FeedbackPhaser<float>& filter);
void setupNegativeFeedback(const FilterInputs& in, FeedbackPhaser<float>& filter);
template <>
inline constexpr FilterRow<FeedbackPhaser> filterRows<FeedbackPhaser>[] = {
    {55, "Phaser 2x", 242, setupPositiveFeedback, FeedbackForm::phaser2x},
    {56, "Phaser 3x", 244, setupNegativeFeedback, FeedbackForm::phaser3x},
    {57, "Phaser 4x", 243, setupPositiveFeedback, FeedbackForm::phaser4x},
    {58, "Phaser 5x", 245, setupNegativeFeedback, FeedbackForm::phaser5x},
    {60, "Formant 1x", 246, setupPositiveFeedback, FeedbackForm::formant1x},
    {61, "Formant 2x", 247, setupPositiveFeedback, FeedbackForm::formant2x},
    {62, "Formant 3x", 248, setupPositiveFeedback, FeedbackForm::formant3x},
    {63, "Formant 4x", 249, setupPositiveFeedback, FeedbackForm::formant4x},
};

}  // namespace vantoric::filters
