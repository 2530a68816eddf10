// The shelf and peak designs that the equalizer and the sound modes share. Bilinear second-order
// sections; the shelves follow the audio EQ cookbook.
#pragma once

namespace vantoric {

// y = b0 x + b1 x1 + b2 x2 + feedback1 y1 + feedback2 y2.
struct BiquadCoefficients {
    double b0 = 1.0, b1 = 0.0, b2 = 0.0, feedback1 = 0.0, feedback2 = 0.0;
};

// High shelf of amplitude `a` at `angle` radians per sample; sine and cosine in single precision.
BiquadCoefficients highShelf(double a, double angle);

// Peak with K = tan(half the angle), width `r` and gain factor `e` on the width term.
BiquadCoefficients peak(double k, double r, double e);

}  // namespace vantoric
