// A picture of all cycles, to look them over.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "factory/cycles/cycle.h"

namespace vantoric::cycles {

struct NamedCycle {
    std::string name;
    Cycle cycle;
};

// Writes an SVG picture with a cell for every cycle: its name, one and a quarter turns of it with the seam
// marked, and below them its first 64 harmonics, from -60 dB to the strongest. False if it cannot be written.
bool drawSheet(const std::vector<NamedCycle>& cycles, const std::filesystem::path& path);

}  // namespace vantoric::cycles
