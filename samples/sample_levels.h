// The filtered copies of a sample: four low-passes one after the other, so that any playback step finds a
// copy without much above its Nyquist frequency.
#pragma once

#include <array>
#include <cstdint>

#include "base/flag.h"
#include "samples/sample.h"

namespace vantoric {

inline constexpr int firTaps = 81;
inline constexpr int firCentre = 40;

// Taps of a linear-phase filter; each between -3.99 and 3.99.
using FirRow = std::array<double, firTaps>;

// What a row is designed to; frequencies in fractions of the sample rate.
struct FirResponse {
    double half;    // -6 dB point
    double stop;    // -60 dB point
    double centre;  // centre tap
};
extern const std::array<FirResponse, sampleLevels - 1> firResponses;

// The symmetric low-pass of least squared error that has the sum 1 and passes through the three values of
// `response` exactly (T. W. Parks and C. S. Burrus, "Digital Filter Design", constrained least squares).
FirRow designRow(const FirResponse& response);

// Response of a symmetric row at a frequency in fractions of the sample rate: its amplitude, with sign.
double firAmplitude(const FirRow& row, double frequency);

// The rows that make levels 1 to 4, each from the level before. Designed at the first call; any thread but
// the audio thread.
using LevelRows = std::array<FirRow, sampleLevels - 1>;
const LevelRows& levelRows();

// Filters `count` samples into `destination`, which must not overlap: each output is the sum of
// (source[n + k - 40] x c[k]) >> 13, every term shifted before the sum, c the taps x 8192 truncated; clamped
// to -32767 to 32767. Outside the source stands silence, or with `wrap` the source's other end. Tests
// `cancel` (may be null) every few thousand samples and returns false, the rest unwritten, once it is set.
bool firFilter(const std::int16_t* source, std::int32_t count, std::int16_t* destination, bool wrap, const FirRow& row,
               const Flag* cancel = nullptr);

// Rebuilds levels 1 to 4 of a sample from level 0, with wrap for a looped one. False if `cancel` stopped it.
// An empty sample is left alone. Voices may read the levels meanwhile: they hear old and new in parts.
bool buildLevels(Sample& sample, bool wrap, const Flag* cancel = nullptr, const LevelRows& rows = levelRows());

}  // namespace vantoric
