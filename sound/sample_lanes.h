// Several samples of one oscillator in a register: what the loops over them need beside base/lanes.h.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/lanes.h"
#include "base/random.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace vantoric {

template <int N>
using FloatLanes = Lanes<float, N>;
template <int N>
using IntLanes = Lanes<std::int32_t, N>;
template <int N>
using BitLanes = Lanes<std::uint32_t, N>;

template <int N>
inline BitLanes<N> asBits(const IntLanes<N>& x) {
    return std::bit_cast<BitLanes<N>>(x);
}
template <int N>
inline IntLanes<N> asInts(const BitLanes<N>& x) {
    return std::bit_cast<IntLanes<N>>(x);
}
template <int N>
inline FloatLanes<N> toFloats(const IntLanes<N>& x) {
    return stdx::static_simd_cast<FloatLanes<N>>(x);
}
// Truncated, for values inside 32 bits.
template <int N>
inline IntLanes<N> toInts(const FloatLanes<N>& x) {
    return stdx::static_simd_cast<IntLanes<N>>(x);
}

// limit() in two instructions, which the compiler does not find in every loop.
template <int N>
inline FloatLanes<N> limited(const FloatLanes<N>& x, float low, float high) {
#if defined(__SSE2__)
    if constexpr (N == 4)
        return FloatLanes<N>(_mm_min_ps(_mm_max_ps(static_cast<__m128>(x), _mm_set1_ps(low)), _mm_set1_ps(high)));
#endif
#if defined(__AVX2__)
    if constexpr (N == 8)
        return FloatLanes<N>(_mm256_min_ps(_mm256_max_ps(static_cast<__m256>(x), _mm256_set1_ps(low)), _mm256_set1_ps(high)));
#endif
    return limit(x, FloatLanes<N>(low), FloatLanes<N>(high));
}

// 1, 2 ... N.
template <int N>
inline BitLanes<N> countedUp() {
    return BitLanes<N>([](auto k) { return static_cast<std::uint32_t>(k) + 1u; });
}

template <int N>
inline IntLanes<N> magnitude(const IntLanes<N>& x) {
#if defined(__AVX2__)
    if constexpr (N == 8) return IntLanes<N>(_mm256_abs_epi32(static_cast<__m256i>(x)));
#endif
    return (x ^ (x >> 31)) - (x >> 31);
}

// The last lane of `before`, then all but the last of `x`: each lane's neighbour in time.
template <int N>
inline IntLanes<N> oneEarlier(const IntLanes<N>& before, const IntLanes<N>& x) {
    const auto a = std::bit_cast<RegisterOf<IntLanes<N>>>(before), b = std::bit_cast<RegisterOf<IntLanes<N>>>(x);
    if constexpr (N == 4)
        return std::bit_cast<IntLanes<N>>(__builtin_shufflevector(a, b, 3, 4, 5, 6));
    else
        return std::bit_cast<IntLanes<N>>(__builtin_shufflevector(a, b, 7, 8, 9, 10, 11, 12, 13, 14));
}
template <int N>
inline std::int32_t lastLane(const IntLanes<N>& x) {
    return x[N - 1];
}

// ---- samples of 16 bits --------------------------------------------------------------------------------------

// N samples in a row, widened.
template <int N>
inline IntLanes<N> widened(const std::int16_t* samples) {
#if defined(__AVX2__)
    if constexpr (N == 8)
        return IntLanes<N>(_mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples))));
    else
#endif
        return IntLanes<N>([&](auto k) { return samples[k]; });
}

// Lanes that fit into 16 bits, in a row.
template <int N>
inline void storeSmall(const IntLanes<N>& x, std::int16_t* out) {
#if defined(__SSE2__)
    if constexpr (N == 4) {
        const auto four = static_cast<__m128i>(x);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packs_epi32(four, four));
        return;
    }
#endif
#if defined(__AVX2__)
    if constexpr (N == 8) {
        const auto eight = static_cast<__m256i>(x);
        const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(eight), _mm256_extracti128_si256(eight, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), packed);
        return;
    }
#endif
    for (int k = 0; k < N; ++k) out[k] = static_cast<std::int16_t>(x[k]);
}
// The low 16 bits of every lane, in a row.
template <int N>
inline void storeWrapped(const IntLanes<N>& x, std::int16_t* out) {
    storeSmall<N>((x << 16) >> 16, out);
}

// ---- reads of a wave -----------------------------------------------------------------------------------------

#if defined(__AVX2__)
// Eight words at places `scale` bytes apart.
template <int scale>
inline __m256i gathered(const std::int16_t* from, const BitLanes<8>& places) {
    return _mm256_i32gather_epi32(reinterpret_cast<const int*>(from), static_cast<__m256i>(places), scale);
}
#endif

// The samples at N places of a cycle, 0 to 2047. Reads nothing outside of it.
template <int N>
inline IntLanes<N> samplesAt(const std::int16_t* cycle, const BitLanes<N>& places) {
#if defined(__AVX2__)
    if constexpr (N == 8) {  // the even and odd sample of a word at once, then the one that is meant
        const __m256i words = gathered<4>(cycle, places >> 1);
        const BitLanes<N> up = (~places & BitLanes<N>(1u)) << 4;
        return IntLanes<N>(_mm256_srai_epi32(_mm256_sllv_epi32(words, static_cast<__m256i>(up)), 16));
    } else
#endif
        return IntLanes<N>([&](auto k) { return cycle[static_cast<std::uint32_t>(places[k])]; });
}

// A sample and its right neighbour, as the low and high half of a word.
[[gnu::always_inline]] inline std::int32_t pairAt(const std::int16_t* left) {
#if defined(__SSE2__)
    std::int32_t pair;
    std::memcpy(&pair, left, sizeof pair);
    return pair;
#else
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(left[1]) << 16) | static_cast<std::uint16_t>(left[0]));
#endif
}

// The pairs at N places.
template <int N>
inline IntLanes<N> pairsAt(const std::int16_t* wave, const BitLanes<N>& places) {
#if defined(__AVX2__)
    if constexpr (N == 8)
        return IntLanes<N>(gathered<2>(wave, places));
    else
#endif
        return IntLanes<N>([&](auto k) { return pairAt(wave + static_cast<std::uint32_t>(places[k])); });
}

// How far a phase at the top of its word stands above its place in a cycle. With AVX2 comes BMI2, whose shift by a count in a
// register leaves its source alone; GCC takes it only for a count that it does not know, and otherwise copies each phase first.
[[gnu::always_inline]] inline std::uint32_t placeShift(std::uint32_t bitsBelow = 0) {
    std::uint32_t shift = 21 + bitsBelow;
#if defined(__BMI2__)
    asm("" : "+r"(shift));
#endif
    return shift;
}

// N samples that are put into their lanes one by one.
template <int N>
class CollectedSamples {
public:
    template <int lane>
    [[gnu::always_inline]] void put(std::int16_t sample) {
#if defined(__SSE2__)
        if constexpr (lane == 0)
            samples_ = _mm_cvtsi32_si128(static_cast<std::uint16_t>(sample));
        else
            samples_ = _mm_insert_epi16(samples_, sample, lane);
#else
        samples_[lane] = sample;
#endif
    }
    [[gnu::always_inline]] IntLanes<N> widened() const {
#if defined(__AVX2__)
        if constexpr (N == 8) return IntLanes<N>(_mm256_cvtepi16_epi32(samples_));
#endif
#if defined(__SSE2__)
        if constexpr (N == 4) return IntLanes<N>(_mm_srai_epi32(_mm_unpacklo_epi16(samples_, samples_), 16));
#endif
        return vantoric::widened<N>(reinterpret_cast<const std::int16_t*>(&samples_));
    }

private:
#if defined(__SSE2__)
    __m128i samples_;
#else
    std::int16_t samples_[N];
#endif
};
// Calls forLane<k>() for k from 0 to N - 1.
template <int N, class ForLane>
[[gnu::always_inline]] inline void laneByLane(ForLane forLane) {
    [&]<int... lane>(std::integer_sequence<int, lane...>)
        __attribute__((always_inline)) { (forLane.template operator()<lane>(), ...); }(std::make_integer_sequence<int, N>());
}

// The samples at the next N phases of a running one, which is at the top of its word and moves on. Each place is worked out by
// itself: sooner than to have the samples gathered.
template <int N>
[[gnu::always_inline]] inline IntLanes<N> nextSamples(const std::int16_t* cycle, std::uint32_t& phase, std::uint32_t step) {
    const std::uint32_t shift = placeShift();
    CollectedSamples<N> samples;
    laneByLane<N>([&]<int lane>()
                      __attribute__((always_inline)) { samples.template put<lane>(cycle[(phase += step) >> shift]); });
    return samples.widened();
}

// Two phases of 24 bits, or their steps, in one word, so that one addition moves both. Each stands at the top of its half; the
// wraps of the lower one gather in the free bits below the upper one.
struct PhasePair {
    std::uint64_t both = 0;

    PhasePair() = default;
    PhasePair(std::uint32_t lower, std::uint32_t upper) : both((static_cast<std::uint64_t>(upper) << 32) | lower) {}
    void move(const PhasePair& steps) { both += steps.both; }
    void forgetWraps() { both &= ~(std::uint64_t{0xff} << 32); }  // before they are 256
};
// The sums of the samples at the next N phases of a pair.
template <int N>
[[gnu::always_inline]] inline IntLanes<N> nextSampleSums(const std::int16_t* cycle, PhasePair& phases, const PhasePair& steps) {
    const std::uint32_t shift = placeShift(), upperShift = placeShift(32);
    CollectedSamples<N> lower, upper;
    PhasePair now = phases;
    laneByLane<N>([&]<int lane>() __attribute__((always_inline)) {
        now.move(steps);
        lower.template put<lane>(cycle[static_cast<std::uint32_t>(now.both) >> shift]);
        upper.template put<lane>(cycle[now.both >> upperShift]);
    });
    now.forgetWraps();
    phases = now;
    return lower.widened() + upper.widened();
}

// The pairs at the next N phases of a running one, which is at the top of its word and moves on; none is the last of the cycle.
// Each place is worked out by itself: sooner than to take it out of a register.
template <int N>
inline IntLanes<N> nextPairs(const std::int16_t* cycle, std::uint32_t& phase, std::uint32_t step) {
    const std::uint32_t shift = placeShift();
    const auto next = [&] { return pairAt(cycle + ((phase += step) >> shift)); };
    if constexpr (N == 4)
        return std::bit_cast<IntLanes<N>>(RegisterOf<IntLanes<N>>{next(), next(), next(), next()});
    else
        return std::bit_cast<IntLanes<N>>(
            RegisterOf<IntLanes<N>>{next(), next(), next(), next(), next(), next(), next(), next()});
}

// The pairs of N places of cycles that begin at `cycles` in the wave; the right neighbour of the last sample is the first.
template <int N>
inline IntLanes<N> cyclicPairsAt(const std::int16_t* wave, const BitLanes<N>& cycles, const BitLanes<N>& places) {
    const auto last = places == BitLanes<N>(2047u);
    if (!anyOf(last)) return pairsAt<N>(wave, cycles + places);
    const BitLanes<N> pairs = asBits<N>(pairsAt<N>(wave, cycles + select(last, BitLanes<N>(2046u), places)));
    const BitLanes<N> first = asBits<N>(pairsAt<N>(wave, cycles));
    return asInts<N>(select(last, (pairs >> 16) | (first << 16), pairs));
}

// Products of the low halves plus products of the high halves.
template <int N>
inline IntLanes<N> halvesMultiplied(const IntLanes<N>& a, const IntLanes<N>& b) {
#if defined(__SSE2__)
    if constexpr (N == 4) return IntLanes<N>(_mm_madd_epi16(static_cast<__m128i>(a), static_cast<__m128i>(b)));
#endif
#if defined(__AVX2__)
    if constexpr (N == 8) return IntLanes<N>(_mm256_madd_epi16(static_cast<__m256i>(a), static_cast<__m256i>(b)));
#endif
    return ((a << 16) >> 16) * ((b << 16) >> 16) + (a >> 16) * (b >> 16);
}

// linearSum of N pairs at their phases.
template <int N>
inline IntLanes<N> weighted(const IntLanes<N>& pairs, const BitLanes<N>& phases) {
    // The weights 8192 - frac and frac, in the halves in which the samples are.
    const BitLanes<N> frac = phases & BitLanes<N>(0x1fffu);
    const BitLanes<N> weights = (frac << 16) - frac + BitLanes<N>(8192u);
    return halvesMultiplied<N>(pairs, asInts<N>(weights));
}
// The same read at the phases.
template <int N>
inline IntLanes<N> linearSums(const std::int16_t* wave, const BitLanes<N>& cycles, const BitLanes<N>& phases) {
    return weighted<N>(cyclicPairsAt<N>(wave, cycles, phases >> 13), phases);
}

// ---- draws ---------------------------------------------------------------------------------------------------

// A congruence several steps on: state x factor + addend.
struct CongruenceStride {
    std::uint32_t factor = 1, addend = 0;

    constexpr explicit CongruenceStride(int steps) {
        for (; steps > 0; --steps) {
            factor *= congruenceStep(1u) - congruenceStep(0u);
            addend = congruenceStep(addend);
        }
    }
};

// The next N states after `state`, `stride` draws apart, from the first one on.
template <int N, int stride = 1>
inline BitLanes<N> congruenceStates(std::uint32_t state) {
    static constexpr auto factors = [] {
        std::array<std::array<std::uint32_t, N>, 2> both{};
        for (int k = 0; k < N; ++k) {
            const CongruenceStride reach(k * stride + 1);
            both[0][static_cast<std::size_t>(k)] = reach.factor;
            both[1][static_cast<std::size_t>(k)] = reach.addend;
        }
        return both;
    }();
    return BitLanes<N>(state) * BitLanes<N>(factors[0].data(), stdx::element_aligned) +
           BitLanes<N>(factors[1].data(), stdx::element_aligned);
}
template <int N, int steps>
inline BitLanes<N> congruencesOn(const BitLanes<N>& states) {
    constexpr CongruenceStride reach(steps);
    return states * BitLanes<N>(reach.factor) + BitLanes<N>(reach.addend);
}

// ---- rows and columns ----------------------------------------------------------------------------------------

// Turns N registers of N lanes: lane i of register k becomes lane k of register i.
template <int N>
inline void turn(FloatLanes<N> (&x)[N]) {
    using Register = RegisterOf<FloatLanes<N>>;
    const auto in = [&](int k) { return std::bit_cast<Register>(x[k]); };
    const auto out = [&](int k, Register value) { x[k] = std::bit_cast<FloatLanes<N>>(value); };
    if constexpr (N == 4) {
        const Register a = __builtin_shufflevector(in(0), in(1), 0, 4, 1, 5),
                       b = __builtin_shufflevector(in(0), in(1), 2, 6, 3, 7);
        const Register c = __builtin_shufflevector(in(2), in(3), 0, 4, 1, 5),
                       d = __builtin_shufflevector(in(2), in(3), 2, 6, 3, 7);
        out(0, __builtin_shufflevector(a, c, 0, 1, 4, 5));
        out(1, __builtin_shufflevector(a, c, 2, 3, 6, 7));
        out(2, __builtin_shufflevector(b, d, 0, 1, 4, 5));
        out(3, __builtin_shufflevector(b, d, 2, 3, 6, 7));
    } else {
        Register pairs[8], fours[8];
        for (int k = 0; k < 8; k += 2) {
            pairs[k] = __builtin_shufflevector(in(k), in(k + 1), 0, 8, 1, 9, 4, 12, 5, 13);
            pairs[k + 1] = __builtin_shufflevector(in(k), in(k + 1), 2, 10, 3, 11, 6, 14, 7, 15);
        }
        for (int k = 0; k < 8; k += 4)
            for (int j = 0; j < 2; ++j) {
                fours[k + 2 * j] = __builtin_shufflevector(pairs[k + j], pairs[k + j + 2], 0, 1, 8, 9, 4, 5, 12, 13);
                fours[k + 2 * j + 1] = __builtin_shufflevector(pairs[k + j], pairs[k + j + 2], 2, 3, 10, 11, 6, 7, 14, 15);
            }
        for (int k = 0; k < 4; ++k) {
            out(k, __builtin_shufflevector(fours[k], fours[k + 4], 0, 1, 2, 3, 8, 9, 10, 11));
            out(k + 4, __builtin_shufflevector(fours[k], fours[k + 4], 4, 5, 6, 7, 12, 13, 14, 15));
        }
    }
}

}  // namespace vantoric
