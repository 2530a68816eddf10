// Wave files as single cycles of the custom waves.
#pragma once

#include <array>
#include <string>

#include "base/random.h"
#include "parameters/parameter_model.h"
#include "platform/dialogs.h"
#include "samples/resynthesis.h"
#include "sound/custom_wave.h"

namespace vantoric {

// The twelve custom waves of an engine, indexed layer x 3 + oscillator. They outlive their users.
using CustomWaveHolders = std::array<CustomWave*, layerCount * oscillatorCount>;

// Called by one thread at a time that is not the audio thread; voices may play meanwhile. Layers are 0 to 3,
// oscillators 0 to 2; others do nothing.
class CustomWaveLoader {
public:
    CustomWaveLoader(EngineFlags& flags, ParameterModel& parameters, const CustomWaveHolders& waves, platform::Dialogs& dialogs,
                     SleepFunction sleep);

    // Makes frame 0 of a custom wave from a wave file of any pitch, asks the worker for its frames and levels
    // and sets `Start` to 0. False, with the wave as it was, if the file was refused (with a box) or cannot be
    // opened (without).
    bool resynthesize(int layer, int oscillator, const std::string& path);

    // Lets the user choose a file, from the folder of cycles on. False if none was chosen or it was refused.
    bool resynthesizeDialog(int layer, int oscillator);

    // A wave of the folder of cycles by chance. False if it holds none or the chosen one was refused.
    bool randomWave(int layer, int oscillator);

    // Lets the user choose a path and writes frame 0 there as a mono file of 2048 samples. False if none was
    // chosen or, with a box, it cannot be written.
    bool saveWave(int layer, int oscillator);

    // What chance draws from.
    LinearCongruence random;

private:
    CustomWave* waveOf(int layer, int oscillator) const;

    EngineFlags& flags_;
    ParameterModel& parameters_;
    CustomWaveHolders waves_;
    platform::Dialogs& dialogs_;
    SleepFunction sleep_;
};

}  // namespace vantoric
