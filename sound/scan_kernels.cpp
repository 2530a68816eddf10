// Kernels that scan through all frames of a wave while they read it.
#include "sound/fm_loop.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric::kernels {

namespace {

// The phases of a scan in a call of its kernel; `halves`: how many steps make a sample, as a power of two.
struct Scan {
    WaveView wave;
    const std::int16_t* level;
    RunningPhase at;
    FrameScan frames;

    explicit Scan(const OscillatorState& state, int halves = 0)
        : wave(state),
          level(wave.cycle(levelOf(state.increment), 0)),
          at{state.phase, state.increment >> halves},
          frames{state.scanPhase, state.scanIncrement >> halves, static_cast<std::uint32_t>(state.frameCount)} {}
    void store(OscillatorState& state) const {
        state.phase = at.phase;
        state.scanPhase = frames.phase;
    }
};

}  // namespace

void scanNearest(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr) return;
    Scan scan(state);
    kernelLoops().scannedNearest(scan.level, scan.at, scan.frames, out, count);
    scan.store(state);
}

void scanLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr) return;
    Scan scan(state);
    kernelLoops().scannedLinear(scan.level, scan.at, scan.frames, out, count);
    scan.store(state);
}

void scanDouble(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr) return;
    Scan scan(state, 1);
    std::int16_t halves[2 * maxTickSamples];
    kernelLoops().scannedLinear(scan.level, scan.at, scan.frames, halves, 2 * count);
    for (int i = 0; i < count; ++i) out[i] = static_cast<std::int16_t>((halves[2 * i] + halves[2 * i + 1]) >> 1);
    scan.store(state);
}

void scanFmLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    if (state.table == nullptr) return;
    Scan scan(state);
    const WaveView& wave = scan.wave;
    ModulatedPhase at(state, state.increment);
    const auto groups = [&](int i) {
        return kernelLoops().modulatedScan(at, {wave.cycle(0, 0), wave.frames}, scan.frames, in + i, out + i, count - i);
    };
    const auto restart = [&](std::uint32_t& phase, int, int) {
        phase = 0;
        scan.frames.phase = 0;
    };
    runModulated(
        at, out, count, in, groups, [&] { scan.frames.step(); }, restart,
        [&](const FmSample& sample) {
            const int frame = scan.frames.frame();
            return modulatedRead([&](int level) { return wave.cycle(level, frame); }, sample.phase, sample.step);
        });
    state.scanPhase = scan.frames.phase;
    at.store(state);
}

}  // namespace vantoric::kernels
