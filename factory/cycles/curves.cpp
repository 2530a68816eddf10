// Cycles that are drawn as curves: analog shapes, bent phases, hard sync, formants, shapers, modulation.
// Ramps rise, so that a cycle can begin in the middle of one.
#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "factory/cycles/cycle.h"

namespace vantoric::cycles {

namespace {

constexpr double tau = 2.0 * math::pi;

double sine(double turns) { return math::sin(tau * turns); }
double cosine(double turns) { return math::cos(tau * turns); }
double fraction(double x) { return x - std::floor(x); }
double ramp(double x) { return 2.0 * fraction(x) - 1.0; }                                 // -1 up to 1
double triangle(double x) { return 1.0 - 4.0 * std::fabs(fraction(x + 0.25) - 0.5); }     // as the sine goes
double square(double x, double width = 0.5) { return fraction(x) < width ? 1.0 : -1.0; }  // high first
// 1 at t = 0, falling to 0 at t = 1 along half a cosine.
double fall(double t) { return 0.5 + 0.5 * math::cos(math::pi * t); }
// A raised cosine of that width about t = 1/2.
double hump(double t, double width) {
    const double d = std::fabs(t - 0.5) / width;
    return d < 0.5 ? 0.5 + 0.5 * cosine(d) : 0.0;
}
// The phase runs the first half of its turn until `knee`, the other half afterwards.
double bent(double t, double knee) { return t < knee ? 0.5 * t / knee : 0.5 + 0.5 * (t - knee) / (1.0 - knee); }

using Curve = double (*)(double t);
struct Drawn {
    const char* name;
    Curve curve;
};

template <std::size_t N>
std::vector<Recipe> drawn(const Drawn (&table)[N]) {
    std::vector<Recipe> result;
    for (const Drawn& row : table)
        result.push_back({row.name, [curve = row.curve](Workshop& workshop) { return workshop.draw(curve); }});
    return result;
}

}  // namespace

std::vector<Recipe> analogCycles() {
    static constexpr Drawn table[] = {
        {"Analog Saw", [](double t) { return ramp(t); }},
        {"Analog Saw Soft", [](double t) { return ramp(t) - math::pow(ramp(t) * ramp(t), 4.0) * ramp(t); }},
        {"Analog Saw Double", [](double t) { return ramp(t) + 0.7 * ramp(t + 0.37); }},
        {"Analog Saw Octave", [](double t) { return ramp(t) + 0.6 * ramp(2.0 * t); }},
        {"Analog Saw Square", [](double t) { return 0.6 * ramp(t) - 0.6 * square(t); }},
        {"Analog Shark Fin", [](double t) { return t < 0.7 ? 1.0 - math::exp(-5.0 * t) : math::exp(-14.0 * (t - 0.7)); }},
        {"Analog Square", [](double t) { return square(t); }},
        {"Analog Square Soft", [](double t) { return math::tanh(4.0 * sine(t)); }},
        {"Analog Square Drooping", [](double t) { return square(t) * math::exp(-4.5 * fraction(2.0 * t)); }},
        {"Analog Pulse Third", [](double t) { return square(t, 1.0 / 3.0); }},
        {"Analog Pulse Quarter", [](double t) { return square(t, 0.25); }},
        {"Analog Pulse Eighth", [](double t) { return square(t, 0.125); }},
        {"Analog Pulse Narrow", [](double t) { return hump(t, 0.13); }},
        {"Analog Pulse Double", [](double t) { return hump(t, 0.2) - hump(fraction(t + 0.3), 0.2); }},
        {"Analog Triangle", [](double t) { return triangle(t); }},
        {"Analog Triangle Bent", [](double t) { return triangle(bent(t, 0.2)); }},
        {"Analog Trapezoid", [](double t) { return std::clamp(3.0 * triangle(t), -1.0, 1.0); }},
        {"Analog Parabola", [](double t) { return ramp(t) * std::fabs(ramp(t)) + 0.3 * sine(t); }},
        {"Bass Round", [](double t) { return sine(t) + 0.45 * sine(2.0 * t) + 0.2 * sine(3.0 * t) + 0.1 * sine(4.0 * t); }},
        {"Bass Growl", [](double t) { return math::tanh(3.0 * (sine(t) + 0.5 * sine(3.0 * t + 0.15) + 0.25)); }},
        {"Bass Hollow", [](double t) { return sine(t) * (0.4 + std::fabs(sine(0.5 * t))) + 0.3 * sine(3.0 * t); }},
    };
    return drawn(table);
}

std::vector<Recipe> bentCycles() {
    static constexpr Drawn table[] = {
        // The phase of a sine in two or more pieces of different speed (US patent 4658691).
        {"PD Saw", [](double t) { return -cosine(bent(t, 0.06)); }},
        {"PD Saw Gentle", [](double t) { return -cosine(bent(t, 0.2)); }},
        {"PD Square",
         [](double t) { return sine(0.25 + 0.5 * std::floor(2.0 * t) + 0.5 * std::min(1.0, 11.0 * fraction(2.0 * t))); }},
        {"PD Pulse", [](double t) { return -cosine(std::min(1.0, 3.5 * t)); }},
        {"PD Double Sine", [](double t) { return -cosine(fraction(2.0 * bent(t, 0.15))) + 0.3 * sine(t); }},
        {"PD Resonant Saw", [](double t) { return t * (1.0 - cosine(7.0 * t)); }},
        {"PD Resonant Triangle", [](double t) { return (1.0 - std::fabs(ramp(t))) * (1.0 + cosine(10.0 * (t - 0.5))); }},
        {"PD Resonant Trapezoid", [](double t) { return std::min(1.0, 2.0 - 2.0 * t) * sine(5.0 * t) + 0.4 * sine(t); }},
        // The follower starts anew with the cycle.
        {"Sync Sine", [](double t) { return sine(2.6 * t) * fall(t); }},
        {"Sync Saw Low", [](double t) { return ramp(1.7 * t) * (0.15 + 0.85 * fall(t)); }},
        {"Sync Saw Middle", [](double t) { return ramp(2.7 * t) * (0.4 + 0.6 * fall(t)); }},
        {"Sync Saw High", [](double t) { return ramp(5.4 * t) * (0.3 + 0.7 * fall(t)); }},
        {"Sync Square", [](double t) { return square(3.3 * t) * (0.4 + 0.6 * fall(t)); }},
        {"Sync Triangle", [](double t) { return triangle(4.6 * t) * fall(t) + 0.2 * sine(t); }},
        // Grains of a higher tone, one a cycle.
        {"Formant Low", [](double t) { return hump(t, 0.8) * cosine(4.0 * (t - 0.5)); }},
        {"Formant Middle", [](double t) { return hump(t, 0.6) * cosine(9.0 * (t - 0.5)); }},
        {"Formant High", [](double t) { return hump(t, 0.4) * cosine(18.0 * (t - 0.5)) + 0.2 * sine(t); }},
        {"Formant Twin", [](double t) { return hump(t, 0.7) * (cosine(5.0 * (t - 0.5)) + 0.7 * cosine(14.0 * (t - 0.5))); }},
        {"Formant Falling", [](double t) { return fall(t) * sine(12.0 * t - 5.0 * t * t) * std::min(1.0, 30.0 * t); }},
        // Shapers.
        {"Shaper Folded", [](double t) { return sine(0.9 * sine(t)); }},
        {"Shaper Folded Twice", [](double t) { return sine(1.45 * sine(t)) + 0.4 * sine(t); }},
        {"Shaper Lopsided", [](double t) { return math::tanh(3.5 * (sine(t) + 0.45)); }},
        {"Shaper Rectified", [](double t) { return std::fabs(sine(0.5 * t)); }},
        {"Shaper Half Sine", [](double t) { return std::max(0.0, sine(t)); }},
        {"Shaper Seventh", [](double t) { return 0.5 * sine(t) + 0.5 * cosine(7.0 * bent(t, 0.4)); }},
        {"Shaper Pinched", [](double t) { return sine(t) * math::exp(-2.4 * (1.0 + cosine(t - 0.3))); }},
        // Steps.
        {"Digital Stairs Six", [](double t) { return sine((std::floor(6.0 * t) + 0.5) / 6.0); }},
        {"Digital Stairs Twelve", [](double t) { return sine((std::floor(12.0 * t) + 0.5) / 12.0); }},
        {"Digital Three Bits", [](double t) { return std::floor(4.0 * triangle(t) + 0.5) / 4.0; }},
        {"Digital Walsh", [](double t) { return square(t) + 0.7 * square(t) * square(2.0 * t) * square(4.0 * t); }},
        {"Digital Comb", [](double t) { return ramp(t) - 0.8 * ramp(t + 0.1) + 0.3 * sine(t); }},
        {"Digital Noise Loop",
         [](double t) { return 2.0 * waves::chance(0x51a7, static_cast<std::uint32_t>(64.0 * t)) - 1.0 + 0.4 * sine(t); }},
        {"Digital Fractal",
         [](double t) {
             double sum = 0.0;
             for (double size = 1.0, speed = 1.0; speed < 500.0; size *= 0.62, speed *= 2.0) sum += size * sine(speed * t);
             return sum;
         }},
        {"Digital Chirp", [](double t) { return hump(t, 1.0) * sine(1.0 * t + 20.0 * t * t); }},
    };
    return drawn(table);
}

std::vector<Recipe> modulatedCycles() {
    // Carriers and modulators run whole times as fast as the cycle; depths are in turns.
    static constexpr Drawn table[] = {
        {"FM Bass", [](double t) { return sine(t + 0.3 * sine(t)); }},
        {"FM Bass Hard", [](double t) { return sine(t + 0.42 * sine(t + 0.25 * sine(2.0 * t))); }},
        {"FM Hollow", [](double t) { return sine(t + 0.25 * sine(2.0 * t)); }},
        {"FM Brass", [](double t) { return sine(t + 0.55 * sine(t) + 0.05 * sine(3.0 * t)); }},
        {"FM Wood", [](double t) { return sine(t + 0.16 * sine(3.0 * t)) + 0.2 * sine(5.0 * t); }},
        {"FM Electric Piano", [](double t) { return sine(t + 0.08 * sine(t)) + 0.3 * sine(t + 0.12 * sine(14.0 * t)); }},
        {"FM Glass", [](double t) { return sine(t) + 0.5 * sine(4.0 * t + 0.35 * sine(11.0 * t)); }},
        {"FM Metal", [](double t) { return 0.6 * sine(t) + sine(3.0 * t + 0.4 * sine(7.0 * t + 0.2 * sine(5.0 * t))); }},
        {"FM Clang", [](double t) { return sine(2.0 * t + 0.5 * sine(5.0 * t)) + 0.5 * sine(t + 0.3 * sine(9.0 * t)); }},
        {"FM Growl", [](double t) { return sine(t + 0.5 * sine(2.0 * t + 0.4 * sine(t))); }},
        {"FM Reed", [](double t) { return sine(3.0 * t + 0.35 * sine(2.0 * t)) + 0.6 * sine(t); }},
        {"FM Fourths", [](double t) { return sine(3.0 * t + 0.3 * sine(4.0 * t)) + 0.5 * sine(4.0 * t) + 0.5 * sine(t); }},
        {"FM Nasal", [](double t) { return sine(t + 0.2 * sine(5.0 * t) + 0.1 * sine(6.0 * t)); }},
        {"FM Cluster", [](double t) { return sine(t + 0.18 * sine(3.0 * t) + 0.14 * sine(7.0 * t) + 0.1 * sine(11.0 * t)); }},
    };
    return drawn(table);
}

}  // namespace vantoric::cycles
