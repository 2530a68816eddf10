// Stacks of detuned oscillators.
#include <algorithm>

#include "base/numbers.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/row_rendering.h"
#include "sound/side_by_side.h"

namespace vantoric {

namespace {

// A stack with a centre and symmetric pairs: pair offsets as p x constant, and the factor that lowers the
// base so that the mean pitch stays, as 1 - q x lowering. p is the square of the 16-bit detune, q that of p.
struct PairedStack {
    int pairs;
    double offset[4];
    double lowering;
};
constexpr PairedStack stackOf9 = {
    4, {2.910383e-12, 5.820766e-12, 8.7311495e-12, 1.1641532e-11}, 6.776264e-24 + 1.694066e-24 + 1.5246594e-23 + 2.7105056e-23};
constexpr PairedStack pairedStacks[] = {
    {1, {1.1641532e-11}, 6.776264e-23},
    {2, {5.820766e-12, 1.1641532e-11}, 4.5175095e-23 + 1.1293774e-23},
    {3, {3.8766304e-12, 7.753261e-12, 1.16298915e-11}, 1.5028263e-23 + 3.7570656e-24 + 3.3813595e-23},
    stackOf9,
    stackOf9,
    stackOf9,
};

// Exponents of the supersaw's voices behind the centre, as p x constant. Deliberately uneven, so that the
// beats never line up.
constexpr double supersawExponents[] = {4.5907657e-12, -4.590784e-12, 1.404236e-11, -1.512249e-11, 2.3763942e-11, -2.7139528e-11};
constexpr int supersawVoices = 7;

// A step as its word holds it, below 0 too.
std::uint32_t stepOf(double step) { return static_cast<std::uint32_t>(static_cast<std::int64_t>(step)); }

// e^x as a float for all exponents at once, |x| up to 0.12: the series as far as a float needs it.
void supersawFactors(double p, double (&factors)[supersawVoices - 1]) {
    static constexpr double reciprocals[] = {1.0 / 40320, 1.0 / 5040, 1.0 / 720, 1.0 / 120, 1.0 / 24, 1.0 / 6, 0.5, 1.0, 1.0};
    constexpr int pairs = supersawVoices - 1;
    double x[pairs], sum[pairs];
    for (int k = 0; k < pairs; ++k) {
        x[k] = static_cast<float>(p * supersawExponents[k]);
        sum[k] = 1.0 / 362880;
    }
    for (const double reciprocal : reciprocals)
        for (int k = 0; k < pairs; ++k) sum[k] = sum[k] * x[k] + reciprocal;
    for (int k = 0; k < pairs; ++k) factors[k] = static_cast<float>(sum[k]);
}

int supersawSteps(double pitch, double p, std::uint32_t (&steps)[stackVoices]) {
    double factors[supersawVoices - 1];
    supersawFactors(p, factors);
    steps[0] = stepOf(pitch);
    for (int k = 1; k < supersawVoices; ++k) steps[k] = stepOf(pitch * factors[k - 1]);
    return supersawVoices;
}

}  // namespace

int stackSteps(int ssWave, std::uint32_t increment, std::uint16_t detune, std::uint32_t (&steps)[stackVoices]) {
    const double p = static_cast<double>(detune) * detune;
    const double pitch = static_cast<std::int32_t>(increment);
    if (ssWave >= 9) return supersawSteps(pitch, p, steps);
    const PairedStack& stack = pairedStacks[ssWave - stackWaveFirst];
    const double base = pitch * (1.0 - p * p * stack.lowering);
    steps[0] = stepOf(base);
    for (int k = 0; k < stack.pairs; ++k) {
        const double offset = p * stack.offset[k];
        steps[2 * k + 1] = stepOf(base * (1.0 + offset));
        steps[2 * k + 2] = stepOf(base * (1.0 - offset));
    }
    return 2 * stack.pairs + 1;
}

namespace {

// A stack by its entry of the SSWave list: what its voices read and what their sum is scaled by.
struct StackKernel {
    consteval StackKernel(std::string_view label, float sumScale)
        : ssWave(stackLabelled(label)),
          cycle(stackWaves.at(static_cast<std::size_t>(ssWave - stackWaveFirst))),
          scale(sumScale) {}

    int ssWave;
    StackWave cycle;
    float scale;
};
constexpr StackKernel hypersawVir3x("Hypersaw Vir 3x", 0.16f);
constexpr StackKernel hypersawVir5x("Hypersaw Vir 5x", 0.132f);
constexpr StackKernel hypersawVir7x("Hypersaw Vir 7x", 0.1f);
constexpr StackKernel hypersawVir9x("Hypersaw Vir 9x", 0.08f);
constexpr StackKernel hypersquare9x("Hypersquare 9x", 0.08f);
constexpr StackKernel hypernoise9x("Hypernoise 9x", 0.16f);
constexpr StackKernel supersawJpStack("Supersaw JP", 0.1083f);
constexpr StackKernel supersawCleanStack("Supersaw clean", 0.108332f);
constexpr StackKernel supernoiseStack("Supernoise", 0.2f);

// A stack in a call of its kernel.
class StackRun {
public:
    StackRun(const KernelCall& call, const StackKernel& kernel) : call_(call), kernel_(kernel) {
        const OscillatorState& state = *call.state;
        if (!isComputed()) cycle_ = call.waves->cycle(kernel.cycle.wave, kernel.cycle.frame, levelOf(state.increment));
        std::uint32_t steps[stackVoices] = {};
        stack_.voices = stackSteps(kernel.ssWave, state.increment, state.blendPending, steps);
        for (int k = 0; k < stack_.voices; ++k) {
            stack_.phase[k] = state.subPhase[k] << 8;
            stack_.step[k] = steps[k] << 8;
        }
    }
    bool ready() const { return isComputed() || cycle_ != nullptr; }
    // The sum of the voices. Reads are of the nearest sample: nine unrelated errors average out.
    void fill(float* row, int, int count) {
        if (isComputed())
            kernelLoops().sawSums(stack_, turns(count), row, count);
        else
            kernelLoops().tableSums(cycle_, stack_, row, count);
    }
    void finish(const float* row, int at, int count) const { kernelLoops().truncated(row, kernel_.scale, call_.out + at, count); }
    void store() const {
        for (int k = 0; k < stack_.voices; ++k) call_.state->subPhase[k] = stack_.phase[k] >> 8;
    }

protected:
    // A high-pass whose corner follows the note; its memory is a float of the state.
    StackHighpass<float> highpass(float cornerPerIncrement, int memory) const {
        const float pole = clampUnit(static_cast<float>(call_.state->increment) * cornerPerIncrement);
        return {pole, 1.0f - pole, call_.state->work[memory]};
    }
    bool isComputed() const { return kernel_.cycle.wave == StackWave::computed; }
    // The computed saw has no band-limiting. Above 48 kHz only one of two groups of its voices, the odd and the even ones in
    // turn, steps at each sample, by twice its step: 0 if the odd ones are next in the coming `count` samples, 1 the even
    // ones, below 0 all.
    int turns(int count) {
        if (!(call_.engine->internalRate > 48000.0f)) return -1;
        const int alternate = call_.state->alternate;
        call_.state->alternate ^= static_cast<std::uint8_t>(count & 1);
        return alternate;
    }

    const KernelCall& call_;
    const StackKernel& kernel_;
    const std::int16_t* cycle_ = nullptr;
    StackPhases stack_;
};

// The plain stacks' sums are negated.
void plainStack(const StackKernel& kernel, const KernelContext& context, std::int16_t* out, int count, OscillatorState& state) {
    StackKernel negated = kernel;
    negated.scale = -kernel.scale;
    const KernelCall call{&context.engine, &context.waves, &context.random, out, &state, nullptr};
    StackRun run(call, negated);
    if (!run.ready()) return;
    Row row;
    for (int at = 0; at < count; at += rowSamples) {
        const int now = std::min(rowSamples, count - at);
        run.fill(row, at, now);
        run.finish(row, at, now);
    }
    run.store();
}

// Behind one high-pass at eight times the note.
struct HypernoiseRun : StackRun {
    using StackRun::StackRun;

    StackHighpass<float> chain() const { return highpass(4.768372e-7f, 0); }
    void alone(StackHighpass<float>& chain, int count) {
        kernelLoops().hypernoiseAlone(cycle_, stack_, chain, kernel_.scale, call_.out, count);
    }
    void store(const StackHighpass<float>& chain) const {
        StackRun::store();
        call_.state->work[0] = chain.memory;
    }
};

// Behind two in series.
struct SupersawRun : StackRun {
    using StackRun::StackRun;

    TwoStackHighpasses<float> chain() const { return {highpass(2.384186e-7f, 0), highpass(2.384186e-7f, 1)}; }
    void alone(TwoStackHighpasses<float>& chain, int count) {
        if (isComputed())
            kernelLoops().supersawJpAlone(stack_, turns(count), chain, kernel_.scale, call_.out, count);
        else
            kernelLoops().supersawAlone(cycle_, stack_, chain, kernel_.scale, call_.out, count);
    }
    void store(const TwoStackHighpasses<float>& chain) const {
        StackRun::store();
        call_.state->work[0] = chain.first.memory;
        call_.state->work[1] = chain.second.memory;
    }
};

}  // namespace

void sideBySide::hypernoise9(std::span<const KernelCall> calls, int count) {
    renderRows<HypernoiseRun, StackHighpass>(kernelLoops().stackHighpass, calls, count, hypernoise9x);
}
void sideBySide::supersawJp(std::span<const KernelCall> calls, int count) {
    renderRows<SupersawRun, TwoStackHighpasses>(kernelLoops().twoStackHighpasses, calls, count, supersawJpStack);
}
void sideBySide::supersawClean(std::span<const KernelCall> calls, int count) {
    renderRows<SupersawRun, TwoStackHighpasses>(kernelLoops().twoStackHighpasses, calls, count, supersawCleanStack);
}
void sideBySide::supernoise(std::span<const KernelCall> calls, int count) {
    renderRows<SupersawRun, TwoStackHighpasses>(kernelLoops().twoStackHighpasses, calls, count, supernoiseStack);
}

namespace kernels {

void hypersaw3(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack(hypersawVir3x, context, out, count, state);
}
void hypersaw5(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack(hypersawVir5x, context, out, count, state);
}
void hypersaw7(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack(hypersawVir7x, context, out, count, state);
}
void hypersaw9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack(hypersawVir9x, context, out, count, state);
}
void hypersquare9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack(hypersquare9x, context, out, count, state);
}
void hypernoise9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::hypernoise9, context, out, count, state, in);
}
void supersawJp(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::supersawJp, context, out, count, state, in);
}
void supersawClean(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::supersawClean, context, out, count, state, in);
}
void supernoise(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::supernoise, context, out, count, state, in);
}

}  // namespace kernels

}  // namespace vantoric
