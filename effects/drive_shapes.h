// What drives and distortions have in common: the short low-passes, the points between two samples, the
// curves. Each is a template over its number type: the voices' distortions run it on voices side by side, the
// effects on neighbouring samples side by side.
#pragma once

#include <array>

#include "base/shapes.h"
#include "effects/effect_tools.h"

namespace vantoric {

inline constexpr int shaperTaps = 16;

// The low-passes in front of the oversampled shapers, and a raised-cosine ramp of sum 1. Made once.
using ShaperTaps = std::array<float, shaperTaps>;
const ShaperTaps& halfBand();
const ShaperTaps& quarterBand();
const ShaperTaps& rampTable();

// The sum of a low-pass over the last sixteen inputs; input(k) is the one k samples ago, tap 0 meets the newest.
template <class T, class Input>
inline T filterSum(const ShaperTaps& taps, Input input) {
    T sum = T(taps[0]) * input(0);
    for (int k = 1; k < shaperTaps; ++k) sum = sum + T(taps[k]) * input(k);
    return sum;
}

// The sum of shape(v) over eight points on the line from the previous value p to the new one, y.
template <class T, class Shape>
inline T sumOfEight(T p, T y, Shape shape) {
    T sum = shape(T(0.875f) * p + T(0.125f) * y);
    sum = sum + shape(T(0.75f) * p + T(0.25f) * y);
    sum = sum + shape(T(0.625f) * p + T(0.375f) * y);
    sum = sum + shape(T(0.5f) * p + T(0.5f) * y);
    sum = sum + shape(T(0.375f) * p + T(0.625f) * y);
    sum = sum + shape(T(0.25f) * p + T(0.75f) * y);
    sum = sum + shape(T(0.125f) * p + T(0.875f) * y);
    return sum + shape(y);
}

// The same over four points.
template <class T, class Shape>
inline T sumOfFour(T p, T y, Shape shape) {
    T sum = shape(T(0.75f) * p + T(0.25f) * y);
    sum = sum + shape(T(0.5f) * p + T(0.5f) * y);
    sum = sum + shape(T(0.25f) * p + T(0.75f) * y);
    return sum + shape(y);
}

// The four points of the effects: y1 and three on the curve through y0 (newest) to y3, from y1 on to y2.
template <class T>
struct CurvePoints {
    T at[4];

    CurvePoints(T y0, T y1, T y2, T y3)
        : at{y1, fourPointCurve(T(0.25f), y0, y1, y2, y3), fourPointCurve(T(0.5f), y0, y1, y2, y3),
             fourPointCurve(T(0.75f), y0, y1, y2, y3)} {}

    template <class Shape>
    T sum(Shape shape) const {
        return shape(at[0]) + shape(at[1]) + shape(at[2]) + shape(at[3]);
    }
};

// One cycle of a parabola wave for each whole step of v, 0, 1, 0, -1, 0: sineShape with the quick fraction.
template <class T>
inline T waveShape(T v) {
    const T u = fractionAbove(v);
    const T w = u - T(0.5f);
    return select(u < T(0.5f), (T(8) - T(16) * u) * u, T(16) * w * w - T(8) * w);
}

// That wave for v within +-0.75, and the extremes it has there beyond.
template <class T>
inline T warpShape(T v) {
    const T bound = T(4) * v;
    return select(bound > T(3), T(-1), select(bound < T(-3), T(1), waveShape(v)));
}

// That wave at a quarter of its height.
template <class T>
inline T rippleShape(T v) {
    return T(0.25f) * waveShape(v);
}

// Whole levels, 1/q apart; 100 keeps the truncation on one side of zero.
template <class T>
inline T crushLevel(T v, T q) {
    return truncated(v * q + T(100));
}

// Pink noise from white: three leaky sums.
struct PinkSums {
    float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f;

    float step(float n) {
        b0 = 0.99765f * b0 + n * 0.099046f;
        b1 = 0.963f * b1 + n * 0.2965164f;
        const float pink = b0 + b1 + n * 1.2374914f + 0.57f * b2;
        b2 = 0.57f * b2 + n * 1.0526913f;
        return pink;
    }
};

}  // namespace vantoric
