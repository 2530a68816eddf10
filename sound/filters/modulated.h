// Filters and modulators that are none of the other families: FM, AM, ring modulation, sample holding.
#pragma once

#include "base/shapes.h"
#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// "LP FM": the signal moves the cutoff.
template <class T>
struct LpFm {
    using S = ScalarOf<T>;
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T cutoff, r, amount, angle;  // angle: radians at the open filter
    T band, low;

    void clear() { band = low = T(0); }

    template <Variant>
    T step(T x, Draws<T>&) {
        const T c = limit(amount * x + cutoff, T(0), T(1));
        const T z = minimum(angle * exponential((T(1) - c) * T(-6)), T(S(1.5)));
        const T z2 = z * z;
        const T sine =
            z * (T(1) + z2 * (T(S(-1.0 / 6)) + z2 * (T(S(1.0 / 120)) + z2 * (T(S(-1.0 / 5040)) + z2 * T(S(1.0 / 362880))))));
        const T g = minimum(T(2) * sine, T(S(0.875)));
        const T b = band, s = low;
        const T bend = T(S(15.84)) * r;
        const T t1 = sat(bend * b);
        const T d = x - (b * g + s) - b;
        const T b1 = (T(S(0.125)) * t1 + d) * g + b;
        const T s1 = (b1 + b) * g + s;
        const T d2 = x - s1 - b1;
        const T t2 = sat(bend * b1);
        band = ((t2 + t1) * T(S(0.125)) + d + d2) * g + b;
        low = s1;
        return ((b1 + T(2) * b) * g + T(2) * s) * (T(S(0.5)) - T(S(0.25)) * r);
    }
};

void setupLpFm(const FilterInputs& in, LpFm<float>& filter);
template <>
inline constexpr FilterRow<LpFm> filterRows<LpFm>[] = {{31, "LP FM", 157, setupLpFm}};

// "Vocal AM": a Chamberlin filter whose resonance is amplitude-modulated at four times its frequency.
template <class T>
struct VocalAm {
    using S = ScalarOf<T>;
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T f, q, gain, rate;
    T band, low, phase;

    void clear() { band = low = phase = T(0); }

    template <Variant>
    T step(T x, Draws<T>&) {
        low += f * band;
        const T high = gain * x + T(S(1e-6)) - low - q * band;
        band += f * high;
        phase = wrapped(phase + rate);
        return low + (T(1) - q) * low * shape(phase);
    }
};

void setupVocalAm(const FilterInputs& in, VocalAm<float>& filter);
template <>
inline constexpr FilterRow<VocalAm> filterRows<VocalAm>[] = {{42, "Vocal AM", 105, setupVocalAm}};

// "Ringmod": a sine against the input.
template <class T>
struct Ringmod {
    using S = ScalarOf<T>;
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T rate, depth;
    T phase;

    void clear() { phase = T(0); }

    template <Variant>
    T step(T x, Draws<T>&) {
        const T y = (T(1) - depth + depth * polynomialSine(T(S(6.283185307179586)) * phase)) * (x + T(S(1e-6)));
        phase = wrapped(phase + rate);
        return y;
    }
};

void setupRingmod(const FilterInputs& in, Ringmod<float>& filter);
template <>
inline constexpr FilterRow<Ringmod> filterRows<Ringmod>[] = {{28, "Ringmod", 35, setupRingmod, Recompute::everySetup}};

// "Aliaser": holds the mean of each N inputs from the sample that completes them on.
template <class T>
struct Aliaser {
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T N;
    T sum, count, held;

    void clear() { sum = count = held = T(0); }

    template <Variant>
    T step(T x, Draws<T>&) {
        sum += x;
        count += T(1);
        const auto full = count >= N;
        held = select(full, sum / count, held);
        sum = select(full, T(0), sum);
        count = select(full, T(0), count);
        return held;
    }
};

void setupAliaser(const FilterInputs& in, Aliaser<float>& filter);
template <>
inline constexpr FilterRow<Aliaser> filterRows<Aliaser>[] = {{27, "Aliaser", 41, setupAliaser}};

}  // namespace vantoric::filters
