// The engine's reader and writer of chunks at work on a patch that no engine plays.
#pragma once

#include "apps/patch/patch.h"
#include "patch/patch_chunk.h"
#include "patch/program_slot.h"
#include "platform/dialogs.h"

namespace vantoric::patch {

// Patch and dialogs outlive it. One thread.
class ChunkBench final : public PatchHost {
public:
    ChunkBench(Patch& patch, platform::Dialogs& dialogs);

    PatchChunk& chunk() { return chunk_; }
    ProgramSlot& program() { return program_; }
    EngineFlags& flags() { return state_.flags; }

    // Nothing plays and nobody looks.
    void allNotesOff() override {}
    void resetEngine() override {}
    void refreshAll() override {}
    void lookUpPatchName() override {}
    void setBusy(bool) override {}

private:
    EngineState state_;
    ProgramSlot program_;
    PatchChunk chunk_;
};

}  // namespace vantoric::patch
