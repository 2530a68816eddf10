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

ChunkBench::ChunkBench(Patch& patch, Messages& messages)
    : access_(flags_, platform::sleepMilliseconds),
      program_(messages),
      chunk_(access_, patch.parameters, program_, wavesOf(patch), *this, messages) {}

}  // namespace vantoric::patch
