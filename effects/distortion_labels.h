// The menu of the voices' distortions.
#pragma once

#include <array>

namespace vantoric {

inline constexpr int distortionTypeCount = 22;

// A label for each index into the list of distortion types, from the loops themselves; "-" is a separator. Any thread.
extern const std::array<const char*, distortionTypeCount> distortionLabels;

}  // namespace vantoric
