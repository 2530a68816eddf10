#include "sound/fm_loop.h"

#include <gtest/gtest.h>

using namespace vantoric;

namespace {

// One sample of a carrier that steps by `step`, with the input x at a depth of 16: the offset is the input itself.
FmSample next(ModulatedPhase& phase, std::int16_t x) {
    return phase.next(x, [] {}, [](auto...) {});
}

ModulatedPhase carrier(std::uint32_t step) {
    OscillatorState state;
    state.increment = step;
    state.fmDepth = 16;
    return {state, step};
}

}  // namespace

TEST(ModulatedPhase, WrapsWhereTheReadFellBelowTheLastOne) {
    ModulatedPhase phase = carrier(100);
    EXPECT_FALSE(next(phase, 0).wrapped);
    EXPECT_FALSE(next(phase, 0).wrapped);
    EXPECT_TRUE(next(phase, -101).wrapped);  // on by 100, back by 101
}

TEST(ModulatedPhase, DoesNotWrapWhereTheReadStandsStill) {
    ModulatedPhase phase = carrier(100);
    next(phase, 0);
    const FmSample held = next(phase, -100);
    EXPECT_EQ(held.phase, 100u);
    EXPECT_FALSE(held.wrapped);
}

TEST(ModulatedPhase, AConstantInputDoesNotBendThePitch) {
    ModulatedPhase phase = carrier(100);
    next(phase, 1000);
    for (std::uint32_t sample = 2; sample < 10; ++sample) EXPECT_EQ(next(phase, 1000).phase, 100 * sample + 1000);
}
