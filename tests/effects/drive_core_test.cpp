#include "effects/drive_core.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "effects/type_table.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

enum Variant {
    tubeAmp = 2,
    ampSim = 12,
    noise = 13,
    softClip = 14,
    rectify = 16,
    warp = 17,
    waveshape = 18,
    ripple = 19,
    hardClip = 21,
    bitcrush = 22,
    saturate = 24,
    multiband = 25
};
constexpr int all[] = {tubeAmp,   ampSim, noise,    softClip, rectify,  warp,
                       waveshape, ripple, hardClip, bitcrush, saturate, multiband};

struct Sides {
    std::vector<float> left, right;
    bool operator==(const Sides&) const = default;
};

struct DriveCoreTest : testing::Test {
    RandomSources random;
    DriveCore drive{random};

    void set(int variant, float mix, float p1, float p2 = 0.5f, float p3 = 0.5f, float p4 = 0.5f) {
        drive.setVariant(variant);
        drive.setSampleRate(88200.0f);
        const float values[] = {mix, p1, p2, p3, p4};
        for (int index = 0; index < 5; ++index) drive.setParameter(index, values[index]);
    }
    Sides run(Sides x, int block = 100) {
        const int count = static_cast<int>(x.left.size());
        for (int at = 0; at < count; at += block)
            drive.process(x.left.data() + at, x.right.data() + at, std::min(block, count - at));
        return x;
    }
};

Sides chance(int count, float amp) {
    Sides x;
    LinearCongruence congruence{5};
    for (int i = 0; i < count; ++i) {
        x.left.push_back(amp * (2.0f * congruence.unit() - 1.0f));
        x.right.push_back(amp * (2.0f * congruence.unit() - 1.0f));
    }
    return x;
}
Sides constant(int count, float value) {
    return {std::vector<float>(static_cast<std::size_t>(count), value),
            std::vector<float>(static_cast<std::size_t>(count), value)};
}
float peak(const std::vector<float>& x) {
    float largest = 0.0f;
    for (const float v : x) largest = std::max(largest, std::fabs(v));
    return largest;
}

TEST_F(DriveCoreTest, HasALoopForEveryDriveOfTheTypeTable) {
    for (int type = 0; type < effectTypeCount; ++type) {
        if (effectType(type).family != EffectFamily::drive) continue;
        EXPECT_NE(std::find(std::begin(all), std::end(all), effectType(type).variant), std::end(all));
        drive.reset();
        set(effectType(type).variant, 1.0f, 0.5f);
        const Sides x = chance(200, 0.4f);
        EXPECT_NE(run(x), x) << effectType(type).name;
    }
}

TEST_F(DriveCoreTest, UnknownVariantsPassAudioThrough) {
    const Sides x = chance(200, 0.4f);
    for (const int variant : {0, 1, 3, 15, 20, 23, 26, 99}) {
        set(variant, 1.0f, 0.5f);
        EXPECT_EQ(run(x), x);
    }
}

TEST_F(DriveCoreTest, BlockLengthMakesNoDifference) {
    const Sides x = chance(500, 0.4f);
    for (const int variant : all) {
        set(variant, 0.8f, 0.6f);
        drive.reset();
        random = {};
        const Sides whole = run(x, 250);
        for (const int block : {1, 3, 64, 65, 88}) {
            drive.reset();
            random = {};
            EXPECT_EQ(run(x, block), whole) << "variant " << variant << " block " << block;
        }
    }
}

TEST_F(DriveCoreTest, SidesKnowNothingOfEachOther) {
    for (const int variant : all) {
        if (variant == noise) continue;
        set(variant, 1.0f, 0.6f);
        drive.reset();
        Sides x = chance(300, 0.4f);
        const Sides both = run(x);
        drive.reset();
        std::swap(x.left, x.right);
        const Sides swapped = run(x);
        EXPECT_EQ(both.left, swapped.right) << variant;
        EXPECT_EQ(both.right, swapped.left) << variant;
    }
}

TEST_F(DriveCoreTest, ResetForgetsEverything) {
    const Sides x = chance(250, 0.4f);
    for (const int variant : all) {
        DriveCore fresh(random);
        set(variant, 1.0f, 0.7f);
        drive.reset();
        random = {};
        const Sides first = run(x);
        run(chance(333, 0.9f));
        drive.reset();
        random = {};
        EXPECT_EQ(run(x), first) << variant;
    }
}

TEST_F(DriveCoreTest, RectifyAtFullStrengthGivesSignSumsOnly) {
    set(rectify, 1.0f, 1.0f);
    const Sides y = run(chance(400, 0.5f));
    for (const float v : y.left) EXPECT_EQ(v, std::round(v * 16.0f) / 16.0f);
    EXPECT_EQ(peak(y.left), 0.125f);
}

TEST_F(DriveCoreTest, SoftClipAtZeroIsNearlyLinear) {
    set(softClip, 1.0f, 0.0f);
    // The low-pass is flat for a slow wave: four points of eight times the input over thirty-two.
    Sides x;
    for (int i = 0; i < 2000; ++i) x.left.push_back(0.8f * std::sin(static_cast<float>(i) * 0.01f));
    x.right = x.left;
    const Sides y = run(x);
    for (int i = 100; i < 2000; ++i) ASSERT_NEAR(y.left[i], x.left[i], 0.1f);
    EXPECT_NEAR(peak(y.left), 0.8f, 0.01f);
}

TEST_F(DriveCoreTest, AmpSimPassesABlockOf257SamplesUnchanged) {
    set(ampSim, 1.0f, 0.5f);
    const Sides x = chance(257, 0.3f);
    EXPECT_EQ(run(x, 257), x);
    const Sides y = chance(256, 0.3f);
    EXPECT_NE(run(y, 256), y);
}

TEST_F(DriveCoreTest, AmpSimWithoutMixLeavesTheInputAlone) {
    set(ampSim, 0.0001f, 0.5f);
    const Sides x = chance(200, 0.3f);
    EXPECT_EQ(run(x), x);
}

TEST_F(DriveCoreTest, TubeAmpIsSkippedAtNoDrive) {
    set(tubeAmp, 1.0f, 0.0001f);
    const Sides x = chance(200, 0.3f);
    EXPECT_EQ(run(x), x);
}

TEST_F(DriveCoreTest, NoiseWithoutMixLeavesTheInputAlone) {
    set(noise, 0.0f, 0.5f);
    const Sides x = chance(2000, 0.3f);
    EXPECT_EQ(run(x), x);
}

TEST_F(DriveCoreTest, NoiseWithAllAmountsAtZeroAddsNothing) {
    set(noise, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f);
    const Sides x = chance(100000, 0.3f);
    EXPECT_EQ(run(x), x);
}

TEST_F(DriveCoreTest, NoiseIsPinkOnBothSidesAndWhiteOnEach) {
    set(noise, 1.0f, 0.0f, 0.8f, 0.0f, 0.0f);
    const Sides pink = run(constant(1000, 0.0f));
    EXPECT_EQ(pink.left, pink.right);
    EXPECT_GT(peak(pink.left), 0.05f);
    set(noise, 1.0f, 0.8f, 0.0f, 0.0f, 0.0f);
    const Sides white = run(constant(1000, 0.0f));
    EXPECT_NE(white.left, white.right);
}

TEST_F(DriveCoreTest, DryMixPassesTheInputOfTheOversampledDrives) {
    for (const int variant : {softClip, hardClip, rectify, warp, waveshape, ripple, bitcrush, saturate, multiband}) {
        set(variant, 0.0f, 0.7f);
        const Sides x = chance(200, 0.4f);
        EXPECT_EQ(run(x), x) << variant;
    }
}

TEST_F(DriveCoreTest, SplitCoefficientIsHeldToTheUnit) {
    for (const float rate : {100.0f, 8000.0f, 88200.0f, 192000.0f})
        for (const float p2 : {0.0f, 0.5f, 1.0f}) {
            EXPECT_GE(DriveCore::splitCoefficient(p2, rate), 0.0f);
            EXPECT_LE(DriveCore::splitCoefficient(p2, rate), 1.0f);
        }
    EXPECT_GT(DriveCore::splitCoefficient(0.7f, 88200.0f), DriveCore::splitCoefficient(0.5f, 88200.0f));
}

TEST_F(DriveCoreTest, StaysFiniteAndBoundedWhateverComesIn) {
    for (const int variant : all) {
        for (const float rate : testing_effects::everyRate()) {
            for (const float p : {0.0f, 0.5f, 1.0f}) {
                set(variant, 1.0f, p, p, p, p);
                drive.setSampleRate(rate);
                drive.reset();
                for (const float level : {0.0f, 1.0f, 1e-30f, 1e-41f}) {
                    Sides x = constant(400, level);
                    std::fill(x.right.begin() + 1, x.right.end(), 0.0f);
                    for (int i = 0; i < 400; i += 25) x.left[i] = -level;
                    for (int round = 0; round < 5; ++round) {
                        const Sides y = run(x);
                        ASSERT_LT(peak(y.left), 300.0f) << "variant " << variant << " rate " << rate << " p " << p;
                        ASSERT_LT(peak(y.right), 300.0f) << "variant " << variant << " rate " << rate << " p " << p;
                    }
                }
            }
        }
    }
}

TEST(DriveShapes, WarpFollowsTheWaveAndThenHolds) {
    EXPECT_EQ(warpShape(0.25f), 1.0f);
    EXPECT_EQ(warpShape(0.75f), -1.0f);
    EXPECT_EQ(warpShape(5.1f), -1.0f);
    EXPECT_EQ(warpShape(-5.1f), 1.0f);
}

TEST(DriveShapes, TheQuickWaveIsTheSharedOne) {
    for (float v = -20.0f; v < 20.0f; v += 0.0625f) EXPECT_EQ(waveShape(v), sineShape(v)) << v;
}

TEST(DriveShapes, RippleIsAWaveOfAQuarter) {
    EXPECT_EQ(rippleShape(0.25f), 0.25f);
    EXPECT_EQ(rippleShape(0.5f), 0.0f);
    EXPECT_EQ(rippleShape(0.75f), -0.25f);
}

TEST(DriveShapes, LowPassesHaveUnitGainAndTheRampUnitSum) {
    for (const ShaperTaps* taps : {&halfBand(), &quarterBand(), &rampTable()}) {
        float sum = 0.0f;
        for (const float tap : *taps) sum += tap;
        EXPECT_NEAR(sum, 1.0f, 1e-6f);
    }
}

}  // namespace
}  // namespace vantoric
