// The parts of a patch that layers are made of, in force or beside it.
#pragma once

#include "base/engine_access.h"
#include "loading/custom_wave_loader.h"
#include "loading/sample_exchange.h"
#include "parameters/parameter_model.h"

namespace vantoric {

class Instrument;

struct PatchParts {
    EngineAccess& access;
    ParameterModel& parameters;
    SampleHolders samples;    // layer x 3 + oscillator
    CustomWaveHolders waves;  // likewise
};

// Of the patch in force.
PatchParts partsOf(Instrument& instrument);

}  // namespace vantoric
