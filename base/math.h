// Transcendental functions with the same bits on every machine. The C library picks code by processor
// (with or without fused multiply-add) and may differ in the last bit from one version to the next; a
// render must not. All are accurate to about one unit in the last place of a double (pow: a few), which
// is more than any caller keeps. The single-precision forms round the double result once.
//
// Square roots are exact in hardware: use std::sqrt.
#pragma once

namespace vantoric::math {

inline constexpr double pi = 3.14159265358979323846;

// e^x. Overflow and underflow are held at e^709 and e^-708; NaN reads as the lowest.
double exp(double x);
// Natural logarithm. Zero and subnormal numbers read as the smallest normal double; negative and NaN as well.
double log(double x);
// Radians. Beyond +-1e9 the reduction loses accuracy; beyond 2^52 or NaN the argument reads as 0.
double sin(double x);
double cos(double x);
double tan(double x);
double sinh(double x);
double tanh(double x);
// a^b for a >= 0; 0 for a = 0 and b > 0.
double pow(double a, double b);

inline float exp(float x) { return static_cast<float>(exp(static_cast<double>(x))); }
inline float log(float x) { return static_cast<float>(log(static_cast<double>(x))); }
inline float sin(float x) { return static_cast<float>(sin(static_cast<double>(x))); }
inline float cos(float x) { return static_cast<float>(cos(static_cast<double>(x))); }
inline float tan(float x) { return static_cast<float>(tan(static_cast<double>(x))); }
inline float sinh(float x) { return static_cast<float>(sinh(static_cast<double>(x))); }
inline float tanh(float x) { return static_cast<float>(tanh(static_cast<double>(x))); }
inline float pow(float a, float b) { return static_cast<float>(pow(static_cast<double>(a), static_cast<double>(b))); }

}  // namespace vantoric::math
