// The "Edit" menu of a sample, at work on the samples of an engine.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "base/random.h"
#include "loading/sample_exchange.h"
#include "parameters/parameter_model.h"
#include "platform/dialogs.h"
#include "samples/edit_commands.h"

namespace vantoric {

// Called by one thread at a time that is not the audio thread; voices may play and the worker may rebuild
// meanwhile. Works with or without a window.
class SampleEditor {
public:
    SampleEditor(EngineFlags& flags, ParameterModel& parameters, const SampleHolders& holders, platform::Dialogs& dialogs,
                 SleepFunction sleep);

    // Runs command 0 to 44 (see editCommands) on the sample of layer 0 to 3, oscillator 0 to 2. From command 2
    // on the sound is stored first, one level deep; command 0 swaps it with the stored one, which has the
    // engine muted for 100 ms, and does nothing if none was stored. An empty sample takes only command 0.
    // Levels are rebuilt with wrap for the looping commands and the undo, not at all for those that set only the
    // rate, without wrap for the others, and the window hears that all is to be shown anew. True if the sample
    // changed: the patch is then another. Short memory gives a box and changes nothing. Indices out of range do
    // nothing.
    bool editSample(int layer, int oscillator, int command);

    // What the noisifying commands draw from.
    LinearCongruence random;

private:
    bool run(int layer, int oscillator, int command);
    bool undo(int layer, int oscillator, Sample& holder);
    void put(Sample& holder, const EditSound& sound, bool wrap, bool isLooped);
    void setRate(Sample& holder, std::uint32_t rate);
    void exportWave(const EditSound& sound);
    bool isLooped(int layer, int oscillator) const;
    std::optional<EditSound>& backupOf(int layer, int oscillator);
    void writeParameters(int layer, int oscillator, EditRole role);
    void set(int number, int layer, int oscillator, float value);

    EngineFlags& flags_;
    ParameterModel& parameters_;
    SampleHolders holders_;
    platform::Dialogs& dialogs_;
    SleepFunction sleep_;
    std::array<std::optional<EditSound>, layerCount * oscillatorCount> backups_;
};

}  // namespace vantoric
