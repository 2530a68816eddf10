// What the models of instruments and voices are built from.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "base/random.h"

namespace vantoric::made {

inline constexpr double rate = 44100.0;         // Hz
inline constexpr double home = 130.8127826503;  // Hz: a sample of this pitch sounds at the key's octave 0
using Wave = std::vector<double>;

inline std::size_t framesOf(double seconds) { return static_cast<std::size_t>(seconds * rate); }

// Noise from -1 to 1, the same for the same seed.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : random_{0, seed} {}
    double next() { return 2.0 * random_.unit() - 1.0; }

private:
    HashNoise random_;
};

// A resonance that passes a constant unchanged (D. H. Klatt, "Software for a cascade/parallel formant synthesizer", 1980).
class Formant {
public:
    void tune(double hertz, double width);  // Hz
    double run(double input);

private:
    double a_ = 1.0, b_ = 0.0, c_ = 0.0, y1_ = 0.0, y2_ = 0.0;
};

// One pole, up to `hertz`; the rest is what lies above.
class OnePole {
public:
    explicit OnePole(double hertz) { tune(hertz); }
    void tune(double hertz);
    double low(double input) { return state_ += k_ * (input - state_); }
    double high(double input) { return input - low(input); }

private:
    double k_ = 1.0, state_ = 0.0;
};

// A struck body's way of moving: a sine that dies away, 60 dB in `seconds`. With `bend` it starts by that factor higher and
// falls to its place within `bendSeconds`.
struct Mode {
    double hertz, level, seconds;
    double bend = 1.0, bendSeconds = 0.03;
};
void strike(Wave& wave, std::span<const Mode> modes);

// Makes the end fade over into what comes before a place that is most like it, a little behind `around`, so that from there
// to the end it goes round without a seam. Returns that place. `fade` in frames, at most `around`.
std::size_t closeLoop(Wave& wave, std::size_t around, std::size_t fade);

// Takes the mean away, brings the highest place to `peak`; `fade` seconds at the end go to zero.
void finish(Wave& wave, double peak, double fade);

}  // namespace vantoric::made
