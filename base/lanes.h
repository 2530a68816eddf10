// Vector lanes: the voices of a layer travel side by side, lane = voice index. Every recursive loop
// (filter, distortion, output stage) is one struct template over its number type; with float it serves
// one voice, with Lanes<float, N> it serves N at once, and every lane gets the same bits as float would.
//
// The functions here carry the same names for both, so that a loop is written once.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <experimental/simd>

#include "base/engine_state.h"

namespace vantoric {

namespace stdx = std::experimental;

template <class Scalar, int N>
using Lanes = stdx::simd<Scalar, stdx::simd_abi::deduce_t<Scalar, N>>;

inline constexpr int laneGroup = 4;  // lanes are switched on and off in groups of this size

// The scalar behind a number type: float for float and for Lanes<float, N>.
template <class T>
struct LaneTraits {
    using Scalar = T;
    using Mask = bool;
    static constexpr int size = 1;
};
template <class S, class Abi>
struct LaneTraits<stdx::simd<S, Abi>> {
    using Scalar = S;
    using Mask = stdx::simd_mask<S, Abi>;
    static constexpr int size = static_cast<int>(stdx::simd<S, Abi>::size());
};
template <class T>
using ScalarOf = typename LaneTraits<T>::Scalar;
template <class T>
using MaskOf = typename LaneTraits<T>::Mask;

// 32-bit integers beside a number type: one, or as many lanes.
template <class T, class Int, int N = LaneTraits<T>::size>
struct LaneIntegers {
    using Type = Lanes<Int, N>;
};
template <class T, class Int>
struct LaneIntegers<T, Int, 1> {
    using Type = Int;
};
template <class T, class Int = std::uint32_t>
using IntegersOf = typename LaneIntegers<T, Int>::Type;

// a where the mask is true, else b. Both sides are evaluated.
template <class T>
inline T select(bool mask, T a, T b) {
    return mask ? a : b;
}
template <class S, class Abi>
[[gnu::always_inline]] inline stdx::simd<S, Abi> select(const stdx::simd_mask<S, Abi>& mask, stdx::simd<S, Abi> a,
                                                        stdx::simd<S, Abi> b) {
    stdx::where(mask, b) = a;
    return b;
}

inline bool anyOf(bool mask) { return mask; }
inline bool allOf(bool mask) { return mask; }
template <class S, class Abi>
inline bool anyOf(const stdx::simd_mask<S, Abi>& mask) {
    return stdx::any_of(mask);
}
template <class S, class Abi>
inline bool allOf(const stdx::simd_mask<S, Abi>& mask) {
    return stdx::all_of(mask);
}

// |x|, by clearing the sign.
inline float absolute(float x) { return std::fabs(x); }
inline double absolute(double x) { return std::fabs(x); }
template <class S, class Abi>
[[gnu::always_inline]] inline stdx::simd<S, Abi> absolute(const stdx::simd<S, Abi>& x) {
    return stdx::abs(x);
}
// Whether a lane type is a single register of the processor, and that register as the compiler's own vector.
template <class T>
inline constexpr bool isOneRegister = LaneTraits<T>::size > 1 && sizeof(T) <= sizeof(stdx::native_simd<ScalarOf<T>>);
template <class T>
using RegisterOf [[gnu::vector_size(sizeof(T))]] = ScalarOf<T>;

// Two groups of lanes as one of twice the width, and its halves.
template <class S, class Abi>
[[gnu::always_inline]] inline auto joined(const stdx::simd<S, Abi>& low, const stdx::simd<S, Abi>& high) {
    using Half = stdx::simd<S, Abi>;
    using Whole = Lanes<S, 2 * laneGroup>;
    static_assert(Half::size() == laneGroup);
    if constexpr (isOneRegister<Whole>)
        return std::bit_cast<Whole>(__builtin_shufflevector(std::bit_cast<RegisterOf<Half>>(low),
                                                            std::bit_cast<RegisterOf<Half>>(high), 0, 1, 2, 3, 4, 5, 6, 7));
    else
        return stdx::concat(low, high);
}
template <class S, class Abi>
[[gnu::always_inline]] inline auto halves(const stdx::simd<S, Abi>& whole) {
    using Half = Lanes<S, laneGroup>;
    static_assert(stdx::simd<S, Abi>::size() == 2 * laneGroup);
    if constexpr (isOneRegister<stdx::simd<S, Abi>>) {
        const auto both = std::bit_cast<RegisterOf<stdx::simd<S, Abi>>>(whole);
        return std::array{std::bit_cast<Half>(__builtin_shufflevector(both, both, 0, 1, 2, 3)),
                          std::bit_cast<Half>(__builtin_shufflevector(both, both, 4, 5, 6, 7))};
    } else {
        return stdx::split<Half>(whole);
    }
}

// Smaller and larger of two; where x is NaN the bound. Written so that each is one instruction.
template <class T>
[[gnu::always_inline]] inline T minimum(T x, T bound) {
    if constexpr (isOneRegister<T>) {
        const auto a = std::bit_cast<RegisterOf<T>>(x), b = std::bit_cast<RegisterOf<T>>(bound);
        return std::bit_cast<T>(a < b ? a : b);
    } else {
        return select(x < bound, x, bound);
    }
}
template <class T>
[[gnu::always_inline]] inline T maximum(T x, T bound) {
    if constexpr (isOneRegister<T>) {
        const auto a = std::bit_cast<RegisterOf<T>>(x), b = std::bit_cast<RegisterOf<T>>(bound);
        return std::bit_cast<T>(a > b ? a : b);
    } else {
        return select(x > bound, x, bound);
    }
}
// Clamps to [low, high]; NaN reads as low.
template <class T>
inline T limit(T x, T low, T high) {
    return minimum(maximum(x, low), high);
}

// Truncation towards zero, for values inside the range of a 32-bit integer; beyond it x itself.
template <class T>
inline T truncated(T x) {
    if constexpr (LaneTraits<T>::size == 1) {
        constexpr T edge = T(2147483000);
        return (x < edge && x > -edge) ? static_cast<T>(static_cast<std::int32_t>(x)) : x;
    } else {
        using S = ScalarOf<T>;
        using Int = Lanes<std::int32_t, LaneTraits<T>::size>;
        const T edge = T(S(2147483000));
        const auto inside = (x < edge) && (x > -edge);
        const T safe = select(inside, x, T(0));
        return select(inside, stdx::static_simd_cast<T>(stdx::static_simd_cast<Int>(safe)), x);
    }
}
// Largest whole number not above x, same range.
template <class T>
inline T floored(T x) {
    const T whole = truncated(x);
    return select(whole > x, whole - T(1), whole);
}

// Square root, exact in either form.
inline float squareRoot(float x) { return std::sqrt(x); }
inline double squareRoot(double x) { return std::sqrt(x); }
template <class S, class Abi>
inline stdx::simd<S, Abi> squareRoot(const stdx::simd<S, Abi>& x) {
    return stdx::sqrt(x);
}

// An unsigned 32-bit number as T, rounded once.
template <class T>
inline T fromUnsigned(IntegersOf<T> u) {
    if constexpr (LaneTraits<T>::size == 1) {
        return static_cast<T>(u);
    } else {
        using S = ScalarOf<T>;
        using Signed = Lanes<std::int32_t, LaneTraits<T>::size>;
        if constexpr (sizeof(S) == 8)
            return stdx::static_simd_cast<T>(stdx::static_simd_cast<Signed>(u ^ 0x80000000u)) + T(S(2147483648.0));
        const T high = stdx::static_simd_cast<T>(stdx::static_simd_cast<Signed>(u >> 16));
        const T low = stdx::static_simd_cast<T>(stdx::static_simd_cast<Signed>(u & 0xffffu));
        return high * T(S(65536)) + low;
    }
}

// Converts between float and double lanes of the same number.
template <class To, class From>
inline To lanesTo(const From& x) {
    if constexpr (LaneTraits<From>::size == 1)
        return static_cast<To>(x);
    else
        return stdx::static_simd_cast<To>(x);
}

}  // namespace vantoric
