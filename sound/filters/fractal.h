// Filters around a one-bit quantiser: the bit gives a chaotic, digital resonance. The running sum of the
// error between input and feedback decides it.
#pragma once

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// Where the bit is taken from and what it feeds, by label.
enum class FractalForm { lp1, lp2, lp3, lp4, fo1, fo2, count };

// "FractalLP1" to "FractalLP4", "FractalFO1" and "FractalFO2".
template <class T>
struct Fractal {
    using S = ScalarOf<T>;
    using Variant = FractalForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, r;
    T acc, bit, y1, y2, y3, y4;

    void clear() { acc = bit = y1 = y2 = y3 = y4 = T(0); }

    template <Variant V>
    T step(T x, Draws<T>&) {
        const T in = T(10) * x, dry = (T(1) - r) * in;
        acc += in - feedback<V>(dry);
        if constexpr (V == FractalForm::lp4) return T(S(0.1)) * pole(y1, dry + r * signOf(acc));
        if constexpr (V == FractalForm::lp1) return T(S(0.1)) * pole(y2, pole(y1, dry + r * signOf(acc)));
        if constexpr (V == FractalForm::lp2) return T(S(0.1)) * pole(y4, pole(y3, pole(y2, pole(y1, dry + r * signOf(acc)))));
        if constexpr (V == FractalForm::lp3) {
            bit = signOf(pole(y1, acc));
            return T(S(0.1)) * pole(y2, dry + r * bit);
        }
        if constexpr (V == FractalForm::fo1) {
            bit = signOf(pole(y2, pole(y1, acc)));
            return (T(1) - r) * x + T(S(0.1)) * r * bit;
        }
        if constexpr (V == FractalForm::fo2) {
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
    template <Variant V>
    T feedback(T dry) const {
        if constexpr (V == FractalForm::lp4) return y1;
        if constexpr (V == FractalForm::lp1 || V == FractalForm::lp3) return y2;
        if constexpr (V == FractalForm::lp2) return y4;
        if constexpr (V == FractalForm::fo1) return dry + r * bit;
        if constexpr (V == FractalForm::fo2) return bit;
    }
};

void setupFractal(const FilterInputs& in, Fractal<float>& filter);
void setupStraightFractal(const FilterInputs& in, Fractal<float>& filter);  // its poles follow the cutoff in a straight line
template <>
inline constexpr FilterRow<Fractal> filterRows<Fractal>[] = {
    {34, "FractalLP1", 155, setupFractal, FractalForm::lp1}, {35, "FractalLP2", 156, setupFractal, FractalForm::lp2},
    {36, "FractalLP3", 154, setupFractal, FractalForm::lp3}, {37, "FractalLP4", 152, setupStraightFractal, FractalForm::lp4},
    {38, "FractalFO1", 153, setupFractal, FractalForm::fo1}, {39, "FractalFO2", 151, setupStraightFractal, FractalForm::fo2},
};

}  // namespace vantoric::filters
