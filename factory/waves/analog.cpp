// Saws, squares and what an analog console makes of them.
#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

constexpr double pi = math::pi;

// A triangle whose rise takes `rise` (0 to 1/2) of the cycle around t = 0; 0 is the falling saw. The
// corners' second derivative gives harmonic k the size sin(pi k rise) / (pi k rise) / k.
Spectrum slopedTriangle(double rise) {
    return sines([rise](int k) {
        const double x = pi * k * rise;
        return (x > 0.0 ? math::sin(x) / x : 1.0) / k;
    });
}

// How far harmonics leave their place in a noisy wave: the phase of each goes its own way by up to half a
// turn, and the upper ones grow, so that in the end noise of that pitch is left.
Spectrum noisy(const Spectrum& clean, std::uint32_t seed, double amount) {
    Spectrum result;
    for (int k = 1; k < harmonicLimit; ++k) {
        const double turn = k == 1 ? 0.0 : amount * pi * (2.0 * chance(seed, k) - 1.0);
        const double lift = math::exp(amount * 0.5 * math::log(static_cast<double>(k)));
        const double spread = 1.0 + amount * (0.3 + 1.4 * chance(seed + 1, k) - 1.0);
        const double size = lift * spread, c = math::cos(turn) * size, s = math::sin(turn) * size;
        result.cosine[k] = clean.cosine[k] * c + clean.sine[k] * s;
        result.sine[k] = clean.sine[k] * c - clean.cosine[k] * s;
    }
    return result;
}

}  // namespace

// The rise shortens in equal ratios, so that the brightness grows evenly, and reaches zero in the last frame.
Spectrum triangleSaw(Workshop&, int frame) {
    constexpr double reach = 4.6;
    const double left = math::exp(-reach * position(frame, triangleSawFrames)), last = math::exp(-reach);
    return slopedTriangle(0.5 * (left - last) / (1.0 - last));
}

double pulseWidth(int frame) {
    // The widths that have a name stand at fixed frames; between them the width goes in straight lines, and
    // beyond the last it shrinks in equal ratios to 1/96.
    struct Point {
        int frame;
        double width;
    };
    static constexpr Point points[] = {{0, 1.0 / 2},  {25, 2.0 / 5}, {43, 1.0 / 3}, {64, 1.0 / 4},
                                       {77, 1.0 / 5}, {85, 1.0 / 6}, {96, 1.0 / 8}};
    if (frame > 96) return 0.125 * math::exp((frame - 96) / 31.0 * math::log(1.0 / 12));
    const Point* upper = points + 1;
    while (upper->frame < frame) ++upper;
    const Point& lower = upper[-1];
    return lower.width + (upper->width - lower.width) * (frame - lower.frame) / (upper->frame - lower.frame);
}

Spectrum squareImpulse(Workshop&, int frame) { return pulse(pulseWidth(frame)); }

// A second, quieter saw moves away from the first until it stands half a cycle behind.
Spectrum doubleSaw(Workshop&, int frame) {
    Spectrum result = saw(), second = saw();
    second.advance(0.5 * position(frame, electricFrames));
    result.add(second, 0.7);
    return result;
}

// A square with drooping tops, as a coupling capacitor leaves it, bends over into the saw.
Spectrum squareSaw(Workshop& workshop, int frame) {
    const double p = position(frame, electricFrames);
    const double droop = 1.2;
    Spectrum result = workshop.draw([droop](double t) {
        const double half = t < 0.5 ? t : t - 0.5;
        return (t < 0.5 ? 1.0 : -1.0) * math::exp(-2.0 * droop * half);
    });
    result.shape([p](int) { return 1.0 - p; });
    result.add(saw(), p);
    return result;
}

// Harmonics in bands that rise and sink in turn while the brightness grows.
Spectrum alpha1(Workshop&, int frame) {
    const double p = position(frame, electricFrames);
    return sines([p](int k) {
        const double octave = math::log(static_cast<double>(k)) / 0.6931471805599453;
        const double bands = 0.55 + 0.45 * math::cos(2.0 * pi * (octave * 0.9 - 2.0 * p));
        const double tilt = math::exp(-(1.7 - 0.9 * p) * octave * 0.6931471805599453);
        return k == 1 ? 1.0 : bands * tilt;
    });
}

// A dark wave of few teeth opens into a bright one of many: the teeth of the comb move together, and a
// resonance climbs with them. In frame 64 the teeth stand at every fourth harmonic.
Spectrum alpha2(Workshop&, int frame) {
    const double p = position(frame, alpha2Frames);
    const double delay = 0.125 + 0.125 * frame / 64.0;
    const double peak = 2.0 * math::exp(p * math::log(24.0));  // harmonic of the resonance, 2 to 48
    const double slope = 1.55 - 0.6 * p;
    return sines([delay, peak, slope](int k) {
        const double tooth = std::fabs(math::cos(pi * (k - 1) * delay));
        const double octaves = math::log(k / peak) / 0.6931471805599453;
        const double resonance = 1.0 + 2.2 * math::exp(-4.0 * octaves * octaves);
        return (0.08 + 0.92 * tooth * tooth) * resonance * math::exp(-slope * math::log(static_cast<double>(k)));
    });
}

Spectrum noisySquare(Workshop&, int frame) { return noisy(pulse(0.5), 0x51a7e, position(frame, noisyFrames)); }
Spectrum noisySaw(Workshop&, int frame) { return noisy(saw(), 0x5a3, position(frame, noisyFrames)); }

// A saw and its echo within the cycle: notches at the odd multiples of half the inverse delay.
Spectrum combSaw(Workshop&, int frame) {
    Spectrum result = saw(), echo = saw();
    echo.advance(-(1.0 / 24 + 0.3 * position(frame, combFrames)));
    result.add(echo, 0.95);
    result.alignFundamental();
    return result;
}

}  // namespace vantoric::waves
