// The instrument's two sources of chance. Each engine owns one pair, so that two instances in one
// process do not disturb one another and a render can be repeated sample for sample.
#pragma once

#include <cstdint>

namespace vantoric {

// 32-bit linear congruence. Step first, then use.
struct LinearCongruence {
    std::uint32_t state = 0;

    // Steps and returns the new state.
    constexpr std::uint32_t next() {
        state = state * 196314165u + 907633515u;
        return state;
    }
    // Steps and returns a float from 0 to 1.
    constexpr float unit() { return static_cast<float>(next()) * 2.33e-10f; }
    // Passes over so many values, in a time that grows with the logarithm of their number.
    constexpr void skip(std::uint32_t steps) {
        std::uint32_t factor = 196314165u, addend = 907633515u;
        for (; steps != 0; steps >>= 1) {
            if ((steps & 1u) != 0) state = state * factor + addend;
            addend *= factor + 1u;
            factor *= factor;
        }
    }
};

// `count` steps of the congruence at once, for loops that give each lane a stretch of the sequence. Made in
// as many rounds as `count` has bits (F. Brown, "Random Number Generation with Arbitrary Strides", 1994).
class CongruenceJump {
public:
    constexpr explicit CongruenceJump(std::uint32_t count) {
        std::uint32_t factor = 196314165u, addend = 907633515u;
        for (; count != 0; count >>= 1) {
            if ((count & 1) != 0) {
                factor_ *= factor;
                addend_ = addend_ * factor + addend;
            }
            addend *= factor + 1;
            factor *= factor;
        }
    }
    // The state `count` steps after `state`.
    constexpr std::uint32_t operator()(std::uint32_t state) const { return state * factor_ + addend_; }

private:
    std::uint32_t factor_ = 1, addend_ = 0;
};

// Counter hashed through an integer mixer: neighbouring draws are independent.
struct HashNoise {
    std::uint32_t counter = 0;
    std::uint32_t seed = 0x5eed1234u;

    static constexpr std::uint32_t mix(std::uint32_t v) {
        v = (v ^ (v >> 17)) * 0xed5ad4bbu;
        v = (v ^ (v >> 11)) * 0xac4c1b51u;
        v = (v ^ (v >> 15)) * 0x31848babu;
        return v ^ (v >> 14);
    }
    // Hashes the counter, then increments it.
    constexpr std::uint32_t next() { return mix(counter++ ^ seed); }
    // A float from 0 to 1.
    constexpr float unit() { return static_cast<float>(next()) * 2.3283064e-10f; }
};

// What an engine hands to its voices and effects. Only the audio thread draws from it.
struct RandomSources {
    LinearCongruence congruence;
    HashNoise hash;
};

}  // namespace vantoric
