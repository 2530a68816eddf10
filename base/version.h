// The version of the instrument.
#pragma once

namespace vantoric {

inline constexpr int versionNumber = 3300;  // as hosts know it
inline constexpr const char* versionText = "3.3.0";

}  // namespace vantoric
