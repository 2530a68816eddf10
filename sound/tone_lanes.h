// The tone stages of several oscillators in lanes, for registers of one width: Registers says how the processor works on
// them, and belongs to the source that includes this.
#pragma once

#include <cstdint>

#include "sound/tone_stages.h"

namespace vantoric {

inline constexpr int toneUnity = 1 << 14;  // coefficient

// With a coefficient up to unity a memory of 16 bits moves towards its input and never past it, so it keeps to 16 bits.
inline bool fitsToneLanes(const ToneRun& run) {
    return run.coefficient >= 0 && run.coefficient <= toneUnity && *run.state == static_cast<std::int16_t>(*run.state);
}

// Registers: `Vector` holds `blocks` times eight numbers of 16 bits or four of 32, and every operation works on each block
// by itself; load and store take a block from each address.
template <class Registers>
class ToneLanes {
public:
    static constexpr int stages = 8 * Registers::blocks;  // that go in turn

    // One to `stages` stages, `count` samples. Lanes that are left over repeat the first stage and are dropped.
    [[gnu::always_inline]] static inline void run(const ToneRun* const* runs, int used, int count) {
        const ToneRun* filled[stages];
        for (int k = 0; k < stages; ++k) filled[k] = runs[k < used ? k : 0];
        const int whole = count / block * block;
        if (used > 4)
            runPack<true>(filled, used, whole);
        else
            runPack<false>(filled, used, whole);
        for (int k = 0; k < used; ++k)
            toneStage(runs[k]->buffer + whole, count - whole, *runs[k]->state, runs[k]->coefficient, runs[k]->gains);
    }

private:
    using Vector = typename Registers::Vector;
    using R = Registers;
    static constexpr int block = 8;  // samples and stages

    // Rows of stages become rows of moments, and the other way round.
    [[gnu::always_inline]] static inline void transpose(Vector (&rows)[block]) {
        Vector pairs[block], quads[block];
        interleave(rows, pairs);
        interleave(pairs, quads);
        interleave(quads, rows);
    }
    [[gnu::always_inline]] static inline void interleave(const Vector (&from)[block], Vector (&to)[block]) {
        for (int k = 0; k < block / 2; ++k) {
            to[2 * k] = R::interleaveLow(from[k], from[k + 4]);
            to[2 * k + 1] = R::interleaveHigh(from[k], from[k + 4]);
        }
    }

    // Half of a pack. Words of 32 bits hold the memory in their upper half and are given the input in the lower one.
    struct Half {
        Vector memory, pull, gains;
    };
    static constexpr int halfWords = 4 * Registers::blocks;

    // The stage of a word of the lower (0) or upper (4) half.
    static constexpr int stageOf(int word, int half) { return word / 4 * block + word % 4 + half; }

    [[gnu::always_inline]] static inline std::int32_t word(int high, int low) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(high) << 16 | (static_cast<std::uint32_t>(low) & 0xffff));
    }
    // pull: the coefficient for the input and its negative for the memory; gains: dry and wet.
    [[gnu::always_inline]] static inline Half loaded(const ToneRun* const* runs, int half) {
        std::int32_t memory[halfWords], pull[halfWords], gains[halfWords];
        for (int k = 0; k < halfWords; ++k) {
            const ToneRun& run = *runs[stageOf(k, half)];
            memory[k] = word(*run.state, 0);
            pull[k] = word(-run.coefficient, run.coefficient);
            gains[k] = word(run.gains.wet, run.gains.dry);
        }
        return {R::words(memory), R::words(pull), R::words(gains)};
    }
    [[gnu::always_inline]] static inline void keep(const Half& stages, const ToneRun* const* runs, int half, int used) {
        std::int32_t memory[halfWords];
        R::storeWords(stages.memory, memory);
        for (int k = 0; k < halfWords; ++k)
            if (stageOf(k, half) < used) *runs[stageOf(k, half)]->state = memory[k] >> 16;
    }
    // input: in the lower halves, the upper ones clear. Returns the output as 32 bits.
    [[gnu::always_inline]] static inline Vector step(Half& stages, Vector input) {
        const Vector moved = R::shiftLeft(R::multiplyAdd(R::either(stages.memory, input), stages.pull), 2);
        stages.memory = R::add(stages.memory, R::upperHalves(moved));
        const Vector sum = R::multiplyAdd(R::either(stages.memory, input), stages.gains);
        return R::shiftRight(R::shiftLeft(sum, 6), 16);
    }

    template <bool both>
    [[gnu::always_inline]] static inline void runPack(const ToneRun* const* runs, int used, int count) {
        Half low = loaded(runs, 0), high = loaded(runs, 4);
        const Vector zero = R::zero();
        for (int i = 0; i < count; i += block) {
            Vector rows[block];
            for (int k = 0; k < block; ++k)
                rows[k] = both || k < 4 ? R::load([&](int b) { return runs[b * block + k]->buffer + i; }) : zero;
            transpose(rows);
            for (Vector& row : rows) {
                const Vector first = step(low, R::interleaveLow(row, zero));
                row = R::narrowed(first, both ? step(high, R::interleaveHigh(row, zero)) : zero);
            }
            transpose(rows);
            for (int k = 0; k < block; ++k)
                for (int b = 0; b < Registers::blocks; ++b)
                    if (b * block + k < used) R::storeBlock(rows[k], b, runs[b * block + k]->buffer + i);
        }
        keep(low, runs, 0, used);
        if (both) keep(high, runs, 4, used);
    }
};

}  // namespace vantoric
