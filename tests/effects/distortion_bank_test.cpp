#include "effects/distortion_bank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

enum Type {
    bypass = 0,
    tube = 2,
    soft = 3,
    fuzz = 4,
    asym = 5,
    crush = 7,
    shapSin = 8,
    shapTri = 9,
    shapAsy = 10,
    shapZap = 14,
    shapSym = 15,
    selfsync = 17,
    degrade = 18,
    noise = 19,
    noiseRm = 20,
    scream = 21
};

// The variant's loop on one voice, as plain numbers.
struct Scalar {
    DistortionMemory<float> memory{};

    void run(int variant, float drive, float rate, std::uint32_t random, float* at, int stride, int count) {
        distortion::withLoop(variant, [&](auto which) {
            using Which = decltype(which);
            if (Which::Traits::gated && !(drive > distortion::least)) return;
            typename Which::template On<float> loop;
            loop.setup({drive, rate, random});
            distortion::run<float>(loop, halfBand(), memory, at, stride, count, true);
        });
    }
};

struct BankTest : testing::Test {
    RandomSources random;
    DistortionBank bank{random};
    LaneBuffer buffer{};

    void set(int voice, int type, float drive) {
        bank.setType(voice, type);
        bank.setDrive(voice, drive);
    }
    float& at(int i, int voice) { return buffer[i * voiceCount + voice]; }

    // Runs one voice over a signal in stretches of a tick.
    std::vector<float> one(std::vector<float> x, int voice = 0) {
        const int count = static_cast<int>(x.size());
        for (int start = 0; start < count; start += 88) {
            const int part = std::min(88, count - start);
            for (int i = 0; i < part; ++i) at(i, voice) = x[start + i];
            bank.run(buffer, part, static_cast<LaneMask>(1 << voice));
            for (int i = 0; i < part; ++i) x[start + i] = at(i, voice);
        }
        return x;
    }
    void fillWithNoise(float amp, std::uint32_t seed = 9) {
        LinearCongruence chance{seed};
        for (float& x : buffer) x = amp * (2.0f * chance.unit() - 1.0f);
    }
};
using DistortionBankTest = BankTest;

std::vector<float> sine(int count, float amp, float frequency) {
    std::vector<float> x(count);
    for (int i = 0; i < count; ++i) x[i] = amp * std::sin(6.2831853f * frequency * static_cast<float>(i) / 88200.0f);
    return x;
}

TEST_F(DistortionBankTest, GivesEveryVoiceTheBitsOfTheScalarLoop) {
    constexpr int count = 70;
    for (int type = 0; type < distortionTypeCount; ++type) {
        for (const int mask : {0x8000, 0x0a30, 0xfff0, 0xffff}) {
            DistortionBank fresh(random);
            std::array<Scalar, voiceCount> scalar;
            for (int voice = 0; voice < voiceCount; ++voice) {
                fresh.setType(voice, type);
                fresh.setDrive(voice, 0.07f * static_cast<float>(voice));
            }
            for (int round = 0; round < 3; ++round) {
                fillWithNoise(0.7f, 100u + static_cast<std::uint32_t>(round));
                std::vector<float> expected(buffer, buffer + count * voiceCount);
                LinearCongruence congruence = random.congruence;
                for (int voice = 0; voice < voiceCount; ++voice) {
                    if ((mask >> voice & 1) == 0) continue;
                    scalar[voice].run(distortionVariant(type), 0.07f * static_cast<float>(voice), 88200.0f, congruence.state,
                                      expected.data() + voice, voiceCount, count);
                    if (type == noise || type == noiseRm)
                        for (int i = 0; i < count; ++i) congruence.next();
                }
                fresh.run(buffer, count, static_cast<LaneMask>(mask));
                EXPECT_EQ(random.congruence.state, congruence.state) << "type " << type;
                for (int voice = 0; voice < voiceCount; ++voice)
                    for (int i = 0; i < count && (mask >> voice & 1) != 0; ++i)
                        ASSERT_EQ(at(i, voice), expected[i * voiceCount + voice])
                            << "type " << type << " voice " << voice << " sample " << i;
            }
        }
    }
}

TEST_F(DistortionBankTest, RunsVoicesOfDifferentTypesBesideOneAnother) {
    constexpr int count = 60;
    std::array<Scalar, voiceCount> scalar;
    for (int voice = 0; voice < voiceCount; ++voice) set(voice, voice + 3, voice % 3 == 0 ? 0.0f : 0.4f);
    for (int round = 0; round < 2; ++round) {
        fillWithNoise(0.5f);
        std::vector<float> expected(buffer, buffer + count * voiceCount);
        LinearCongruence congruence = random.congruence;
        for (int voice = 0; voice < voiceCount; ++voice) {
            const int type = voice + 3;
            scalar[voice].run(distortionVariant(type), voice % 3 == 0 ? 0.0f : 0.4f, 88200.0f, congruence.state,
                              expected.data() + voice, voiceCount, count);
            if (type == noise) congruence.skip(count);
        }
        bank.run(buffer, count, 0xffff);
        for (int k = 0; k < count * voiceCount; ++k) ASSERT_EQ(buffer[k], expected[k]) << "voice " << k % voiceCount;
    }
}

TEST_F(DistortionBankTest, ListsItsTypesAndPassesSeparatorsUnchanged) {
    EXPECT_EQ(distortionVariant(tube), 8);
    EXPECT_EQ(distortionVariant(scream), 38);
    for (const int type : {-1, 0, 1, 6, 16, 22, 127}) {
        EXPECT_EQ(distortionVariant(type), 0);
        set(0, type, 0.8f);
        const std::vector<float> x = sine(100, 0.3f, 900.0f);
        EXPECT_EQ(one(x), x);
    }
}

TEST_F(DistortionBankTest, ZeroDrivePassesTheGatedTypesUnchanged) {
    const std::vector<float> x = sine(200, 0.3f, 500.0f);
    for (const int type : {tube, soft, asym, crush}) {
        for (const float drive : {0.0f, 0.0001f, -0.3f}) {
            set(0, type, drive);
            EXPECT_EQ(one(x), x) << type;
        }
        set(0, type, 0.3f);
        EXPECT_NE(one(x), x) << type;
    }
}

TEST_F(DistortionBankTest, ZeroDriveStillFoldsTheWaveWithShapTri) {
    set(0, shapTri, 0.0f);
    const std::vector<float> y = one(std::vector<float>(200, 0.25f));
    // h = 2 shapes the settled input: z = 0.25, 4 ((0.25 - 0.5)^2 - 0.25^2) = 0 against the dry 0.25.
    EXPECT_NEAR(y.back(), 0.0f, 1e-4f);
    const std::vector<float> swing = one(sine(2000, 0.4f, 500.0f));
    EXPECT_GT(*std::max_element(swing.begin(), swing.end()), 0.05f);
    EXPECT_LE(*std::max_element(swing.begin(), swing.end()), 0.126f);
}

TEST_F(DistortionBankTest, CrushAtFullDriveHasSixLevelsAndStaysCentred) {
    set(0, crush, 1.0f);
    const std::vector<float> y = one(sine(882 * 40, 1.0f, 100.0f));
    const double q = fastExp(1.8f);
    EXPECT_EQ(std::trunc(q), 6.0);
    double mean = 0.0;
    for (const float v : y) mean += v;
    EXPECT_NEAR(mean / static_cast<double>(y.size()), 0.0, 0.02);
    EXPECT_NEAR(*std::max_element(y.begin(), y.end()), (std::trunc(q) + 0.5) / q, 0.02);
    EXPECT_NEAR(*std::min_element(y.begin(), y.end()), -(std::trunc(q) + 0.5) / q, 0.02);
}

TEST_F(DistortionBankTest, DegradeAtZeroPassesAndOnlyAddsItsOffset) {
    set(0, degrade, 0.0f);
    const std::vector<float> x = sine(200, 0.3f, 500.0f), y = one(x);
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_EQ(y[i], x[i] + 1e-5f);
}

TEST_F(DistortionBankTest, DegradeCountsBeforeItHolds) {
    set(0, degrade, 0.3f);
    ASSERT_EQ(distortion::holdLength(0.3f, 88200.0f), 7.0f);
    std::vector<float> x(30);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<float>(i);
    const std::vector<float> y = one(x);
    EXPECT_EQ(y[5], 0.0f);
    EXPECT_NEAR(y[6], 6.0f, 1e-4f);
    EXPECT_NEAR(y[12], 6.0f, 1e-4f);
    EXPECT_NEAR(y[13], 13.0f, 1e-4f);
}

TEST(HoldLength, StaysBetweenNothingAndASecond) {
    EXPECT_EQ(distortion::holdLength(0.005f, 88200.0f), 1.0f);
    EXPECT_EQ(distortion::holdLength(0.01f, 8000.0f), 0.0f);
    EXPECT_EQ(distortion::holdLength(50.0f, 88200.0f), 88200.0f);
    EXPECT_EQ(distortion::holdLength(std::numeric_limits<float>::quiet_NaN(), 88200.0f), 1.0f);
}

// The sum of eight sines of any phase, over 64: root mean square 1/32.
TEST_F(DistortionBankTest, ShapZapTurnsLoudPeaksToNoiseAndNotToSilence) {
    set(0, shapZap, 1.0f);
    for (const float amp : {0.3f, 0.45f, 0.6f}) {
        const std::vector<float> x = sine(8820, amp, 220.0f), y = one(x);
        double squares = 0.0;
        int count = 0;
        for (std::size_t i = 0; i < x.size(); ++i)
            if (x[i] > 0.7f * amp) squares += y[i] * y[i], ++count;
        EXPECT_NEAR(std::sqrt(squares / count), 1.0 / 32, 0.004) << amp;
    }
}

TEST_F(DistortionBankTest, SelfsyncPassesAtZeroAndFlipsAtOne) {
    set(0, selfsync, 0.0f);
    const std::vector<float> x = sine(1000, 0.3f, 882.0f);
    const std::vector<float> passed = one(x);
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(passed[i], x[i], 2e-5f);
    bank.reset(0);
    bank.setDrive(0, 1.0f);
    const std::vector<float> flipped = one(x);
    for (int i = 5; i < 95; ++i) EXPECT_NEAR(flipped[i], -x[i], 3e-5f);
    for (int i = 105; i < 195; ++i) EXPECT_NEAR(flipped[i], x[i], 3e-5f);
}

TEST_F(DistortionBankTest, SelfsyncDoublesTheSeriesOfAnOctaveDown) {
    set(0, selfsync, 1.0f);
    const std::vector<float> y = one(sine(800, 0.3f, 882.0f));
    for (int i = 210; i < 290; ++i) EXPECT_NEAR(y[i], -y[i + 100], 3e-5f);
}

TEST_F(DistortionBankTest, NoiseAddsAndNoiseRmMultiplies) {
    set(0, noise, 1.0f);
    const std::vector<float> added = one(std::vector<float>(5000, 0.0f));
    EXPECT_NEAR(*std::max_element(added.begin(), added.end()), 0.25f, 0.01f);
    EXPECT_NEAR(*std::min_element(added.begin(), added.end()), -0.25f, 0.01f);
    set(0, noiseRm, 1.0f);
    const std::vector<float> multiplied = one(std::vector<float>(5000, 0.5f));
    EXPECT_NEAR(*std::max_element(multiplied.begin(), multiplied.end()), 1.0f, 0.01f);
    EXPECT_NEAR(*std::min_element(multiplied.begin(), multiplied.end()), 0.0f, 0.01f);
}

TEST_F(DistortionBankTest, SilentVoicesDrawNothing) {
    for (int voice = 0; voice < voiceCount; ++voice) set(voice, noise, 0.5f);
    LinearCongruence expected = random.congruence;
    bank.run(buffer, 50, 0);
    EXPECT_EQ(random.congruence.state, expected.state);
    bank.run(buffer, 50, 0x0101);
    expected.skip(100);
    EXPECT_EQ(random.congruence.state, expected.state);
}

TEST_F(DistortionBankTest, ResetClearsTheMemoriesAndAChangeOfTypeKeepsThem) {
    const std::vector<float> silence(8, 0.0f);
    set(0, soft, 0.5f);
    set(1, soft, 0.5f);
    const float first = one(silence, 1)[0];
    one(std::vector<float>(50, 0.9f));
    set(0, tube, 0.5f);
    bank.setType(0, soft);
    EXPECT_GT(std::fabs(one(silence)[0]), 0.03f);
    EXPECT_LT(std::fabs(first), 0.001f);
    one(std::vector<float>(50, 0.9f));
    bank.reset(0);
    EXPECT_EQ(one(silence)[0], first);
}

TEST_F(DistortionBankTest, ARunOfNoSamplesChangesNothing) {
    for (int type = 0; type < distortionTypeCount; ++type) {
        set(0, type, 0.5f);
        fillWithNoise(0.4f);
        const std::vector<float> before(std::begin(buffer), std::end(buffer));
        bank.run(buffer, 0, 0xffff);
        EXPECT_TRUE(std::equal(before.begin(), before.end(), buffer));
    }
}

TEST_F(DistortionBankTest, AVoiceThatLosesItsNumbersIsSilentForARunAndRecovers) {
    for (int type = 2; type < distortionTypeCount; ++type) {
        if (distortionVariant(type) == 0 || type == noise || type == noiseRm || type == degrade) continue;
        for (const float poison : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
            DistortionBank fresh(random);
            for (const int voice : {4, 5}) {
                fresh.setType(voice, type);
                fresh.setDrive(voice, 0.5f);
            }
            const auto sounds = [this](int voice, int count) {
                bool any = false;
                for (int i = 0; i < count; ++i) any = any || at(i, voice) != 0.0f;
                return any;
            };
            fillWithNoise(0.05f);
            at(39, 4) = poison;
            fresh.run(buffer, 40, 0x30);
            EXPECT_FALSE(sounds(4, 40)) << "type " << type;
            EXPECT_TRUE(sounds(5, 40)) << "type " << type;
            fillWithNoise(0.05f);
            fresh.run(buffer, 40, 0x30);
            for (int i = 0; i < 40; ++i) ASSERT_TRUE(std::isfinite(at(i, 4))) << "type " << type;
            EXPECT_TRUE(sounds(4, 40)) << "type " << type;
        }
    }
}

// Signals that could drive a loop astray, at the rates of every host.
TEST_F(DistortionBankTest, StaysFiniteAndBoundedWhateverComesIn) {
    constexpr int count = 256;
    for (const float rate : testing_effects::everyRate()) {
        for (int type = 0; type < distortionTypeCount; ++type) {
            DistortionBank fresh(random);
            fresh.setSampleRate(rate);
            for (int voice = 0; voice < voiceCount; ++voice) {
                fresh.setType(voice, type);
                fresh.setDrive(voice, static_cast<float>(voice) * 0.1f - 0.2f);  // beyond 0 to 1 as modulation may go
            }
            for (const float level : {0.0f, 1.0f, 40.0f, 1e-30f, 1e-41f}) {
                for (int i = 0; i < count; ++i)
                    for (int voice = 0; voice < voiceCount; ++voice)
                        at(i, voice) = voice % 2 == 0 ? (i / 20 % 2 == 0 ? level : -level) : (i == 3 ? level : 0.0f);
                for (int round = 0; round < 3; ++round) fresh.run(buffer, count, 0xffff);
                for (int k = 0; k < count * voiceCount; ++k)
                    ASSERT_LT(std::fabs(buffer[k]), 1e5f) << "type " << type << " level " << level << " rate " << rate;
            }
        }
    }
}

TEST_F(DistortionBankTest, AGatedTypeSetsInJustAboveATenThousandth) {
    const std::vector<float> x = sine(200, 0.3f, 500.0f);
    for (const int type : {tube, soft, asym, crush}) {
        set(0, type, std::nextafter(0.0001f, 1.0f));
        EXPECT_NE(one(x), x) << type;
    }
}

}  // namespace
}  // namespace vantoric
