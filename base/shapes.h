// Small curves that sample loops share, each for float and for lanes.
#pragma once

#include "base/lanes.h"

namespace vantoric {

// sin(x), x in radians within +-1e9: folded into a quarter turn, then the power series to the ninth
// degree. Within 4e-6 of the true sine.
template <class T>
inline T polynomialSine(T x) {
    using S = ScalarOf<T>;
    T turns = x * T(S(0.15915494309189535));
    turns = turns - floored(turns + T(S(0.5)));
    const T size = absolute(turns);
    T quarter = minimum(size, T(S(0.5)) - size);
    quarter = select(turns < T(0), -quarter, quarter);
    const T y = quarter * T(S(6.283185307179586));
    const T z = y * y;
    return y * (T(1) + z * (T(S(-1.0 / 6)) + z * (T(S(1.0 / 120)) + z * (T(S(-1.0 / 5040)) + z * T(S(1.0 / 362880))))));
}

}  // namespace vantoric
