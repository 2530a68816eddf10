// Oscillators of several voices rendered side by side: those whose kernels wait for themselves, lane = oscillator.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

#include "sound/kernel_loops.h"
#include "sound/oscillator_state.h"

namespace vantoric {

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
SideBySideFunction fractal1, fractal2, fractal3;

}  // namespace sideBySide

// A kernel as one call of its side by side form.
inline void alone(SideBySideFunction* function, const KernelContext& context, std::int16_t* out, int count,
                  OscillatorState& state, const std::int16_t* in) {
    const KernelCall call{&context.engine, &context.waves, &context.random, out, &state, in};
    function({&call, 1}, count);
}

// Clears the rows behind `runs` up to a whole register.
inline void clearIdleRows(Row* rows, int runs) {
    for (; runs % widestLanes != 0; ++runs) std::fill_n(rows[runs], rowSamples, 0.0f);
}

// A Run is an oscillator in its call:
//   Run(call, arguments...); ready(): whether it has what it needs, else its call is passed over
//   chain(): the recursive part at its start; loop(): what runs it for many
//   fill(row, at, count): the input of the recursive part; finish(row, at, count): the samples from its output, `at` samples
//   into the call
//   store(chain): leaves the state
// and, if there is a loop for the whole of one, alone(chain, count).
template <class Run, class... Arguments>
void renderAlone(const KernelCall& call, int count, const Arguments&... arguments) {
    Run run(call, arguments...);
    if (!run.ready()) return;
    auto chain = run.chain();
    if constexpr (requires { run.alone(chain, count); }) {
        run.alone(chain, count);
    } else {
        Row row;
        for (int at = 0; at < count; at += rowSamples) {
            const int now = std::min(rowSamples, count - at);
            run.fill(row, at, now);
            for (int i = 0; i < now; ++i) row[i] = chain.step(row[i]);
            run.finish(row, at, now);
        }
    }
    run.store(chain);
}

// Renders calls by way of rows: what is not recursive an oscillator at a time, the rest side by side.
template <class Run, class... Arguments>
void renderRows(std::span<const KernelCall> calls, int count, const Arguments&... arguments) {
    if (calls.size() == 1) return renderAlone<Run>(calls[0], count, arguments...);
    std::optional<Run> runs[rowCount];
    LaneBank<Run::template Chain> bank;
    Row rows[rowCount];
    int ready = 0;
    for (const KernelCall& call : calls) {
        runs[ready].emplace(call, arguments...);
        if (!runs[ready]->ready()) continue;
        bank.put(ready, runs[ready]->chain());
        ++ready;
    }
    clearIdleRows(rows, ready);
    for (int at = 0; at < count; at += rowSamples) {
        const int now = std::min(rowSamples, count - at);
        for (int k = 0; k < ready; ++k) runs[k]->fill(rows[k], at, now);
        Run::loop()(bank, rows, ready, now);
        for (int k = 0; k < ready; ++k) runs[k]->finish(rows[k], at, now);
    }
    for (int k = 0; k < ready; ++k) runs[k]->store(bank.get(k));
}

}  // namespace vantoric
