#include "effects/stereo.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

constexpr float rate = 88200.0f;

class StereoFamily : public ::testing::Test {
protected:
    void use(int variant, float mix, float p1, float p2 = 0.5f, float p3 = 0.5f, float p4 = 0.5f) {
        const float values[] = {mix, p1, p2, p3, p4};
        stereo.setSampleRate(rate);
        stereo.setVariant(variant);
        for (int index = 0; index < 5; ++index) stereo.setParameter(index, values[index]);
        stereo.reset();
    }
    void use(Stereo::Variant variant, float mix, float p1, float p2 = 0.5f, float p3 = 0.5f, float p4 = 0.5f) {
        use(static_cast<int>(variant), mix, p1, p2, p3, p4);
    }
    // The same input throughout; the last pair of samples that comes out.
    std::pair<float, float> hold(float left, float right, int count) {
        std::vector<float> l(static_cast<std::size_t>(count), left), r(static_cast<std::size_t>(count), right);
        stereo.process(l.data(), r.data(), count);
        return {l.back(), r.back()};
    }
    // Samples until the left envelope passes `bound`, upwards or downwards.
    int samplesUntil(float bound, float input) {
        const bool upwards = stereo.envelopeLeft() < bound;
        for (int i = 1; i < 1000000; ++i) {
            hold(input, input, 1);
            if ((stereo.envelopeLeft() < bound) != upwards) return i;
        }
        return -1;
    }
    // The gate's settled values while the song goes through the 32 steps of a pattern, as the table writes them.
    std::string spelled(double beatsPerPattern) {
        std::string signs;
        for (int step = 0; step < 32; ++step) {
            stereo.setTempo((step + 0.5) / 32.0 * beatsPerPattern, 120.0);
            const auto [left, right] = hold(1.0f, 1.0f, 2000);
            const float value = left + right;  // the colours of the sides add up to 2
            const int halvings = value < 0.01f ? 6 : static_cast<int>(std::lround(1.0f - std::log2(value)));
            signs += "#xo:,'_"[halvings];
        }
        return signs;
    }

    Stereo stereo;
};

using Compressor = StereoFamily;
using Trancegate = StereoFamily;
using SurroundEncode = StereoFamily;
using SurroundPan = StereoFamily;
using StereoWidth = StereoFamily;

TEST_F(Compressor, WithoutDepthPassesTheSignalUnchanged) {
    use(Stereo::Variant::compressor, 1.0f, 0.2f, 1.0f, 1.0f, 0.0f);
    for (const float x : {0.9f, -0.3f, 0.001f, -1.0f}) EXPECT_EQ(hold(x, -x, 500), std::pair(x, -x));
}

TEST_F(Compressor, WithThresholdZeroAndFullDepthIsSilent) {
    use(Stereo::Variant::compressor, 1.0f, 0.0f, 0.5f, 0.5f, 1.0f);
    for (const int count : {1, 10, 5000}) EXPECT_EQ(hold(0.8f, -0.5f, count), std::pair(0.0f, 0.0f));
}

TEST_F(Compressor, AtFullDepthHoldsASettledLevelToTheThreshold) {
    use(Stereo::Variant::compressor, 1.0f, 0.8f, 0.0f, 0.0f, 1.0f);
    const auto [left, right] = hold(0.9f, -0.6f, 100000);
    EXPECT_NEAR(left, 0.32f, 0.001f);  // 0.8 squared and halved
    EXPECT_NEAR(right, -0.32f, 0.001f);
}

TEST_F(Compressor, DepthBlendsTheLimitedWithTheDryLevel) {
    for (const float p4 : {0.04f, 0.25f, 0.64f}) {
        use(Stereo::Variant::compressor, 1.0f, 0.8f, 0.0f, 0.0f, p4);
        const float depth = std::sqrt(p4);
        EXPECT_NEAR(hold(0.8f, 0.8f, 100000).first, 0.32f * depth + 0.8f * (1.0f - depth), 0.001f);
    }
}

TEST_F(Compressor, LeavesWhatIsBelowTheThreshold) {
    use(Stereo::Variant::compressor, 1.0f, 0.8f, 0.0f, 0.0f, 1.0f);
    EXPECT_EQ(hold(0.31f, -0.2f, 100000), std::pair(0.31f, -0.2f));
}

// The envelope moves by half the rate in each sample: a twentieth of a second at 0, two seconds at 1.
TEST_F(Compressor, AttackTakesATwentiethOfASecondToTwoSeconds) {
    const float reached = 1.0f - std::exp(-1.0f);
    use(Stereo::Variant::compressor, 1.0f, 1.0f, 0.0f, 0.5f);
    EXPECT_NEAR(samplesUntil(reached, 1.0f), 2.0f / 40.0f * rate, 20.0f);
    use(Stereo::Variant::compressor, 1.0f, 1.0f, 1.0f, 0.5f);
    const float settled = 1.0f + 0.0000001f * 2.0f * rate;  // the offset weighs more the slower the rate
    EXPECT_NEAR(samplesUntil(reached * settled, 1.0f), 2.0f / 1.0f * rate, 1000.0f);
}

TEST_F(Compressor, ReleaseHasALawOfItsOwn) {
    use(Stereo::Variant::compressor, 1.0f, 1.0f, 0.0f, 0.5f);
    hold(1.0f, 1.0f, 100000);
    const float start = stereo.envelopeLeft();
    EXPECT_NEAR(samplesUntil(start * std::exp(-1.0f), 0.0f), 2.0f / 20.5f * rate, 30.0f);
}

TEST_F(Compressor, SilenceSettlesTheEnvelopeWhereItsOffsetHoldsIt) {
    use(Stereo::Variant::compressor, 1.0f, 1.0f, 0.0f, 0.0f);
    hold(0.0f, 0.0f, 100000);
    EXPECT_NEAR(stereo.envelopeLeft(), 0.0000001f * 2.0f * rate / 40.0f, 1e-5f);
}

TEST_F(Compressor, EachChannelHasAnEnvelopeOfItsOwn) {
    use(Stereo::Variant::compressor, 1.0f, 0.5f, 0.0f, 0.0f, 1.0f);
    EXPECT_EQ(hold(1.0f, 0.1f, 50000).second, 0.1f);
    EXPECT_GT(stereo.envelopeLeft(), 0.9f);
    EXPECT_LT(stereo.envelopeRight(), 0.11f);
}

TEST_F(Trancegate, HoldsOneStepWhileTheSongStandsStill) {
    use(Stereo::Variant::trancegate, 1.0f, 0.5f, 0.5f, 0.0f, 0.0f);
    stereo.setTempo(7.3, 120.0);
    const int step = stereo.gateStep();
    const auto settled = hold(1.0f, 1.0f, 1000);
    for (int call = 0; call < 200; ++call) EXPECT_EQ(hold(1.0f, 1.0f, 88), settled);
    EXPECT_EQ(stereo.gateStep(), step);
}

TEST_F(Trancegate, StepsWithTheSong) {
    use(Stereo::Variant::trancegate, 1.0f, 0.0f, 1.0f, 0.0f, 0.0f);
    for (int step = 0; step < 100; ++step) {
        stereo.setTempo((step + 0.01) / 32.0, 120.0);
        EXPECT_EQ(stereo.gateStep(), step % 32);
        stereo.setTempo((step + 0.99) / 32.0, 120.0);
        EXPECT_EQ(stereo.gateStep(), step % 32);
    }
}

TEST_F(Trancegate, HasFiveSpeeds) {
    const double speeds[] = {0.25, 0.375, 0.5, 0.75, 1.0};
    for (int i = 0; i < 5; ++i) {
        use(Stereo::Variant::trancegate, 1.0f, 0.0f, (static_cast<float>(i) + 0.5f) / 5.0f, 0.0f, 0.0f);
        stereo.setTempo(10.5 / 32.0 / speeds[i], 120.0);
        EXPECT_EQ(stereo.gateStep(), 10);
        stereo.setTempo(11.5 / 32.0 / speeds[i], 120.0);
        EXPECT_EQ(stereo.gateStep(), 11);
    }
}

TEST_F(Trancegate, PlaysItsPatternStepByStep) {
    const auto pattern = [](int index) { return (static_cast<float>(index) + 0.5f) / 22.0f; };
    use(Stereo::Variant::trancegate, 1.0f, pattern(6), 1.0f, 0.0f, 0.0f);
    EXPECT_EQ(spelled(1.0), "##__##__xx__##__xx__##__xx__##__");  // "Dotted"
    use(Stereo::Variant::trancegate, 1.0f, pattern(15), 1.0f, 0.0f, 0.0f);
    EXPECT_EQ(spelled(2.0), "##xxoo::,,''##xxoo::,,''##xxoo:_");  // "Echo 5", at half speed
    use(Stereo::Variant::trancegate, 1.0f, 1.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(spelled(8.0), "###x#_x_#_x_#_x_o_#_x_o_#_x_##xx");  // "Scramble 5", the last
}

TEST_F(Trancegate, OffsetShiftsByFourStepsAUnit) {
    for (int unit = 0; unit < 4; ++unit) {
        use(Stereo::Variant::trancegate, 1.0f, 0.0f, 1.0f, 0.0f, static_cast<float>(unit) * 0.33f);
        stereo.setTempo(26.5 / 32.0, 120.0);
        EXPECT_EQ(stereo.gateStep(), (26 + 4 * unit) % 32);
    }
}

TEST_F(Trancegate, LooksAheadAsSmoothingGrows) {
    use(Stereo::Variant::trancegate, 1.0f, 0.0f, 1.0f, 1.0f, 0.0f);
    stereo.setTempo(0.5 / 32.0, 120.0);
    EXPECT_EQ(stereo.gateStep(), 2);  // 0.05 beats are 1.6 steps on
}

TEST_F(Trancegate, HalfLevelsLeanLeftAndQuarterLevelsRight) {
    use(Stereo::Variant::trancegate, 1.0f, 13.5f / 22.0f, 1.0f, 0.0f, 0.0f);  // "Echo 3": ##xxoo
    const std::pair<float, float> levels[] = {{1.0f, 1.0f}, {0.7f, 0.3f}, {0.15f, 0.35f}};
    for (int i = 0; i < 3; ++i) {
        stereo.setTempo((2 * i + 0.5) / 16.0, 120.0);
        const auto [left, right] = hold(1.0f, 1.0f, 2000);
        EXPECT_NEAR(left, levels[i].first, 1e-4f);
        EXPECT_NEAR(right, levels[i].second, 1e-4f);
    }
}

TEST_F(Trancegate, SmoothingRoundsItsEdges) {
    for (const float p3 : {0.0f, 0.5f, 1.0f}) {
        use(Stereo::Variant::trancegate, 1.0f, 0.0f, 1.0f, p3, 0.0f);
        stereo.setTempo(0.0, 120.0);
        const float k = (std::pow(1.0f - p3, 4.0f) * 0.2f + 0.001f) * 44100.0f / rate;
        const int count = static_cast<int>(1.0f / k);
        EXPECT_NEAR(hold(1.0f, 1.0f, count).first, 1.0f - std::pow(1.0f - k, static_cast<float>(count)), 0.001f);
    }
}

TEST_F(Trancegate, MixLetsTheDrySignalThroughAClosedGate) {
    use(Stereo::Variant::trancegate, 0.75f, 0.0f, 1.0f, 0.0f, 0.0f);
    stereo.setTempo(2.5 / 32.0, 120.0);
    EXPECT_NEAR(hold(0.8f, 0.4f, 2000).first, 0.2f, 1e-6f);
}

TEST_F(Trancegate, StaysInsideItsPatternWhereverTheSongIs) {
    use(Stereo::Variant::trancegate, 1.0f, 0.3f, 1.0f, 0.2f, 1.0f);
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double position : {-4.0, -0.01, 1e9, -1e18, 1e300, infinity, -infinity, std::nan("")}) {
        stereo.setTempo(position, 120.0);
        EXPECT_GE(stereo.gateStep(), 0);
        EXPECT_LT(stereo.gateStep(), 32);
        EXPECT_TRUE(std::isfinite(hold(1.0f, 1.0f, 100).first));
    }
}

TEST_F(SurroundEncode, AtAQuarterLeavesTheRightOutputDryOnly) {
    use(Stereo::Variant::surroundEncode, 1.0f, 0.25f);
    EXPECT_EQ(hold(0.5f, -0.2f, 1).second, 0.0f);
    use(Stereo::Variant::surroundEncode, 0.4f, 0.25f);
    EXPECT_FLOAT_EQ(hold(0.5f, -0.2f, 1).second, -0.12f);
}

TEST_F(SurroundEncode, GoesAllTheWayRound) {
    const struct {
        float p1, left, right;
    } places[] = {{0.0f, 1, -1}, {0.25f, 1, 0}, {0.5f, 1, 1}, {0.75f, 0, 1}, {1.0f, -1, 1}};
    for (const auto& place : places) {
        use(Stereo::Variant::surroundEncode, 1.0f, place.p1);
        EXPECT_EQ(hold(0.5f, 0.25f, 3), std::pair(place.left * 0.75f, place.right * 0.75f)) << place.p1;
    }
}

TEST_F(SurroundPan, TurnsAtItsSpeed) {
    for (const float p1 : {0.2f, 1.0f}) {
        use(Stereo::Variant::surroundPan, 1.0f, p1);
        const float speed = p1 * p1 * 23.0f + 0.0625f;
        const int turn = static_cast<int>(std::ceil(rate / speed));
        // The right side starts a turn in opposite phase; the next turn starts the other way round.
        EXPECT_LT(hold(1.0f, 1.0f, turn / 100).second, 0.0f);
        hold(1.0f, 1.0f, turn);
        EXPECT_GT(hold(1.0f, 1.0f, 1).second, 0.0f);
        hold(1.0f, 1.0f, turn - 1);
        EXPECT_LT(hold(1.0f, 1.0f, 1).second, 0.0f);
    }
}

TEST_F(SurroundPan, FacesTheListenerHalfwayAtTwoThirdsOfItsLevel) {
    use(Stereo::Variant::surroundPan, 1.0f, 0.5f);
    const auto [left, right] = hold(0.5f, 0.5f, static_cast<int>(0.5f * rate / 5.8125f));
    EXPECT_NEAR(left, 0.666f * 0.6667f, 0.001f);
    EXPECT_NEAR(right, left, 0.001f);
}

TEST_F(SurroundPan, StartsInFullOnTheLeftAndBehindOnTheRight) {
    use(Stereo::Variant::surroundPan, 1.0f, 0.5f);
    const auto [left, right] = hold(0.5f, 0.5f, 1);
    EXPECT_NEAR(left, 0.666f, 0.001f);
    EXPECT_NEAR(right, -0.666f, 0.001f);
}

TEST_F(StereoWidth, InTheMiddlePassesUnchanged) {
    use(Stereo::Variant::stereoWidth, 1.0f, 0.5f);
    EXPECT_EQ(hold(0.7f, -0.3f, 10), std::pair(0.7f, -0.3f));
}

TEST_F(StereoWidth, GoesFromMonoToTheSideSignal) {
    use(Stereo::Variant::stereoWidth, 1.0f, 0.0f);
    EXPECT_EQ(hold(0.75f, -0.25f, 10), std::pair(0.25f, 0.25f));
    use(Stereo::Variant::stereoWidth, 1.0f, 1.0f);
    EXPECT_EQ(hold(0.75f, -0.25f, 10), std::pair(0.5f, -0.5f));
}

TEST_F(StereoWidth, SidesGrowAndTheMiddleShrinksInStraightLines) {
    for (const float p1 : {0.1f, 0.4f, 0.6f, 0.9f}) {
        use(Stereo::Variant::stereoWidth, 1.0f, p1);
        const auto [middle, same] = hold(0.5f, 0.5f, 1);
        EXPECT_NEAR(middle, p1 < 0.5f ? 0.5f : 1.0f - p1, 1e-6f);
        EXPECT_EQ(middle, same);
        EXPECT_NEAR(hold(0.5f, -0.5f, 1).first, p1 < 0.5f ? p1 : 0.5f, 1e-6f);
    }
}

TEST_F(StereoFamily, AResetClearsWhatItRemembers) {
    for (int variant = 0; variant < 5; ++variant) {
        use(variant, 0.9f, 0.3f, 0.4f, 0.6f, 0.8f);
        const auto fresh = hold(0.9f, -0.4f, 100);
        hold(0.9f, -0.4f, 20000);
        stereo.reset();
        EXPECT_EQ(stereo.envelopeLeft(), 0.0f);
        EXPECT_EQ(stereo.envelopeRight(), 0.0f);
        EXPECT_EQ(hold(0.9f, -0.4f, 100), fresh) << variant;
    }
}

TEST_F(StereoFamily, OtherVariantsPassAudioUnchanged) {
    for (const int variant : {-1, 5, 77}) {
        use(variant, 1.0f, 0.1f);
        EXPECT_EQ(hold(0.3f, -0.2f, 10), std::pair(0.3f, -0.2f));
    }
}

TEST_F(StereoFamily, MixZeroReturnsTheInput) {
    for (int variant = 0; variant < 5; ++variant) {
        use(variant, 0.0f, 0.3f, 0.4f, 0.6f, 0.8f);
        EXPECT_EQ(hold(0.9f, -0.4f, 1000), std::pair(0.9f, -0.4f)) << variant;
    }
}

TEST_F(StereoFamily, StaysFiniteAndBoundedAtEveryRateAndBlockLength) {
    const float amplitudes[] = {0.0f, 1.0f, 1e-40f};
    for (int variant = 0; variant < 5; ++variant)
        for (const float sampleRate : testing_effects::everyRate())
            for (const int block : {1, 63, 4096})
                for (const float amplitude : amplitudes)
                    for (const bool impulse : {false, true}) {
                        use(variant, 1.0f, 0.9f, 0.0f, 0.0f, 1.0f);
                        stereo.setSampleRate(sampleRate);
                        std::vector<float> left(4096), right(4096);
                        for (int i = 0; i < 4096; ++i) {
                            left[i] = !impulse ? (i / 50 % 2 == 0 ? amplitude : -amplitude) : i == 5 ? 1.0f : 0.0f;
                            right[i] = -left[i];
                        }
                        for (int at = 0; at < 4096; at += block) {
                            stereo.setTempo(at * 0.001, 120.0);
                            stereo.process(left.data() + at, right.data() + at, std::min(block, 4096 - at));
                        }
                        for (int i = 0; i < 4096; ++i) {
                            ASSERT_LE(std::fabs(left[i]), 2.0f) << variant << " " << sampleRate << " " << block;
                            ASSERT_LE(std::fabs(right[i]), 2.0f) << variant << " " << sampleRate << " " << block;
                        }
                    }
}

}  // namespace
}  // namespace vantoric
