// The instrument's two sources of chance. Each engine owns one pair, so that two instances in one
// process do not disturb one another and a render can be repeated sample for sample.
#pragma once

#include <cstdint>

namespace vantoric {

// One step of the 32-bit linear congruence, for a number or for lanes of them.
template <class Bits>
constexpr Bits congruenceStep(const Bits& state) {
    return state * Bits(196314165u) + Bits(907633515u);
}

// The mixer of the hash generator, likewise.
template <class Bits>
constexpr Bits hashMix(Bits v) {
    v = (v ^ (v >> 17)) * Bits(0xed5ad4bbu);
    v = (v ^ (v >> 11)) * Bits(0xac4c1b51u);
    v = (v ^ (v >> 15)) * Bits(0x31848babu);
    return v ^ (v >> 14);
}

// Step first, then use.
struct LinearCongruence {
    std::uint32_t state = 0;

    // Steps and returns the new state.
    constexpr std::uint32_t next() { return state = congruenceStep(state); }
    // Steps and returns a float from 0 to 1.
    constexpr float unit() { return static_cast<float>(next()) * 2.33e-10f; }
    // Passes over so many values, in as many rounds as their number has bits (F. Brown, "Random Number
    // Generation with Arbitrary Strides", 1994).
    constexpr void skip(std::uint32_t steps) {
        std::uint32_t addend = congruenceStep(0u), factor = congruenceStep(1u) - addend;
        for (; steps != 0; steps >>= 1) {
            if ((steps & 1u) != 0) state = state * factor + addend;
            addend *= factor + 1u;
            factor *= factor;
        }
    }
};

// Counter hashed through an integer mixer: neighbouring draws are independent.
struct HashNoise {
    std::uint32_t counter = 0;
    std::uint32_t seed = 0x5eed1234u;

    // Hashes the counter, then increments it.
    constexpr std::uint32_t next() { return hashMix(counter++ ^ seed); }
    // A float from 0 to 1.
    constexpr float unit() { return static_cast<float>(next()) * 2.3283064e-10f; }
};

// What an engine hands to its voices and effects. Only the audio thread draws from it.
struct RandomSources {
    LinearCongruence congruence;
    HashNoise hash;
};

}  // namespace vantoric
