// The menu of noise types.
#pragma once

#include <array>

namespace vantoric {

inline constexpr int noiseKernelCount = 14;

// A label for each index into the list of noise types. Any thread; for ever valid.
extern const std::array<const char*, noiseKernelCount> noiseLabels;

}  // namespace vantoric
