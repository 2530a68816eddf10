// SFZ files as patches: at most twelve of their regions become the oscillators of the four layers.
#pragma once

#include <string>

#include "loading/sample_exchange.h"
#include "loading/sample_loader.h"
#include "parameters/parameter_model.h"
#include "patch/patch_chunk.h"
#include "patch/program_slot.h"
#include "platform/dialogs.h"
#include "samples/sfz.h"

namespace vantoric {

// Where the sample of a region lies: `sample` as the text gives it, both separators allowed; a relative path
// starts at the folder of the SFZ file.
std::string sfzSamplePath(const std::string& sfzPath, const std::string& sample);

// Called by one thread at a time that is not the audio thread; voices may play and the worker may rebuild
// meanwhile. Works with or without a window.
class SfzImport {
public:
    SfzImport(EngineFlags& flags, ParameterModel& parameters, ProgramSlot& program, const SampleHolders& holders,
              SampleLoader& loader, PatchHost& host, platform::Dialogs& dialogs, SleepFunction sleep);

    // Replaces the patch in force by one made of the file and names it after it. A box tells what is missing
    // or odd; several groups are a question. False, with the patch as it was, if the file cannot be read or
    // no region with a sample is in it. A sample that is missing or refused leaves its oscillator empty.
    bool importSfz(const std::string& path);

    // Lets the user choose a file first. False as above or if none was chosen.
    bool importSfzDialog();

private:
    bool refuse(const char* text);
    void beginPatch(const std::string& path, const SfzPlan& plan);
    void setUpLayer(int layer, const SfzPlan& plan);
    void setVelocityDepth(int layer, float depth);
    void placeRegion(const std::string& path, int layer, int oscillator, const SfzOscillator& region);
    void setLoop(int layer, int oscillator, const SfzOscillator& region);
    void takePoint(std::int32_t point, std::int32_t length, const char* complaint, std::int32_t& taken);
    void set(int number, int layer, float value) { parameters_.setParameterQuiet(hostIndex(number, layer), value); }

    EngineFlags& flags_;
    ParameterModel& parameters_;
    ProgramSlot& program_;
    SampleHolders holders_;
    SampleLoader& loader_;
    PatchHost& host_;
    platform::Dialogs& dialogs_;
    SleepFunction sleep_;
};

}  // namespace vantoric
