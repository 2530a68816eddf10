// The menu of filter types.
#pragma once

#include <array>

#include "sound/filters/filter_menu.h"

namespace vantoric {

// A label for each index into the list of filter types, separators ("-") included. Any thread; for ever valid.
extern const std::array<const char*, filters::menuSize> filterLabels;

}  // namespace vantoric
