#include "apps/patch/chunk_bench.h"

#include "platform/thread.h"

namespace vantoric::patch {

namespace {

PatchWaves wavesOf(Patch& patch) {
    PatchWaves waves;
    for (std::size_t i = 0; i < chunk::waveCount; ++i) {
        waves.samples[i] = &patch.samples[i];
        waves.customWaves[i] = patch.customWaves[i].data();
    }
    return waves;
}

}  // namespace

ChunkBench::ChunkBench(Patch& patch, platform::Dialogs& dialogs)
    : program_(dialogs),
      chunk_(state_, patch.parameters, program_, wavesOf(patch), *this, dialogs, platform::sleepMilliseconds) {}

}  // namespace vantoric::patch
