// Arithmetic that every room shares: the instrument's own exponential, its shaping curve,
// NaN-safe clamps and the decoding of stored parameter values.
#pragma once

#include <cstdint>
#include <cstring>

namespace vantoric {

// Clamps to [low, high]. NaN reads as `low`. Works for any ordered type.
template <class T>
constexpr T clampTo(T value, T low, T high) {
    return value > low ? (value < high ? value : high) : low;
}

// Clamps to [0, 1]; NaN reads as 0.
constexpr float clampUnit(float value) { return clampTo(value, 0.0f, 1.0f); }
constexpr double clampUnit(double value) { return clampTo(value, 0.0, 1.0); }

// Truncates towards zero after clamping to [low, high], so that the conversion is always defined.
constexpr int truncateTo(double value, int low, int high) {
    return static_cast<int>(clampTo(value, static_cast<double>(low), static_cast<double>(high)));
}

// The fast power of two: 2^n (1 + 0.75 f + 0.25 f f), n the floor of x, f the rest. It meets 2^x at
// whole numbers and stays within 0.4 percent between them. n is held to the exponents of a normal
// double (-1022 to 1023); NaN reads as the lowest.
inline double fastPower2(double x) {
    x = clampTo(x, -1022.0, 1023.0);
    int whole = static_cast<int>(x);
    whole -= static_cast<double>(whole) > x ? 1 : 0;
    const double rest = x - static_cast<double>(whole);
    const std::uint64_t bits = static_cast<std::uint64_t>(whole + 1023) << 52;
    double power;
    std::memcpy(&power, &bits, sizeof power);
    return power * (1.0 + 0.75 * rest + 0.25 * rest * rest);
}

// The fast exponential on which every time, rate and cutoff law of the instrument rests. The factor
// is deliberately not log2(e): it is the single-precision 1.4408.
inline double fastExp(double x) { return fastPower2(1.4407999515533447 * x); }

// Shaping curve S(x, k): three rounds of g(x) = x (1 - k (1 - x)). k = 0 is the identity, k = 0.8
// comes close to an exponential decay.
template <class T>
constexpr T shapeCurve(T x, T k) {
    for (int round = 0; round < 3; ++round) x = x * (T(1) + k) - (T(2) * x - x * x) * k;
    return x;
}

// List parameters store index / 128. Returns the index, 0 to 127, of a stored value.
constexpr int listIndex(float value) { return static_cast<int>(clampTo(value * 128.0f + 0.00001f, 0.0f, 127.0f)); }

// The stored value of a list index.
constexpr float listValue(int index) { return static_cast<float>(index) * 0.0078125f; }

// Switch parameters are on above 0.5.
constexpr bool switchOn(float value) { return value > 0.5f; }

// Twice the clamp of x to [0, 1]: (|x| - |x - 1|) + 1, the form in which control values are bounded.
// NaN reads as 0.
constexpr float doubledUnit(float x) { return 2.0f * clampUnit(x); }

}  // namespace vantoric
