// A patch that nobody plays: what commands work on that take a patch apart or put one together.
#pragma once

#include <array>

#include "library/patch_parts.h"
#include "patch/patch_chunk.h"
#include "patch/patch_file.h"
#include "patch/program_slot.h"

namespace vantoric {

// One thread. Large (some 200 KB): for the heap.
class SparePatch final : private PatchHost {
public:
    // All parameters 0, no samples. What its files have to tell goes to the messages, which outlive it.
    explicit SparePatch(Messages& messages);

    PatchParts parts();
    ParameterModel& parameters() { return parameters_; }
    ProgramSlot& program() { return program_; }
    PatchFiles& files() { return files_; }

private:
    // Nothing plays and nobody looks.
    void allNotesOff() override {}
    void resetEngine() override {}
    void refreshAll() override {}
    void lookUpPatchName() override {}
    void setBusy(bool) override {}

    PatchWaves waves();

    EngineFlags flags_;
    EngineAccess access_;
    ParameterModel parameters_;
    ProgramSlot program_;
    std::array<Sample, chunk::waveCount> samples_;
    std::array<CustomWaveSlot, chunk::waveCount> waves_;
    PatchChunk chunk_;
    PatchFiles files_;
};

}  // namespace vantoric
