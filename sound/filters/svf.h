// State-variable filters of two, three and four poles with a saturating resonance, oversampled inside.
//
// Each step takes the variant as `V`: which output it sums (lowPass, highPass, bandPass) plus 3 for two
// steps a sample where the number of steps varies.
#pragma once

#include "base/shapes.h"
#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_inputs.h"

namespace vantoric::filters {

enum FilterOutput : int { lowPass, highPass, bandPass };

// Adds the output of the variant to a sum.
template <int Output, class T>
inline void addOutput(T& sum, T low, T high, T band) {
    if constexpr (Output == lowPass) sum += low;
    if constexpr (Output == highPass) sum += high;
    if constexpr (Output == bandPass) sum += band;
}

// "12dB". `drive` squares the band output into the resonance.
template <class T>
struct Svf12 {
    using S = ScalarOf<T>;
    static constexpr int variants = 6;
    static constexpr DrawCounts draws(int) { return {}; }

    T f, q, drive, gain;
    T band, low;

    void clear() { band = low = T(0); }

    template <int V>
    T step(T x, Draws<T>&) {
        constexpr int steps = 1 + V / 3;
        const T in = x * gain * T(15) + T(S(1e-6));
        T sum = T(0);
        for (int i = 0; i < steps; ++i) {
            const T v = svfSat(band * (band * (drive * T(S(1.87))) + q * T(S(1.9634999))));
            const T high = in - low - band + v;
            band += high * f;
            low += band * f;
            addOutput<V % 3>(sum, low, high, band);
        }
        return sum * T(S(1.0 / (15 * steps)));
    }
};

// "18dB"
template <class T>
struct Svf18 {
    using S = ScalarOf<T>;
    static constexpr int variants = 3;
    static constexpr DrawCounts draws(int) { return {}; }

    T f, q, drive, gain;
    T s1, s2, s3;

    void clear() { s1 = s2 = s3 = T(0); }

    template <int V>
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

// "24dB"
template <class T>
struct Svf24 {
    using S = ScalarOf<T>;
    static constexpr int variants = 3;
    static constexpr DrawCounts draws(int) { return {}; }

    T f, q, drive, gain;
    T s1, s2, s3, s4, previousHigh;

    void clear() { s1 = s2 = s3 = s4 = previousHigh = T(0); }

    template <int V>
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

// "LP Shaped": the resonance goes through a sine and folds over as it rises. Variant 1 takes two steps.
template <class T>
struct SvfShaped {
    using S = ScalarOf<T>;
    static constexpr int variants = 2;
    static constexpr DrawCounts draws(int) { return {}; }

    T f, q, drive, gain;
    T band, low;

    void clear() { band = low = T(0); }

    template <int V>
    T step(T x, Draws<T>&) {
        constexpr int steps = 1 + V;
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

// Setups: they set the coefficients and return the variant.
int setupSvf12(const FilterInputs& in, Svf12<float>& filter, FilterOutput output);
int setupSvf18(const FilterInputs& in, Svf18<float>& filter, FilterOutput output);
int setupSvf24(const FilterInputs& in, Svf24<float>& filter, FilterOutput output);
int setupSvfShaped(const FilterInputs& in, SvfShaped<float>& filter);

// `drive` as it fades out between the tuning coefficients 0.375 and 0.625.
double fadedDrive(double f, double amount);

}  // namespace vantoric::filters
