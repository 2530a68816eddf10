#include "effects/chorus.h"

#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "effects/multieffect.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

constexpr float rate = 88200.0f;
constexpr float offset = 0.00001f;  // what the variants add against denormal numbers

enum Variant {
    flanger = 2,
    rotary = 3,
    chorus = 7,
    ensemble = 8,
    phaser = 9,
    phaserFb = 10,
    phaserStereo = 11,
    stereoFlanger = 12,
    chorusWhite = 13,
    vibrato = 14,
    vibratoStereo = 15,
    tremolo = 16,
    tremoloStereo = 17,
    chorusStandard = 18,
    hyperUnison = 19,
    haas = 20,
};
const std::vector<int> variants{2, 3, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};

// A family of its own with one variant and its five values.
struct Box {
    RandomSources random;
    Chorus effect{random};

    Box(int variant, std::vector<float> values, float sampleRate = rate) {
        effect.setSampleRate(sampleRate);
        effect.setVariant(variant);
        effect.reset();
        for (std::size_t i = 0; i < values.size(); ++i) effect.setParameter(static_cast<int>(i), values[i]);
    }
    Sound play(const Sound& signal, int block = 88) { return run(effect, signal, block); }
};

// Delay in samples of each output sample of a ramp, from a wet share m of it.
std::vector<double> delays(const std::vector<float>& out, double slope, double m) {
    std::vector<double> d;
    for (std::size_t n = 0; n < out.size(); ++n) {
        const double in = static_cast<double>(n) * slope;
        d.push_back(static_cast<double>(n) - (out[n] - in * (1.0 - m)) / m / slope);
    }
    return d;
}
double smallest(const std::vector<double>& values, std::size_t from) {
    return *std::min_element(values.begin() + static_cast<std::ptrdiff_t>(from), values.end());
}

constexpr float slope = 1e-5f;
constexpr double cubicDelay = 1.0;    // the four-point tap comes one sample after its delay
constexpr std::size_t filled = 4000;  // from here on every tap reads what was written

TEST(Chorus, AboveNineTenthsOfMixOneWalkerMovesBothSidesAndNoStaticDelayRemains) {
    Box box(chorus, {1.0f, 1.0f, 0.5f});
    const Sound out = box.play(ramp(60000, slope));
    const auto left = delays(out.left, slope, 1.0), right = delays(out.right, slope, 1.0);
    const double speed = 11.0, depth = (0.5 * 5512.5 + 2756.25) * rate / speed * 0.0000015625;
    for (std::size_t n = filled; n < left.size(); n += 50)
        EXPECT_NEAR(left[n] + right[n], depth + 0.004 * rate + 2.0 * cubicDelay, 0.1) << n;
    EXPECT_LT(smallest(right, filled), cubicDelay + 1.0);
}

TEST(Chorus, BelowItEachSideHasAWalkerAndItsStaticDelay) {
    Box box(chorus, {0.5f, 1.0f, 0.5f});
    const Sound out = box.play(ramp(60000, slope));
    const auto left = delays(out.left, slope, 0.5), right = delays(out.right, slope, 0.5);
    EXPECT_NEAR(smallest(left, filled), 0.011 * rate + cubicDelay, 0.5);
    EXPECT_NEAR(smallest(right, filled), 0.007 * rate + cubicDelay, 0.5);
    double lowest = 1e9, highest = 0.0;
    for (std::size_t n = filled; n < left.size(); ++n) {
        lowest = std::min(lowest, left[n] + right[n]);
        highest = std::max(highest, left[n] + right[n]);
    }
    EXPECT_GT(highest - lowest, 2.0);
}

TEST(Chorus, TheStaticDelaysGoAwayAboveNineTenthsAndNotBefore) {
    for (const auto& [mix, base] : {std::pair{0.9f, 0.007}, {0.91f, 0.0}}) {
        Box box(chorus, {mix, 1.0f, 0.5f});
        const auto right = delays(box.play(ramp(60000, slope)).right, slope, mix);
        EXPECT_NEAR(smallest(right, filled), base * rate + cubicDelay, 1.0) << mix;
    }
    for (const auto& [mix, base] : {std::pair{0.9f, 0.005}, {0.91f, 0.0}}) {
        Box box(ensemble, {mix, 1.0f, 0.0f});
        EXPECT_NEAR(onset(box.play(impulse(4000)).right, 0.2f), base * rate, 3.0) << mix;  // the dry impulse stays below
    }
}

TEST(Chorus, DetunesByTheSameCentsAtEverySpeed) {
    for (const float speed : {0.1f, 0.9f}) {
        Box box(chorus, {1.0f, speed, 0.5f});
        const auto d = delays(box.play(ramp(90000, slope)).left, slope, 1.0);
        const double nominal = (0.5 * 5512.5 + 2756.25) * 0.0000015625;  // change of delay in samples a sample
        double fastest = 0.0;
        for (std::size_t n = filled; n + 100 < d.size(); ++n) fastest = std::max(fastest, std::fabs(d[n + 100] - d[n]) / 100.0);
        const double cents = 1200.0 * std::log2(1.0 + fastest), plain = 1200.0 * std::log2(1.0 + nominal);
        EXPECT_GT(cents, plain * 0.98) << speed;
        EXPECT_LT(cents, plain * 1.27) << speed;
    }
}

TEST(Chorus, AResetRestartsTheEnsembleWithItsFixedSlopes) {
    Box one(ensemble, {1.0f, 0.5f, 0.5f}), other(ensemble, {1.0f, 0.5f, 0.5f});
    other.play(noise(30000));
    other.effect.reset();
    other.random.congruence.state = 123456;
    EXPECT_EQ(one.play(noise(3000)), other.play(noise(3000)));
}

TEST(Chorus, TheLeftWalkerOfAChorusDoesNotStartAtRandomEither) {
    Box one(chorus, {0.5f, 0.5f, 0.5f}), other(chorus, {0.5f, 0.5f, 0.5f});
    other.random.congruence.state = 123456;
    const Sound a = one.play(noise(3000)), b = other.play(noise(3000));
    EXPECT_EQ(a.left, b.left);
    EXPECT_NE(a.right, b.right);
}

// The wet output of a chain of `stages` allpasses of coefficient a.
std::vector<float> phased(const std::vector<float>& in, int stages, float a) {
    std::vector<AllpassStage<float>> chain(static_cast<std::size_t>(stages));
    std::vector<float> out;
    for (const float x : in) {
        float y = x + offset;
        for (auto& stage : chain) y = stage.step(y, a);
        out.push_back((y + x + offset) * 0.5f);
    }
    return out;
}
void expectNear(const std::vector<float>& got, const std::vector<float>& expected, float tolerance) {
    for (std::size_t n = 0; n < got.size(); ++n) ASSERT_NEAR(got[n], expected[n], tolerance) << n;
}

TEST(Phaser, ThePhaserHasUpToSixteenStages) {
    const Sound in = noise(500);
    for (const auto& [p3, stages] : {std::pair{1.0f, 16}, {0.0f, 2}, {0.5f, 8}}) {
        Box box(phaser, {1.0f, 0.5f, 0.0f, p3, 0.4f});
        const float a = phaserCoefficient(0.6f * 0.4f, rate);
        expectNear(box.play(in).right, phased(in.right, stages, a), 1e-5f);
    }
}

TEST(Phaser, WithoutFeedbackTheCentreIsThreeTenthsForTwoStagesAndHalfOfItForMore) {
    const Sound in = noise(500);
    for (const int variant : {phaserFb, phaserStereo})
        for (const auto& [p3, stages, center] : {std::tuple{0.0f, 2, 0.3f}, {0.5f, 6, 0.15f}, {1.0f, 12, 0.15f}}) {
            Box box(variant, {1.0f, 0.5f, 0.0f, p3, 0.5f});
            const float a = phaserCoefficient(center * 0.4f, rate);
            expectNear(box.play(in).left, phased(in.left, stages, a), 1e-5f);
        }
}

// Lowest frequency in Hz where the response of the settled effect to an impulse is least.
double notch(Box& box) {
    const std::vector<float> h = box.play(impulse(4096)).left;
    double best = 0.0, least = 1e9;
    for (double f = 30.0; f < 30000.0; f *= 1.02) {
        const double level = response(h, f / rate);
        if (level < least) least = level, best = f;
    }
    return best;
}

TEST(Phaser, ItsNotchFallsOverHalfACycleAndStandsWhereTheAllpassesTurnByAHalfCircle) {
    Box box(phaser, {1.0f, 0.0f, 1.0f, 0.0f, 0.8f});  // 0.05 Hz
    const auto expected = [](float u) {
        const double a = phaserCoefficient(u, rate);
        return std::acos(2.0 * a / (1.0 + a * a)) / (2.0 * M_PI) * rate;
    };
    const double high = notch(box);
    EXPECT_NEAR(high / expected(0.08f), 1.0, 0.03);
    box.play(Sound(static_cast<int>(rate * 10.0f) - 4096));
    const double low = notch(box);
    EXPECT_NEAR(low / expected(0.68f), 1.0, 0.03);
    EXPECT_LT(low, high * 0.1);
}

TEST(Phaser, TheSidesOfThePhaserStereoMoveAgainstOneAnother) {
    Box plain(phaserFb, {1.0f, 0.5f, 0.5f, 0.0f, 0.5f}), stereo(phaserStereo, {1.0f, 0.5f, 0.5f, 0.0f, 0.5f});
    const Sound a = plain.play(impulse(2000)), b = stereo.play(impulse(2000));
    EXPECT_EQ(a.left, a.right);
    EXPECT_EQ(a.left, b.left);
    EXPECT_NE(b.left, b.right);
}

TEST(Phaser, ItsCoefficientReachesMinusOneAt44100HertzAndNeverLeavesTheUnit) {
    EXPECT_FLOAT_EQ(phaserCoefficient(0.0f, 44100.0f), -1.0f);
    EXPECT_FLOAT_EQ(phaserCoefficient(0.0f, 88200.0f), -0.25f);
    for (const float sampleRate : {8000.0f, 16000.0f, 22050.0f, 44100.0f, 88200.0f, 192000.0f})
        for (float u = 0.0f; u < 1.3f; u += 0.01f) EXPECT_LE(std::fabs(phaserCoefficient(u, sampleRate)), 1.0f) << sampleRate;
    // At the edge it neither swells nor stays.
    Box box(phaser, {1.0f, 0.5f, 0.0f, 1.0f, 1.0f}, 44100.0f);
    Sound in = noise(200000, 0.5f, 100000);
    const Sound out = box.play(in);
    EXPECT_LT(peak(out.left, 0, 100000), 1.0f);
    EXPECT_LT(peak(out.left, 101000), 0.001f);
}

// Lowest points of the level of a constant input, in Hz.
double dipsPerSecond(const std::vector<float>& out) {
    int dips = 0;
    int first = -1, last = -1;
    for (std::size_t n = 1; n < out.size(); ++n)
        if (out[n - 1] >= 0.1f && out[n] < 0.1f) {
            first = first < 0 ? static_cast<int>(n) : first;
            last = static_cast<int>(n);
            ++dips;
        }
    return (dips - 1) * static_cast<double>(rate) / (last - first);
}

TEST(Tremolo, ItsRateIsTheOneShown) {
    for (const float p1 : {0.3f, 0.5f, 1.0f}) {
        Box box(tremolo, {1.0f, p1});
        EXPECT_NEAR(dipsPerSecond(box.play(constant(200000, 1.0f)).left), p1 * p1 * 23.0 + 0.25, 0.02) << p1;
    }
}

TEST(Tremolo, TheMixIsTheDepth) {
    for (const float mix : {0.0f, 0.25f, 1.0f}) {
        Box box(tremolo, {mix, 0.5f});
        const auto out = box.play(constant(40000, 1.0f)).left;
        EXPECT_NEAR(*std::min_element(out.begin(), out.end()), 1.0f - mix, 1e-3f);
        EXPECT_NEAR(*std::max_element(out.begin(), out.end()), 1.0f, 1e-3f);
    }
}

TEST(Tremolo, ItIgnoresTheOtherParametersAndShowsNothingForThem) {
    Box one(tremolo, {1.0f, 0.5f, 0.0f, 0.0f, 0.0f}), other(tremolo, {1.0f, 0.5f, 1.0f, 1.0f, 1.0f});
    EXPECT_EQ(one.play(noise(2000)), other.play(noise(2000)));
    RandomSources random;
    Multieffect slot(random);
    slot.setType(37);
    char text[effectTextSize];
    slot.getParameterDisplay(2, text);
    EXPECT_STREQ(text, "");
}

TEST(Tremolo, TheSidesOfTheStereoTremoloShareTheLevel) {
    Box box(tremoloStereo, {1.0f, 0.7f});
    const Sound out = box.play(constant(20000, 1.0f));
    for (int n = 0; n < out.count(); ++n) ASSERT_NEAR(out.left[n] + out.right[n], 1.0f, 1e-5f);
}

// Largest change of pitch of the left side, in cents.
double cents(Box& box) {
    const auto d = delays(box.play(ramp(60000, slope)).left, slope, 1.0);
    double fastest = 0.0;
    for (std::size_t n = filled; n + 40 < d.size(); ++n) fastest = std::max(fastest, std::fabs(d[n + 40] - d[n]) / 40.0);
    return 1200.0 * std::log2(1.0 + fastest);
}

TEST(Vibrato, ItsDepthInCentsDoesNotDependOnItsSpeed) {
    for (const float p1 : {0.1f, 0.5f})
        for (const float p2 : {0.25f, 1.0f}) {
            Box box(vibrato, {1.0f, p1, p2});
            EXPECT_NEAR(cents(box), 1200.0 * std::log2(1.0 + 0.024 * p2), 1.5) << p1 << " " << p2;
        }
}

TEST(Vibrato, BothSidesMoveTogetherOrAgainstOneAnother) {
    Box plain(vibrato, {1.0f, 0.5f, 1.0f}), stereo(vibratoStereo, {1.0f, 0.5f, 1.0f});
    const Sound a = plain.play(ramp(20000, slope)), b = stereo.play(ramp(20000, slope));
    EXPECT_EQ(a.left, a.right);
    const double excursion = 6.0 * rate / 6.0 * 0.001;
    const auto left = delays(b.left, slope, 1.0), right = delays(b.right, slope, 1.0);
    for (std::size_t n = filled; n < left.size(); n += 100) EXPECT_NEAR(left[n] + right[n], excursion + 2.0 * cubicDelay, 0.05);
}

TEST(HyperUnison, WithoutWidthBothSidesAreTheSame) {
    for (const float size : {0.0f, 0.3f, 0.6f, 1.0f}) {
        Box box(hyperUnison, {0.8f, 0.7f, size, 0.4f, 0.0f});
        const Sound out = box.play(noise(6000));
        EXPECT_EQ(out.left, out.right);
    }
}

TEST(HyperUnison, EverySizeAddsATapASideAndLowersTheLevel) {
    const float gains[] = {0.25f, 0.4f, 0.45f, 0.5f};
    for (int size = 0; size < 4; ++size) {
        Box box(hyperUnison, {1.0f, 0.5f, (static_cast<float>(size) + 0.5f) / 4.0f, 0.5f, 1.0f});
        const Sound out = box.play(constant(12000, 0.1f));
        const float expected = static_cast<float>(size + 2) * (1.0f - gains[size]) * 0.1f;
        EXPECT_NEAR(out.left.back(), expected, 1e-3f) << size;
        EXPECT_NEAR(out.right.back(), expected, 1e-3f) << size;
    }
}

TEST(Haas, WithoutDelayNeitherSideIsLate) {
    for (const float side : {0.0f, 1.0f}) {
        Box box(haas, {1.0f, 0.0f, side});
        const Sound in = noise(500), out = box.play(in);
        expectNear(out.left, in.left, 1.1f * offset);
        expectNear(out.right, in.right, 1.1f * offset);
    }
}

TEST(Haas, OneSideIsLateByUpToFortyMilliseconds) {
    for (const float sampleRate : {44100.0f, 88200.0f, 192000.0f})
        for (const float p1 : {0.2601f, 0.5f, 1.0f}) {
            const int late = static_cast<int>(p1 * 0.04f * sampleRate);
            Box left(haas, {1.0f, p1, 0.49f}, sampleRate), right(haas, {1.0f, p1, 0.5f}, sampleRate);
            const Sound a = left.play(impulse(8000)), b = right.play(impulse(8000));
            EXPECT_EQ(onset(a.left), late);
            EXPECT_EQ(onset(a.right), 0);
            EXPECT_EQ(onset(b.left), 0);
            EXPECT_EQ(onset(b.right), late);
        }
}

TEST(Chorus, ADryMixPassesTheInput) {
    for (const int variant : variants) {
        if (variant == hyperUnison) continue;  // passes the middle of both sides too
        Box box(variant, {0.0f, 0.5f, 0.5f, 0.5f, 0.5f});
        const Sound in = noise(1000);
        const Sound out = box.play(in);
        expectNear(out.left, in.left, 1e-6f);
        expectNear(out.right, in.right, 1e-6f);
    }
}

TEST(Rotary, ItsSlowPhaseStepsOnceABlock) {
    Box one(rotary, {1.0f, 0.5f, 1.0f, 1.0f, 1.0f}), other(rotary, {1.0f, 0.5f, 1.0f, 1.0f, 1.0f});
    EXPECT_NE(one.play(noise(4000), 88), other.play(noise(4000), 880));
}

TEST(ChorusStandard, KeepsTheLevelOfAConstant) {
    for (const float mix : {0.0f, 0.5f, 1.0f}) {
        Box box(chorusStandard, {mix, 0.5f, 0.5f});
        const float gain = mix <= 0.5f ? mix + 1.0f : 1.5f - (mix - 0.5f);
        EXPECT_NEAR(box.play(constant(6000, 0.1f)).left.back(), 0.1f * gain, 1e-5f);
    }
}

class EveryChorusVariant : public ::testing::TestWithParam<int> {};

// The rotary cabinet's slow phase steps once a call if it is not told otherwise.
TEST_P(EveryChorusVariant, BlockLengthDoesNotMatter) {
    const std::vector<float> values{0.7f, 0.6f, 0.8f, 0.55f, 0.8f};
    Box whole(GetParam(), values), single(GetParam(), values), odd(GetParam(), values);
    for (Box* box : {&whole, &single, &odd}) box->effect.setSweepStep(64);
    const Sound out = whole.play(noise(3000), 3000);
    EXPECT_EQ(out, single.play(noise(3000), 1));
    EXPECT_EQ(out, odd.play(noise(3000), 97));
}

TEST_P(EveryChorusVariant, AResetLeavesNothingBehind) {
    const std::vector<float> values{0.7f, 0.6f, 0.8f, 0.55f, 0.8f};
    Box fresh(GetParam(), values), used(GetParam(), values);
    used.play(noise(100000));
    for (int again = 0; again < 3; ++again) {
        used.play(noise(2500));
        used.effect.reset();
    }
    used.random = fresh.random;
    EXPECT_EQ(fresh.play(noise(40000)), used.play(noise(40000)));
}

TEST_P(EveryChorusVariant, StaysInBoundsAtEveryRateForEveryInput) {
    const std::vector<std::vector<float>> settings{{1.0f, 0.5f, 0.5f, 0.5f, 0.5f},
                                                   {1.0f, 1.0f, 1.0f, 1.0f, 1.0f},
                                                   {1.0f, 0.0f, 0.0f, 0.0f, 0.0f},
                                                   {1.0f, 0.0f, 1.0f, 1.0f, 0.0f}};
    for (const float sampleRate : everyRate())
        for (const auto& values : settings)
            for (const Sound& in : {impulse(6000), Sound(6000), noise(6000, 1.0f), constant(6000, 1e-40f)}) {
                Box box(GetParam(), values, sampleRate);
                const Sound out = box.play(in);
                // NaN fails this comparison too.
                for (int n = 0; n < out.count(); ++n)
                    ASSERT_TRUE(std::fabs(out.left[n]) < 40.0f && std::fabs(out.right[n]) < 40.0f) << sampleRate << " " << n;
            }
}

TEST_P(EveryChorusVariant, HoldsValuesFromOutsideTheirRange) {
    Box wild(GetParam(), {5.0f, -3.0f, 1e30f, NAN, -INFINITY}), held(GetParam(), {1.0f, 0.0f, 1.0f, 0.0f, 0.0f});
    EXPECT_EQ(wild.play(noise(1000)), held.play(noise(1000)));
}

TEST_P(EveryChorusVariant, SilenceBecomesNearSilence) {
    Box box(GetParam(), {1.0f, 0.5f, 0.5f, 0.5f, 0.5f});
    const Sound out = box.play(Sound(20000));
    EXPECT_LT(peak(out.left), 0.001f);
    EXPECT_LT(peak(out.right), 0.001f);
}

TEST_P(EveryChorusVariant, AnEmptyBlockDoesNothing) {
    Box one(GetParam(), {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}), other(GetParam(), {1.0f, 0.5f, 0.5f, 0.5f, 0.5f});
    one.play(noise(500));
    other.play(noise(500));
    one.effect.process(nullptr, nullptr, 0);
    one.effect.process(nullptr, nullptr, -1);
    EXPECT_EQ(one.play(noise(500)), other.play(noise(500)));
}

INSTANTIATE_TEST_SUITE_P(Chorus, EveryChorusVariant, ::testing::ValuesIn(variants));

}  // namespace
}  // namespace vantoric
