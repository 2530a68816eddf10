// The values of a patch to begin from. Values only, quietly: samples are left to the caller, and so is telling
// the window and the wave worker. Any thread; voices take the values up at their next tick.
#pragma once

#include "base/engine_state.h"
#include "base/parameters.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// A whole patch with nothing set: one layer with a single oscillator, the others off.
void resetAllParameters(ParameterModel& parameters);

// Of layer 0 to 3: everything; its arpeggiator; its matrix.
void resetSynthLayer(ParameterModel& parameters, int layer);
void resetSynthArpeggiator(ParameterModel& parameters, int layer);
void resetSynthMatrix(ParameterModel& parameters, int layer);

// Calls function(layer, slot) for all slots of the matrix, in all layers, that lack a source or a destination: cleaning the
// matrix empties them.
template <class Function>
void forUnusedMatrixSlots(const ParameterModel& parameters, Function function) {
    for (int layer = 0; layer < layerCount; ++layer)
        for (int slot = 0; slot < storedMatrixSlots; ++slot)
            if (parameters.getListIndex(hostIndex(parameter::MatSrc1 + slot, layer)) == 0 ||
                parameters.getListIndex(hostIndex(parameter::MatDst1 + slot, layer)) == 0)
                function(layer, slot);
}

}  // namespace vantoric
