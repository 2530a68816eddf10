// Small curves and powers that sample loops share, each for float and for lanes. They are always inlined: a loop
// that calls them eight times a sample would otherwise pass its registers through memory.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "base/lanes.h"

namespace vantoric {

// Lanes of double precision beside a number type of single precision.
template <class T>
struct LaneDoubles {
    using Type = Lanes<double, LaneTraits<T>::size>;
};
template <>
struct LaneDoubles<float> {
    using Type = double;
};

template <class To, class From>
inline To sameBits(const From& from) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(static_cast<void*>(&to), &from, sizeof to);
    return to;
}

// Adding this to a number of less than four million rounds it to a whole number, which then stands in the
// lowest bits.
inline constexpr float roundingShift = 12582912.0f;

// 2^n for n = shifted - roundingShift, a whole number from -126 to 127.
template <class T>
[[gnu::always_inline]] inline T shiftedPower2(T shifted) {
    using Bits = IntegersOf<T>;
    return sameBits<T>((sameBits<Bits>(shifted) << 23) + Bits(0x3f800000u));
}

// v less the nearest whole number, -0.5 to 0.5; 0 from four million on, where a float has hardly a fraction
// left, and for NaN.
template <class T>
[[gnu::always_inline]] inline T distanceToWhole(T v) {
    using S = ScalarOf<T>;
    const T shift(S(sizeof(S) == sizeof(float) ? 12582912.0 : 6755399441055744.0));
    const T rest = v - ((v + shift) - shift);
    return select(absolute(v) < T(S(4194304.0)), rest, T(0));
}
// v - floor(v), with the same bounds.
template <class T>
[[gnu::always_inline]] inline T fractionAbove(T v) {
    const T rest = distanceToWhole(v);
    return rest + select(rest < T(0), T(1), T(0));
}

// The sine of so many turns, -0.5 to 0.5: folded into a quarter turn, then the power series to the ninth degree.
template <class T>
[[gnu::always_inline]] inline T sineOfTurns(T turns) {
    using S = ScalarOf<T>;
    const T size = absolute(turns);
    T quarter = minimum(size, T(S(0.5)) - size);
    quarter = select(turns < T(0), -quarter, quarter);
    const T y = quarter * T(S(6.283185307179586));
    const T z = y * y;
    return y * (T(1) + z * (T(S(-1.0 / 6)) + z * (T(S(1.0 / 120)) + z * (T(S(-1.0 / 5040)) + z * T(S(1.0 / 362880))))));
}

// sin(x), x in radians. Within 4e-6 of the true sine of the folded angle; 0 from four million turns on, and for NaN.
template <class T>
[[gnu::always_inline]] inline T polynomialSine(T x) {
    return sineOfTurns(distanceToWhole(x * T(ScalarOf<T>(0.15915494309189535))));
}

// The same for single precision of any size: from four million turns on they are counted in double precision. 0 from
// 2^51 turns on, and for NaN.
template <class T>
[[gnu::always_inline]] inline T farReachingSine(T x) {
    const T turns = x * T(0.15915494309189535f);
    T rest = distanceToWhole(turns);
    const auto far = !(absolute(turns) < T(4194304.0f));
    if (anyOf(far)) {
        using Wide = typename LaneDoubles<T>::Type;
        const Wide wide = lanesTo<Wide>(x) * Wide(0.15915494309189535), shift(6755399441055744.0);
        const Wide wideRest = select(absolute(wide) < Wide(2251799813685248.0), wide - ((wide + shift) - shift), Wide(0.0));
        rest = select(far, lanesTo<T>(wideRest), rest);
    }
    return sineOfTurns(rest);
}

// e^x in single precision, within 2e-7 of itself: x less a multiple of ln 2, the power series to the seventh
// degree. Held at the ends of the normal numbers; NaN reads as the lowest.
template <class T>
[[gnu::always_inline]] inline T exponential(T x) {
    x = limit(x, T(-87.3f), T(88.3f));
    const T shifted = x * T(1.44269504f) + T(roundingShift);
    const T n = shifted - T(roundingShift);
    const T r = (x - n * T(0.693359375f)) - n * T(-2.12194440e-4f);  // ln 2 in two parts, the first exact
    const T series =
        T(1) +
        r * (T(1) + r * (T(0.5f) + r * (T(1.0f / 6) +
                                        r * (T(1.0f / 24) + r * (T(1.0f / 120) + r * (T(1.0f / 720) + r * T(1.0f / 5040)))))));
    return series * shiftedPower2(shifted);
}

// The instrument's own exponential (fastExp) in single precision, for sample loops. NaN reads as the lowest.
template <class T>
[[gnu::always_inline]] inline T quickExponential(T x) {
    const T y = limit(T(1.44079995f) * x, T(-126.0f), T(127.0f));
    T shifted = y + T(roundingShift);
    shifted = select(shifted - T(roundingShift) > y, shifted - T(1), shifted);
    const T rest = y - (shifted - T(roundingShift));
    return shiftedPower2(shifted) * (T(1) + T(0.75f) * rest + T(0.25f) * rest * rest);
}

// log(1 + v) in single precision for v from 0 to 1e37, exact near 0 too: the exponent, and the inverse
// hyperbolic tangent's series of the mantissa.
template <class T>
[[gnu::always_inline]] inline T logarithmOfOneMore(T v) {
    using Bits = IntegersOf<T, std::int32_t>;
    const Bits bits = sameBits<Bits>(T(1) + v) - Bits(0x3f3504f3);  // the mantissa runs from sqrt(0.5) to sqrt(2)
    const Bits exponent = bits >> 23;
    const T mantissa = sameBits<T>((bits & Bits(0x007fffff)) + Bits(0x3f3504f3));
    const T e = lanesTo<T>(exponent);
    const T m = select(e == T(0), v, mantissa - T(1));
    const T s = m / (m + T(2));
    const T z = s * s;
    return e * T(0.69314718f) + T(2) * s * (T(1) + z * (T(1.0f / 3) + z * (T(1.0f / 5) + z * (T(1.0f / 7) + z * T(1.0f / 9)))));
}

}  // namespace vantoric
