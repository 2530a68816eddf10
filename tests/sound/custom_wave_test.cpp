#include "sound/custom_wave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/math.h"

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
    EXPECT_TRUE(sameFirstFrame(*a, *b));
    b->frame(0, 0)[2047] = static_cast<std::int16_t>(a->frame(0, 0)[2047] + 3);
    EXPECT_FALSE(sameFirstFrame(*a, *b));
    a->frame(0, 0)[2047] = -32768;
    b->frame(0, 0)[2047] = 32767;
    EXPECT_FALSE(sameFirstFrame(*a, *b));
}

TEST(CustomWaves, TheFirstFrameSpreadsUntilTheMipsAreMade) {
    const auto wave = waveOf([](int i) { return i * 3; });
    spreadFirstFrame(*wave);
    for (int level = 0; level < mipLevels; ++level)
        for (int frame = 0; frame < customFrames; ++frame) EXPECT_TRUE(sameCycle(wave->frame(level, frame), wave->frame(0, 0)));
    const auto copy = std::make_unique<CustomWave>();
    copyMips(*wave, *copy);
    EXPECT_EQ(copy->samples, wave->samples);
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
