#include "sound/oscillator_control.h"

#if defined(VANTORIC_WIDE_LOOPS)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "sound/filters/wide_loops.h"

namespace vantoric {

namespace {

constexpr float mixScale = 2097152000.0f;

std::uint32_t product(std::int32_t a, std::int32_t b) { return static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b); }

}  // namespace

void toneStage(std::int16_t* buffer, int count, std::int32_t& toneState, int coefficient, const ToneGains& gains) {
    if (!gains.isHeard()) return;
    std::int32_t s = toneState;
    const std::int64_t pole = coefficient;
    const std::int32_t wet = gains.wet, dry = gains.dry;
    for (int i = 0; i < count; ++i) {
        const std::int32_t x = buffer[i];
        s += static_cast<std::int32_t>(((x - s) * pole) >> 14);
        buffer[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(product(dry, x) + product(wet, s)) >> 10);
    }
    toneState = s;
}

namespace {

float mixedSample(const MixSource& voice, std::int32_t MixGains::* side, int i) {
    if (voice.buffers[0] == nullptr) return 0.0f;
    std::uint32_t sum = 0;
    for (int k = 0; k < oscillatorCount; ++k) sum += product(voice.buffers[k][i], voice.gains[k].*side);
    return static_cast<float>(static_cast<std::int32_t>(sum)) / mixScale;
}

#if defined(__SSE2__)

// Gains have 16 bits while no modulation takes them out of their range.
bool fits16(std::int32_t gain) { return gain == static_cast<std::int16_t>(gain); }

// Two gains of 16 bits as the halves of each word.
__m128i gainPair(std::int32_t low, std::int32_t high) {
    return _mm_set1_epi32(
        static_cast<int>((static_cast<std::uint32_t>(high) << 16) | (static_cast<std::uint32_t>(low) & 0xffff)));
}

// The gains of a voice into one filter.
struct SideGains {
    __m128i firstTwo, third;

    SideGains(const MixSource& voice, std::int32_t MixGains::* side)
        : firstTwo(gainPair(voice.gains[0].*side, voice.gains[1].*side)), third(gainPair(voice.gains[2].*side, 0)) {}
    __m128 mixed(__m128i pairs, __m128i rest) const {
        const __m128i sum = _mm_add_epi32(_mm_madd_epi16(pairs, firstTwo), _mm_madd_epi16(rest, third));
        return _mm_div_ps(_mm_cvtepi32_ps(sum), _mm_set1_ps(mixScale));
    }
};

// Rows of four samples of a voice become samples of four voices.
void storeLanes(__m128 (&rows)[mixVoices], float* lanes) {
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
    for (int i = 0; i < 4; ++i) _mm_storeu_ps(lanes + i * voiceCount, rows[i]);
}

#if defined(VANTORIC_WIDE_LOOPS)

// The first samples up to a multiple of eight on a processor with AVX2: both blocks of a register hold four samples of a
// voice. Nothing but instructions here: what this function called would not be compiled for AVX2.
[[gnu::target("avx2")]] int mixEights(const MixSource (&voices)[mixVoices], const SideGains (&gains)[2][mixVoices], int count,
                                      float* f1, float* f2) {
    const __m128i zero = _mm_setzero_si128();
    const __m256 scale = _mm256_set1_ps(mixScale);
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        __m256 rows[2][mixVoices];
#pragma GCC unroll 4
        for (int v = 0; v < mixVoices; ++v) {
            rows[0][v] = rows[1][v] = _mm256_setzero_ps();
            const auto& buffers = voices[v].buffers;
            if (buffers[0] == nullptr) continue;
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buffers[0] + i));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buffers[1] + i));
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(buffers[2] + i));
            const __m256i pairs = _mm256_set_m128i(_mm_unpackhi_epi16(a, b), _mm_unpacklo_epi16(a, b));
            const __m256i rest = _mm256_set_m128i(_mm_unpackhi_epi16(c, zero), _mm_unpacklo_epi16(c, zero));
#pragma GCC unroll 2
            for (int side = 0; side < 2; ++side) {
                const __m256i firstTwo = _mm256_broadcastsi128_si256(gains[side][v].firstTwo);
                const __m256i third = _mm256_broadcastsi128_si256(gains[side][v].third);
                const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(pairs, firstTwo), _mm256_madd_epi16(rest, third));
                rows[side][v] = _mm256_div_ps(_mm256_cvtepi32_ps(sum), scale);
            }
        }
#pragma GCC unroll 2
        for (int side = 0; side < 2; ++side) {
            float* lanes = (side == 0 ? f1 : f2) + i * voiceCount;
            const __m256 low1 = _mm256_unpacklo_ps(rows[side][0], rows[side][1]);
            const __m256 high1 = _mm256_unpackhi_ps(rows[side][0], rows[side][1]);
            const __m256 low2 = _mm256_unpacklo_ps(rows[side][2], rows[side][3]);
            const __m256 high2 = _mm256_unpackhi_ps(rows[side][2], rows[side][3]);
            const __m256 moments[4] = {_mm256_shuffle_ps(low1, low2, 0x44), _mm256_shuffle_ps(low1, low2, 0xee),
                                       _mm256_shuffle_ps(high1, high2, 0x44), _mm256_shuffle_ps(high1, high2, 0xee)};
#pragma GCC unroll 4
            for (int k = 0; k < 4; ++k) {
                _mm_storeu_ps(lanes + k * voiceCount, _mm256_castps256_ps128(moments[k]));
                _mm_storeu_ps(lanes + (k + 4) * voiceCount, _mm256_extractf128_ps(moments[k], 1));
            }
        }
    }
    return i;
}

#endif

// The first samples up to a multiple of four, if all gains have 16 bits. Returns how many.
int mixFours(const MixSource (&voices)[mixVoices], int count, float* f1, float* f2) {
    for (const MixSource& voice : voices)
        for (const MixGains& gain : voice.gains)
            if (!fits16(gain.toFilter1) || !fits16(gain.toFilter2)) return 0;
    const SideGains gains[2][mixVoices] = {{{voices[0], &MixGains::toFilter1},
                                            {voices[1], &MixGains::toFilter1},
                                            {voices[2], &MixGains::toFilter1},
                                            {voices[3], &MixGains::toFilter1}},
                                           {{voices[0], &MixGains::toFilter2},
                                            {voices[1], &MixGains::toFilter2},
                                            {voices[2], &MixGains::toFilter2},
                                            {voices[3], &MixGains::toFilter2}}};
    const auto four = [](const std::int16_t* at) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)); };
    __m128 rows1[mixVoices] = {}, rows2[mixVoices] = {};
    int i = 0;
#if defined(VANTORIC_WIDE_LOOPS)
    if (filters::wideLoopsInUse()) i = mixEights(voices, gains, count, f1, f2);
#endif
    for (; i + 4 <= count; i += 4) {
#pragma GCC unroll 4
        for (int v = 0; v < mixVoices; ++v) {
            const auto& buffers = voices[v].buffers;
            rows1[v] = rows2[v] = _mm_setzero_ps();
            if (buffers[0] == nullptr) continue;
            const __m128i pairs = _mm_unpacklo_epi16(four(buffers[0] + i), four(buffers[1] + i));
            const __m128i rest = _mm_unpacklo_epi16(four(buffers[2] + i), _mm_setzero_si128());
            rows1[v] = gains[0][v].mixed(pairs, rest);
            rows2[v] = gains[1][v].mixed(pairs, rest);
        }
        storeLanes(rows1, f1 + i * voiceCount);
        storeLanes(rows2, f2 + i * voiceCount);
    }
    return i;
}

#else

int mixFours(const MixSource (&)[mixVoices], int, float*, float*) { return 0; }

#endif

}  // namespace

void mixToLanes(const MixSource (&voices)[mixVoices], int count, float* f1, float* f2) {
    for (int i = mixFours(voices, count, f1, f2); i < count; ++i)
        for (int v = 0; v < mixVoices; ++v) {
            f1[i * voiceCount + v] = mixedSample(voices[v], &MixGains::toFilter1, i);
            f2[i * voiceCount + v] = mixedSample(voices[v], &MixGains::toFilter2, i);
        }
}

bool oscillatorModulated(int oscillatorIndex, float previousOn, float fm, float sync, bool fmIsDestination) {
    if (oscillatorIndex == 0 || previousOn < 0.5f) return false;
    return fm > 0.005f || sync > 0.5f || fmIsDestination;
}

}  // namespace vantoric
