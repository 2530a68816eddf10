// SFZ files as patches: at most twelve of their regions become the oscillators of the four layers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/messages.h"
#include "loading/sample_exchange.h"
#include "loading/sample_loader.h"
#include "parameters/parameter_model.h"
#include "patch/patch_chunk.h"
#include "patch/program_slot.h"
#include "samples/sfz.h"

namespace vantoric {

// Where the sample of a region lies: `sample` as the text gives it, both separators allowed; a relative path
// starts at the folder of the SFZ file.
std::string sfzSamplePath(const std::string& sfzPath, const std::string& sample);

// What becomes of a file of several groups.
enum class SfzGroups : unsigned char { onlyFirst, merged };

// Any thread but the audio thread: an import takes its turn; voices may play and the worker may rebuild meanwhile. Messages
// tell what is missing or odd. Throws nothing. Works with or without a window.
class SfzImport {
public:
    SfzImport(EngineAccess& access, ParameterModel& parameters, ProgramSlot& program, const SampleHolders& holders,
              SampleLoader& loader, PatchHost& host, Messages& messages);

    // Reads a file. Nothing, with a message, if that fails or it holds no lines. Whoever imports one of several groups asks
    // the user first what is to become of them.
    std::optional<SfzFile> readSfz(const std::string& path);

    // Replaces the patch in force by one made of what was read and names it after the path. False, with the patch as it
    // was, if no region with a sample is in it. A sample that is missing or refused leaves its oscillator empty.
    bool importSfz(const std::string& path, const SfzFile& file, SfzGroups groups);

    // Both at once.
    bool importSfz(const std::string& path, SfzGroups groups);

    // The steps of the import: what is to become of the file, nothing, with a message, if no region with a sample is in it;
    // the samples of the plan, beside everything and telling nobody (`progress` may be null); the new patch, which leaves
    // what was refused empty. Short memory while the samples are read refuses those that it does not suffice for.
    std::optional<SfzPlan> planImport(const SfzFile& file, SfzGroups groups);
    std::vector<WaveReading> readSamples(const std::string& path, const SfzPlan& plan, Progress* progress = nullptr) const;
    bool placeSfz(const std::string& path, const SfzPlan& plan, std::vector<WaveReading>&& samples);

private:
    bool refuse(const char* text);
    void replacePatch(const std::string& path, const SfzPlan& plan, std::vector<WaveReading>&& samples);
    void beginPatch(const std::string& path, const SfzPlan& plan);
    void setUpLayer(int layer, const SfzPlan& plan);
    void setVelocityDepth(int layer, float depth);
    void placeRegion(int layer, int oscillator, const SfzOscillator& region, WaveReading&& reading);
    void setLoop(int layer, int oscillator, const SfzOscillator& region);
    void takePoint(std::int32_t point, std::int32_t length, const char* complaint, std::int32_t& taken);
    void set(int number, int layer, float value) { parameters_.setParameterQuiet(hostIndex(number, layer), value); }

    EngineAccess& access_;
    ParameterModel& parameters_;
    ProgramSlot& program_;
    SampleHolders holders_;
    SampleLoader& loader_;
    PatchHost& host_;
    Messages& messages_;
};

}  // namespace vantoric
