// One cycle of a wave as its harmonics, and ways to make one.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "base/fft.h"

namespace vantoric::waves {

inline constexpr int cycleLength = 2048;    // samples of a stored cycle
inline constexpr int harmonicLimit = 1024;  // harmonics 1 to 1023 fit into it
inline constexpr int drawnLength = 8192;    // points at which a drawn curve is taken

// Harmonic k is cosine[k] cos(2 pi k t) + sine[k] sin(2 pi k t), t from 0 to 1 over the cycle. Entry 0 is
// unused: no wave has a constant part.
struct Spectrum {
    std::array<double, harmonicLimit> cosine{};
    std::array<double, harmonicLimit> sine{};

    // Magnitude of harmonic k.
    double magnitude(int k) const;
    // Adds `amount` times the other spectrum.
    void add(const Spectrum& other, double amount);
    // Plays the cycle earlier by `cycles` (0 to 1): x(t) becomes x(t + cycles).
    void advance(double cycles);
    // Turns the cycle until harmonic 1 is a rising sine at t = 0. Without a first harmonic nothing moves.
    void alignFundamental();
    // Multiplies harmonic k by gain(k).
    void shape(const std::function<double(int)>& gain);
};

// Sine partials: harmonic k at amplitude(k), all starting at 0 upwards.
Spectrum sines(const std::function<double(int)>& amplitude);

// The falling sawtooth, sum of sin(2 pi k t) / k.
Spectrum saw();

// High for `width` (0 to 1) of the cycle with the middle of the high part at t = 1/4, so that width 1/2 is
// the square that starts upwards. Sum of 2 / (pi k) sin(pi k width) cos(2 pi k (t - 1/4)).
Spectrum pulse(double width);

// Number from 0 to 1 that depends on the two arguments alone.
double chance(std::uint32_t seed, std::uint32_t index);

// Transforms; one per thread.
class Workshop {
public:
    Workshop();

    // Harmonics of the curve f(t), t from 0 to 1, sampled finely and cut off at harmonic 1023.
    Spectrum draw(const std::function<double(double)>& f);

    // The 2048 samples of the cycle from the harmonics below `limit` (1 to 1024).
    void render(const Spectrum& spectrum, int limit, double* samples);

private:
    RealFft fine_, cycle_;
    std::array<double, drawnLength> signal_;
    std::array<double, drawnLength / 2 + 1> real_, imaginary_;
};

}  // namespace vantoric::waves
