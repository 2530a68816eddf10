// Filters around a one-bit quantiser: the bit gives a chaotic, digital resonance. The running sum of the
// error between input and feedback decides it.
#pragma once

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_inputs.h"

namespace vantoric::filters {

enum FractalForm : int { fractalLp1, fractalLp2, fractalLp3, fractalLp4, fractalFo1, fractalFo2 };

// The variant is the form.
template <class T>
struct Fractal {
    using S = ScalarOf<T>;
    static constexpr int variants = 6;
    static constexpr DrawCounts draws(int) { return {}; }

    T f, r;
    T acc, bit, y1, y2, y3, y4;

    void clear() { acc = bit = y1 = y2 = y3 = y4 = T(0); }

    template <int V>
    T step(T x, Draws<T>&) {
        const T in = T(10) * x, dry = (T(1) - r) * in;
        acc += in - feedback<V>(dry);
        if constexpr (V == fractalLp4) return T(S(0.1)) * pole(y1, dry + r * signOf(acc));
        if constexpr (V == fractalLp1) return T(S(0.1)) * pole(y2, pole(y1, dry + r * signOf(acc)));
        if constexpr (V == fractalLp2) return T(S(0.1)) * pole(y4, pole(y3, pole(y2, pole(y1, dry + r * signOf(acc)))));
        if constexpr (V == fractalLp3) {
            bit = signOf(pole(y1, acc));
            return T(S(0.1)) * pole(y2, dry + r * bit);
        }
        if constexpr (V == fractalFo1) {
            bit = signOf(pole(y2, pole(y1, acc)));
            return (T(1) - r) * x + T(S(0.1)) * r * bit;
        }
        if constexpr (V == fractalFo2) {
            bit = signOf(pole(y1, acc));
            return (T(1) - r) * x + T(S(0.05)) * r * bit;
        }
    }

private:
    T pole(T& y, T x) const {
        y = (T(1) - f) * y + f * x;
        return y;
    }
    // What is taken from the input before it is summed.
    template <int V>
    T feedback(T dry) const {
        if constexpr (V == fractalLp4) return y1;
        if constexpr (V == fractalLp1 || V == fractalLp3) return y2;
        if constexpr (V == fractalLp2) return y4;
        if constexpr (V == fractalFo1) return dry + r * bit;
        if constexpr (V == fractalFo2) return bit;
    }
};

// Sets the coefficients and returns the variant.
int setupFractal(const FilterInputs& in, Fractal<float>& filter, FractalForm form);

}  // namespace vantoric::filters
