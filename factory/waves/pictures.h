// Pictures of the banks, to look them over.
#pragma once

#include <filesystem>

#include "factory/waves/bank.h"

namespace vantoric::waves {

// Writes a PNG of a bank's full-band level. Left: harmonics 1 to 256 (to the right, by octaves) of every frame
// (downwards), from black at -72 dB to white at the bank's strongest. Right: the cycles, one above the other.
// False if the file cannot be written.
bool drawBank(const Bank& bank, const std::filesystem::path& path);

}  // namespace vantoric::waves
