// A whole patch as one block of bytes: name, parameters, custom waves and samples.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/engine_state.h"
#include "parameters/parameter_model.h"
#include "patch/chunk_layout.h"
#include "patch/program_slot.h"
#include "platform/dialogs.h"
#include "samples/sample.h"

namespace vantoric {

// What loading a patch does to the rest of the engine.
class PatchHost {
public:
    virtual void allNotesOff() = 0;
    virtual void resetEngine() = 0;
    // All controls of the editor are to show their values anew.
    virtual void refreshAll() = 0;
    // The browser is to look up the name of the patch that was loaded.
    virtual void lookUpPatchName() = 0;
    // The window shows that it is busy, or no longer. Without a window nothing.
    virtual void setBusy(bool busy) = 0;

protected:
    ~PatchHost() = default;
};

// The waves of a patch, indexed layer x 3 + oscillator. They outlive the PatchChunk.
struct PatchWaves {
    std::array<Sample*, chunk::waveCount> samples{};
    std::array<std::int16_t*, chunk::waveCount> customWaves{};  // frame 0 of level 0: 2048 samples each
};

// The bytes of a chunk; size 0 if there are none.
struct ChunkBytes {
    std::unique_ptr<std::uint8_t[]> data;
    std::int32_t size = 0;
};

// Called by one thread at a time that is not the audio thread. The flags of the EngineState keep the audio
// block and the wave worker away while a patch is exchanged.
class PatchChunk {
public:
    PatchChunk(EngineState& state, ParameterModel& parameters, ProgramSlot& program, const PatchWaves& waves, PatchHost& host,
               platform::Dialogs& dialogs, SleepFunction sleep);

    // Builds the chunk of the patch in force. A sample whose lengths or rate are out of bounds is emptied
    // with a box. Empty, with a box, if memory is short.
    ChunkBytes getChunk();

    // Loads a chunk of `size` bytes. Returns 1, or 0 with a box for a newer format, a bad sample header,
    // missing sample data or short memory. A chunk below the fixed size stops all notes, loads nothing and
    // returns 1. After such a short chunk and after a failure of the samples `engineLocked` stays set and
    // the engine silent until the next load. Memory in use stays within six times `size` and 300 KB,
    // whatever the headers claim.
    int setChunk(const std::uint8_t* data, std::int32_t size);

    // Clears every matrix row that has no source or no destination.
    void cleanMatrix();

private:
    void takeLock();
    void quieten();
    void quietenWhilePlaying();
    bool refuse(const char* title, const char* text);
    void readName(const std::uint8_t* data);
    void readParameters(const std::uint8_t* data);
    void convertOlderPatch(int version);
    void readCustomWaves(const std::uint8_t* data);
    void stopRebuild();
    bool readSampleHeaders(const std::uint8_t* data, std::int32_t size);
    bool readSampleData(const std::uint8_t* data, std::int32_t size);
    bool inSampleMode(int index) const;
    void boundSample(Sample& sample);

    EngineState& state_;
    ParameterModel& parameters_;
    ProgramSlot& program_;
    PatchWaves waves_;
    PatchHost& host_;
    platform::Dialogs& dialogs_;
    SleepFunction sleep_;
};

}  // namespace vantoric
