// Cycles drawn by bending the phase of a sine, by resonance and by hard sync.
#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

constexpr double tau = 2.0 * math::pi;

double fraction(double x) { return x - std::floor(x); }

// From `low` to `high` in equal ratios.
double sweep(double low, double high, double p) { return low * math::exp(p * math::log(high / low)); }

// 1 up to `start`, then down to 0 at t = 1 along half a cosine.
double fadeFrom(double start, double t) {
    return t < start ? 1.0 : 0.5 + 0.5 * math::cos(math::pi * (t - start) / (1.0 - start));
}

}  // namespace

// The sine's phase runs its first half in ever less time (Casio's phase distortion, US patent 4658691).
Spectrum pdSineSaw(Workshop& workshop, int frame) {
    const double knee = sweep(0.5, 0.0075, position(frame, phaseFrames));
    Spectrum result = workshop.draw([knee](double t) {
        const double phase = t < knee ? 0.5 * t / knee : 0.5 + 0.5 * (t - knee) / (1.0 - knee);
        return -math::cos(tau * phase);
    });
    result.alignFundamental();
    return result;
}

// The phase rests at the two extremes and hurries between them.
Spectrum pdSineSquare(Workshop& workshop, int frame) {
    const double run = sweep(0.5, 0.015, position(frame, phaseFrames));  // time of each of the two moves
    return workshop.draw([run](double t) {
        const double half = fraction(2.0 * t + 0.5) * 0.5;  // 0 to 1/2 from one rest to the next, move in the middle
        const double moved = std::clamp((half - 0.25) / run + 0.5, 0.0, 1.0);
        const double sign = fraction(t + 0.25) < 0.5 ? 1.0 : -1.0;
        return -sign * math::cos(math::pi * moved);
    });
}

// Two parabolas a cycle push the phase forward, then back.
Spectrum pdParabolDouble(Workshop& workshop, int frame) {
    const double depth = 1.1 * position(frame, phaseFrames);
    return workshop.draw([depth](double t) {
        const double half = fraction(2.0 * t);
        const double bend = 4.0 * half * (1.0 - half) * (t < 0.5 ? 1.0 : -0.6);
        return math::sin(tau * (t + 0.5 * depth * bend)) + 0.4 * math::sin(tau * t);
    });
}

// A faster cosine under a falling ramp that restarts with the cycle: a resonance without a filter.
Spectrum pdResAsym(Workshop& workshop, int frame) {
    const double ratio = 1.0 + 15.0 * position(frame, resonanceFrames);
    return workshop.draw([ratio](double t) { return (1.0 - t) * (1.0 - math::cos(tau * ratio * t)); });
}

// The same under a triangle, from the middle to both sides alike.
Spectrum pdResSym(Workshop& workshop, int frame) {
    const double ratio = 1.0 + 15.0 * position(frame, resonanceFrames);
    return workshop.draw([ratio](double t) {
        const double x = t < 0.25 ? t + 0.75 : t - 0.25;  // the triangle's top stands at t = 3/4
        return (1.0 - std::fabs(2.0 * x - 1.0)) * (1.0 + math::cos(tau * ratio * (x - 0.5)));
    });
}

// A saw through a resonant four-pole low-pass, H = 1 / (((1 + i f)^4 + r) / (1 + r)), the corner swept over
// seven octaves.
Spectrum analogFilter(Workshop&, int frame) {
    const double corner = sweep(1.2, 140.0, position(frame, filterFrames));
    constexpr double resonance = 2.4;
    Spectrum result = saw();
    for (int k = 1; k < harmonicLimit; ++k) {
        const double f = k / corner;
        const double re2 = 1.0 - f * f, im2 = 2.0 * f;
        const double re = re2 * re2 - im2 * im2 + resonance, im = 2.0 * re2 * im2;
        const double size = (1.0 + resonance) / (re * re + im * im);
        const double s = result.sine[k];
        // s sin(x) times (re - i im): the delayed part falls on the cosine.
        result.sine[k] = s * re * size;
        result.cosine[k] = -s * im * size;
    }
    return result;
}

// A tone that dives in every cycle, from ever higher up.
Spectrum laser(Workshop& workshop, int frame) {
    const double p = position(frame, laserFrames);
    const double top = 40.0 * p * (0.4 + 0.6 * p);
    constexpr double fall = 4.0;
    return workshop.draw([top](double t) {
        const double dive = top * (1.0 - math::exp(-fall * t)) / fall;
        const double window = fadeFrom(0.35, t) * std::min(1.0, t * 200.0);
        return window * math::sin(tau * (dive + t)) + 0.35 * math::sin(tau * t);
    });
}

// Hard sync: the follower runs 1 to 9 times as fast and fades before it is restarted.
Spectrum syncSaw(Workshop& workshop, int frame) {
    const double ratio = 1.0 + 8.0 * position(frame, syncFrames);
    return workshop.draw([ratio](double t) { return (1.0 - 2.0 * fraction(ratio * t)) * (0.35 + 0.65 * fadeFrom(0.2, t)); });
}

Spectrum syncSquare(Workshop& workshop, int frame) {
    const double ratio = 1.0 + 8.0 * position(frame, syncFrames);
    return workshop.draw(
        [ratio](double t) { return (fraction(ratio * t) < 0.5 ? 1.0 : -1.0) * (0.35 + 0.65 * fadeFrom(0.2, t)); });
}

}  // namespace vantoric::waves
