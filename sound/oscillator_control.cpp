#include "sound/oscillator_control.h"

#include <algorithm>
#include <cmath>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/numbers.h"

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
