#include "base/math.h"

#include <bit>
#include <cstdint>

#include "base/numbers.h"

namespace vantoric::math {

namespace {

constexpr double ln2High = 6.93147180369123816490e-01;  // 32 significant bits: n x ln2High is exact
constexpr double ln2Low = 1.90821492927058770002e-10;
constexpr double log2e = 1.44269504088896338700;

double powerOfTwo(int n) { return std::bit_cast<double>(static_cast<std::uint64_t>(n + 1023) << 52); }

// Sum of c[k] x^k by Horner's rule.
template <int count>
double polynomial(const double (&c)[count], double x) {
    double sum = c[count - 1];
    for (int k = count - 2; k >= 0; --k) sum = sum * x + c[k];
    return sum;
}

double roundToWhole(double x) {
    const auto whole = static_cast<std::int64_t>(x + (x < 0 ? -0.5 : 0.5));
    return static_cast<double>(whole);
}

// sin(r) and cos(r) for |r| up to pi / 4, from their power series in r^2.
double sinePart(double r) {
    static constexpr double c[] = {1.0,
                                   -1.0 / 6,
                                   1.0 / 120,
                                   -1.0 / 5040,
                                   1.0 / 362880,
                                   -1.0 / 39916800,
                                   1.0 / 6227020800,
                                   -1.0 / 1307674368000,
                                   1.0 / 355687428096000};
    return r * polynomial(c, r * r);
}
double cosinePart(double r) {
    static constexpr double c[] = {
        1.0, -0.5, 1.0 / 24, -1.0 / 720, 1.0 / 40320, -1.0 / 3628800, 1.0 / 479001600, -1.0 / 87178291200, 1.0 / 20922789888000};
    return polynomial(c, r * r);
}

// Cody and Waite's reduction: x less a multiple of pi / 2, taken off in three parts so that the products
// are exact for |x| up to about a million. Returns the quadrant.
int reduceQuarter(double x, double& r) {
    constexpr double part1 = 1.57079632673412561417e+00;
    constexpr double part2 = 6.07710050630396597660e-11;
    constexpr double part3 = 2.02226624879595063154e-21;
    constexpr double limit = 4503599627370496.0;
    if (!(x < limit && x > -limit)) x = 0;
    const double k = roundToWhole(x * 0.63661977236758134308);
    r = ((x - k * part1) - k * part2) - k * part3;
    return static_cast<int>(static_cast<std::int64_t>(k) & 3);
}

}  // namespace

double exp(double x) {
    static constexpr double c[] = {
        1.0,        1.0,         1.0 / 2,      1.0 / 6,       1.0 / 24,       1.0 / 120,       1.0 / 720,
        1.0 / 5040, 1.0 / 40320, 1.0 / 362880, 1.0 / 3628800, 1.0 / 39916800, 1.0 / 479001600, 1.0 / 6227020800};
    x = clampTo(x, -708.0, 709.0);
    const double n = roundToWhole(x * log2e);
    const double r = (x - n * ln2High) - n * ln2Low;
    return polynomial(c, r) * powerOfTwo(static_cast<int>(n));
}

double log(double x) {
    constexpr double smallest = 2.2250738585072014e-308;
    constexpr double largest = 1.7976931348623157e308;
    x = clampTo(x, smallest, largest);
    auto bits = std::bit_cast<std::uint64_t>(x);
    int exponent = static_cast<int>(bits >> 52) - 1023;
    double m = std::bit_cast<double>((bits & 0x000fffffffffffffu) | 0x3ff0000000000000u);
    if (m > 1.41421356237309504880) {
        m *= 0.5;
        ++exponent;
    }
    // log m = 2 artanh((m - 1) / (m + 1)), by its power series
    static constexpr double c[] = {1.0,      1.0 / 3,  1.0 / 5,  1.0 / 7,  1.0 / 9,  1.0 / 11,
                                   1.0 / 13, 1.0 / 15, 1.0 / 17, 1.0 / 19, 1.0 / 21, 1.0 / 23};
    const double s = (m - 1.0) / (m + 1.0);
    const double n = exponent;
    return n * ln2High + (2.0 * s * polynomial(c, s * s) + n * ln2Low);
}

double sin(double x) {
    double r;
    switch (reduceQuarter(x, r)) {
        case 0: return sinePart(r);
        case 1: return cosinePart(r);
        case 2: return -sinePart(r);
        default: return -cosinePart(r);
    }
}

double cos(double x) {
    double r;
    switch (reduceQuarter(x, r)) {
        case 0: return cosinePart(r);
        case 1: return -sinePart(r);
        case 2: return -cosinePart(r);
        default: return sinePart(r);
    }
}

double tan(double x) {
    double r;
    const int quadrant = reduceQuarter(x, r);
    return (quadrant & 1) == 0 ? sinePart(r) / cosinePart(r) : -cosinePart(r) / sinePart(r);
}

double sinh(double x) {
    if (x < 0.5 && x > -0.5) {
        static constexpr double c[] = {1.0, 1.0 / 6, 1.0 / 120, 1.0 / 5040, 1.0 / 362880, 1.0 / 39916800, 1.0 / 6227020800};
        return x * polynomial(c, x * x);
    }
    const double e = exp(x);
    return 0.5 * (e - 1.0 / e);
}

double tanh(double x) {
    if (x > 20.0) return 1.0;
    if (x < -20.0) return -1.0;
    const double e = exp(x);
    return sinh(x) * 2.0 / (e + 1.0 / e);
}

double pow(double a, double b) { return a == 0.0 && b > 0.0 ? 0.0 : exp(b * log(a)); }

}  // namespace vantoric::math
