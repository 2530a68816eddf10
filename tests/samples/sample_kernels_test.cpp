#include "samples/sample_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "sound/wave_store.h"

namespace vantoric {
namespace {

using Samples = std::vector<std::int16_t>;

// An increment whose step is `step` positions a sample at 44.1 kHz.
std::uint32_t incrementOf(double step) { return static_cast<std::uint32_t>(std::ceil(step * 8192.0 / 44100.0 / 3.7326724e-6)); }

struct Player {
    EngineState engine;
    WaveStore waves;
    RandomSources random;
    OscillatorState state;
    Sample sample;

    explicit Player(int length, const std::function<int(int)>& value = [](int i) { return i * 10; }) {
        EXPECT_TRUE(sample.allocate(length));
        sample.length = sample.loopEnd = length;
        for (auto& level : sample.levels)
            for (int i = 0; i < length; ++i) level[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(value(i));
        state.increment = incrementOf(1.0);
        state.frame = state.framePending = 0;
    }
    Player& loop(int start, int end) {
        sample.loopStart = start;
        sample.loopEnd = end;
        state.loopOn = 1;
        return *this;
    }
    Player& step(double positions) {
        state.increment = incrementOf(positions);
        return *this;
    }
    Player& at(double position) {
        state.phase = static_cast<std::uint32_t>(position * 8192.0);
        return *this;
    }
    // What a note-on does.
    Player& start() {
        writeSampleGuards(sample, state.loopOn != 0);
        return *this;
    }
    Samples run(Kernel kernel, int count, const Samples& input = {}) {
        Samples out(static_cast<std::size_t>(count), 99), in = input;
        in.resize(out.size());
        kernel({engine, waves, random, &sample}, out.data(), count, state, in.data());
        return out;
    }
    double position() const { return state.phase / 8192.0; }
};

const Kernel allKernels[] = {kernels::sampleRead, kernels::sampleFmPlain, kernels::sampleFmLevels};

TEST(SampleStep, ASamplePlaysAtItsSpeedAtMiddleC) {
    const auto increment = static_cast<std::uint32_t>(130.81277 / 96000.0 * 16777216.0);
    EXPECT_NEAR(sampleStep(48000, increment) / 8192.0, 0.5, 0.001) << "half a sample of 48 kHz at 96 kHz";
}

TEST(SampleStep, IsHeldTo31Bits) {
    EXPECT_EQ(sampleStep(0, 100000), 0u);
    EXPECT_EQ(sampleStep(0xffffffff, 0xffffffff), 0x7fffffffu);
    EXPECT_EQ(sampleStep(384000, 0x7fffffff), 0x7fffffffu);
}

TEST(SampleLevels, FollowTheStepUpToFour) {
    const int levels[] = {0, 1, 2, 2, 3, 3, 3, 3, 4, 4};
    for (std::uint32_t step = 0; step < 10; ++step) EXPECT_EQ(sampleLevel(step << 13), levels[step]) << step;
    EXPECT_EQ(sampleLevel(2047u << 13), 4);
    EXPECT_LE(sampleLevel(0x7fffffff), 4);
    EXPECT_EQ(sampleFmLevel(0), 0);
    EXPECT_EQ(sampleFmLevel(0xffffffff), 4);
}

TEST(SampleGuards, RepeatTheLastSampleOrTheLoop) {
    Player single(30);
    single.start();
    for (std::size_t i = 30; i < 38; ++i) EXPECT_EQ(single.sample.levels[4][i], 290);
    Player looped(30);
    looped.loop(4, 20).start();
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(looped.sample.levels[2][30 + i], static_cast<int>(4 + i) * 10);
}

TEST(SampleGuards, OfALoopAtTheVeryEndStayInside) {
    Player last(30);
    last.loop(30, 30).start();
    EXPECT_EQ(last.sample.levels[0][30], 290);
    EXPECT_EQ(last.sample.levels[0][37], 290) << "the guards repeat themselves";
    Player one(1, [](int) { return 5; });
    one.loop(0, 1).start();
    for (std::size_t i = 1; i < 9; ++i) EXPECT_EQ(one.sample.levels[0][i], 5);
}

TEST(SampleGuards, OfAnEmptySampleAreNone) {
    Sample none;
    writeSampleGuards(none, true);
    writeSampleGuards(none, false);
    SUCCEED();
}

TEST(SampleKernels, AnEmptySampleLeavesTheBuffer) {
    for (const Kernel kernel : allKernels) {
        Player player(20);
        player.sample.length = 0;
        player.at(3);
        EXPECT_EQ(player.run(kernel, 16), Samples(16, 99));
        EXPECT_EQ(player.position(), 3.0);
        player.sample = Sample();
        EXPECT_EQ(player.run(kernel, 16), Samples(16, 99));
    }
}

TEST(SampleRead, AStraightLineStaysOneAtHalfScaleTwoSamplesOn) {
    Player player(200);
    const Samples out = player.step(0.5).start().run(kernels::sampleRead, 100);
    for (int i = 0; i < 100; ++i) EXPECT_NEAR(out[static_cast<std::size_t>(i)], ((i + 1) * 0.5 + 2) * 5, 1.0) << i;
}

TEST(SampleRead, ASingleSampleHoldsAtItsEnd) {
    Player player(100);
    const Samples out = player.step(0.7).at(80).start().run(kernels::sampleRead, 200);
    EXPECT_EQ(out.back(), 495) << "the last sample at half scale";
    EXPECT_EQ(out[100], out[199]);
    EXPECT_LE(player.position(), 100.0);
    EXPECT_GT(player.position(), 99.0);
}

TEST(SampleRead, ASingleSampleWithAStepAboveTheRemainderHolds) {
    Player player(100);
    player.step(30.0).at(95).start();
    const Samples out = player.run(kernels::sampleRead, 50);
    EXPECT_EQ(out, Samples(50, 475));
    EXPECT_EQ(player.position(), 95.0);
}

TEST(SampleRead, ALoopOfLengthZeroSticksAtItsEnd) {
    for (const Kernel kernel : allKernels) {
        Player player(100);
        player.loop(40, 40).at(20).start();
        player.run(kernel, 200);
        EXPECT_NEAR(player.position(), 40.0, 1.01);
        const double stuck = player.position();
        player.run(kernel, 200);
        EXPECT_EQ(player.position(), stuck);
    }
}

TEST(SampleRead, ALoopGoesRoundAndRound) {
    Player player(100);
    player.loop(20, 52).start();
    for (int i = 0; i < 20; ++i) {
        player.run(kernels::sampleRead, 17);
        EXPECT_LE(player.position(), 52.0);
        EXPECT_GE(player.position(), i > 3 ? 20.0 : 0.0);
    }
}

TEST(SampleRead, AStartBehindTheLoopComesBackIntoIt) {
    Player player(100);
    player.loop(10, 30).at(90).start();
    player.run(kernels::sampleRead, 1);
    EXPECT_NEAR(player.position(), 71.0, 0.01) << "back by the loop's length";
    player.run(kernels::sampleRead, 10);
    EXPECT_LE(player.position(), 30.0);
    EXPECT_GE(player.position(), 10.0);
}

TEST(SampleRead, AStartBehindTheEndPlaysToTheLoopAndStaysThere) {
    Player player(100);
    player.loop(60, 100).at(80).start();
    for (int i = 0; i < 30; ++i) {
        player.run(kernels::sampleRead, 11);
        EXPECT_LE(player.position(), 100.0);
        EXPECT_GE(player.position(), 60.0);
    }
}

TEST(SampleRead, APositionBehindTheSampleStartsAgain) {
    Player player(60);
    player.at(63).start();
    const Samples out = player.run(kernels::sampleRead, 4);
    EXPECT_NEAR(player.position(), 4.0, 0.01);
    EXPECT_NEAR(out[0], 15, 1);
    player.at(62.9).run(kernels::sampleRead, 1);
    EXPECT_NEAR(player.position(), 62.9, 0.01) << "just behind the end it holds";
}

TEST(SampleKernels, ALoopShorterThanTheStepNeverLeavesItself) {
    for (const Kernel kernel : allKernels)
        for (const double step : {3.5, 40.0, 700.0, 100000.0}) {
            Player player(1000);
            player.loop(500, 503).step(step).at(490).start();
            for (int i = 0; i < 50; ++i) {
                player.run(kernel, 64, Samples(64, 30000));
                EXPECT_LE(player.position(), 503.0) << step;
                EXPECT_GE(player.position(), 490.0) << step;
            }
        }
}

TEST(SampleKernels, NoPointsOrStepsReadOutsideTheBuffers) {
    // The address sanitizer looks on.
    const std::int32_t points[] = {-5, 0, 1, 149, 150, 151, 1000000, 0x7fffffff};
    const std::uint32_t increments[] = {0, 1, 60000, 0xffffff, 0x7fffffff, 0xffffffff};
    const std::uint32_t phases[] = {0, 150u << 13, (153u << 13) - 1, 153u << 13, 0x7fffffff, 0xffffffff};
    Player player(150);
    player.state.synced = 1;
    player.state.fmDepth = 131070;
    for (const Kernel kernel : allKernels)
        for (const std::int32_t start : points)
            for (const std::int32_t end : points)
                for (const std::uint32_t increment : increments)
                    for (const std::uint32_t phase : phases)
                        for (const int loop : {0, 1}) {
                            player.sample.loopStart = start;
                            player.sample.loopEnd = end;
                            player.state.loopOn = static_cast<std::uint8_t>(loop);
                            player.state.increment = increment;
                            player.state.phase = phase;
                            player.start().run(kernel, 9, {32767, -32767, 32767, 0, 1, -32768, 32767, 5, 6});
                        }
    SUCCEED();
}

TEST(SampleKernels, ThePositionDoesNotTurnOverAtTheLongestSample) {
    Player player(524277, [](int) { return 1000; });
    player.step(90.0).at(524270).start();
    player.run(kernels::sampleRead, 10);
    EXPECT_EQ(player.position(), 524270.0) << "it holds";
}

TEST(SampleKernels, AnOversizedSamplePlaysAsFarAsPositionsReach) {
    Player player(600000, [](int) { return 1000; });
    player.step(1.0).at(524280).start();
    const Samples out = player.run(kernels::sampleRead, 100);
    EXPECT_EQ(out.back(), 500);
    EXPECT_LE(player.position(), 524287.0);
}

TEST(SampleFm, WithoutDepthPlaysTheSampleLinearly) {
    for (const Kernel kernel : {kernels::sampleFmPlain, kernels::sampleFmLevels}) {
        Player player(200);
        const Samples out = player.step(0.5).start().run(kernel, 100, Samples(100, 20000));
        for (int i = 0; i < 100; ++i) EXPECT_NEAR(out[static_cast<std::size_t>(i)], (i + 1) * 0.5 * 5, 1.0) << i;
    }
}

TEST(SampleFm, TheOffsetMovesTheReadAndNotThePosition) {
    for (const Kernel kernel : {kernels::sampleFmPlain, kernels::sampleFmLevels}) {
        Player player(200);
        player.state.fmDepth = 8192;
        const Samples out = player.at(50).start().run(kernel, 8, Samples(8, 2560));  // 10 samples on
        EXPECT_NEAR(out[0], 61 * 5, 1);
        EXPECT_NEAR(player.position(), 58.0, 0.01);
    }
}

TEST(SampleFm, PositionsCountModuloTheLength) {
    Player player(100);
    player.state.fmDepth = 8192;
    const Samples ahead = player.at(90).start().run(kernels::sampleFmPlain, 1, {2560});
    EXPECT_NEAR(ahead[0], 5, 1) << "position 101 is 1";
}

TEST(SampleFm, TheNeighbourOfTheLastSampleIsTheGuard) {
    Player player(100);
    player.at(98.5).start();
    EXPECT_NEAR(player.run(kernels::sampleFmPlain, 1)[0], 495, 1) << "not halfway to the first";
}

TEST(SampleFm, ARisingCrossingRestartsASyncedSample) {
    for (const Kernel kernel : {kernels::sampleFmPlain, kernels::sampleFmLevels}) {
        Player player(200);
        player.state.synced = 1;
        player.at(50).start().run(kernel, 5, {0, 0, 7, 9, -3});
        EXPECT_NEAR(player.position(), 2.0, 0.01);
        EXPECT_EQ(player.state.lastSyncInput, -3);
    }
}

TEST(SampleFm, ASilentModulatorNeverRestarts) {
    Player player(200);
    player.state.synced = 1;
    player.at(50).start().run(kernels::sampleFmPlain, 20);
    EXPECT_NEAR(player.position(), 70.0, 0.01);
}

TEST(SampleFm, DeepModulationTakesLowerLevels) {
    Player player(400, [](int) { return 0; });
    for (std::size_t level = 0; level < sampleLevels; ++level)
        std::fill_n(player.sample.levels[level].get(), 400, static_cast<std::int16_t>(level * 100));
    player.at(200).step(0.2).loop(100, 300).start();
    EXPECT_EQ(player.run(kernels::sampleFmLevels, 1)[0], 0);
    player.state.fmDepth = 131070;
    EXPECT_EQ(player.run(kernels::sampleFmLevels, 1, {20000})[0], 200) << "level 4 at half scale";
}

// However long the silence was, the fade begins at nothing.
TEST(SampleKernels, ComeInSmoothlyOnceTheLevelsAreMade) {
    for (const Kernel kernel : allKernels) {
        Player player(2000, [](int) { return 10000; });
        player.start();
        const KernelContext context{player.engine, player.waves, player.random, &player.sample};
        const Samples in(96, 0);
        Samples out(96);
        const auto play = [&] { runKernel(kernel, context, out.data(), 96, player.state, in.data()); };
        player.sample.levelsPending.set();
        for (int block = 0; block < 3; ++block) {
            play();
            ASSERT_EQ(out, Samples(96, 0));
        }
        player.sample.levelsPending.clear();
        play();
        EXPECT_NEAR(out[0], 0, 20);
        EXPECT_NEAR(out[95], 1855, 20);
        play();
        play();
        EXPECT_NEAR(out[95], 5000, 5);
    }
}

}  // namespace
}  // namespace vantoric
