// Random numbers for sample loops, for one voice or for lanes. Each voice starts where the voices before
// it leave off, so that the lanes draw what voices rendered one after the other would draw.
#pragma once

#include <array>
#include <cstdint>

#include "base/engine_state.h"
#include "base/lanes.h"
#include "base/random.h"

namespace vantoric::filters {

// How many numbers a loop takes from each source for one sample.
struct DrawCounts {
    int congruence = 0;
    int hash = 0;

    constexpr bool any() const { return congruence != 0 || hash != 0; }
};

// Where each voice's draws begin.
struct DrawStarts {
    std::array<std::uint32_t, voiceCount> congruence{};
    std::array<std::uint32_t, voiceCount> hash{};
    std::uint32_t hashSeed = 0;
};

// The draws of a voice, or of groups of voices side by side.
template <class T>
class Draws {
    using Bits = IntegersOf<T>;

public:
    // From voice `first` on.
    Draws(const DrawStarts& starts, int first) : seed_(starts.hashSeed) {
        if constexpr (LaneTraits<T>::size == 1) {
            congruence_ = starts.congruence[first];
            counter_ = starts.hash[first];
        } else {
            congruence_.copy_from(&starts.congruence[first], stdx::element_aligned);
            counter_.copy_from(&starts.hash[first], stdx::element_aligned);
        }
    }
    // Two groups of four, wherever each is from.
    template <class Half>
    Draws(const Draws<Half>& low, const Draws<Half>& high)
        : congruence_(joined(low.congruence_, high.congruence_)),
          counter_(joined(low.counter_, high.counter_)),
          seed_(joined(low.seed_, high.seed_)) {}

    // The next value of the linear congruence, 0 to 2^32 - 1.
    T congruence() {
        congruence_ = congruenceStep(congruence_);
        return fromUnsigned<T>(congruence_);
    }
    // The next value of the hash generator, 0 to 2^32 - 1.
    T hash() {
        const Bits drawn = hashMix(counter_ ^ seed_);
        counter_ = counter_ + Bits(1u);
        return fromUnsigned<T>(drawn);
    }

private:
    template <class>
    friend class Draws;

    Bits congruence_, counter_, seed_;
};

}  // namespace vantoric::filters
