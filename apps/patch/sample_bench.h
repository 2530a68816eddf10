// The engine's sample commands at work on a patch that no engine plays.
#pragma once

#include <memory>
#include <string>

#include "apps/patch/chunk_bench.h"
#include "library/import_commands.h"
#include "loading/custom_wave_loader.h"
#include "loading/quick_import.h"
#include "loading/sample_editor.h"
#include "loading/sample_loader.h"
#include "loading/sfz_import.h"

namespace vantoric::patch {

// A wave file on its way into an oscillator.
struct WaveOrder {
    std::string path;
    int channel = 0;          // of a stereo file, 0 left, 1 right
    bool keepTuning = false;  // a note in the file's name tunes nothing
    bool autotune = false;    // the pitch is measured
};

// Oscillators are numbered layer x 3 + oscillator, 0 to 11. What the engine has to say goes to the dialogs.
// One thread.
class SampleBench {
public:
    // Patch and dialogs outlive it.
    SampleBench(Patch& patch, platform::Dialogs& dialogs);

    // Loads a wave file as a sample. False, with the patch as it was, if the file was refused. Otherwise the
    // oscillator plays samples, and it and its layer are on.
    bool loadWave(int wave, const WaveOrder& order);

    // Makes the oscillator's custom wave from a file. False as above; otherwise the oscillator plays it.
    bool resynthesize(int wave, const std::string& path);

    // Replaces the patch by an SFZ file. False, with the patch as it was, if it was refused.
    bool importSfz(const std::string& path);

    // Replaces the patch by the template of a quick import, of the data folder, with a wave file. False, with the patch as
    // it was, if the template is missing or the file was refused.
    bool quickImport(const std::string& path, bool vocoder);

    // Sets the markers of an oscillator's sample, which are both its loop and the selection of the commands.
    // Throws PatchError unless 0 <= start <= end <= length.
    void mark(int wave, std::int32_t start, std::int32_t end);

    // Runs an edit command (0 to 44, no separator) on an oscillator's sample; undo goes one command back.
    // Throws PatchError if there is nothing that it could work on or undo, or memory is short.
    void edit(int wave, int command);
    // Writes an oscillator's sample to a wave file. Throws PatchError if there is none. What became of the file only the
    // dialogs tell.
    void exportWave(int wave, const std::string& path);

private:
    bool told(bool result);
    void play(int wave, int synthesisType);
    Sample& sampleOf(int wave);

    Patch& patch_;
    platform::Dialogs& dialogs_;
    Messages messages_;
    ChunkBench chunk_;
    SampleHolders samples_;
    std::unique_ptr<CustomWaveSlot> customWave_;  // the one of all oscillators that is being made
    SampleLoader loader_;
    SampleEditor editor_;
    CustomWaveLoader customWaveLoader_;
    SfzImport sfz_;
    PatchFiles files_;
    QuickImport quick_;
    WaveChooser chooser_;
    CommandLog log_;
    ImportCommands imports_;
};

}  // namespace vantoric::patch
