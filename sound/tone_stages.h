// The tone stages of many oscillators side by side.
#pragma once

#include <cstdint>
#include <span>

#include "sound/oscillator_control.h"

namespace vantoric {

// One oscillator's tone stage: its buffer, its memory and what the tick derived for it.
struct ToneRun {
    std::int16_t* buffer;
    std::int32_t* state;
    int coefficient;
    ToneGains gains;
};

// What toneStage does to each of them, `count` samples (0 to maxTickSamples) in place, with the same result: a stage
// waits for itself, so eight of them go in turn. No two may share buffer or state. Audio thread; allocates nothing.
void toneStages(std::span<const ToneRun> runs, int count);

}  // namespace vantoric
