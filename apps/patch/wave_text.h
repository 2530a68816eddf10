// Custom waves and samples as a patch text holds them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/patch/patch.h"

namespace vantoric::patch {

// Signed 16-bit samples, little-endian, in base64. The reader throws PatchError unless the text is a whole cycle.
std::string writeCycle(const Cycle& cycle);
Cycle readCycle(std::string_view text);

// A cycle of sines, `amplitudes[k]` that of harmonic k + 1, all starting at 0; its highest sample is at full scale.
Cycle cycleOfHarmonics(std::span<const double> amplitudes);

// A struck sound of partials that die away: a sample at `struckRate` whose fundamental is the pitch at which an
// oscillator plays samples as they are. Its highest sample is at full scale; the last 5 ms fade out. Partials above
// 20 kHz are left out. `seconds`: more than 0, at most `longestStruck`.
struct Partial {
    double ratio;    // of the fundamental, above 0
    double level;    // at the stroke, -1 to 1
    double seconds;  // until it is 60 dB down, above 0
};
inline constexpr std::uint32_t struckRate = 44100;
inline constexpr double longestStruck = 10.0;
std::vector<std::int16_t> struckSample(std::span<const Partial> partials, double seconds);

// A mono file of 16 bits, level 0 of the sample. Throw PatchError.
void writeSampleFile(const std::string& path, const Sample& sample);
struct SampleFile {
    std::vector<std::int16_t> frames;
    std::uint32_t rate = 44100;
    int loop[2] = {0, 0};  // of the file's first loop, the end exclusive; 0, 0: none
};
SampleFile readSampleFile(const std::string& path);

}  // namespace vantoric::patch
