// Noise generators, from white to pitched.
#include <algorithm>
#include <cmath>

#include "base/numbers.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

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

}  // namespace

ChamberlinCoefficients chamberlin(int frame, std::uint32_t increment) {
    return {static_cast<float>(fastExp(frame * 0.025)), clampTo(static_cast<float>(increment) * 3.7450704e-7f, 1e-5f, 1.0f)};
}

namespace kernels {

namespace {

// Chamberlin's state variable filter over white noise in +-amplitude. work[0] is low, work[1] band.
template <class Output>
void filteredNoise(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, float amplitude,
                   const ChamberlinCoefficients& c, Output output) {
    const float damping = 1.0f / c.k;
    const float range = 2.0f * amplitude;
    float low = state.work[0], band = state.work[1];
    LinearCongruence random = context.random.congruence;
    for (int i = 0; i < count; ++i) {
        const float e = unsignedValue(random.next()) * 2.33e-10f * range - amplitude;
        const float high = e - low - band * damping;
        band += high * c.f;
        low += band * c.f;
        out[i] = truncateToSample(output(low, band));
    }
    context.random.congruence = random;
    state.work[0] = low;
    state.work[1] = band;
}

// Runs a generator that acts at the wraps of a phase at twice the pitch, from half the sample rate on at every
// sample; sample(wrapped) is the output.
template <class Sample>
void atDoublePitch(std::int16_t* out, int count, OscillatorState& state, Sample sample) {
    const std::uint32_t step = std::min(state.increment, phaseMask) * 2;
    std::uint32_t phase = state.phase;
    for (int i = 0; i < count; ++i) out[i] = truncateToSample(sample(advance(phase, step)));
    state.phase = phase;
}

}  // namespace

// The level rises with the sample rate, so that the level per Hz stays.
void noiseWhite(const KernelContext& context, std::int16_t* out, int count, OscillatorState&, const std::int16_t*) {
    const float amplitude = 0.07f * context.engine.internalRate + 3087.0f;
    HashNoise hash = context.random.hash;
    for (int i = 0; i < count; ++i) out[i] = truncateToSample(hash.unit() * (2.0f * amplitude) - amplitude);
    context.random.hash = hash;
}

void noiseLowpass(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const auto c = chamberlin(colour(state), state.increment);
    const float amplitude = 9000.0f * std::sqrt(1.0f / c.k) / std::sqrt(c.f);
    filteredNoise(context, out, count, state, amplitude, c, [](float low, float) { return low; });
}

void noiseBandpass(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const auto c = chamberlin(colour(state), state.increment);
    const float amplitude = 0.03125f / std::sqrt(c.f) * std::sqrt(1.0f / c.k) * (context.engine.internalRate + 192000.0f);
    filteredNoise(context, out, count, state, amplitude, c, [](float, float band) { return band; });
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
    for (int i = 0; i < count; ++i) {
        ramp += step;
        if (ramp > 1.0f || ramp < -1.0f) {
            const float bound = ramp > 0.0f ? 1.0f : -1.0f;
            const float u = unsignedValue(context.random.congruence.next()) * 2.33e-10f;
            step = -bound * (u * w - u / w + 1.0f / w) * nominal;
            ramp = clampTo(2.0f * bound - ramp, -1.0f, 1.0f);
        }
        out[i] = ramp >= 0.0f ? 4000 : -4000;
    }
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
    for (int i = 0; i < count; ++i) {
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

// Paul Kellet's economy filter.
void noisePink(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    float b0 = state.work[0], b1 = state.work[1], b2 = state.work[2];
    HashNoise hash = context.random.hash;
    for (int i = 0; i < count; ++i) {
        const float w = hash.unit() * 5000.0f - 2500.0f;
        b0 = 0.99765f * b0 + 0.099046f * w;
        b1 = 0.963f * b1 + 0.2965164f * w;
        b2 = 0.57f * b2 + 1.0526913f * w;
        out[i] = truncateToSample(b0 + b1 + b2 + 0.1848f * w);
    }
    context.random.hash = hash;
    state.work[0] = b0;
    state.work[1] = b1;
    state.work[2] = b2;
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
