#include "sound/custom_wave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/math.h"
#include "sound/kernels.h"

using namespace vantoric;

namespace {

template <class Value>
std::unique_ptr<CustomWave> waveOf(Value value) {
    auto wave = std::make_unique<CustomWave>();
    for (int i = 0; i < cycleSamples; ++i) wave->frame(0, 0)[i] = static_cast<std::int16_t>(value(i));
    return wave;
}

bool isSilent(const CustomWave& wave) {
    return std::all_of(wave.samples.begin(), wave.samples.end(), [](std::int16_t s) { return s == 0; });
}

}  // namespace

TEST(CustomWaves, SilenceAndDcGiveSilenceAtAllLevels) {
    const Flag cancel;
    for (const int level : {0, 12000, -32768}) {
        const auto wave = waveOf([&](int) { return level; });
        EXPECT_TRUE(makeCustomMips(*wave, cancel));
        EXPECT_TRUE(isSilent(*wave));
    }
}

TEST(CustomWaves, EachLevelHoldsOnlyTheHarmonicsBelowItsLimit) {
    const auto wave = waveOf([](int i) { return (2 * i - 2047) * 7; });
    const Flag cancel;
    ASSERT_TRUE(makeCustomMips(*wave, cancel));
    RealFft fft(cycleSamples);
    std::array<double, cycleSamples> signal;
    std::array<double, cycleSamples / 2 + 1> re, im;
    for (int level = 0; level < mipLevels; ++level)
        for (const int frame : {0, 17, 31}) {
            std::copy_n(wave->frame(level, frame), cycleSamples, signal.begin());
            fft.forward(signal.data(), re.data(), im.data());
            const auto size = [&](int bin) { return std::sqrt(re[bin] * re[bin] + im[bin] * im[bin]) / 1024; };
            EXPECT_GT(size(1), 4000);
            for (int bin = 1024 >> level; bin < 1024; ++bin) ASSERT_LT(size(bin), 1.5) << level << " " << frame << " " << bin;
            EXPECT_LT(size(0), 2);
        }
}

TEST(CustomWaves, FramesMoveTheMiddleOfTheWave) {
    const auto wave = waveOf([](int i) { return i < 1024 ? 20000 : -20000; });
    const Flag cancel;
    ASSERT_TRUE(makeCustomMips(*wave, cancel));
    for (const int frame : {0, 8, 16, 31}) {
        const auto* cycle = wave->frame(0, frame);
        const auto above = std::count_if(cycle, cycle + cycleSamples, [](std::int16_t s) { return s > 0; });
        EXPECT_NEAR(static_cast<double>(above), 1024.0 - 32 * frame, 6) << frame;
    }
}

TEST(CustomWaves, ACancelStopsTheWork) {
    const auto wave = waveOf([](int i) { return i; });
    Flag cancel;
    cancel.set();
    EXPECT_FALSE(makeCustomMips(*wave, cancel));
    EXPECT_EQ(wave->frame(3, 7)[100], 0);
}

TEST(CustomWaves, CyclesThatDifferByLessThanThreeCountAsTheSame) {
    const auto a = waveOf([](int i) { return i * 7; }), b = waveOf([](int i) { return i * 7 + (i % 2 == 0 ? 2 : -2); });
    EXPECT_TRUE(sameCycle(a->frame(0, 0), b->frame(0, 0)));
    b->frame(0, 0)[2047] = static_cast<std::int16_t>(a->frame(0, 0)[2047] + 3);
    EXPECT_FALSE(sameCycle(a->frame(0, 0), b->frame(0, 0)));
    a->frame(0, 0)[2047] = -32768;
    b->frame(0, 0)[2047] = 32767;
    EXPECT_FALSE(sameCycle(a->frame(0, 0), b->frame(0, 0)));
}

// The wave of a cycle, made.
std::shared_ptr<const CustomWave> madeOf(const CustomCycle& cycle) {
    const auto wave = std::make_shared<CustomWave>();
    std::copy(cycle.begin(), cycle.end(), wave->frame(0, 0));
    const Flag cancel;
    EXPECT_TRUE(makeCustomMips(*wave, cancel));
    return wave;
}

CustomCycle cycleOf(int height) {
    CustomCycle cycle;
    for (int i = 0; i < cycleSamples; ++i) cycle[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i < 1024 ? height : 0);
    return cycle;
}

TEST(CustomWaveSlots, AreSilentUntilTheirWaveIsMade) {
    CustomWaveSlot slot;
    EXPECT_EQ(slot.samples(), nullptr);
    slot.cycle = cycleOf(9000);
    const auto wave = madeOf(slot.cycle);
    EXPECT_EQ(slot.publish(wave, slot.generation()), nullptr) << "there was none before";
    EXPECT_EQ(slot.samples(), wave->samples.data());
    EXPECT_EQ(slot.wave(), wave);
}

TEST(CustomWaveSlots, KeepTheCycleAsGivenAndShowItAsMade) {
    CustomWaveSlot slot;
    slot.cycle = cycleOf(9000);
    const CustomCycle given = slot.cycle;
    slot.publish(madeOf(given), slot.generation());
    EXPECT_EQ(slot.given(), given);
    EXPECT_NEAR(slot.cycle[512], 4500, 300) << "without the constant part";
}

TEST(CustomWaveSlots, FallSilentAtOnceForAnotherCycle) {
    CustomWaveSlot slot;
    slot.publish(madeOf(slot.cycle), slot.generation());
    slot.forget();
    EXPECT_EQ(slot.samples(), nullptr);
    EXPECT_EQ(slot.wave(), nullptr);
    slot.cycle = cycleOf(100);
    EXPECT_EQ(slot.given(), slot.cycle);
}

TEST(CustomWaveSlots, NeverPlayAWaveOfACycleThatWasReplacedMeanwhile) {
    CustomWaveSlot slot;
    const unsigned before = slot.generation();
    const auto old = madeOf(cycleOf(9000));
    slot.forget();
    slot.cycle = cycleOf(100);
    EXPECT_EQ(slot.publish(old, before), old);
    EXPECT_EQ(slot.samples(), nullptr);
    EXPECT_EQ(slot.cycle, cycleOf(100));
}

TEST(CustomWaveSlots, HandOutTheWaveThatABlockMayStillRead) {
    CustomWaveSlot slot;
    const auto first = madeOf(cycleOf(1)), second = madeOf(cycleOf(2));
    slot.publish(first, slot.generation());
    slot.forget();
    EXPECT_EQ(slot.publish(second, slot.generation()), first);
}

TEST(CustomWaveCaches, RememberTheWaveOfACycleWhileItIsUsed) {
    CustomWaveCache cache;
    EXPECT_EQ(cache.find(cycleOf(1)), nullptr);
    auto wave = madeOf(cycleOf(1));
    cache.add(cycleOf(1), wave);
    EXPECT_EQ(cache.find(cycleOf(1)), wave);
    EXPECT_EQ(cache.find(cycleOf(2)), nullptr);
    wave.reset();
    EXPECT_EQ(cache.find(cycleOf(1)), nullptr);
    cache.add(cycleOf(1), madeOf(cycleOf(1)));
    EXPECT_EQ(cache.find(cycleOf(1)), nullptr);
}

struct Playing : ::testing::Test {
    Playing() {
        state.increment = 1 << 16;  // a cycle of 256 samples
        state.frame = state.framePending = 0;
        prepareOscillator(state, {.synType = customWaveType, .customWave = &slot}, waves);
    }
    std::array<std::int16_t, 512> play(Kernel kernel = kernels::frameLinear) {
        std::array<std::int16_t, 512> out;
        out.fill(12345);
        for (int half = 0; half < 512; half += 256) runKernel(kernel, context, out.data() + half, 256, state, in.data());
        return out;
    }
    void make() {
        slot.cycle = cycleOf(9000);
        slot.publish(madeOf(slot.cycle), slot.generation());
    }

    CustomWaveSlot slot;
    WaveStore waves;
    EngineState engine;
    RandomSources random;
    KernelContext context{engine, waves, random};
    OscillatorState state;
    std::array<std::int16_t, 256> in{};
};

TEST_F(Playing, IsSilentWithoutAWave) {
    for (const Kernel kernel : {kernels::frameLinear, kernels::frameNearest, kernels::frameFmLinear})
        for (const std::int16_t sample : play(kernel)) ASSERT_EQ(sample, 0);
}

TEST_F(Playing, ComesInSmoothlyWhenTheWaveIsMade) {
    play();
    make();
    const auto first = play();
    EXPECT_LT(std::abs(first[0]), 40);
    EXPECT_LT(std::abs(first[25]), 300);
    for (int i = 1; i < 100; ++i)
        EXPECT_LT(std::abs(first[static_cast<std::size_t>(i)] - first[static_cast<std::size_t>(i - 1)]), 100) << i;
    EXPECT_GT(std::abs(first[300]), 2000);
}

TEST_F(Playing, HasItsFullLevelFromTheStartIfTheWaveWasThere) {
    make();
    const auto first = play();
    EXPECT_GT(std::abs(first[0]), 2000);
}

TEST_F(Playing, FallsSilentAndTakesTheNextWaveWithoutANewNote) {
    make();
    play();
    slot.forget();
    for (const std::int16_t sample : play()) ASSERT_EQ(sample, 0);
    make();
    play();
    EXPECT_GT(std::abs(play()[0]), 1000);
}

TEST(CustomWaves, ALoudWaveIsClampedAndNeverWraps) {
    CycleBandlimiter bandlimiter;
    auto wave = std::make_unique<CustomWave>();
    std::array<double, cycleSamples> cycle;
    for (int i = 0; i < cycleSamples; ++i) cycle[static_cast<std::size_t>(i)] = 3.0 * math::sin(2 * math::pi * i / cycleSamples);
    std::int16_t* levels[mipLevels];
    for (int level = 0; level < mipLevels; ++level) levels[level] = wave->frame(level, 0);
    EXPECT_TRUE(bandlimiter.run(cycle.data(), levels));
    for (int level = 0; level < mipLevels; ++level) {
        EXPECT_EQ(levels[level][512], 32767);
        EXPECT_EQ(levels[level][1536], -32767);
    }
}
