// How a command that asks the user something ends.
#pragma once

#include <functional>

namespace vantoric {

// Called at the end of a command with what became of it, once: within the call or, after the user has answered, later. Not
// at all if the window closes first.
using Done = std::function<void(bool)>;

}  // namespace vantoric
