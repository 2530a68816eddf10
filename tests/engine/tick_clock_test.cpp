#include "engine/tick_clock.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "base/random.h"
#include "engine/rates.h"

namespace vantoric {
namespace {

struct Walk {
    explicit Walk(float hostRate) { setRates(state, hostRate); }
    void block(int samples) {
        subBlocks.clear();
        ticks.clear();
        clock.run(
            samples, state, [&](int count, int pos) { subBlocks.push_back({count, pos}); },
            [&](int eventPos) { ticks.push_back(eventPos); });
    }
    EngineState state;
    TickClock clock;
    std::vector<std::pair<int, int>> subBlocks;
    std::vector<int> ticks;
};

using Stretches = std::vector<std::pair<int, int>>;

TEST(TickClock, FirstBlockBeginsWithATick) {
    Walk walk(44100);
    walk.block(128);
    EXPECT_EQ(walk.subBlocks, (Stretches{{88, 0}, {40, 88}}));
    EXPECT_EQ(walk.ticks, (std::vector<int>{44, 88}));
    EXPECT_EQ(walk.clock.samplesToTick(), 48.0f);
}

TEST(TickClock, BlockOfNoFramesRunsNoTick) {
    Walk walk(44100);
    walk.block(0);
    EXPECT_TRUE(walk.subBlocks.empty());
    EXPECT_TRUE(walk.ticks.empty());
    walk.block(88);
    walk.block(0);
    EXPECT_TRUE(walk.ticks.empty());
}

TEST(TickClock, BlockShorterThanATickOnlyLowersTheCounter) {
    Walk walk(96000);
    walk.block(64);
    EXPECT_EQ(walk.clock.samplesToTick(), 32.0f);
    walk.block(10);
    EXPECT_TRUE(walk.ticks.empty());
    EXPECT_EQ(walk.clock.samplesToTick(), 22.0f);
    walk.block(23);
    EXPECT_EQ(walk.ticks, (std::vector<int>{22 + 96}));
    EXPECT_EQ(walk.subBlocks, (Stretches{{22, 0}, {1, 22}}));
}

TEST(TickClock, TickAtTheVeryEndOfABlockStillRuns) {
    Walk walk(48000);
    walk.block(96);
    EXPECT_EQ(walk.ticks, (std::vector<int>{48, 96}));
    EXPECT_EQ(walk.subBlocks, (Stretches{{96, 0}}));
}

TEST(TickClock, SilentAtATickOfNothing) {
    Walk walk(400);
    walk.block(1000);
    EXPECT_TRUE(walk.subBlocks.empty());
    EXPECT_TRUE(walk.ticks.empty());
}

TEST(TickClock, StretchesCoverEveryBlockAndNeverExceedATick) {
    for (const float rate : {500.0f, 22050.0f, 44100.0f, 48001.0f, 192000.0f, 1e9f}) {
        Walk walk(rate);
        LinearCongruence sizes{7};
        for (int block = 0; block < 200; ++block) {
            const int samples = static_cast<int>(sizes.next() >> 22);
            walk.block(samples);
            int covered = 0;
            for (const auto& [count, pos] : walk.subBlocks) {
                EXPECT_EQ(pos, covered);
                EXPECT_GT(count, 0);
                EXPECT_LE(count, walk.state.tickSamples);
                covered += count;
            }
            EXPECT_EQ(covered, samples);
        }
    }
}

}  // namespace
}  // namespace vantoric
