// Stacks of detuned oscillators.
#include "base/math.h"
#include "base/numbers.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

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

int supersawSteps(double pitch, double p, std::uint32_t (&steps)[stackVoices]) {
    steps[0] = stepOf(pitch);
    for (int k = 1; k < supersawVoices; ++k) {
        const double factor = math::exp(static_cast<float>(p * supersawExponents[k - 1]));
        steps[k] = stepOf(pitch * factor);
    }
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

namespace kernels {

namespace {

// The running phases of a stack, shifted to the top of their words so that they wrap by themselves.
template <int voices>
struct StackPhases {
    std::uint32_t phase[voices], step[voices];

    StackPhases(const OscillatorState& state, int ssWave) {
        std::uint32_t steps[stackVoices] = {};
        stackSteps(ssWave, state.increment, state.blendPending, steps);
        for (int k = 0; k < voices; ++k) {
            phase[k] = state.subPhase[k] << 8;
            step[k] = steps[k] << 8;
        }
    }
    void store(OscillatorState& state) const {
        for (int k = 0; k < voices; ++k) state.subPhase[k] = phase[k] >> 8;
    }
    // Steps all voices and sums their nearest samples: nine unrelated read errors average out.
    int stepAndSum(const std::int16_t* cycle) {
        int sum = 0;
#pragma GCC unroll 9
        for (int k = 0; k < voices; ++k) {
            phase[k] += step[k];
            sum += cycle[phase[k] >> 21];
        }
        return sum;
    }
};

template <int voices>
void plainStack(const std::int16_t* cycle, int ssWave, float scale, std::int16_t* out, int count, OscillatorState& state) {
    if (cycle == nullptr) return;
    StackPhases<voices> stack(state, ssWave);
    for (int i = 0; i < count; ++i) out[i] = truncateToSample(static_cast<float>(-stack.stepAndSum(cycle)) * scale);
    stack.store(state);
}

// One-pole high-pass at a corner that follows the note; its memory is a float of the state.
struct FollowingHighpass {
    float pole, rest, memory;

    FollowingHighpass(float corner, float kept) : pole(clampUnit(corner)), rest(1.0f - pole), memory(kept) {}
    float step(float x) {
        memory = rest * memory + pole * x;
        return x - memory;
    }
};

// Two high-passes in series behind a stack's sum.
template <class Sum>
void supersaw(std::int16_t* out, int count, OscillatorState& state, float scale, Sum sum) {
    const float corner = static_cast<float>(state.increment) * 2.384186e-7f;
    FollowingHighpass first(corner, state.work[0]), second(corner, state.work[1]);
    for (int i = 0; i < count; ++i) out[i] = truncateToSample(second.step(first.step(static_cast<float>(sum()))) * scale);
    state.work[0] = first.memory;
    state.work[1] = second.memory;
}

void tableSupersaw(const std::int16_t* cycle, int ssWave, float scale, std::int16_t* out, int count, OscillatorState& state) {
    if (cycle == nullptr) return;
    StackPhases<supersawVoices> stack(state, ssWave);
    supersaw(out, count, state, scale, [&] { return stack.stepAndSum(cycle); });
    stack.store(state);
}

const std::int16_t* stackCycle(const KernelContext& context, const OscillatorState& state, int wave, int frame) {
    return context.waves.cycle(wave, frame, levelOf(state.increment));
}

constexpr int sawFrame = 63, squareFrame = 0, noisySawFrame = 127;

}  // namespace

void hypersaw3(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack<3>(stackCycle(context, state, vaTriangleSaw, sawFrame), 3, 0.16f, out, count, state);
}
void hypersaw5(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack<5>(stackCycle(context, state, vaTriangleSaw, sawFrame), 4, 0.132f, out, count, state);
}
void hypersaw7(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack<7>(stackCycle(context, state, vaTriangleSaw, sawFrame), 5, 0.1f, out, count, state);
}
void hypersaw9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack<9>(stackCycle(context, state, vaTriangleSaw, sawFrame), 6, 0.08f, out, count, state);
}
void hypersquare9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    plainStack<9>(stackCycle(context, state, vaSquareImpulse, squareFrame), 7, 0.08f, out, count, state);
}

void hypernoise9(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const std::int16_t* cycle = stackCycle(context, state, noNoisySaw, noisySawFrame);
    if (cycle == nullptr) return;
    StackPhases<9> stack(state, 8);
    FollowingHighpass highpass(static_cast<float>(state.increment) * 4.768372e-7f, state.work[0]);
    for (int i = 0; i < count; ++i) out[i] = truncateToSample(highpass.step(static_cast<float>(stack.stepAndSum(cycle))) * 0.16f);
    stack.store(state);
    state.work[0] = highpass.memory;
}

// A computed saw without any band-limiting. Above 48 kHz only one of two groups of voices, the odd and the
// even ones in turn, steps at each sample, by twice its step.
void supersawJp(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    StackPhases<supersawVoices> stack(state, 9);
    // Steps every `every`-th voice from `first` on, by so many steps at once, and sums these voices.
    const auto sum = [&](int first, int every) {
        int total = 0;
#pragma GCC unroll 7
        for (int k = first; k < supersawVoices; k += every) {
            stack.phase[k] += static_cast<std::uint32_t>(every) * stack.step[k];
            total += (static_cast<int>(stack.phase[k] >> 8) - 0x800000) >> 9;
        }
        return total;
    };
    if (context.engine.internalRate > 48000.0f) {
        int sums[2] = {};
        for (int k = 0; k < supersawVoices; ++k) sums[k & 1] += (static_cast<int>(stack.phase[k] >> 8) - 0x800000) >> 9;
        auto alternate = state.alternate;
        supersaw(out, count, state, 0.1083f, [&] {
            alternate ^= 1;
            if (alternate != 0)
                sums[1] = sum(1, 2);
            else
                sums[0] = sum(0, 2);
            return sums[0] + sums[1];
        });
        state.alternate = alternate;
    } else {
        supersaw(out, count, state, 0.1083f, [&] { return sum(0, 1); });
    }
    stack.store(state);
}
void supersawClean(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    tableSupersaw(stackCycle(context, state, vaTriangleSaw, sawFrame), 10, 0.108332f, out, count, state);
}
void supernoise(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    tableSupersaw(stackCycle(context, state, noNoisySaw, noisySawFrame), 11, 0.2f, out, count, state);
}

}  // namespace kernels

}  // namespace vantoric
