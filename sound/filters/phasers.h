// Chains of first-order all-passes: phasers, and the formants that sound without the dry input.
#pragma once

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_inputs.h"

namespace vantoric::filters {

// "Phaser": 2 to 12 stages, 2 more with each variant. A stage that is out of use keeps its memories.
template <class T>
struct Phaser {
    using S = ScalarOf<T>;
    static constexpr int variants = 6;
    static constexpr int stages(int variant) { return 2 * variant + 2; }
    static constexpr DrawCounts draws(int) { return {}; }

    T a;
    T x[12], y[12];

    void clear() {
        for (int k = 0; k < 12; ++k) x[k] = y[k] = T(0);
    }

    template <int V>
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

enum FeedbackForm : int { phaser2x, phaser4x, phaser3x, phaser5x, formant1x, formant2x, formant3x, formant4x };

// All-passes with a clipped, noisy feedback from the last stage. The variant is the form.
template <class T>
struct FeedbackPhaser {
    using S = ScalarOf<T>;
    static constexpr int variants = 8;
    static constexpr int stages(int form) {
        constexpr int table[] = {4, 8, 6, 10, 2, 4, 6, 8};
        return table[form];
    }
    static constexpr DrawCounts draws(int) { return {.hash = 1}; }

    T a, fbk, wet, analog;
    T in0, y[10];  // each stage's input is the output of the one before it
    T m;

    void clear() {
        for (T& memory : y) memory = T(0);
        in0 = m = T(0);
    }

    template <int V>
    T step(T x, Draws<T>& random) {
        constexpr bool formant = V >= formant1x;
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
    template <int V>
    T output(T dry, T last) {
        if constexpr (V == phaser3x || V == phaser5x) {
            return (dry + last) * wet;
        } else if constexpr (V == phaser2x || V == phaser4x) {
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

// Setups: they set the coefficients and return the variant.
int setupPhaser(const FilterInputs& in, Phaser<float>& filter);
int setupFeedbackPhaser(const FilterInputs& in, FeedbackPhaser<float>& filter, FeedbackForm form);

}  // namespace vantoric::filters
