// The version of the instrument, in its one place: the build reads it from here too.
#pragma once

namespace vantoric {

inline constexpr char versionText[] = "3.3.0";  // one digit each

// As hosts know it: 3300 for "3.3.0".
inline constexpr int versionNumber = 1000 * (versionText[0] - '0') + 100 * (versionText[2] - '0') + 10 * (versionText[4] - '0');
static_assert(sizeof versionText == 6);

}  // namespace vantoric
