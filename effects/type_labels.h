// The names of the effect types as menus show them, and as list parameters are read.
#pragma once

#include <array>

#include "effects/effect_row.h"

namespace vantoric {

inline constexpr int trancegateType = 17;  // inserts only: the master slot reads it as off

// By type, from the families' rows; "-" is a separator. The master slot's list differs in one row.
extern const std::array<const char*, effectTypeCount> insertTypeLabels;
extern const std::array<const char*, effectTypeCount> masterTypeLabels;

}  // namespace vantoric
