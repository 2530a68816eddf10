// Noise generators, from white to pitched.
#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"
#include "sound/row_rendering.h"
#include "sound/side_by_side.h"

namespace vantoric {

namespace {

// Colour of the noise, 0 to 255, from Pw.
int colour(const OscillatorState& state) { return std::max(state.framePending, 0); }

float unsignedValue(std::uint32_t u) { return static_cast<float>(u); }

// Adds to a 24-bit phase; true if it wrapped.
bool advance(std::uint32_t& phase, std::uint32_t step) {
    phase += step;
    const bool wrapped = phase > phaseMask;
    phase &= phaseMask;
    return wrapped;
}

// How many steps a 24-bit phase takes before one that wraps.
std::uint32_t stepsToWrap(std::uint32_t phase, std::uint32_t step) {
    return phase > phaseMask ? 0
           : step == 0       ? maxTickSamples * 2
                             : std::min<std::uint32_t>((phaseMask - phase) / step, maxTickSamples * 2);
}

}  // namespace

ChamberlinCoefficients chamberlin(int frame, std::uint32_t increment) {
    return {static_cast<float>(fastExp(frame * 0.025)), clampTo(static_cast<float>(increment) * 3.7450704e-7f, 1e-5f, 1.0f)};
}

namespace {

// Chamberlin's state variable filter over white noise from the congruence. work[0] is low, work[1] band.
class FilteredNoise {
public:
    explicit FilteredNoise(const KernelCall& call) : call_(call), c_(chamberlin(colour(*call.state), call.state->increment)) {}

    bool ready() const { return true; }
    void fill(float* row, int, int count) {
        kernelLoops().congruenceRow(call_.random->congruence, 2.0f * amplitude_, amplitude_, row, count);
    }
    void finish(const float* row, int at, int count) const { kernelLoops().truncated(row, 1.0f, call_.out + at, count); }

protected:
    NoiseFilter<float> filter() const { return {1.0f / c_.k, c_.f, call_.state->work[0], call_.state->work[1]}; }
    void storeFilter(const NoiseFilter<float>& filter) const {
        call_.state->work[0] = filter.low;
        call_.state->work[1] = filter.band;
    }
    const KernelCall& call_;
    ChamberlinCoefficients c_;
    float amplitude_ = 0.0f;
};

struct LowpassRun : FilteredNoise {
    explicit LowpassRun(const KernelCall& call) : FilteredNoise(call) {
        amplitude_ = 9000.0f * std::sqrt(1.0f / c_.k) / std::sqrt(c_.f);
    }
    NoiseLowpass<float> chain() const { return {filter()}; }
    void store(const NoiseLowpass<float>& chain) const { storeFilter(chain); }
};

struct BandpassRun : FilteredNoise {
    explicit BandpassRun(const KernelCall& call) : FilteredNoise(call) {
        const float rate = call.engine->internalRate;
        amplitude_ = 0.03125f / std::sqrt(c_.f) * std::sqrt(1.0f / c_.k) * (rate + 192000.0f);
    }
    NoiseBandpass<float> chain() const { return {filter()}; }
    void store(const NoiseBandpass<float>& chain) const { storeFilter(chain); }
};

// White noise in +-2500 behind Paul Kellet's economy filter.
class PinkRun {
public:
    explicit PinkRun(const KernelCall& call) : call_(call) {}

    bool ready() const { return true; }
    PinkFilter<float> chain() const { return {call_.state->work[0], call_.state->work[1], call_.state->work[2]}; }
    void fill(float* row, int, int count) { kernelLoops().hashRow(call_.random->hash, 5000.0f, 2500.0f, row, count); }
    void finish(const float* row, int at, int count) const { kernelLoops().truncated(row, 1.0f, call_.out + at, count); }
    void store(const PinkFilter<float>& chain) const {
        call_.state->work[0] = chain.b0;
        call_.state->work[1] = chain.b1;
        call_.state->work[2] = chain.b2;
    }

private:
    const KernelCall& call_;
};

}  // namespace

void sideBySide::noiseLowpass(std::span<const KernelCall> calls, int count) {
    renderRows<LowpassRun, NoiseLowpass>(kernelLoops().noiseLowpass, calls, count);
}
void sideBySide::noiseBandpass(std::span<const KernelCall> calls, int count) {
    renderRows<BandpassRun, NoiseBandpass>(kernelLoops().noiseBandpass, calls, count);
}
void sideBySide::noisePink(std::span<const KernelCall> calls, int count) {
    renderRows<PinkRun, PinkFilter>(kernelLoops().pinkFilter, calls, count);
}

namespace kernels {

namespace {

// Runs a generator that acts at the wraps of a phase at twice the pitch, from half the sample rate on at every
// sample; sample(wrapped) is the output.
template <class Sample>
void atDoublePitch(std::int16_t* out, int count, OscillatorState& state, Sample sample) {
    const std::uint32_t step = std::min(state.increment, phaseMask) * 2;
    std::uint32_t phase = state.phase;
    float samples[maxTickSamples];
    for (int i = 0; i < count; ++i) samples[i] = sample(advance(phase, step));
    kernelLoops().truncated(samples, 1.0f, out, count);
    state.phase = phase;
}

}  // namespace

// The level rises with the sample rate, so that the level per Hz stays.
void noiseWhite(const KernelContext& context, std::int16_t* out, int count, OscillatorState&, const std::int16_t*) {
    const float amplitude = 0.07f * context.engine.internalRate + 3087.0f;
    const KernelLoops& loops = kernelLoops();
    Row row;
    for (int at = 0; at < count; at += rowSamples) {
        const int now = std::min(rowSamples, count - at);
        loops.hashRow(context.random.hash, 2.0f * amplitude, amplitude, row, now);
        loops.truncated(row, 1.0f, out + at, now);
    }
}

void noiseLowpass(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::noiseLowpass, context, out, count, state, in);
}
void noiseBandpass(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::noiseBandpass, context, out, count, state, in);
}

// Steps: work[0] is held from wrap to wrap.
void noiseRandom(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    float& held = state.work[0];
    atDoublePitch(out, count, state, [&](bool wrapped) {
        if (wrapped) held = unsignedValue(context.random.congruence.next()) * 2.796e-6f - 6000.0f;
        return held;
    });
}

// Straight lines from one random value to the next: work[0] is the level, work[1] the slope.
void noiseRandomRamp(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    float &level = state.work[0], &slope = state.work[1];
    const float rate = 2.0f * static_cast<float>(std::min(state.increment, phaseMask)) * 5.9604645e-8f;
    atDoublePitch(out, count, state, [&](bool wrapped) {
        if (wrapped) {
            const float target = unsignedValue(context.random.congruence.next()) * 3.728e-6f - 8000.0f;
            slope = (-target - level) * rate;
        }
        level += slope;
        return level;
    });
}

// A coin at every wrap: work[0] is the level, 0 before the first.
void noiseDigital(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    float& level = state.work[0];
    atDoublePitch(out, count, state, [&](bool wrapped) {
        if (wrapped) level = (context.random.congruence.next() >> 31) != 0 ? 4000.0f : -4000.0f;
        return level;
    });
}

// A random square: the sign of a triangle whose speed is drawn anew at each turn, so that a half period
// lasts between 1 / w and w of its nominal length. work[0] is the triangle, work[1] its step with its sign.
void noiseBandlimit(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float w = static_cast<float>(colour(state)) * 0.01171875f + 1.0f;
    const float nominal = static_cast<float>(state.increment) * 2.3841858e-7f;
    float ramp = state.work[0], step = state.work[1];
    if (step == 0.0f) step = nominal;
    float ramps[maxTickSamples];
    for (int i = 0; i < count; ++i) {
        ramp += step;
        if (ramp > 1.0f || ramp < -1.0f) [[unlikely]] {
            const float bound = ramp > 0.0f ? 1.0f : -1.0f;
            const float u = unsignedValue(context.random.congruence.next()) * 2.33e-10f;
            step = -bound * (u * w - u / w + 1.0f / w) * nominal;
            ramp = clampTo(2.0f * bound - ramp, -1.0f, 1.0f);
        }
        ramps[i] = ramp;
    }
    for (int i = 0; i < count; ++i) out[i] = ramps[i] >= 0.0f ? 4000 : -4000;
    state.work[0] = ramp;
    state.work[1] = step;
}

// Noise that repeats at the pitch: the congruence restarts at each wrap of a phase that takes two small
// steps a sample; Pw selects the pattern.
void noiseSynced(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const float rate = context.engine.internalRate;
    const float scale = rate * 9.32e-12f + 8.9472e-7f;
    const float middle = 0.02f * rate + 1920.0f;
    const auto pattern = static_cast<std::uint32_t>(colour(state));
    const std::uint32_t step = state.increment >> 3;
    LinearCongruence generator{state.seed};
    std::uint32_t phase = state.phase;
    // As many samples as the phase takes without a wrap, then one that goes step by step.
    for (int i = 0; i < count; ++i) {
        const int rest = std::min({count - i, rowSamples, static_cast<int>(stepsToWrap(phase, step) / 2)});
        if (rest >= widestLanes) {
            Row row;
            kernelLoops().pairedDraws(generator, scale, middle, row, rest);
            kernelLoops().truncated(row, 1.0f, out + i, rest);
            phase += 2 * step * static_cast<std::uint32_t>(rest);
            i += rest - 1;
            continue;
        }
        if (advance(phase, step)) generator.state = pattern << 16;
        const float a = unsignedValue(generator.next());
        if (advance(phase, step))
            generator.state = pattern * 0x84350000u;
        else
            generator.next();
        const float b = unsignedValue(generator.state);
        out[i] = truncateToSample(a * scale - middle + b * scale - middle);
    }
    state.seed = generator.state;
    state.phase = phase;
}

void noisePink(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    alone(sideBySide::noisePink, context, out, count, state, in);
}

// A 16-bit generator of multiplier 75, offset by the colour: the pattern follows Pw. The seed holds its value.
void noise8Bit(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const auto offset = static_cast<std::uint32_t>(colour(state));
    atDoublePitch(out, count, state, [&](bool wrapped) {
        if (wrapped) state.seed = ((((offset + state.seed) * 75 & 0xffff) + 74) & 0xffff) - offset;
        return static_cast<float>(static_cast<std::int16_t>(state.seed)) * 0.16f;
    });
}

}  // namespace kernels

}  // namespace vantoric
