// The per-sample frame that all kernels with FM and sync share.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "sound/oscillator_state.h"

namespace vantoric {

// What one sample of a modulated kernel reads by.
struct FmSample {
    std::uint32_t phase;  // 24 bits, with the FM offset
    std::uint32_t step;   // effective step in table samples
    bool wrapped;         // the total fell below the last one
};

// Runs `count` samples. The offset moves the read only; the accumulator stays unmodulated, so a constant
// modulator does not bend the pitch.
//   advance(): called as the phase steps, before the sync test
//   restart(phase, x, last): a rising zero crossing of the input, when the oscillator is synced
//   read(FmSample): the output sample
// `step` is what the phase takes per sample: the increment, or its negative for a wave that runs backward.
template <class Advance, class Restart, class Read>
inline void runModulated(OscillatorState& state, std::int16_t* out, int count, const std::int16_t* in, std::uint32_t& step,
                         Advance advance, Restart restart, Read read) {
    std::uint32_t phase = state.phase;
    const std::int64_t increment = static_cast<std::int32_t>(state.increment);
    std::int32_t depth = state.fmDepth;
    const std::int32_t depthStep = state.fmDepthStep;
    std::int32_t lastOffset = state.lastFmOffset;
    std::int32_t lastTotal = state.lastTotalPhase;
    std::int16_t lastInput = state.lastSyncInput;
    const bool synced = state.synced != 0;
    for (int i = 0; i < count; ++i) {
        phase = (phase + step) & phaseMask;
        advance();
        const std::int16_t x = in[i];
        if (synced) {
            if (x > 0 && lastInput < 1) restart(phase, x, lastInput);
            lastInput = x;
        }
        const auto offset = static_cast<std::int32_t>((static_cast<std::int64_t>(x) * depth) >> 4);
        depth = static_cast<std::int32_t>(static_cast<std::uint32_t>(depth) + static_cast<std::uint32_t>(depthStep));
        const auto total = static_cast<std::int32_t>(phase + static_cast<std::uint32_t>(offset));
        const auto effective = static_cast<std::uint32_t>(std::llabs(increment - lastOffset + offset) >> 13);
        out[i] = static_cast<std::int16_t>(
            read(FmSample{static_cast<std::uint32_t>(total) & phaseMask, effective, total < lastTotal}));
        lastOffset = offset;
        lastTotal = total;
    }
    state.phase = phase;
    state.fmDepth = depth;
    state.lastFmOffset = lastOffset;
    state.lastTotalPhase = lastTotal;
    state.lastSyncInput = lastInput;
}

}  // namespace vantoric
