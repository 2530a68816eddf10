// What differs between two patches, and what one is.
#pragma once

#include <string>
#include <vector>

#include "apps/patch/patch.h"

namespace vantoric::patch {

// One line a difference: "layer 2 Cutoff1: 1200 Hz | 900 Hz". Values are compared bit by bit.
std::vector<std::string> differences(const Patch& a, const Patch& b);

// "12000 samples at 44100 Hz, loop 0 to 12000", or "none".
std::string sampleText(const Sample& sample);

// "layer 1 oscillator 3" for wave 2, of 0 to 11.
std::string placeText(int wave);

// Name, layers with their sources, effects and size, for people.
std::string describe(const Patch& patch, std::size_t bytes);

}  // namespace vantoric::patch
