// Single cycles through a model of an analog output stage: a two-tap mean, a one-pole low-pass, hiss.
#include <algorithm>

#include "base/lanes.h"
#include "base/math.h"
#include "base/numbers.h"
#include "sound/fm_loop.h"
#include "sound/four_reads.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric {

float analogCoefficient(float internalRate) {
    return static_cast<float>(std::min(1.0, 1.0 - fastExp(-6.28 * 13000.0 / static_cast<double>(internalRate))));
}

namespace kernels {

namespace {

// The output stage. Full-scale reads have 29 bits.
class OutputStage {
public:
    OutputStage(const OscillatorState& state, float internalRate)
        : pole_(analogCoefficient(internalRate)),
          rest_(1.0f - pole_),
          lowpass_(state.lowpass),
          previous_(state.previousRead),
          hiss_(static_cast<float>(state.hiss)) {}

    // The sample before its sign. `read`: this sample's share of the mean; `kept`: what stands for it in the
    // next; `chance`: 0 to 1.
    int step(std::int32_t read, std::int32_t kept, float chance) {
        lowpass_ = rest_ * lowpass_ + pole_ * static_cast<float>(previous_ + read);
        previous_ = kept;
        const float y = lowpass_ * 3.05185e-5f + (chance * 2.0f * hiss_ - hiss_);
        return static_cast<int>(std::clamp(y, -32767.0f, 32767.0f));
    }
#if defined(__SSE2__)
    // Four samples in a row, each read its own kept one; only the low-pass goes one by one.
    __m128i stepFour(__m128i reads, __m128 chances) {
        const __m128i before = _mm_or_si128(_mm_slli_si128(reads, 4), _mm_cvtsi32_si128(previous_));
        previous_ = _mm_cvtsi128_si32(_mm_shuffle_epi32(reads, 0xff));
        alignas(16) float driven[4];
        _mm_store_ps(driven, _mm_mul_ps(_mm_set1_ps(pole_), _mm_cvtepi32_ps(_mm_add_epi32(before, reads))));
        const auto filtered = [&](int k) { return lowpass_ = rest_ * lowpass_ + driven[k]; };
        const float y0 = filtered(0), y1 = filtered(1), y2 = filtered(2), y3 = filtered(3);
        const __m128 hiss = _mm_set1_ps(hiss_);
        const __m128 noise = _mm_sub_ps(_mm_mul_ps(_mm_mul_ps(chances, _mm_set1_ps(2.0f)), hiss), hiss);
        const __m128 sum = _mm_add_ps(_mm_mul_ps(_mm_setr_ps(y0, y1, y2, y3), _mm_set1_ps(3.05185e-5f)), noise);
        return _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(sum, _mm_set1_ps(-32767.0f)), _mm_set1_ps(32767.0f)));
    }
#endif
    void store(OscillatorState& state) const {
        state.lowpass = lowpass_;
        state.previousRead = previous_;
    }

private:
    float pole_, rest_, lowpass_;
    std::int32_t previous_;
    float hiss_;
};

// The step of a wave that runs in the direction of the phase.
std::uint32_t directedStep(const OscillatorState& state) {
    return state.phaseDirection < 0 ? 0u - state.increment : state.increment;
}

std::int16_t signedSample(int y, int polarity) { return static_cast<std::int16_t>(-y * polarity); }

#if defined(__SSE2__)

// Four draws in a row.
__m128 fourUnits(HashNoise& hash) {
    using Four = Lanes<float, 4>;
    using Bits = IntegersOf<Four>;
    const Bits counters([&](auto k) { return hash.counter + static_cast<std::uint32_t>(k); });
    hash.counter += 4;
    return static_cast<__m128>(fromUnsigned<Four>(hashMix(counters ^ Bits(hash.seed))) * Four(2.3283064e-10f));
}

// Groups of four samples for as long as none of them reaches the last pair of the cycle. Returns how many samples.
int analogFours(const std::int16_t* cycle, std::int16_t* out, int count, std::uint32_t& phase, std::int32_t step, int polarity,
                OutputStage& stage, HashNoise& hash) {
    const auto inside = [](std::int32_t at) { return at >= 0 && at < static_cast<std::int32_t>(lastPair); };
    const __m128i turned = _mm_set1_epi32(polarity > 0 ? -1 : 0);
    const auto unsignedStep = static_cast<std::uint32_t>(step);
    phase &= phaseMask;
    int done = 0;
    for (; count - done >= 4; done += 4) {
        const auto at = static_cast<std::int32_t>(phase);
        if (!inside(at + step) || !inside(at + 4 * step)) break;
        const std::uint32_t first = phase + unsignedStep;
        const __m128i reads = fourSums(fourPairs(cycle, first, unsignedStep), fourPhases(first, unsignedStep));
        const __m128i y = stage.stepFour(reads, fourUnits(hash));
        const __m128i samples = _mm_sub_epi32(_mm_xor_si128(y, turned), turned);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + done), _mm_packs_epi32(samples, samples));
        phase += 4 * unsignedStep;
    }
    return done;
}

#else

int analogFours(const std::int16_t*, std::int16_t*, int, std::uint32_t&, std::int32_t, int, OutputStage&, HashNoise&) {
    return 0;
}

#endif

}  // namespace

void analogPlain(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const std::int16_t* cycle = context.waves.rowCycle(state.analogRow, levelOf(state.increment));
    if (cycle == nullptr) return;
    OutputStage stage(state, context.engine.internalRate);
    const int polarity = state.polarity < 0 ? -1 : 1;
    const std::uint32_t step = directedStep(state);
    std::uint32_t phase = state.phase;
    const auto forward = static_cast<std::int32_t>(state.increment & phaseMask);
    HashNoise hash = context.random.hash;
    for (int i = 0; i < count;) {
        i += analogFours(cycle, out + i, count - i, phase, state.phaseDirection < 0 ? -forward : forward, polarity, stage, hash);
        for (const int end = std::min(count, i + 4); i < end; ++i) {
            phase = (phase + step) & phaseMask;
            const std::uint32_t at = phase >> 13;
            const int v = linearSum(cycle[at], cycle[(at + 1) & 2047], phase);
            out[i] = signedSample(stage.step(v, v, hash.unit()), polarity);
        }
    }
    context.random.hash = hash;
    state.phase = phase;
    stage.store(state);
}

void analogFm(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    const std::int16_t* cycles[mipLevels];
    for (int level = 0; level < mipLevels; ++level) {
        cycles[level] = context.waves.rowCycle(state.analogRow, level);
        if (cycles[level] == nullptr) return;
    }
    OutputStage stage(state, context.engine.internalRate);
    const int polarity = state.polarity < 0 ? -1 : 1;
    std::uint32_t step = directedStep(state);
    LinearCongruence random = context.random.congruence;
    // Soft sync: the wave turns round, from the next sample on.
    const auto turn = [&](std::uint32_t&, int, int) {
        state.phaseDirection = static_cast<std::int8_t>(-state.phaseDirection);
        step = 0u - step;
    };
    runModulated(
        state, out, count, in, step, [] {}, turn,
        [&](const FmSample& sample) {
            const auto v =
                static_cast<std::int16_t>(modulatedRead([&](int level) { return cycles[level]; }, sample.phase, sample.step));
            return signedSample(stage.step(v * 32768, v, random.unit()), polarity);
        });
    context.random.congruence = random;
    stage.store(state);
}

void analogPulse(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const std::int16_t* cycle = context.waves.rowCycle(pulseWidthRow, levelOf(state.increment));
    if (cycle == nullptr || state.framePending < 0) return;
    OutputStage stage(state, context.engine.internalRate);
    const auto width = static_cast<std::uint32_t>(state.framePending);
    const std::uint32_t step = directedStep(state);
    std::uint32_t phase = state.phase;
    LinearCongruence random = context.random.congruence;
    for (int i = 0; i < count; ++i) {
        phase = (phase + step) & phaseMask;
        const std::uint32_t a = (phase >> 13) + width, b = (phase >> 13) + 1024 - width;
        const int left = cycle[a & 2047] - cycle[b & 2047];
        const int right = cycle[(a + 1) & 2047] - cycle[(b + 1) & 2047];
        const int v = linearSum(left, right, phase) >> 1;
        out[i] = signedSample(stage.step(v, v, random.unit()), 1);
    }
    context.random.congruence = random;
    state.phase = phase;
    stage.store(state);
}

}  // namespace kernels

}  // namespace vantoric
