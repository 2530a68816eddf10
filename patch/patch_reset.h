// The values of a patch to begin from. Values only, quietly: samples are left to the caller, and so is telling
// the window and the wave worker. Any thread; voices take the values up at their next tick.
#pragma once

#include "parameters/parameter_model.h"

namespace vantoric {

// A whole patch with nothing set: one layer with a single oscillator, the others off.
void resetAllParameters(ParameterModel& parameters);

// Of layer 0 to 3: everything; its arpeggiator; its matrix.
void resetSynthLayer(ParameterModel& parameters, int layer);
void resetSynthArpeggiator(ParameterModel& parameters, int layer);
void resetSynthMatrix(ParameterModel& parameters, int layer);

}  // namespace vantoric
