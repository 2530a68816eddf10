// Kernels that read the frame of a wave that Pw chooses.
#include <algorithm>

#include "sound/fm_loop.h"
#include "sound/four_reads.h"
#include "sound/kernel_loops.h"
#include "sound/kernel_reads.h"
#include "sound/kernels.h"

namespace vantoric::kernels {

namespace {

constexpr int group = 8;  // samples that are read at once where no wrap is near

bool isReady(const OscillatorState& state) { return state.table != nullptr && state.frame >= 0; }

// Two frames crossfaded by a 16-bit blend, sample by sample, then read linearly.
int blendRead(const std::int16_t* near, const std::int16_t* far, int blend, std::uint32_t phase) {
    const std::uint32_t i = phase >> 13, next = (i + 1) & 2047;
    const int left = (near[i] * (65535 - blend) + far[i] * blend) >> 16;
    const int right = (near[next] * (65535 - blend) + far[next] * blend) >> 16;
    return linearSum(left, right, phase) >> 14;
}

#if defined(__SSE2__)

__m128i fourLinear(__m128i pairs, __m128i phases) { return _mm_srai_epi32(fourSums(pairs, phases), 14); }

// Eight linear reads from `phase` on; none of them reaches the last pair.
void linearGroup(const std::int16_t* cycle, std::int16_t* out, std::uint32_t phase, std::uint32_t increment) {
    const std::uint32_t half = phase + 4 * increment;
    const __m128i low = fourLinear(fourPairs(cycle, phase, increment), fourPhases(phase, increment));
    const __m128i high = fourLinear(fourPairs(cycle, half, increment), fourPhases(half, increment));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(low, high));
}

// Four crossfades of the samples at the phases and of their right neighbours, in halves as samplePair gives them.
// The weights, up to 65535, are taken less 32768, which is made up for by what -32768 would give.
__m128i fourBlended(__m128i near, __m128i far, __m128i weights) {
    const __m128i offset = _mm_set1_epi16(-32768);
    const auto blended = [&](__m128i both) {
        const __m128i sum = _mm_sub_epi32(_mm_madd_epi16(both, weights), _mm_madd_epi16(both, offset));
        return _mm_srai_epi32(sum, 16);
    };
    return _mm_packs_epi32(blended(_mm_unpacklo_epi16(near, far)), blended(_mm_unpackhi_epi16(near, far)));
}

// Eight crossfaded linear reads from `phase` on; none of them reaches the last pair.
void blendGroup(const std::int16_t* near, const std::int16_t* far, int blend, std::int16_t* out, std::uint32_t phase,
                std::uint32_t increment) {
    const __m128i weights = _mm_set1_epi32(((blend - 32768) << 16) | ((32767 - blend) & 0xffff));
    const auto four = [&](std::uint32_t from) {
        const __m128i pairs = fourBlended(fourPairs(near, from, increment), fourPairs(far, from, increment), weights);
        return fourLinear(pairs, fourPhases(from, increment));
    };
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(four(phase), four(phase + 4 * increment)));
}

#else

void linearGroup(const std::int16_t* cycle, std::int16_t* out, std::uint32_t phase, std::uint32_t increment) {
    for (int k = 0; k < group; ++k, phase += increment) out[k] = static_cast<std::int16_t>(linearRead(cycle, phase));
}
void blendGroup(const std::int16_t* near, const std::int16_t* far, int blend, std::int16_t* out, std::uint32_t phase,
                std::uint32_t increment) {
    for (int k = 0; k < group; ++k, phase += increment) out[k] = static_cast<std::int16_t>(blendRead(near, far, blend, phase));
}

#endif

}  // namespace

void silent(const KernelContext&, std::int16_t* out, int count, OscillatorState&, const std::int16_t*) {
    std::fill_n(out, count, 0);
}

void frameNearest(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (state.table == nullptr || state.framePending < 0) return;
    const std::int16_t* cycle = WaveView(state).cycle(levelOf(state.increment), state.framePending);
    const std::uint32_t increment = state.increment;
    std::uint32_t phase = state.phase;
    for (int i = 0; i < count; ++i) {
        phase = (phase + increment) & phaseMask;
        out[i] = static_cast<std::int16_t>(nearestRead(cycle, phase));
    }
    state.phase = phase;
}

void frameLinear(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (!isReady(state)) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    const std::int16_t* cycle = wave.cycle(level, state.frame);
    const std::uint32_t increment = state.increment & phaseMask;
    std::uint32_t phase = state.phase & phaseMask;  // a sample kernel before this one counts further
    for (int i = 0; i < count;) {
        for (; count - i >= group && phase + group * increment < lastPair; i += group, phase += group * increment)
            linearGroup(cycle, out + i, phase + increment, increment);
        for (const int end = std::min(count, i + group); i < end; ++i) {
            phase += increment;
            if (phase > phaseMask) {
                phase &= phaseMask;
                state.frame = state.framePending;
                cycle = wave.cycle(level, state.frame);
            }
            out[i] = static_cast<std::int16_t>(linearRead(cycle, phase));
        }
    }
    state.phase = phase;
}

void frameBlend(const KernelContext&, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    if (!isReady(state)) return;
    const WaveView wave(state);
    const int level = levelOf(state.increment);
    const std::int16_t *near = nullptr, *far = nullptr;
    const auto latch = [&] {
        near = wave.cycle(level, state.frame);
        far = wave.cycle(level, std::min(state.frame + 1, wave.frames - 1));
    };
    latch();
    const std::uint32_t increment = state.increment & phaseMask;
    std::uint32_t phase = state.phase & phaseMask;
    int blend = state.blend;
    for (int i = 0; i < count;) {
        for (; count - i >= group && phase + group * increment < lastPair; i += group, phase += group * increment)
            blendGroup(near, far, blend, out + i, phase + increment, increment);
        for (const int end = std::min(count, i + group); i < end; ++i) {
            phase += increment;
            if (phase > phaseMask) {
                phase &= phaseMask;
                state.frame = state.framePending;
                state.blend = state.blendPending;
                blend = state.blend;
                latch();
            }
            out[i] = static_cast<std::int16_t>(blendRead(near, far, blend, phase));
        }
    }
    state.phase = phase;
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
