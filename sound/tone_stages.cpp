#include "sound/tone_stages.h"

#include <algorithm>
#include <array>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vantoric {

namespace {

#if defined(__SSE2__)

constexpr int packSize = 8;  // stages that go in turn, and the samples that are taken at once
constexpr int unityCoefficient = 1 << 14;

// With a coefficient up to unity a memory of 16 bits moves towards its input and never past it, so it keeps to 16 bits.
bool fitsLanes(const ToneRun& run) {
    return run.coefficient >= 0 && run.coefficient <= unityCoefficient && *run.state == static_cast<std::int16_t>(*run.state);
}

using Rows = __m128i[packSize];  // of eight samples of 16 bits

// Rows of stages become rows of moments, and the other way round.
inline void transpose(Rows& rows) {
    Rows pairs, quads;
    for (int k = 0; k < 4; ++k) {
        pairs[2 * k] = _mm_unpacklo_epi16(rows[k], rows[k + 4]);
        pairs[2 * k + 1] = _mm_unpackhi_epi16(rows[k], rows[k + 4]);
    }
    for (int k = 0; k < 4; ++k) {
        quads[2 * k] = _mm_unpacklo_epi16(pairs[k], pairs[k + 4]);
        quads[2 * k + 1] = _mm_unpackhi_epi16(pairs[k], pairs[k + 4]);
    }
    for (int k = 0; k < 4; ++k) {
        rows[2 * k] = _mm_unpacklo_epi16(quads[k], quads[k + 4]);
        rows[2 * k + 1] = _mm_unpackhi_epi16(quads[k], quads[k + 4]);
    }
}

// Four stages. Words of 32 bits hold the memory in their upper half and are given the input in the lower one.
struct FourStages {
    __m128i memory, pull, gains;

    // pull: the coefficient for the input and its negative for the memory; gains: dry and wet.
    explicit FourStages(const ToneRun* const* runs) {
        alignas(16) std::array<std::int32_t, 4> m, p, g;
        for (int k = 0; k < 4; ++k) {
            const ToneRun& run = *runs[k];
            const auto word = [](int high, int low) {
                return static_cast<std::int32_t>(static_cast<std::uint32_t>(high) << 16 |
                                                 (static_cast<std::uint32_t>(low) & 0xffff));
            };
            m[k] = word(*run.state, 0);
            p[k] = word(-run.coefficient, run.coefficient);
            g[k] = word(run.gains.wet, run.gains.dry);
        }
        memory = _mm_load_si128(reinterpret_cast<const __m128i*>(m.data()));
        pull = _mm_load_si128(reinterpret_cast<const __m128i*>(p.data()));
        gains = _mm_load_si128(reinterpret_cast<const __m128i*>(g.data()));
    }
    // input: in the lower halves, the upper ones clear. Returns the output as 32 bits.
    __m128i step(__m128i input) {
        const __m128i moved = _mm_slli_epi32(_mm_madd_epi16(_mm_or_si128(memory, input), pull), 2);
        memory = _mm_add_epi32(memory, _mm_and_si128(moved, _mm_set1_epi32(-65536)));
        const __m128i sum = _mm_madd_epi16(_mm_or_si128(memory, input), gains);
        return _mm_srai_epi32(_mm_slli_epi32(sum, 6), 16);
    }
    void store(const ToneRun* const* runs, int used) const {
        alignas(16) std::array<std::int32_t, 4> m;
        _mm_store_si128(reinterpret_cast<__m128i*>(m.data()), memory);
        for (int k = 0; k < used; ++k) *runs[k]->state = m[k] >> 16;
    }
};

// One to eight stages; `count` is a multiple of eight. Lanes that are left over repeat the first stage and are dropped.
template <bool both>
void runPack(std::array<const ToneRun*, packSize> runs, int used, int count) {
    std::fill(runs.begin() + used, runs.end(), runs[0]);
    FourStages low(runs.data()), high(runs.data() + 4);
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i < count; i += packSize) {
        Rows rows;
        for (int k = 0; k < packSize; ++k)
            rows[k] = both || k < 4 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(runs[k]->buffer + i)) : zero;
        transpose(rows);
        for (__m128i& row : rows) {
            const __m128i first = low.step(_mm_unpacklo_epi16(row, zero));
            row = _mm_packs_epi32(first, both ? high.step(_mm_unpackhi_epi16(row, zero)) : zero);
        }
        transpose(rows);
        for (int k = 0; k < used; ++k) _mm_storeu_si128(reinterpret_cast<__m128i*>(runs[k]->buffer + i), rows[k]);
    }
    low.store(runs.data(), std::min(used, 4));
    if (both) high.store(runs.data() + 4, used - 4);
}

void toneStagesInLanes(const std::array<const ToneRun*, packSize>& runs, int used, int count) {
    const int whole = count / packSize * packSize;
    if (used > 4)
        runPack<true>(runs, used, whole);
    else if (used > 0)
        runPack<false>(runs, used, whole);
    for (int k = 0; k < used; ++k)
        toneStage(runs[k]->buffer + whole, count - whole, *runs[k]->state, runs[k]->coefficient, runs[k]->gains);
}

#endif

}  // namespace

void toneStages(std::span<const ToneRun> runs, int count) {
#if defined(__SSE2__)
    std::array<const ToneRun*, packSize> pack{};
    int used = 0;
    for (const ToneRun& run : runs) {
        if (!run.gains.isHeard()) continue;
        if (!fitsLanes(run)) {
            toneStage(run.buffer, count, *run.state, run.coefficient, run.gains);
            continue;
        }
        pack[used++] = &run;
        if (used < packSize) continue;
        toneStagesInLanes(pack, used, count);
        used = 0;
    }
    toneStagesInLanes(pack, used, count);
#else
    for (const ToneRun& run : runs) toneStage(run.buffer, count, *run.state, run.coefficient, run.gains);
#endif
}

}  // namespace vantoric
