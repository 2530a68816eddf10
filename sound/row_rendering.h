// Kernels whose recursive part runs side by side, between rows of samples.
#pragma once

#include <algorithm>
#include <memory>
#include <span>

#include "sound/kernel_chains.h"
#include "sound/kernel_loops.h"
#include "sound/side_by_side.h"

namespace vantoric {

// Clears the rows behind `runs` up to a whole register.
inline void clearIdleRows(Row* rows, int runs) {
    for (; runs % widestLanes != 0; ++runs) std::fill_n(rows[runs], rowSamples, 0.0f);
}

// A Run is an oscillator in its call:
//   Run(call, arguments...); ready(): whether it has what it needs, else its call is passed over
//   chain(): the recursive part at its start
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

// Room for the oscillators of several calls, filled from the front.
template <class Run>
union RunSlots {
    RunSlots() {}
    Run at[rowCount];
};

// Renders calls by way of rows: what is not recursive an oscillator at a time, the rest side by side.
template <class Run, template <class> class Chain, class... Arguments>
void renderRows(ChainLoop<Chain>* loop, std::span<const KernelCall> calls, int count, const Arguments&... arguments) {
    if (calls.size() == 1) return renderAlone<Run>(calls[0], count, arguments...);
    RunSlots<Run> slots;
    Run* const runs = slots.at;
    LaneBank<Chain> bank;
    Row rows[rowCount];
    int ready = 0;
    for (const KernelCall& call : calls) {
        std::construct_at(runs + ready, call, arguments...);
        if (!runs[ready].ready()) continue;
        bank.put(ready, runs[ready].chain());
        ++ready;
    }
    clearIdleRows(rows, ready);
    for (int at = 0; at < count; at += rowSamples) {
        const int now = std::min(rowSamples, count - at);
        for (int k = 0; k < ready; ++k) runs[k].fill(rows[k], at, now);
        loop(bank, rows, ready, now);
        for (int k = 0; k < ready; ++k) runs[k].finish(rows[k], at, now);
    }
    for (int k = 0; k < ready; ++k) runs[k].store(bank.get(k));
}

}  // namespace vantoric
