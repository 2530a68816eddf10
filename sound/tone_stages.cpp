#include "sound/tone_stages.h"

#include "sound/filters/wide_loops.h"
#include "sound/tone_lanes.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vantoric {

#if defined(VANTORIC_WIDE_LOOPS)
// In tone_stages_wide.cpp: sixteen stages, for processors with AVX2.
void runToneStagesWide(const ToneRun* const* runs, int used, int count);
#endif

namespace {

#if defined(__SSE2__)

// Registers of 128 bits.
struct Registers {
    using Vector = __m128i;
    static constexpr int blocks = 1;

    static Vector zero() { return _mm_setzero_si128(); }
    template <class Address>
    static Vector load(Address address) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(address(0)));
    }
    static void storeBlock(Vector v, int, std::int16_t* to) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
    static Vector words(const std::int32_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
    static void storeWords(Vector v, std::int32_t* to) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
    static Vector interleaveLow(Vector a, Vector b) { return _mm_unpacklo_epi16(a, b); }
    static Vector interleaveHigh(Vector a, Vector b) { return _mm_unpackhi_epi16(a, b); }
    static Vector narrowed(Vector low, Vector high) { return _mm_packs_epi32(low, high); }
    static Vector multiplyAdd(Vector a, Vector b) { return _mm_madd_epi16(a, b); }
    static Vector add(Vector a, Vector b) { return _mm_add_epi32(a, b); }
    static Vector either(Vector a, Vector b) { return _mm_or_si128(a, b); }
    static Vector upperHalves(Vector a) { return _mm_and_si128(a, _mm_set1_epi32(-65536)); }
    static Vector shiftLeft(Vector a, int bits) { return _mm_slli_epi32(a, bits); }
    static Vector shiftRight(Vector a, int bits) { return _mm_srai_epi32(a, bits); }
};
using Narrow = ToneLanes<Registers>;

constexpr int mostStages = 16;  // that go in turn

void runInLanes(const ToneRun* const* runs, int used, int count) {
#if defined(VANTORIC_WIDE_LOOPS)
    if (used > Narrow::stages && filters::wideLoopsInUse()) return runToneStagesWide(runs, used, count);
#endif
    for (; used > 0; runs += Narrow::stages, used -= Narrow::stages)
        Narrow::run(runs, used < Narrow::stages ? used : Narrow::stages, count);
}

#endif

}  // namespace

void toneStages(std::span<const ToneRun> runs, int count) {
#if defined(__SSE2__)
    const ToneRun* pack[mostStages];
    int used = 0;
    for (const ToneRun& run : runs) {
        if (!run.gains.isHeard()) continue;
        if (!fitsToneLanes(run)) {
            toneStage(run.buffer, count, *run.state, run.coefficient, run.gains);
            continue;
        }
        pack[used++] = &run;
        if (used < mostStages) continue;
        runInLanes(pack, used, count);
        used = 0;
    }
    runInLanes(pack, used, count);
#else
    for (const ToneRun& run : runs) toneStage(run.buffer, count, *run.state, run.coefficient, run.gains);
#endif
}

}  // namespace vantoric
