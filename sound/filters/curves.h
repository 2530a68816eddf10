// The saturating curves and shapes of the voice filters, for one voice or for lanes.
#pragma once

#include "base/lanes.h"

namespace vantoric::filters {

// x / (3 / d + |x|) with one division, for d above 0.
template <class T>
inline T saturate(T x, T d) {
    const T y = x * d;
    return y / (T(3) + absolute(y));
}

// x / (3 / (x x + 1.85) + |x|): the cheap saturation of the state-variable filters.
template <class T>
inline T svfSat(T x) {
    using S = ScalarOf<T>;
    return saturate(x, x * x + T(S(1.85)));
}

// x / (3 / (x x + 2) + |x|)
template <class T>
inline T sat(T x) {
    return saturate(x, x * x + T(2));
}

// x up to 0.5, a parabola up to 1.5, then 1; odd.
template <class T>
inline T softClip(T x) {
    using S = ScalarOf<T>;
    const T size = minimum(absolute(x), T(S(1.5)));
    const T rest = size - T(S(1.5));
    const T y = select(size < T(S(0.5)), size, T(1) - rest * rest * T(S(0.5)));
    return select(x < T(0), -y, y);
}

// tanh(e) / e as a quotient of polynomials (Pade).
template <class T>
struct TanhRatio {
    T above, below;
    explicit TanhRatio(T e) {
        const T z = e * e;
        above = (z + T(105)) * z + T(945);
        below = (T(15) * z + T(420)) * z + T(945);
    }
};
template <class T>
inline T th(T e) {
    const TanhRatio<T> ratio(e);
    return ratio.above / ratio.below;
}

// A sine of two parabolas: from 0.5 up to 1, down to 0 and back, for a phase of 0 to 1.
template <class T>
inline T shape(T phase) {
    using S = ScalarOf<T>;
    const T first = (T(4) - T(8) * phase) * phase + T(S(0.5));
    const T second = T(8) * phase * phase - T(12) * phase + T(S(4.5));
    return select(phase < T(S(0.5)), first, second);
}

// +1 or -1; +1 for 0.
template <class T>
inline T signOf(T x) {
    return select(x < T(0), T(-1), T(1));
}

// A phase of 0 to 1 after one step, for steps below 1.
template <class T>
inline T wrapped(T phase) {
    return select(phase >= T(1), phase - T(1), phase);
}
// A rate of 0 or more in cycles per sample as such a step: whole cycles make no difference.
inline float stepOfPhase(double rate) { return static_cast<float>(rate - std::floor(rate)); }

}  // namespace vantoric::filters
