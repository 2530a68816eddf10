// Collections of single cycles.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/math.h"
#include "factory/waves/makers.h"

namespace vantoric::waves {

namespace {

constexpr double tau = 2.0 * math::pi;

double power(double x, double exponent) { return math::exp(exponent * math::log(x)); }

double bump(double x, double middle, double width) {
    const double d = (x - middle) / width;
    return math::exp(-0.5 * d * d);
}

}  // namespace

// Eight pipes and reeds, each from dark to bright in eight steps.
Spectrum reedsAndPipes(Workshop&, int frame) {
    const int kind = frame / 8;
    const double slope = 2.4 - 0.22 * (frame % 8);
    return sines([kind, slope](int k) {
        const double tilt = power(k, -slope);
        switch (kind) {
            case 0: return tilt;                                                         // open pipe
            case 1: return k % 2 ? tilt : 0.05 * tilt;                                   // stopped pipe
            case 2: return tilt * (k % 3 ? 1.0 : 0.1);                                   // struck at a third
            case 3: return tilt * (0.4 + 2.5 * bump(k, 6, 2.5) + 1.5 * bump(k, 14, 4));  // double reed
            case 4: return tilt * (k % 2 ? 1.0 : 0.3 + 0.7 * bump(k, 10, 4));            // single reed
            case 5: return tilt * (0.3 + 3.0 * bump(k, 4, 1.5));                         // horn
            case 6: return tilt * (k % 4 == 1 ? 1.0 : 0.35);                             // nasal
            default: return k == 1 || k % 2 == 0 ? tilt : 0.15 * tilt;                   // octaves
        }
    });
}

// Sung vowels, u o a e i, for a voice at 110 Hz; the formants wander from one to the next.
Spectrum vowels(Workshop&, int frame) {
    struct Formant {
        double hertz, level;
    };
    constexpr int count = 5, formants = 4;
    static constexpr Formant table[count][formants] = {
        {{300, 1.0}, {700, 0.45}, {2300, 0.10}, {3300, 0.08}},   // u
        {{450, 1.0}, {850, 0.70}, {2500, 0.14}, {3400, 0.10}},   // o
        {{750, 1.0}, {1200, 0.80}, {2600, 0.30}, {3500, 0.20}},  // a
        {{500, 1.0}, {1850, 0.50}, {2600, 0.40}, {3600, 0.22}},  // e
        {{280, 1.0}, {2250, 0.45}, {3000, 0.40}, {3700, 0.25}},  // i
    };
    const double p = position(frame, 64) * (count - 1);
    const int from = std::min(static_cast<int>(p), count - 2);
    const double rest = p - from;
    Spectrum result = sines([from, rest](int k) {
        const double hertz = 110.0 * k;
        double sum = 0.03;
        for (int i = 0; i < formants; ++i) {
            const Formant &a = table[from][i], &b = table[from + 1][i];
            const double middle = a.hertz + rest * (b.hertz - a.hertz);
            const double level = a.level + rest * (b.level - a.level);
            const double width = 50.0 + 0.05 * middle;
            const double d = (hertz - middle) / width;
            sum += level / (1.0 + d * d);
        }
        return sum * power(k, -0.35) * math::exp(-hertz / 9000.0) + (k == 1 ? 0.35 : 0.0);
    });
    return result;
}

// Four curves in stairs, coarse to fine: a sine of few steps, a sine on few levels over its octave, a saw
// that counts with missing bits, and a triangle that is folded before it is held.
Spectrum stairs(Workshop& workshop, int frame) {
    const int shape = frame / 8;
    const int size = frame % 8;
    static constexpr int steps[8] = {4, 5, 6, 7, 9, 12, 18, 30};
    const int count = steps[size];
    Spectrum result = workshop.draw([shape, size, count](double t) {
        const double held = (std::floor(t * count) + 0.5) / count;
        switch (shape) {
            case 0: return math::sin(tau * held);
            case 1: {
                const double heights = 1.0 + size;
                return std::floor((math::sin(tau * t) + 0.7 * math::sin(2.0 * tau * t)) * heights + 0.5) / heights;
            }
            case 2: {
                const int counter = static_cast<int>(t * 32.0);
                return static_cast<double>(counter & ~(1 << (size % 5)) & (size < 5 ? 31 : 27)) / 16.0 - 1.0;
            }
            default: {
                const double triangle = 1.0 - 4.0 * std::fabs(held - 0.5);
                return math::sin(tau * 0.25 * (1.0 + 0.9 * size) * triangle) + 0.3 * math::sin(tau * t);
            }
        }
    });
    result.alignFundamental();
    return result;
}

// Fundamentals with a chord in their upper partials: fifths, triads, sevenths, wide and close.
Spectrum chordsOfPartials(Workshop&, int frame) {
    static constexpr std::array<int, 4> chords[8] = {{2, 3, 4, 6},   {4, 5, 6, 8},    {4, 6, 7, 9},     {6, 7, 9, 12},
                                                     {8, 9, 12, 15}, {8, 10, 15, 18}, {10, 12, 15, 18}, {12, 14, 18, 21}};
    const auto& chord = chords[frame / 4];
    const int brightness = frame % 4;
    Spectrum result;
    result.sine[1] = 1.0;
    for (std::size_t i = 0; i < chord.size(); ++i)
        for (int overtone = 1; overtone <= 1 + 2 * brightness; ++overtone)
            result.sine[chord[i] * overtone] += 0.6 / (overtone * (1.0 + 0.3 * static_cast<double>(i)));
    return result;
}

// One modulator on one carrier: eight ratios at eight depths.
Spectrum ratios(Workshop& workshop, int frame) {
    struct Ratio {
        int carrier, modulator;
    };
    static constexpr Ratio table[8] = {{1, 1}, {1, 2}, {1, 3}, {1, 4}, {2, 1}, {3, 1}, {2, 3}, {1, 7}};
    const Ratio ratio = table[frame / 8];
    const double depth = 0.4 + 0.45 * (frame % 8);
    Spectrum result = workshop.draw([ratio, depth](double t) {
        return math::sin(tau * ratio.carrier * t + depth * math::sin(tau * ratio.modulator * t)) + 0.35 * math::sin(tau * t);
    });
    result.alignFundamental();
    // Where the fundamental changes its sign with the depth, aligning it turns all other harmonics over. Their
    // phases are all 0 or half a turn, so magnitudes alone keep every neighbour in step.
    for (int k = 1; k < harmonicLimit; ++k) {
        result.sine[k] = result.magnitude(k);
        result.cosine[k] = 0.0;
    }
    return result;
}

// Strings: eight places of plucking or picking up, each in four states of wear.
Spectrum strings(Workshop&, int frame) {
    static constexpr double places[8] = {0.5, 0.4, 0.3333333333333333, 0.25, 0.2, 0.14, 0.1, 0.06};
    const double where = places[frame / 4];
    const double slope = 0.7 + 0.35 * (frame % 4);
    return sines([where, slope](int k) {
        const double excited = std::fabs(math::sin(math::pi * k * where));
        return (0.02 + excited) * power(k, -slope) * math::exp(-k / 400.0) + (k == 1 ? 0.3 : 0.0);
    });
}

// Waveshapers: Chebyshev polynomials, clipping, folding and rectifying at four strengths each.
Spectrum shapers(Workshop& workshop, int frame) {
    const int kind = frame / 4;
    const double drive = 1.0 + frame % 4;
    Spectrum result = workshop.draw([kind, drive](double t) {
        const double x = math::sin(tau * t), x2 = x * x;
        switch (kind) {
            case 0: return x + 0.25 * drive * (4.0 * x2 - 3.0) * x;                    // third
            case 1: return x + 0.25 * drive * (2.0 * x2 - 1.0);                        // second
            case 2: return x + 0.25 * drive * ((16.0 * x2 - 20.0) * x2 + 5.0) * x;     // fifth
            case 3: return std::clamp(x * (1.0 + drive), -1.0, 1.0);                   // clipped
            case 4: return math::tanh(drive * 2.0 * (x + 0.4));                        // lopsided
            case 5: return math::sin(math::pi * 0.5 * (1.0 + drive) * x) + 0.8 * x;    // folded
            case 6: return std::fabs(x + 0.3 * drive) + 0.3 * x;                       // rectified
            default: return x * math::exp(-0.9 * drive * (1.0 + math::cos(tau * t)));  // squeezed
        }
    });
    result.alignFundamental();
    return result;
}

// The impulse, then trains, pairs, packets and chirps.
Spectrum impulses(Workshop& workshop, int frame) {
    // Raised-cosine pulse of the given width, its middle at `middle`; both are parts of the cycle.
    auto hump = [](double t, double middle, double width) {
        const double d = std::fabs(t - middle) / width;
        return d < 0.5 ? 0.5 + 0.5 * math::cos(tau * d) : 0.0;
    };
    auto curve = [frame, hump](double t) {
        switch (frame) {
            case 0: return hump(t, 0.25, 1.0 / 32);
            case 1: return hump(t, 0.25, 1.0 / 12);
            case 2: return hump(t, 0.25, 1.0 / 32) - hump(t, 0.75, 1.0 / 32);
            case 3: return hump(t, 0.2, 1.0 / 24) + 0.7 * hump(t, 0.3, 1.0 / 24);
            case 4: return hump(t, 0.2, 1.0 / 24) - 0.7 * hump(t, 0.3, 1.0 / 24) + 0.1 * math::sin(tau * t);
            case 5: return hump(t, 0.1, 0.05) + 0.75 * hump(t, 0.25, 0.05) + 0.5 * hump(t, 0.4, 0.05);
            case 6: return hump(t, 0.1, 0.04) + hump(t, 0.2, 0.04) + hump(t, 0.35, 0.04) + hump(t, 0.6, 0.04);
            case 7: return hump(t, 0.25, 0.4) * math::cos(tau * 8.0 * (t - 0.25)) + 0.2 * math::sin(tau * t);
            case 8: return hump(t, 0.25, 0.4) * math::cos(tau * 16.0 * (t - 0.25)) + 0.2 * math::sin(tau * t);
            case 9: return hump(t, 0.25, 0.5) * (0.5 + 0.5 * math::cos(tau * 12.0 * (t - 0.25)));
            case 10: return hump(t, 0.5, 1.0) * math::sin(tau * 20.0 * t * t) + 0.2 * math::sin(tau * t);
            case 11: return hump(t, 0.5, 1.0) * math::sin(tau * 40.0 * (1.0 - t) * (1.0 - t)) + 0.2 * math::sin(tau * t);
            case 12: return t < 0.5 ? math::sin(tau * 4.0 * t) * math::exp(-6.0 * t) : 0.0;
            case 13: return math::exp(-20.0 * t) - math::exp(-80.0 * t);
            case 14: return hump(t, 0.25, 0.5) * (chance(0x9a7, static_cast<std::uint32_t>(t * 48.0)) - 0.2);
            default: return t < 0.0625 ? 1.0 : t < 0.1875 ? -0.4 : t < 0.375 ? 0.5 : t < 0.6875 ? -0.2 : 0.1;
        }
    };
    Spectrum result = workshop.draw(curve);
    if (frame == 0) return result;
    result.alignFundamental();
    return result;
}

}  // namespace vantoric::waves
