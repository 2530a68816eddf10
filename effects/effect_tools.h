// Small tools that the effect families share: control curves, interpolated reads, one-poles. All are
// inline arithmetic without state of their own but for the two little filters.
#pragma once

#include <algorithm>
#include <array>
#include <type_traits>

#include "base/lanes.h"
#include "base/math.h"
#include "base/numbers.h"

namespace vantoric {

// The five values of an effect: the mix, then parameters 1 to 4, each 0 to 1.
struct EffectParameters {
    std::array<float, 5> values{0.5f, 0.5f, 0.5f, 0.5f, 0.5f};

    // Stores a value; indices outside 0 to 4 are ignored.
    void set(int index, float value) {
        if (index >= 0 && index < 5) values[index] = value;
    }
    float mix() const { return values[0]; }
    // Parameter 1 to 4.
    float operator[](int index) const { return values[index]; }
};

// The usual blend of an effect: all `in` at mix 0, all `wet` at 1.
template <class T>
inline T dryWet(T in, T wet, T mix) {
    return wet * mix + in * (T(1) - mix);
}

// The part of x after the point, keeping the sign. |x| below 2^31.
template <class T>
inline T fraction(T x) {
    return x - static_cast<T>(static_cast<int>(x));
}

// Steps a phase of 0 to 1 by `increment` and returns the new phase.
template <class T>
inline T stepPhase(T& phase, T increment) {
    phase = fraction(phase + increment);
    return phase;
}

// Triangle over a cycle: 0 at phase 0, 1 at 0.5.
template <class T>
inline T triangle(T phase) {
    return phase > T(0.5) ? T(2) - T(2) * phase : T(2) * phase;
}

// Two parabolas close to a sine: 0.5, 1, 0.5, 0, 0.5 over a cycle. Held to 0 to 1 against rounding: a delay
// must not slip below 0.
template <class T>
inline T bump(T phase) {
    const T curve = phase < T(0.5) ? (T(4) - T(8) * phase) * phase + T(0.5) : T(8) * phase * phase - T(12) * phase + T(4.5);
    return clampTo(curve, T(0), T(1));
}

// Fifth-order curve through four neighbouring points with continuous first and second derivative: b at
// t = 0, c at t = 1. For numbers and for lanes.
template <class T>
inline T fourPointCurve(T t, T a, T b, T c, T d) {
    using S = ScalarOf<T>;
    return (((((d - a) * T(5) + (b - c) * T(15) + ((a - d) * T(2) + (c - b) * T(6)) * t) * t + (a - d) * T(3) + (c - b) * T(9)) *
                 t +
             c - T(2) * b + a) *
                t +
            c - a) *
               t * T(S(0.5)) +
           b;
}

// Fifth-order curve through the samples y0 to y5 between y3 (f = 0) and y2 (f = 1). For double and for its lanes.
template <class T>
inline T sixPointCurve(T f, std::type_identity_t<T> y0, std::type_identity_t<T> y1, std::type_identity_t<T> y2,
                       std::type_identity_t<T> y3, std::type_identity_t<T> y4, std::type_identity_t<T> y5) {
    return (((((y3 * T(126) - y2 * T(124) + y1 * T(61) - y4 * T(64) - y0 * T(12) + y5 * T(13) +
                ((y2 - y3) * T(50) + (y4 - y1) * T(25) + (y0 - y5) * T(5)) * f) *
                   f +
               (y2 * T(66) - y3 * T(70) - y1 * T(33) + y4 * T(39) + y0 * T(7) - y5 * T(9))) *
                  f +
              ((y4 + y2) * T(16) - y5 - y3 * T(30) - y1)) *
                 f +
             (y5 - y1) + (y5 - y1) + (y2 - y4) * T(16)) *
            f) *
               T(0.04166666666) +
           y3;
}

// Reads of a ring `delay` samples (0 or more, with a fraction) behind `position`, on two and on four points.
// The ring's operator[] wraps.
// The neighbours are counted from the whole part: delay + 1 in single precision may round up across a whole sample.
template <class R, class T>
inline T linearTap(const R& ring, int position, T delay) {
    const int whole = static_cast<int>(delay);
    const T f = delay - static_cast<T>(whole);
    return f * ring[position - whole - 1] + (T(1) - f) * ring[position - whole];
}
template <class R, class T>
inline T cubicTap(const R& ring, int position, T delay) {
    const int index = position - static_cast<int>(delay);
    return fourPointCurve<T>(T(1) - fraction(delay), ring[index - 3], ring[index - 2], ring[index - 1], ring[index]);
}
// Four points around an index; the fraction (0 to 1) moves the read towards older samples.
template <class R, class T>
inline T indexRead(const R& ring, int index, T f) {
    return fourPointCurve<T>(T(1) - f, ring[index - 2], ring[index - 1], ring[index], ring[index + 1]);
}
// Six points, index - 4 to index + 1, for the reverb tanks.
template <class R>
inline double sixPointRead(const R& ring, int index, double f) {
    return sixPointCurve<double>(f, ring[index - 4], ring[index - 3], ring[index - 2], ring[index - 1], ring[index],
                                 ring[index + 1]);
}

// Coefficient of the one-pole low-pass y = (1 - k) y + x k for a frequency in Hz, at most 1: with the
// instrument's quick exponential, and with the true one.
inline float quickDamping(float frequency, float sampleRate) {
    return static_cast<float>(std::min(1.0 - fastExp(-6.28f * frequency / sampleRate), 1.0));
}
inline double trueDamping(double frequency, double sampleRate) {
    return std::min(1.0 - math::exp(-6.28 * frequency / sampleRate), 1.0);
}

// One-pole low-pass; step returns the new state. `offset` keeps a decaying state from denormal numbers.
template <class T>
struct OnePole {
    T state = T(0);

    T low(T x, T k, T offset = T(0)) {
        state = (T(1) - k) * state + x * k + offset;
        return state;
    }
    // What the low-pass leaves: x less the new state.
    T cut(T x, T k, T offset = T(0)) { return x - low(x, k, offset); }
};

// 16. The number stands in another file: beside a constant that it knows, the compiler turns a minimum that lets NaN
// pass into a branch or four instructions.
extern const float loopBound;

// What is written into a feedback loop, held within +-16: far above what settings reach that come to rest, so that the
// others sing loudly instead of growing without end. NaN stays, for the slot to find and clear. Loops that lose level at
// any setting do without. For numbers and lanes.
template <class T>
inline T heldInLoop(T x) {
    const T high(static_cast<ScalarOf<T>>(loopBound));
    return minimum(high, maximum(-high, x));
}

// First-order allpass: y = (y - x) c + previous x.
template <class T>
struct AllpassStage {
    T output = T(0), input = T(0);

    T step(T x, T c) {
        output = (output - x) * c + input;
        input = x;
        return output;
    }
};

// Soft curve: straight to 0.5, parabolas to 1.5, then +-1. For numbers and for lanes.
template <class T>
inline T softCurve(T v) {
    using S = ScalarOf<T>;
    T y = select(v > T(S(0.5)), T(S(1.5)) * v - T(S(0.5)) * v * v - T(S(0.125)), v);
    y = select(v < T(S(-0.5)), (T(S(0.5)) * v + T(S(1.5))) * v + T(S(0.125)), y);
    return select(v > T(S(1.5)), T(S(1)), select(v < T(S(-1.5)), T(S(-1)), y));
}

// One cycle of a parabola wave for each whole step of v: 0, 1, 0, -1, 0. For numbers and for lanes.
template <class T>
inline T sineShape(T v) {
    using S = ScalarOf<T>;
    const T u = v - floored(v);
    const T w = u - T(S(0.5));
    return select(u < T(S(0.5)), (T(S(8)) - T(S(16)) * u) * u, T(S(16)) * w * w - T(S(8)) * w);
}

// The short low-passes of the four-times oversampled shapers: a windowed sinc of sixteen taps, normalised
// to the sum 1. cutoff, factor: 1.570795 and 0.6366203 for the half band, 0.7853975 and 1.2732406 for the
// quarter band.
std::array<float, 16> shaperFilter(double cutoff, double factor);

// True if every sample of both buffers is a finite number, and small enough (1e37) that sums of a few are too.
bool allFinite(const float* left, const float* right, int count);

}  // namespace vantoric
