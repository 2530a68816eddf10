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

// A mono file of 16 bits, level 0 of the sample. Throw PatchError.
void writeSampleFile(const std::string& path, const Sample& sample);
struct SampleFile {
    std::vector<std::int16_t> frames;
    std::uint32_t rate = 44100;
};
SampleFile readSampleFile(const std::string& path);

}  // namespace vantoric::patch
