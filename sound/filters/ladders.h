// Low-passes of chained one-poles with a nonlinear feedback around them.
#pragma once

#include "sound/filters/curves.h"
#include "sound/filters/draws.h"
#include "sound/filters/filter_row.h"

namespace vantoric::filters {

// "LP Ladder": four bilinear one-poles in a ring; the feedback is a blend of linear and saturated.
template <class T>
struct Ladder {
    using S = ScalarOf<T>;
    using Variant = OneForm;
    static constexpr DrawCounts draws(Variant) { return {}; }

    T pole, in, fb, asym, mix, gain;
    T x0, y1, y2, y3, y4;

    void clear() { x0 = y1 = y2 = y3 = y4 = T(0); }

    template <Variant>
    T step(T x, Draws<T>&) {
        const T d = y4 - y2;
        const T v = y4 + d * d * asym;
        const T s = sat(T(S(18.9)) * v) * (T(S(0.1)) * mix * fb);
        const T u0 = x + T(S(1e-6)) - s - y4 * (fb * (T(1) - mix));
        const T new1 = (u0 + x0) * in - pole * y1;
        const T new2 = (new1 + y1) * in - pole * y2;
        const T new3 = (new2 + y2) * in - pole * y3;
        y4 = (new3 + y3) * in - pole * y4;
        x0 = u0;
        y1 = new1;
        y2 = new2;
        y3 = new3;
        return y4 * gain;
    }
};

void setupLadder(const FilterInputs& in, Ladder<float>& filter);
template <>
inline constexpr FilterRow<Ladder> filterRows<Ladder>[] = {{30, "LP Ladder", 42, setupLadder}};

// Without noise, the linear form saves work while neither drive nor resonance would reach the clip.
enum class OrvixForm { clipped, linear, count };

// "LP Orvix": the four-pole state-variable chain with a clipped, noisy feedback.
template <class T>
struct Orvix {
    using S = ScalarOf<T>;
    using Variant = OrvixForm;
    static constexpr DrawCounts draws(Variant form) { return {.congruence = form == OrvixForm::clipped ? 2 : 0}; }

    T f, q, drive, gain, A, B, C, D;
    T s1, s2, s3, s4, previousHigh;

    void clear() { s1 = s2 = s3 = s4 = previousHigh = T(0); }

    template <Variant V>
    T step(T x, Draws<T>& random) {
        const T in = x * gain * T(13) + T(S(1e-6));
        T sum = T(0);
        for (int i = 0; i < 2; ++i) {
            T fb;
            if constexpr (V == OrvixForm::clipped) {
                const T noisy = random.congruence() * T(S(9.32e-12)) + T(S(1.05)) * s2 - T(S(0.02));
                fb = softClip(noisy * q - T(3) * drive * s2 * s3);
            } else {
                fb = T(S(1.05)) * q * s2;
            }
            const T high = in - s4 + B * s2 + A * (s1 + s3) + C * previousHigh + D * s1 + fb;
            previousHigh = high;
            s1 += high * f;
            s2 += s1 * f;
            s3 += s2 * f;
            s4 += s3 * f;
            sum += s4;
        }
        return sum * T(S(1.0 / 26));
    }
};

OrvixForm setupOrvix(const FilterInputs& in, Orvix<float>& filter);
template <>
inline constexpr FilterRow<Orvix> filterRows<Orvix>[] = {{51, "LP Orvix", 217, setupOrvix}};

// By the amount of feedback.
enum class ButterForm { open, linear, clipped, count };

// "LP Butter": four one-poles in a ring.
template <class T>
struct Butter {
    using S = ScalarOf<T>;
    using Variant = ButterForm;
    static constexpr DrawCounts draws(Variant) { return {.congruence = 1}; }

    T g, m, noise, gain;
    T y1, y2, y3, y4, z1, z2;

    void clear() { y1 = y2 = y3 = y4 = z1 = z2 = T(0); }

    template <Variant V>
    T step(T x, Draws<T>& random) {
        const T in = T(16) * x + T(S(1e-6));
        const T n = (random.congruence() * T(S(2.33e-11)) - T(S(0.05))) * noise;
        const T v = T(S(2.288)) * y4 + T(S(0.832)) * z1 + T(S(2.08)) * z2;
        T u;
        if constexpr (V == ButterForm::open)
            u = in + n * m;
        else if constexpr (V == ButterForm::linear)
            u = in - m * v + n * m;
        else
            u = (T(1) - m) * in + softClip((in - v + n) * m);
        z2 = z1;
        z1 = y4;
        const T rest = T(1) - g;
        y1 = g * u + rest * y1;
        y2 = g * y1 + rest * y2;
        y3 = g * y2 + rest * y3;
        y4 = g * y3 + rest * y4;
        return y4 * gain;
    }
};

ButterForm setupButter(const FilterInputs& in, Butter<float>& filter);
template <>
inline constexpr FilterRow<Butter> filterRows<Butter>[] = {{50, "LP Butter", 170, setupButter}};

// For an analog amount of 0 there is no noise, but the draws count.
enum class Ms20Form { noisy, still, count };

// "LP MS-20": an implicit solve of a nonlinear two-pole with noise in the nonlinearity, in double precision.
template <class T>
struct Ms20 {
    using S = ScalarOf<T>;
    using Variant = Ms20Form;
    static constexpr DrawCounts draws(Variant) { return {.hash = 3}; }

    T h, D, gain, analog;
    T s1, s2, previousI2, previousY;

    void clear() { s1 = s2 = previousI2 = previousY = T(0); }

    template <Variant V>
    T step(T x, Draws<T>& random) {
        const T n1 = noise<V>(random), n2 = noise<V>(random), n3 = noise<V>(random);
        const T i2 = T(S(2.25)) * x + T(S(0.02)) * n1 + T(S(1e-6));
        const T m = T(S(1.125)) * x + T(S(0.01)) * n1;
        solve(n2, T(S(0.5)) * previousI2 + m + T(S(5e-7)));
        const T y = solve(n3, T(S(0.5)) * i2 + m + T(S(5e-7)));
        previousI2 = i2;
        const T out = (previousY + y) * gain * T(S(0.221778));
        previousY = y;
        return out;
    }

private:
    template <Variant V>
    T noise(Draws<T>& random) const {
        if constexpr (V == Ms20Form::noisy)
            return analog * T(S(4.656613e-10)) * random.hash() - analog;
        else
            return T(0);
    }

    // One step. With T = above / below, A = (..) / den, Y = (..) / den and B = T D Y come from one division.
    T solve(T n, T p) {
        const T w = h * T(S(0.5));
        const TanhRatio<T> t(T(S(0.75)) * n + D * s2);
        const T bent = D * t.above;
        const T inverse = T(1) / (w * w * bent + (w * (w + T(1)) + w + T(1)) * t.below);
        const T driven = ((w + T(1)) * s2 + w * s1 + w * w * p) * inverse;
        const T a = ((w + T(1)) * (s1 + w * p) * t.below - w * bent * s2) * inverse;
        const T y = driven * t.below;
        const T b = driven * bent;
        s1 += (p - a - b) * h;
        s2 += (b + a - y) * h;
        return y;
    }
};

template <>
struct ScalarFor<Ms20> {
    using Type = double;
};
Ms20Form setupMs20(const FilterInputs& in, Ms20<double>& filter);
template <>
inline constexpr FilterRow<Ms20> filterRows<Ms20>[] = {{53, "LP MS-20", 234, setupMs20}};

}  // namespace vantoric::filters
