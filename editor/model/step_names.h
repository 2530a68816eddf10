// What undo and redo call a change of parameters: by the words of the controls in the window.
#pragma once

#include <string>
#include <vector>

#include "parameters/parameter_model.h"

namespace vantoric {

// "FIL1 CUTOFF, layer 2", "Master effect: Decay", "Modulation 3, all layers": of the parameter with these host indices, which
// are one number's in different layers. An effect's parameter has the name that the effect in force gives it.
std::string stepName(const ParameterModel& parameters, const std::vector<int>& indices);

}  // namespace vantoric
