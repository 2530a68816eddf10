// Soft clip of the filter inputs of a voice with an analog oscillator.
#pragma once

#include "base/lanes.h"

namespace vantoric {

// Odd: linear with gain 3 within +-1/12, then a parabola that reaches +-0.5 at +-0.25 and stays.
template <class T>
inline T analogSoftClip(T x) {
    using S = ScalarOf<T>;
    const T y = x * T(S(6));
    const T knee = (T(S(1.5)) - T(S(0.5)) * absolute(y)) * y;
    const T above = select(y > T(S(1.5)), T(S(1)), knee - T(S(0.125)));
    const T below = select(y < T(S(-1.5)), T(S(-1)), knee + T(S(0.125)));
    return T(S(0.5)) * select(y > T(S(0.5)), above, select(y < T(S(-0.5)), below, y));
}

}  // namespace vantoric
