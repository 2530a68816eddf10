// Wave files as single cycles of the custom waves.
#pragma once

#include <array>
#include <string>

#include "base/engine_access.h"
#include "base/messages.h"
#include "base/random.h"
#include "parameters/parameter_model.h"
#include "samples/resynthesis.h"
#include "sound/custom_wave.h"

namespace vantoric {

// The twelve custom waves of an engine, indexed layer x 3 + oscillator. They outlive their users.
using CustomWaveHolders = std::array<CustomWaveSlot*, layerCount * oscillatorCount>;

// Any thread but the audio thread: each call takes its turn; voices may play meanwhile. What there is to tell goes to the
// messages. Throws nothing. Layers are 0 to 3, oscillators 0 to 2; others do nothing.
class CustomWaveLoader {
public:
    CustomWaveLoader(EngineAccess& access, ParameterModel& parameters, const CustomWaveHolders& waves, Messages& messages);

    // Makes frame 0 of a custom wave from a wave file of any pitch, asks the worker for its frames and levels
    // and sets `Start` to 0. False, with the wave as it was, if the file was refused (with a message) or cannot be
    // opened (without).
    bool resynthesize(int layer, int oscillator, const std::string& path);

    // Writes frame 0 to a mono file of 2048 samples. False, with a message, if it cannot be written.
    bool saveWave(int layer, int oscillator, const std::string& path);

    // What the choice of a wave by chance draws from.
    LinearCongruence random;

private:
    CustomWaveSlot* waveOf(int layer, int oscillator) const;

    EngineAccess& access_;
    ParameterModel& parameters_;
    CustomWaveHolders waves_;
    Messages& messages_;
};

}  // namespace vantoric
