// Kernels that scan through all frames of a wave while they read it.
#include "sound/fm_loop.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric::kernels {

namespace {

// The running position in the frames: 23 bits for one pass.
struct FrameScan {
    std::uint32_t phase, increment;
    std::uint64_t frames;

    FrameScan(const OscillatorState& state, std::uint32_t step)
        : phase(state.scanPhase), increment(step), frames(static_cast<std::uint64_t>(state.frameCount)) {}
    void step() { phase = (phase + increment) & 0x7fffff; }
    int frame() const { return static_cast<int>((phase * frames) >> 23); }
};

// One read per sample at the scanned frame of one level.
template <class Read>
void scan(std::int16_t* out, int count, OscillatorState& state, Read read) {
    if (state.table == nullptr) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    FrameScan frames(state, state.scanIncrement);
    const std::uint32_t increment = state.increment;
    std::uint32_t phase = state.phase;
    for (int i = 0; i < count; ++i) {
        phase = (phase + increment) & phaseMask;
        frames.step();
        out[i] = static_cast<std::int16_t>(read(wave.cycle(level, frames.frame()), phase));
    }
    state.phase = phase;
    state.scanPhase = frames.phase;
}

}  // namespace

void scanNearest(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    scan(out, count, state, nearestRead);
}

void scanLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    scan(out, count, state, linearRead);
}

void scanDouble(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    FrameScan frames(state, state.scanIncrement >> 1);
    const std::uint32_t increment = state.increment >> 1;
    std::uint32_t phase = state.phase;
    const auto halfStep = [&] {
        phase = (phase + increment) & phaseMask;
        frames.step();
        return linearRead(wave.cycle(level, frames.frame()), phase);
    };
    for (int i = 0; i < count; ++i) {
        const int first = halfStep();
        out[i] = static_cast<std::int16_t>((first + halfStep()) >> 1);
    }
    state.phase = phase;
    state.scanPhase = frames.phase;
}

void scanFmLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    if (state.table == nullptr) return;
    const WaveView wave(state);
    FrameScan frames(state, state.scanIncrement);
    std::uint32_t step = state.increment;
    const auto restart = [&](std::uint32_t& phase, int, int) {
        phase = 0;
        frames.phase = 0;
    };
    runModulated(
        state, out, count, in, step, [&] { frames.step(); }, restart,
        [&](const FmSample& sample) {
            const int frame = frames.frame();
            return modulatedRead([&](int level) { return wave.cycle(level, frame); }, sample.phase, sample.step);
        });
    state.scanPhase = frames.phase;
}

}  // namespace vantoric::kernels
