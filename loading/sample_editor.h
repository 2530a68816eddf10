// The "Edit" menu of a sample, at work on the samples of an engine.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/messages.h"
#include "base/random.h"
#include "loading/sample_exchange.h"
#include "parameters/parameter_model.h"
#include "samples/edit_commands.h"

namespace vantoric {

inline constexpr int exportCommand = 3;  // the row "Export as wav"

// A command on its way: what it was begun with and, once it is made, what comes of it.
struct SampleEdit {
    int layer = 0, oscillator = 0, command = 0;
    bool isLooped = false;
    EditSound before, after;
    PreparedSample prepared;
    LinearCongruence random;
    const std::int16_t* source = nullptr;  // what it was begun with; never read
    bool isMade = false;
};

// Any thread but the audio thread: each command takes its turn; voices may play and the worker may rebuild meanwhile. What
// there is to tell goes to the messages. Throws nothing. Works with or without a window.
class SampleEditor {
public:
    SampleEditor(EngineAccess& access, ParameterModel& parameters, const SampleHolders& holders, Messages& messages);

    // Runs command 0 to 44 (see editCommands) on the sample of layer 0 to 3, oscillator 0 to 2. From command 2
    // on the sound is stored first, one level deep, but for the export, which needs a path and has its own function; command 0
    // swaps it with the stored one, which has the engine muted for 100 ms, and does nothing if none was stored. An empty sample
    // takes only command 0. Levels are rebuilt with wrap for the looping commands and the undo, not at all for those that set
    // only the rate, without wrap for the others, and the window hears that all is to be shown anew. True if the sample changed:
    // the patch is then another. Short memory gives a message and changes nothing. Indices out of range do nothing.
    bool editSample(int layer, int oscillator, int command);

    // The same in three parts, for a long sample: takes what the command works on; nothing where it would do nothing.
    std::optional<SampleEdit> beginEdit(int layer, int oscillator, int command);
    // Makes the new sound. On any one thread, without a turn: it touches nothing of the engine. Levels that a cancel stops are
    // left to the worker.
    static void makeEdit(SampleEdit& edit, const Flag& cancel);
    // Puts it in its place. False, with nothing changed, if there is another sample by now or memory was short.
    bool finishEdit(SampleEdit&& edit);

    // Whether there is anything to export.
    bool hasSample(int layer, int oscillator);
    // The samples of an oscillator, of full length; none without a sample. May throw std::bad_alloc.
    std::vector<std::int16_t> samplesOf(int layer, int oscillator);
    // "Export as wav": writes the whole sample to a file. Changes nothing, the stored sound neither. False, with a message
    // but for an empty sample and indices out of range, if it was not written.
    bool exportWave(int layer, int oscillator, const std::string& path);

    // What a display draws of a sample: the lowest and the highest of so many equal stretches of it, as parts of full scale. As
    // many stretches as the shorter of the two holds. False, with the two as they were, without a sample.
    bool readPeaks(int layer, int oscillator, std::span<float> low, std::span<float> high);
    // Moves the loop, in samples held to the sample's length, the smaller one first; the two parameters that mirror it follow.
    // The stored sound of the undo stays. False without a sample.
    bool setLoopPoints(int layer, int oscillator, std::int32_t start, std::int32_t end);

    // What the noisifying commands draw from. With the turn.
    LinearCongruence random;

private:
    void setRate(Sample& holder, std::uint32_t rate);
    bool isLooped(int layer, int oscillator) const;
    std::optional<EditSound>& backupOf(int layer, int oscillator);
    void writeParameters(int layer, int oscillator, EditRole role);
    void set(int number, int layer, int oscillator, float value);

    EngineAccess& access_;
    ParameterModel& parameters_;
    SampleHolders holders_;
    Messages& messages_;
    std::array<std::optional<EditSound>, layerCount * oscillatorCount> backups_;
};

}  // namespace vantoric
