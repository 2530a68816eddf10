#include "effects/sound_mode_stage.h"

#include <cmath>
#include <limits>
#include <vector>

namespace vantoric {
namespace {

SoundModeStage settled(int mode, float gain) {
    SoundModeStage stage;
    stage.setSampleRate(88200.0);
    stage.setMode(mode);
    stage.setTargetGain(gain);
    stage.reset();
    return stage;
}

std::vector<float> sine(int count, double frequency) {
    std::vector<float> x(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        x[static_cast<std::size_t>(i)] = static_cast<float>(std::sin(2.0 * M_PI * frequency * i / 88200.0));
    return x;
}

TEST(SoundModeStage, AVolumeOfOneHalfGivesTheGainOne) {
    EXPECT_EQ(SoundModeStage::gainOfVolume(0.0f), 0.0f);
    EXPECT_EQ(SoundModeStage::gainOfVolume(0.5f), 1.0f);
    EXPECT_EQ(SoundModeStage::gainOfVolume(1.0f), 4.0f);
}

TEST(SoundModeStage, Mode0LeavesTheLevelAt1Point3TimesTheSum) {
    SoundModeStage stage = settled(0, 1.0f);
    std::vector<float> left = sine(88200, 1000.0), right = left;
    const auto in = left;
    stage.process(left.data(), right.data(), 88200);
    double sum = 0.0, inSum = 0.0;
    for (std::size_t i = 44100; i < left.size(); ++i) {
        sum += left[i] * left[i];
        inSum += in[i] * in[i];
    }
    EXPECT_NEAR(std::sqrt(sum / inSum), 1.3, 0.001);
    EXPECT_EQ(left, right);
}

TEST(SoundModeStage, AChangeOfVolumeTakesOneBlockAtAnyLength) {
    for (const int length : {1, 64, 1000}) {
        SoundModeStage stage = settled(8, 1.0f);
        stage.setTargetGain(3.0f);
        std::vector<float> left(static_cast<std::size_t>(length), 1.0f), right = left;
        stage.process(left.data(), right.data(), length);
        EXPECT_EQ(stage.gain(), 3.0);
        EXPECT_NEAR(left.front(), 1.3 * (1.0 + 2.0 / length), 1e-5);
        EXPECT_NEAR(left.back(), 3.9, 1e-5);
        EXPECT_EQ(left, right);
    }
}

TEST(SoundModeStage, AModeAbove10PassesAudioAndLeavesTheGain) {
    SoundModeStage stage = settled(11, 0.5f);
    stage.setTargetGain(2.0f);
    std::vector<float> left = sine(100, 440.0), right = left;
    const auto in = left;
    stage.process(left.data(), right.data(), 100);
    EXPECT_EQ(left, in);
    EXPECT_EQ(stage.gain(), 0.5);
}

TEST(SoundModeStage, RemovesDcInEveryModeButScientific) {
    for (int mode = 0; mode <= 10; ++mode) {
        SoundModeStage stage = settled(mode, 1.0f);
        std::vector<float> left(88200, 0.25f), right = left;
        stage.process(left.data(), right.data(), 88200);
        if (mode == 8)
            EXPECT_FLOAT_EQ(left.back(), 0.325f);
        else
            EXPECT_NEAR(left.back(), 0.0f, 1e-5f) << mode;
    }
}

TEST(SoundModeStage, ScientificAddsNothingToSilence) {
    SoundModeStage stage = settled(8, 1.0f);
    std::vector<float> left(10, 0.0f), right = left;
    stage.process(left.data(), right.data(), 10);
    EXPECT_EQ(left, std::vector<float>(10, 0.0f));
}

TEST(SoundModeStage, AResetClearsTheStatesAndTheGainJumps) {
    for (int mode = 0; mode <= 10; ++mode) {
        SoundModeStage stage = settled(mode, 0.1f), fresh = settled(mode, 2.0f);
        stage.setTargetGain(2.0f);
        std::vector<float> left = sine(300, 60.0), right = sine(300, 7000.0);
        stage.process(left.data(), right.data(), 300);
        stage.reset();
        EXPECT_EQ(stage.gain(), 2.0);
        left = sine(100, 500.0);
        right = sine(100, 800.0);
        auto freshLeft = left, freshRight = right;
        stage.process(left.data(), right.data(), 100);
        fresh.process(freshLeft.data(), freshRight.data(), 100);
        EXPECT_EQ(left, freshLeft) << mode;
        EXPECT_EQ(right, freshRight) << mode;
    }
}

TEST(SoundModeStage, EveryModeIsStableAtLowRates) {
    for (const double rate : {4000.0, 22050.0, 384000.0})
        for (int mode = 0; mode <= 10; ++mode) {
            SoundModeStage stage = settled(mode, 1.0f);
            stage.setSampleRate(rate);
            std::vector<float> left = sine(4000, 300.0), right = left;
            stage.process(left.data(), right.data(), 4000);
            for (const float y : left) ASSERT_LT(std::fabs(y), 10.0f) << mode << " at " << rate;
        }
}

TEST(SoundModeStage, RecoversFromABlockWithoutFiniteNumbers) {
    for (const int mode : {4, 8, 11, 127}) {
        SoundModeStage stage = settled(mode, 1.0f);
        std::vector<float> left(8, std::numeric_limits<float>::quiet_NaN()), right(8, 0.1f);
        stage.process(left.data(), right.data(), 8);
        EXPECT_EQ(left, std::vector<float>(8, 0.0f)) << mode;
        EXPECT_EQ(right, std::vector<float>(8, 0.0f)) << mode;
        left = right = sine(100, 500.0);
        stage.process(left.data(), right.data(), 100);
        for (const float y : left) EXPECT_TRUE(std::isfinite(y)) << mode;
    }
}

}  // namespace
}  // namespace vantoric
