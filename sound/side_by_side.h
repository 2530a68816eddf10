// Oscillators of several voices rendered side by side: those whose kernels wait for themselves, lane = oscillator.
#pragma once

#include <cstdint>
#include <span>

#include "sound/oscillator_state.h"

namespace vantoric {

inline constexpr int rowCount = 16;  // oscillators side by side, at most

// One call of a kernel.
struct KernelCall {
    const EngineState* engine;
    const WaveStore* waves;
    RandomSources* random;
    std::int16_t* out;
    OscillatorState* state;
    const std::int16_t* in;
};

// The kernel of 1 to rowCount calls, all of `count` samples and with the same engine and waves, each with random sources of
// its own.
using SideBySideFunction = void(std::span<const KernelCall> calls, int count);

namespace sideBySide {

SideBySideFunction analogPlain, analogFm, analogPulse;
SideBySideFunction hypernoise9, supersawJp, supersawClean, supernoise;
SideBySideFunction noiseLowpass, noiseBandpass, noisePink;
SideBySideFunction fractal1, fractal2, fractal3, fractal4;

}  // namespace sideBySide

// A kernel as one call of its side by side form.
inline void alone(SideBySideFunction* function, const KernelContext& context, std::int16_t* out, int count,
                  OscillatorState& state, const std::int16_t* in) {
    const KernelCall call{&context.engine, &context.waves, &context.random, out, &state, in};
    function({&call, 1}, count);
}

}  // namespace vantoric
