// Putting a finished sound into a sample's holder while voices may play it.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/engine_state.h"
#include "samples/sample.h"

namespace vantoric {

// The twelve samples of an engine, indexed layer x 3 + oscillator. They outlive their users.
using SampleHolders = std::array<Sample*, layerCount * oscillatorCount>;

// The holder of an oscillator; null if there is none of that number.
inline Sample* holderOf(const SampleHolders& holders, int layer, int oscillator) {
    if (layer < 0 || layer >= layerCount || oscillator < 0 || oscillator >= oscillatorCount) return nullptr;
    return holders[static_cast<std::size_t>(layer * oscillatorCount + oscillator)];
}

// What a holder is to hold.
struct SampleContent {
    std::span<const std::int16_t> samples;    // empty: no sample
    std::int32_t loopStart = 0, loopEnd = 0;  // samples, 0 to the length
    std::uint32_t sampleRate = 44100;         // Hz
};

// Makes buffers, levels (with or without wrap) and guards (for a looped sound or not) beside the holder, which
// then takes them over under an EngineHold. Levels that `rebuildCancel` cut short are left to the worker. False,
// with the holder as it was, if memory is short. Any thread but the audio thread, one at a time.
bool exchangeSample(Sample& holder, const SampleContent& content, bool wrap, bool isLooped, EngineFlags& flags,
                    SleepFunction sleep);

}  // namespace vantoric
