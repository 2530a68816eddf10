// Kernels that read the frame of a wave that Pw chooses.
#include <algorithm>

#include "sound/fm_loop.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric::kernels {

namespace {

// A sample kernel before this one counts further than 24 bits.
RunningPhase runningPhase(const OscillatorState& state) { return {state.phase & phaseMask, state.increment & phaseMask}; }

// How many of the next `count` samples come before the phase, of 24 bits like its step, begins again.
int samplesToWrap(const RunningPhase& at, int count) {
    if (at.step == 0) return count;
    return static_cast<int>(std::min((phaseMask - at.phase) / at.step, static_cast<std::uint32_t>(count)));
}

bool isReady(const OscillatorState& state) { return state.table != nullptr && state.frame >= 0; }

}  // namespace

void silent(const KernelContext&, std::int16_t* out, int count, OscillatorState&, const std::int16_t*) {
    std::fill_n(out, count, 0);
}

void frameNearest(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr || state.framePending < 0) return;
    RunningPhase at{state.phase, state.increment};
    kernelLoops().nearest(WaveView(state).cycle(levelOf(state.increment), state.framePending), at, out, count);
    state.phase = at.phase;
}

void frameLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (!isReady(state)) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    RunningPhase at = runningPhase(state);
    const auto read = [&](std::int16_t* to, int samples) {
        kernelLoops().linear(wave.cycle(level, state.frame), at, to, samples);
    };
    const int old = state.frame != state.framePending ? samplesToWrap(at, count) : 0;
    read(out, old);
    if (old < count) {
        state.frame = state.framePending;
        read(out + old, count - old);
    }
    state.phase = at.phase;
}

void frameBlend(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (!isReady(state)) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    RunningPhase at = runningPhase(state);
    const auto read = [&](std::int16_t* to, int samples) {
        const int next = std::min(state.frame + 1, wave.frames - 1);
        kernelLoops().blended({wave.cycle(level, state.frame), wave.cycle(level, next), state.blend}, at, to, samples);
    };
    const bool latches = state.frame != state.framePending || state.blend != state.blendPending;
    const int old = latches ? samplesToWrap(at, count) : 0;
    read(out, old);
    if (old < count) {
        state.frame = state.framePending;
        state.blend = state.blendPending;
        read(out + old, count - old);
    }
    state.phase = at.phase;
}

void frameFmNearest(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    if (!isReady(state)) return;
    const std::int16_t* cycle = WaveView(state).cycle(levelOf(state.increment), state.frame);
    const KernelLoops& loops = kernelLoops();
    ModulatedPhase at(state, state.increment);
    runModulated(
        at, out, count, in, [&](int i) { return loops.modulatedNearest(at, cycle, in + i, out + i, count - i); }, [] {},
        [](std::uint32_t& phase, int, int) { phase = 0; },
        [&](const FmSample& sample) { return nearestRead(cycle, sample.phase); });
    at.store(state);
}

void frameFmLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    if (!isReady(state)) return;
    const WaveView wave(state);
    const KernelLoops& loops = kernelLoops();
    const std::int64_t increment = static_cast<std::int32_t>(state.increment);
    ModulatedPhase at(state, state.increment);
    // The crossing falls between two input samples; the phase starts where a straight line puts it.
    const auto restart = [increment](std::uint32_t& phase, int x, int last) {
        phase = x == last ? 0 : static_cast<std::uint32_t>(increment + increment * last / (x - last)) & phaseMask;
    };
    const auto groups = [&](int i) {
        const ModulatedWave groupWave{wave.cycle(0, state.frame), wave.frames, state.frame != state.framePending};
        return loops.modulatedLinear(at, groupWave, in + i, out + i, count - i);
    };
    runModulated(
        at, out, count, in, groups, [] {}, restart,
        [&](const FmSample& sample) {
            if (sample.wrapped) state.frame = state.framePending;
            return modulatedRead([&](int level) { return wave.cycle(level, state.frame); }, sample.phase, sample.step);
        });
    at.store(state);
}

}  // namespace vantoric::kernels
