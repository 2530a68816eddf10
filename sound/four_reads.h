// Linear reads of a cycle for four phases at once, with the instructions that every x86-64 processor has.
#pragma once

#if defined(__SSE2__)

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace vantoric {

// The sample at a phase below lastPair and its right neighbour, as the low and high half of a word.
inline int samplePair(const std::int16_t* cycle, std::uint32_t phase) {
    int pair;
    std::memcpy(&pair, cycle + (phase >> 13), sizeof pair);
    return pair;
}

// The weights 8192 - frac and frac of four phases, in the same halves.
inline __m128i linearWeights(__m128i phase) {
    const __m128i frac = _mm_and_si128(phase, _mm_set1_epi32(0x1fff));
    return _mm_add_epi32(_mm_set1_epi32(8192), _mm_sub_epi32(_mm_slli_epi32(frac, 16), frac));
}

// Four phases that do not wrap.
inline __m128i fourPhases(std::uint32_t phase, std::uint32_t increment) {
    return _mm_setr_epi32(static_cast<int>(phase), static_cast<int>(phase + increment), static_cast<int>(phase + 2 * increment),
                          static_cast<int>(phase + 3 * increment));
}

inline __m128i fourPairs(const std::int16_t* cycle, std::uint32_t phase, std::uint32_t increment) {
    return _mm_setr_epi32(samplePair(cycle, phase), samplePair(cycle, phase + increment),
                          samplePair(cycle, phase + 2 * increment), samplePair(cycle, phase + 3 * increment));
}

// linearSum of four pairs at their phases.
inline __m128i fourSums(__m128i pairs, __m128i phases) { return _mm_madd_epi16(pairs, linearWeights(phases)); }

}  // namespace vantoric

#endif
