// The tone stages once more, compiled for processors with AVX2: only what is known to run on one may come here, and
// nothing that another source has as well may be left as a function of its own.
#include <immintrin.h>

#include "sound/tone_lanes.h"

namespace vantoric {

void runToneStagesWide(const ToneRun* const* runs, int used, int count);

namespace {

// Registers of 256 bits.
struct WideRegisters {
    using Vector = __m256i;
    static constexpr int blocks = 2;

    static Vector zero() { return _mm256_setzero_si256(); }
    template <class Address>
    static Vector load(Address address) {
        return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(address(1)), reinterpret_cast<const __m128i*>(address(0)));
    }
    static void storeBlock(Vector v, int block, std::int16_t* to) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block == 0 ? _mm256_castsi256_si128(v) : _mm256_extracti128_si256(v, 1));
    }
    static Vector words(const std::int32_t* from) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
    static void storeWords(Vector v, std::int32_t* to) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), v); }
    static Vector interleaveLow(Vector a, Vector b) { return _mm256_unpacklo_epi16(a, b); }
    static Vector interleaveHigh(Vector a, Vector b) { return _mm256_unpackhi_epi16(a, b); }
    static Vector narrowed(Vector low, Vector high) { return _mm256_packs_epi32(low, high); }
    static Vector multiplyAdd(Vector a, Vector b) { return _mm256_madd_epi16(a, b); }
    static Vector add(Vector a, Vector b) { return _mm256_add_epi32(a, b); }
    static Vector either(Vector a, Vector b) { return _mm256_or_si256(a, b); }
    static Vector upperHalves(Vector a) { return _mm256_and_si256(a, _mm256_set1_epi32(-65536)); }
    static Vector shiftLeft(Vector a, int bits) { return _mm256_slli_epi32(a, bits); }
    static Vector shiftRight(Vector a, int bits) { return _mm256_srai_epi32(a, bits); }
};

}  // namespace

void runToneStagesWide(const ToneRun* const* runs, int used, int count) { ToneLanes<WideRegisters>::run(runs, used, count); }

}  // namespace vantoric
