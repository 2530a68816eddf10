// Single cycles through a model of an analog output stage: a two-tap mean, a one-pole low-pass, hiss.
#include <algorithm>

#include "base/numbers.h"
#include "sound/fm_loop.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/row_rendering.h"
#include "sound/side_by_side.h"

namespace vantoric {

float analogCoefficient(float internalRate) {
    return static_cast<float>(std::min(1.0, 1.0 - fastExp(-6.28 * 13000.0 / static_cast<double>(internalRate))));
}

namespace {

// An oscillator with the output stage behind it. The stage: a mean of two reads of 29 bits, of which each read gives its own
// share and keeps what stands for it in the next; a one-pole low-pass; hiss.
class AnalogRun {
public:
    explicit AnalogRun(const KernelCall& call)
        : call_(call), previous_(call.state->previousRead), pole_(analogCoefficient(call.engine->internalRate)) {}

    OutputLowpass<float> chain() const { return {1.0f - pole_, call_.state->lowpass}; }
    void store(const OutputLowpass<float>& chain) const {
        call_.state->lowpass = chain.memory;
        call_.state->previousRead = previous_;
    }

protected:
    AnalogReads reads(const std::int16_t* from, std::uint32_t width = 0) const { return {from, pole_, width}; }
    AnalogSound sound() const { return {static_cast<float>(call_.state->hiss), call_.state->polarity < 0}; }
    RandomSources& random() const { return *call_.random; }
    // The step of a wave that runs in the direction of the phase.
    std::uint32_t directedStep() const {
        return call_.state->phaseDirection < 0 ? 0u - call_.state->increment : call_.state->increment;
    }

    const KernelCall& call_;
    std::int32_t previous_;

private:
    float pole_;
};

class PlainRun : public AnalogRun {
public:
    explicit PlainRun(const KernelCall& call)
        : AnalogRun(call),
          cycle_(call.waves->rowCycle(call.state->analogRow, levelOf(call.state->increment))),
          at_{call.state->phase, directedStep()} {}

    bool ready() const { return cycle_ != nullptr; }
    void fill(float* row, int, int count) { kernelLoops().plainReads(reads(cycle_), at_, previous_, row, count); }
    void finish(const float* row, int at, int count) const {
        kernelLoops().analogOverHash(row, random().hash, sound(), call_.out + at, count);
    }
    void alone(OutputLowpass<float>& chain, int count) {
        kernelLoops().analogPlainAlone(reads(cycle_), at_, previous_, chain, random().hash, sound(), call_.out, count);
    }
    void store(const OutputLowpass<float>& chain) const {
        AnalogRun::store(chain);
        call_.state->phase = at_.phase;
    }

private:
    const std::int16_t* cycle_;
    RunningPhase at_;
};

// A pulse from two reads of a saw, 1024 - 2 width samples apart.
class PulseRun : public AnalogRun {
public:
    explicit PulseRun(const KernelCall& call)
        : AnalogRun(call),
          cycle_(call.waves->rowCycle(pulseWidthRow, levelOf(call.state->increment))),
          at_{call.state->phase, directedStep()},
          width_(call.state->framePending) {}

    bool ready() const { return cycle_ != nullptr && width_ >= 0; }
    void fill(float* row, int, int count) { kernelLoops().pulseReads(pulse(), at_, previous_, row, count); }
    void finish(const float* row, int at, int count) const {
        kernelLoops().analogOverCongruence(row, random().congruence, unturned(), call_.out + at, count);
    }
    void alone(OutputLowpass<float>& chain, int count) {
        kernelLoops().analogPulseAlone(pulse(), at_, previous_, chain, random().congruence, unturned(), call_.out, count);
    }
    void store(const OutputLowpass<float>& chain) const {
        AnalogRun::store(chain);
        call_.state->phase = at_.phase;
    }

private:
    AnalogReads pulse() const { return reads(cycle_, static_cast<std::uint32_t>(width_)); }
    AnalogSound unturned() const { return {sound().hiss, false}; }

    const std::int16_t* cycle_;
    RunningPhase at_;
    int width_;
};

class FmRun : public AnalogRun {
public:
    explicit FmRun(const KernelCall& call) : AnalogRun(call), at_(*call.state, directedStep()) {
        for (int level = 0; level < mipLevels; ++level) cycles_[level] = call.waves->rowCycle(call.state->analogRow, level);
    }
    bool ready() const {
        return std::none_of(cycles_, cycles_ + mipLevels, [](const std::int16_t* cycle) { return cycle == nullptr; });
    }
    // The reads are of 16 bits; their shares stand 15 bits above what is kept of them.
    void fill(float* row, int at, int count) {
        const std::int16_t* in = call_.in + at;
        std::int16_t reads[rowSamples];
        const ModulatedWave wave{cycles_[0], static_cast<int>((cycles_[1] - cycles_[0]) / cycleSamples)};
        const auto groups = [&](int i) { return kernelLoops().modulatedLinear(at_, wave, in + i, reads + i, count - i); };
        // Soft sync: the wave turns round, from the next sample on.
        const auto turn = [&](std::uint32_t&, int, int) {
            call_.state->phaseDirection = static_cast<std::int8_t>(-call_.state->phaseDirection);
            at_.step = 0u - at_.step;
        };
        runModulated(
            at_, reads, count, in, groups, [] {}, turn,
            [&](const FmSample& sample) {
                return modulatedRead([&](int level) { return cycles_[level]; }, sample.phase, sample.step);
            });
        kernelLoops().fmReads(AnalogRun::reads(reads), previous_, row, count);
    }
    void finish(const float* row, int at, int count) const {
        kernelLoops().analogOverCongruence(row, random().congruence, sound(), call_.out + at, count);
    }
    void store(const OutputLowpass<float>& chain) const {
        AnalogRun::store(chain);
        at_.store(*call_.state);
    }

private:
    const std::int16_t* cycles_[mipLevels];
    ModulatedPhase at_;
};

template <class Run>
void renderAnalog(std::span<const KernelCall> calls, int count) {
    renderRows<Run, OutputLowpass>(kernelLoops().outputLowpass, calls, count);
}

}  // namespace

void sideBySide::analogPlain(std::span<const KernelCall> calls, int count) { renderAnalog<PlainRun>(calls, count); }
void sideBySide::analogFm(std::span<const KernelCall> calls, int count) { renderAnalog<FmRun>(calls, count); }
void sideBySide::analogPulse(std::span<const KernelCall> calls, int count) { renderAnalog<PulseRun>(calls, count); }

namespace kernels {

void analogPlain(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::analogPlain, context, out, count, state, in);
}
void analogFm(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::analogFm, context, out, count, state, in);
}
void analogPulse(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::analogPulse, context, out, count, state, in);
}

}  // namespace kernels

}  // namespace vantoric
