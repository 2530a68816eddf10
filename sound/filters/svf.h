// State-variable filters of two, three and four poles with a saturating resonance, oversampled inside.
#pragma once

#include "base/shapes.h"
#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// Which output a loop sums over its steps.
enum class SvfOutput { lowPass, highPass, bandPass, count };

template <SvfOutput Output, class T>
inline void addOutput(T& sum, T low, T high, T band) {
    if constexpr (Output == SvfOutput::lowPass) sum += low;
    if constexpr (Output == SvfOutput::highPass) sum += high;
    if constexpr (Output == SvfOutput::bandPass) sum += band;
}

// The output, and whether a sample takes one step or two.
enum class Svf12Form { lowPass, highPass, bandPass, lowPassTwice, highPassTwice, bandPassTwice, count };

constexpr SvfOutput outputOf(Svf12Form form) {
    if (form == Svf12Form::lowPass || form == Svf12Form::lowPassTwice) return SvfOutput::lowPass;
    if (form == Svf12Form::highPass || form == Svf12Form::highPassTwice) return SvfOutput::highPass;
    return SvfOutput::bandPass;
}
constexpr int stepsOf(Svf12Form form) { return form >= Svf12Form::lowPassTwice ? 2 : 1; }

// "12dB". `drive` squares the band output into the resonance.
template <class T>
struct Svf12 {
    using S = ScalarOf<T>;
    using Variant = Svf12Form;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, q, drive, gain;
    T band, low;

    void clear() { band = low = T(0); }

    template <Variant V>
    T step(T x, Draws<T>&) {
        constexpr int steps = stepsOf(V);
        const T in = x * gain * T(15) + T(S(1e-6));
        T sum = T(0);
        for (int i = 0; i < steps; ++i) {
            const T v = svfSat(band * (band * (drive * T(S(1.87))) + q * T(S(1.9634999))));
            const T high = in - low - band + v;
            band += high * f;
            low += band * f;
            addOutput<outputOf(V)>(sum, low, high, band);
        }
        return sum * T(S(1.0 / (15 * steps)));
    }
};

Svf12Form setupLp12(const FilterInputs& in, Svf12<float>& filter);
Svf12Form setupHp12(const FilterInputs& in, Svf12<float>& filter);
Svf12Form setupBp12(const FilterInputs& in, Svf12<float>& filter);
template <>
inline constexpr FilterRow<Svf12> filterRows<Svf12>[] = {
    {2, "LP 12dB", 120, setupLp12},
    {7, "HP 12dB", 121, setupHp12},
    {12, "BP 12dB", 122, setupBp12},
};

// "18dB"
template <class T>
struct Svf18 {
    using S = ScalarOf<T>;
    using Variant = SvfOutput;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, q, drive, gain;
    T s1, s2, s3;

    void clear() { s1 = s2 = s3 = T(0); }

    template <Variant V>
    T step(T x, Draws<T>&) {
        const T g = minimum(f, T(S(0.9)));
        const T damp1 = T(S(1.8)) - T(S(0.36)) * g;
        const T damp2 = T(S(1.8)) - T(S(1.08)) * g;
        const T in = x * gain * T(10) + T(S(1e-6));
        T total = T(0);
        for (int i = 0; i < 2; ++i) {
            const T sum = (s1 + s2) * q;
            const T t = s1 * s2 * drive;
            const T p = sum * T(S(1.496)) - T(S(5.61)) * t;
            const T m = sum * T(S(0.8)) - T(3) * t;
            const T v = saturate(p, m * m * T(S(3.4969)) + T(S(1.85)));
            const T high = in - s3 - (damp2 * s2 + damp1 * s1) + v;
            s1 += high * g;
            s2 += s1 * g;
            s3 += s2 * g;
            addOutput<V>(total, s3, high, s2);
        }
        return total * T(S(1.0 / 20));
    }
};

void setupSvf18(const FilterInputs& in, Svf18<float>& filter);
template <>
inline constexpr FilterRow<Svf18> filterRows<Svf18>[] = {
    {3, "LP 18dB", 130, setupSvf18, SvfOutput::lowPass},
    {8, "HP 18dB", 131, setupSvf18, SvfOutput::highPass},
    {13, "BP 18dB", 132, setupSvf18, SvfOutput::bandPass},
};

// "24dB"
template <class T>
struct Svf24 {
    using S = ScalarOf<T>;
    using Variant = SvfOutput;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, q, drive, gain;
    T s1, s2, s3, s4, previousHigh;

    void clear() { s1 = s2 = s3 = s4 = previousHigh = T(0); }

    template <Variant V>
    T step(T x, Draws<T>&) {
        const T damp = T(1) - T(S(0.7)) * f;
        const T damp3 = T(2) * damp;
        const T damp1 = damp3 + T(S(0.6)) * f;
        const T damp2 = T(3) * damp + T(S(0.05)) * f;
        const T back = T(S(0.2)) * f;
        const T twist = drive * T(S(3.74));
        const T resonance = q * T(S(1.9634999));
        const T in = x * gain * T(13) + T(S(1e-6));
        T total = T(0);
        for (int i = 0; i < 2; ++i) {
            const T v = svfSat(s4 * s3 * twist + s2 * resonance);
            const T high = in - s4 - damp1 * s1 - damp3 * s3 - damp2 * s2 + back * previousHigh + v;
            previousHigh = high;
            s1 += high * f;
            s2 += s1 * f;
            s3 += s2 * f;
            s4 += s3 * f;
            addOutput<V>(total, s4, high, s2);
        }
        return total * T(S(1.0 / 26));
    }
};

void setupSvf24(const FilterInputs& in, Svf24<float>& filter);
template <>
inline constexpr FilterRow<Svf24> filterRows<Svf24>[] = {
    {4, "LP 24dB", 140, setupSvf24, SvfOutput::lowPass},
    {9, "HP 24dB", 141, setupSvf24, SvfOutput::highPass},
    {14, "BP 24dB", 142, setupSvf24, SvfOutput::bandPass},
};

// Whether a sample takes one step or two.
enum class SvfShapedForm { once, twice, count };

// "LP Shaped": the resonance goes through a sine and folds over as it rises.
template <class T>
struct SvfShaped {
    using S = ScalarOf<T>;
    using Variant = SvfShapedForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, q, drive, gain;
    T band, low;

    void clear() { band = low = T(0); }

    template <Variant V>
    T step(T x, Draws<T>&) {
        constexpr int steps = V == SvfShapedForm::twice ? 2 : 1;
        const T in = x * gain * T(30) + T(S(2e-6));
        T sum = T(0);
        for (int i = 0; i < steps; ++i) {
            const T theta = band * q * T(S(3.1457));
            const T fold = polynomialSine(theta) * drive;
            const T v = (T(1) - drive) * sat(T(S(1.8)) * theta);
            const T high = in - low - band + fold + v;
            band += high * f;
            low += band * f;
            sum += low;
        }
        return sum * T(S(1.0 / (30 * steps)));
    }
};

SvfShapedForm setupSvfShaped(const FilterInputs& in, SvfShaped<float>& filter);
template <>
inline constexpr FilterRow<SvfShaped> filterRows<SvfShaped>[] = {{32, "LP Shaped", 158, setupSvfShaped}};

// `drive` as it fades out between the tuning coefficients 0.375 and 0.625.
double fadedDrive(double f, double amount);

}  // namespace vantoric::filters
