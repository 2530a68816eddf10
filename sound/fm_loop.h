// The per-sample frame that all kernels with FM and sync share.
#pragma once

#include <algorithm>
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

// The phase of an oscillator with FM and sync. The offset moves the read only; the accumulator stays unmodulated, so a
// constant modulator does not bend the pitch.
struct ModulatedPhase {
    std::uint32_t phase;
    std::uint32_t step;  // what the phase takes per sample: the increment, or its negative for a wave that runs backward
    std::int32_t increment;
    std::int32_t depth, depthStep;
    std::int32_t lastOffset, lastTotal;
    std::int16_t lastInput;
    bool synced;

    ModulatedPhase(const OscillatorState& state, std::uint32_t phaseStep)
        : phase(state.phase),
          step(phaseStep),
          increment(static_cast<std::int32_t>(state.increment)),
          depth(state.fmDepth),
          depthStep(state.fmDepthStep),
          lastOffset(state.lastFmOffset),
          lastTotal(state.lastTotalPhase),
          lastInput(state.lastSyncInput),
          synced(state.synced != 0) {}

    void store(OscillatorState& state) const {
        state.phase = phase;
        state.fmDepth = depth;
        state.lastFmOffset = lastOffset;
        state.lastTotalPhase = lastTotal;
        state.lastSyncInput = lastInput;
    }

    // One sample of input x.
    //   advance(): called as the phase steps, before the sync test
    //   restart(phase, x, last): a rising zero crossing of the input, when the oscillator is synced
    template <class Advance, class Restart>
    FmSample next(std::int16_t x, Advance&& advance, Restart&& restart) {
        phase = (phase + step) & phaseMask;
        advance();
        if (synced) {
            if (x > 0 && lastInput < 1) restart(phase, x, lastInput);
            lastInput = x;
        }
        const auto offset = static_cast<std::int32_t>((static_cast<std::int64_t>(x) * depth) >> 4);
        depth = static_cast<std::int32_t>(static_cast<std::uint32_t>(depth) + static_cast<std::uint32_t>(depthStep));
        const auto total = static_cast<std::int32_t>(phase + static_cast<std::uint32_t>(offset));
        const std::int64_t moved = static_cast<std::int64_t>(increment) - lastOffset + offset;
        const FmSample sample{static_cast<std::uint32_t>(total) & phaseMask, static_cast<std::uint32_t>(std::llabs(moved) >> 13),
                              total < lastTotal};
        lastOffset = offset;
        lastTotal = total;
        return sample;
    }
};

// Runs `count` samples: groups(i) renders as many from sample i on as it can at once and returns their number, read(FmSample)
// gives those in between one by one.
template <class Groups, class Advance, class Restart, class Read>
inline void runModulated(ModulatedPhase& at, std::int16_t* out, int count, const std::int16_t* in, Groups groups, Advance advance,
                         Restart restart, Read read) {
    constexpr int single = 8;
    for (int i = 0; i < count;) {
        i += groups(i);
        for (const int end = std::min(count, i + single); i < end; ++i)
            out[i] = static_cast<std::int16_t>(read(at.next(in[i], advance, restart)));
    }
}

}  // namespace vantoric
