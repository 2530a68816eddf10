// Frequency modulation and sums of partials.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/math.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

constexpr double tau = 2.0 * math::pi;

double fraction(double x) { return x - std::floor(x); }

// Blend of the two neighbours in a row of `count` settings at p from 0 to 1.
struct Place {
    int index;
    double rest;
};
Place place(double p, int count) {
    const int index = std::min(static_cast<int>(p * (count - 1)), count - 2);
    return {index, p * (count - 1) - index};
}

}  // namespace

// The operator shapes of the small FM chips.
Spectrum fmWaveforms(Workshop& workshop, int frame) {
    static constexpr double (*shapes[fmWaveformFrames])(double) = {
        [](double t) { return math::sin(tau * t); },                            // sine
        [](double t) { return std::max(0.0, math::sin(tau * t)); },             // lower half cut off
        [](double t) { return std::fabs(math::cos(0.5 * tau * (t - 0.25))); },  // lower half turned up
        [](double t) {
            return fraction(2.0 * t) < 0.5 ? math::sin(tau * fraction(2.0 * t) * 0.5) * (t < 0.5 ? 1.0 : -1.0) : 0.0;
        },
        [](double t) { return t < 0.5 ? math::sin(2.0 * tau * t) + 0.4 * math::sin(tau * t) : 0.0; },  // two in one half
        [](double t) { return t < 0.5 ? std::fabs(math::sin(2.0 * tau * t)) : 0.0; },                  // two humps
        [](double t) { return math::tanh(4.0 * math::sin(tau * t)); },                                 // nearly square
        [](double t) { return t < 0.5 ? math::exp(-6.0 * t) : -math::exp(6.0 * (t - 1.0)); },          // logarithmic saw
    };
    Spectrum result = workshop.draw(shapes[frame]);
    result.alignFundamental();
    return result;
}

// Partials of a saw, all modulated by the fundamental, over a steady fundamental.
Spectrum fmSawAdd(Workshop& workshop, int frame) {
    const double depth = 5.0 * position(frame, additiveFrames);
    return workshop.draw([depth](double t) {
        const double bend = depth * math::sin(tau * t);
        double sum = 0.0;
        for (int n = 1; n <= 10; ++n) sum += math::sin(n * tau * t + bend) / n;
        return sum + 0.7 * math::sin(tau * t);
    });
}

// Odd partials, modulated by the second harmonic, which keeps them odd.
Spectrum fmSquareAdd(Workshop& workshop, int frame) {
    const double depth = 5.0 * position(frame, additiveFrames);
    return workshop.draw([depth](double t) {
        const double bend = depth * math::sin(2.0 * tau * t);
        double sum = 0.0;
        for (int n = 1; n <= 15; n += 2) sum += math::sin(n * tau * t + bend) / n;
        return sum + 0.7 * math::sin(tau * t);
    });
}

// Eight equal partials, spread by a modulator at three times their pitch.
Spectrum fmImpulseAdd(Workshop& workshop, int frame) {
    const double depth = 4.0 * position(frame, additiveFrames);
    return workshop.draw([depth](double t) {
        const double bend = depth * math::sin(3.0 * tau * t);
        double sum = 0.0;
        for (int n = 1; n <= 8; ++n) sum += math::sin(n * tau * t + bend);
        return sum + 1.5 * math::sin(tau * t);
    });
}

// Carrier and modulator at neighbouring primes, over a steady fundamental; fades from pair to pair.
Spectrum fmPrimePairs(Workshop& workshop, int frame) {
    static constexpr int primes[] = {2, 3, 5, 7, 11, 13, 17, 19, 23};
    constexpr int pairs = 8;
    const auto [index, rest] = place(position(frame, primeFrames), pairs);
    auto pair = [](int i, double t) { return math::sin(tau * primes[i] * t + 1.6 * math::sin(tau * primes[i + 1] * t)); };
    const double fade = 0.5 - 0.5 * math::cos(math::pi * rest);
    const int first = index;
    return workshop.draw(
        [=](double t) { return 0.9 * math::sin(tau * t) + 0.7 * ((1.0 - fade) * pair(first, t) + fade * pair(first + 1, t)); });
}

// A sine driven ever deeper into a sine-shaped fold. The first frame is the pure sine.
Spectrum foldedSine(Workshop& workshop, int frame) {
    if (frame == 0) return sines([](int k) { return k == 1 ? 1.0 : 0.0; });
    const double drive = 0.05 + 7.0 * position(frame, sineFrames);
    // What the fold takes from the fundamental is put back, so that it never turns over.
    return workshop.draw([drive](double t) {
        const double x = math::sin(tau * t);
        return math::sin(drive * x) / std::min(1.0, drive) + 0.8 * x * std::min(1.0, drive * 0.5);
    });
}

// The first N odd harmonics of the square, N growing from 1 to 64; the newest fades in.
Spectrum nSquare(Workshop&, int frame) {
    const double count = math::exp(position(frame, nSquareFrames) * math::log(64.0));
    return sines([count](int k) {
        if (k % 2 == 0) return 0.0;
        return std::clamp(count - (k - 1) / 2, 0.0, 1.0) / k;
    });
}

// Drawbars. Written as on the instrument, sub-octave first; the sub-octave is harmonic 1 here.
Spectrum organ(Workshop&, int frame) {
    constexpr int bars = 9, settings = 9;
    static constexpr int harmonics[bars] = {1, 3, 2, 4, 6, 8, 10, 12, 16};
    static constexpr int registrations[settings][bars] = {
        {8, 0, 0, 0, 0, 0, 0, 0, 0}, {8, 0, 8, 0, 0, 0, 0, 0, 0}, {8, 8, 8, 0, 0, 0, 0, 0, 0},
        {8, 3, 8, 6, 0, 0, 0, 0, 0}, {6, 0, 8, 8, 0, 4, 0, 0, 3}, {8, 6, 8, 8, 6, 5, 0, 0, 0},
        {8, 0, 6, 0, 0, 7, 0, 0, 8}, {8, 6, 8, 8, 5, 8, 5, 6, 8}, {8, 8, 8, 8, 8, 8, 8, 8, 8},
    };
    const auto [index, rest] = place(position(frame, organFrames), settings);
    Spectrum result;
    for (int bar = 0; bar < bars; ++bar) {
        auto level = [bar](int setting) {
            const int drawn = registrations[setting][bar];
            return drawn ? math::exp((drawn - 8) * 3.0 * 0.11512925464970229) : 0.0;  // 3 dB a step
        };
        result.sine[harmonics[bar]] = (1.0 - rest) * level(index) + rest * level(index + 1);
    }
    return result;
}

// A struck bell on the harmonic grid: the upper partials die first.
Spectrum bell(Workshop&, int frame) {
    struct Partial {
        int harmonic;
        double level, decay;
    };
    static constexpr Partial partials[] = {{1, 1.0, 0.3},  {2, 0.5, 0.8},  {5, 0.9, 1.4},   {7, 0.8, 1.8},
                                           {11, 0.9, 2.4}, {16, 0.7, 3.0}, {23, 0.7, 3.8},  {31, 0.6, 4.6},
                                           {43, 0.5, 5.6}, {57, 0.4, 7.0}, {79, 0.35, 9.0}, {113, 0.25, 12.0}};
    const double age = 1.0 - position(frame, bellFrames);  // the first frame is the last of the sound
    Spectrum result;
    for (const Partial& partial : partials) result.sine[partial.harmonic] = partial.level * math::exp(-partial.decay * age);
    return result;
}

// A square whose bits flip. Frame 8 is a comb, every fourth bit turned over; from there on a rule without a
// pattern decides, a few bits at a time.
Spectrum bitNoise(Workshop&, int frame) {
    constexpr int bits = 64, combFrame = 8;
    std::array<double, bits> value;
    for (int i = 0; i < bits; ++i) {
        const double base = i < bits / 2 ? 1.0 : -1.0;
        const bool tooth = i % 4 == 3;
        const double teeth = tooth ? std::min(1.0, static_cast<double>(frame) / combFrame) : 0.0;
        // Each bit that chance picks turns over in a time of its own, over eight frames.
        const bool turns = chance(0xb17, i) < 0.5;
        const double start = combFrame + chance(0xb18, i) * (bitFrames - combFrame - 9);
        const double turned = turns ? std::clamp((frame - start) / 8.0, 0.0, 1.0) : 0.0;
        value[i] = base * (1.0 - 2.0 * teeth) * (1.0 - 2.0 * turned) + 0.25 * base;
    }
    Spectrum result;
    for (int i = 0; i < bits; ++i) {
        if (value[i] == 0.0) continue;
        // One bit is a pulse of 1/64 of the cycle; pulse() has its middle at 1/4.
        Spectrum bit = pulse(1.0 / bits);
        bit.advance(0.25 - (i + 0.5) / bits);
        result.add(bit, value[i]);
    }
    return result;
}

}  // namespace vantoric::waves
