// A whole patch as one block of bytes: name, parameters, custom waves and samples.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/engine_access.h"
#include "base/engine_state.h"
#include "base/messages.h"
#include "parameters/parameter_model.h"
#include "patch/chunk_layout.h"
#include "patch/program_slot.h"
#include "samples/sample.h"
#include "sound/custom_wave.h"

namespace vantoric {

// What loading a patch does to the rest of the engine.
class PatchHost {
public:
    virtual void allNotesOff() = 0;
    virtual void resetEngine() = 0;
    // All parameters may have changed: whoever follows them reads them anew.
    virtual void refreshAll() = 0;
    // Another patch is in force: whoever follows its name looks it up.
    virtual void lookUpPatchName() = 0;
    // The parameters and waves of a patch are in place and will sound in a moment: what its voices read is to be
    // fetched into memory.
    virtual void prepareToSound() {}
    // A patch file is being loaded, or no longer.
    virtual void setBusy(bool busy) = 0;

protected:
    ~PatchHost() = default;
};

// The waves of a patch, indexed layer x 3 + oscillator. They outlive the PatchChunk.
struct PatchWaves {
    std::array<Sample*, chunk::waveCount> samples{};
    std::array<std::int16_t*, chunk::waveCount> customWaves{};  // frame 0 of level 0: 2048 samples each
    std::array<CustomWaveSlot*, chunk::waveCount> slots{};      // where these are the cycles of; null: of none
};

// The bytes of a chunk; size 0 if there are none.
struct ChunkBytes {
    std::unique_ptr<std::uint8_t[]> data;
    std::int32_t size = 0;
};

// Any thread but the audio thread: each call takes its turn, so that no patch is saved half loaded. The flags keep the audio
// block and the wave worker away while a patch is exchanged. What there is to tell goes to the messages. Throws nothing.
class PatchChunk {
public:
    PatchChunk(EngineAccess& access, ParameterModel& parameters, ProgramSlot& program, const PatchWaves& waves, PatchHost& host,
               Messages& messages);

    EngineAccess& access() { return access_; }

    // Builds the chunk of the patch in force. A sample whose lengths or rate are out of bounds is emptied
    // with a message. Empty, with a message, if memory is short. While the engine is locked, it waits at most 100 times
    // 100 ms, and for a load that runs until it is done.
    ChunkBytes getChunk();

    // Loads a chunk of `size` bytes. Returns 1, or 0 with a message for a newer format, a bad sample header,
    // missing sample data or short memory. A chunk below the fixed size stops all notes, loads nothing and
    // returns 1. After such a short chunk and after a failure of the samples `engineLocked` stays set and
    // the engine silent until the next load. Memory in use stays within six times `size` and 300 KB,
    // whatever the headers claim, besides what is replaced and may still be read.
    int setChunk(const std::uint8_t* data, std::int32_t size);

    // Loads a chunk that chunk::check() has found good, as setChunk does, but takes all memory before anything is
    // replaced: if it is short, the patch in force plays on, a message says so, and 0 is returned.
    int setCheckedChunk(const std::uint8_t* data, std::int32_t size);

    // Clears every matrix row that has no source or no destination.
    void cleanMatrix();

private:
    // Empty samples of the lengths of a chunk's, to be filled.
    using NewSamples = std::array<Sample, chunk::waveCount>;

    ChunkBytes writeChunk();
    // With samples that are null each is allocated when its turn comes.
    bool replacePatch(const std::uint8_t* data, std::int32_t size, NewSamples* samples);
    bool readPatch(const std::uint8_t* data, std::int32_t size, NewSamples* samples, EngineHold& hold);
    void quieten();
    bool refuse(const char* title, const char* text);
    void readName(const std::uint8_t* data);
    void readParameters(const std::uint8_t* data);
    void convertOlderPatch(int version);
    void readCustomWaves(const std::uint8_t* data);
    bool readSampleData(const std::uint8_t* data, std::int32_t size, NewSamples* samples);
    bool inSampleMode(int index) const;
    void boundSample(Sample& sample);

    EngineAccess& access_;
    EngineFlags& flags_;
    ParameterModel& parameters_;
    ProgramSlot& program_;
    PatchWaves waves_;
    PatchHost& host_;
    Messages& messages_;
};

}  // namespace vantoric
