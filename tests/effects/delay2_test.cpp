#include "effects/delay2.h"

#include <cmath>
#include <vector>

#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

constexpr float rate = 88200.0f;

enum Variant {
    delay = 0,
    pingPong = 1,
    delayBand = 2,
    multitap = 3,
    echo = 4,
    delayDual = 5,
    delayDiffuse = 6,
    tapeDelay = 7,
    resonator = 8,
    delayFat = 9,
    reflections = 10,
    delayWide = 11,
    reverbGated = 12,
    reverbGatedEcho = 13,
    reverbReverse = 14,
};

struct Box {
    RandomSources random;
    Delay2 effect{random};

    Box(int variant, std::vector<float> values, float tempo = 120.0f, float sampleRate = rate) {
        effect.setSampleRate(sampleRate);
        effect.setTempo(tempo);
        effect.setVariant(variant);
        effect.reset();
        for (std::size_t i = 0; i < values.size(); ++i) effect.setParameter(static_cast<int>(i), values[i]);
    }
    Sound play(const Sound& signal, int block = 88) { return run(effect, signal, block); }
};

// A parameter in the middle of a note's place in the list.
float noteValue(int index) { return (static_cast<float>(index) + 0.5f) / 11.999f; }

TEST(Delay, EveryNoteComesInTimeWithTheSong) {
    for (const float tempo : {240.0f, 333.3f})
        for (int i = 0; i < 12; ++i) {
            const double seconds = noteBeats[static_cast<std::size_t>(i)] * 60.0 / tempo;
            for (const int variant : {delay, delayWide, tapeDelay}) {
                Box box(variant, {1.0f, noteValue(i), 0.5f, 0.0f, 0.0f}, tempo);
                const int came = onset(box.play(impulse(static_cast<int>(seconds * rate) + 50)).right, 0.005f);
                EXPECT_NEAR(came / rate, seconds, 3.0 / rate) << variant << " " << i << " " << tempo;
            }
        }
}

TEST(Delay, AtThreeHundredBeatsAnEighthIsTwentyFiveMilliseconds) {
    EXPECT_EQ(noteSamples(0.02f, 88200.0f, 300.0f), 2205);
    EXPECT_EQ(noteSamples(0.02f, 96000.0f, 300.0f), 2400);
    Box box(delay, {1.0f, 0.02f, 1.0f, 0.0f, 0.0f}, 300.0f);
    EXPECT_EQ(onset(box.play(impulse(3000)).left), 2205);
}

TEST(Delay, ALengthBeyondTheLineWraps) {
    Box box(delay, {1.0f, 1.0f, 1.0f, 0.0f, 0.0f}, 30.0f);  // four seconds
    EXPECT_EQ(onset(box.play(impulse(120000)).left), noteSamples(1.0f, rate, 30.0f) - (1 << 18));
}

TEST(Delay, ATempoOfNothingIsHarmless) {
    for (const float tempo : {0.0f, -1.0f, NAN, 1e-30f, 1e30f, INFINITY})
        for (int variant = delay; variant <= reverbReverse; ++variant) {
            Box box(variant, {1.0f, 0.5f, 0.5f, 0.5f, 0.5f}, tempo);
            EXPECT_LT(peak(box.play(noise(500)).left), 8.0f);
        }
}

TEST(Delay, WithoutFeedbackTheWetPathIsSilent) {
    Box box(delay, {1.0f, 0.02f, 0.0f, 0.3f, 0.5f}, 600.0f);
    const Sound out = box.play(noise(20000));
    EXPECT_LT(peak(out.left), 1e-4f);
    EXPECT_LT(peak(out.right), 1e-4f);
}

TEST(Delay, EachRepeatComesBackTurnedOver) {
    Box box(delay, {1.0f, 0.02f, 0.9f, 0.0f, 0.0f}, 600.0f);
    const int time = noteSamples(0.02f, rate, 600.0f);
    const auto out = box.play(impulse(5000)).left;
    EXPECT_GT(out[static_cast<std::size_t>(time)], 0.2f);
    EXPECT_LT(out[static_cast<std::size_t>(2 * time)], -0.05f);
}

TEST(Delay, TheBandKeepsTheMiddleOfTheSpectrum) {
    Box box(delayBand, {1.0f, 0.02f, 1.0f, 0.5f, 0.0f}, 600.0f);
    const auto echoOf = box.play(impulse(1500)).left;
    const double center = (0.125 * 10584.0 + 441.0) / (2.0 * M_PI);
    EXPECT_GT(response(echoOf, center / rate), 4.0 * response(echoOf, 20.0 / rate));
    EXPECT_GT(response(echoOf, center / rate), 4.0 * response(echoOf, 6000.0 / rate));
}

TEST(PingPong, TheEchoesOfTheLeftInputChangeSides) {
    Box box(pingPong, {1.0f, 0.02f, 0.7f, 0.0f, 0.0f}, 600.0f);
    const int time = noteSamples(0.02f, rate, 600.0f);
    const Sound out = box.play(impulse(10 * time, 1.0f, 0.0f));
    const auto heard = [&](const std::vector<float>& side, int at) { return peak(side, at * time - 20, at * time + 200); };
    for (const int at : {2, 4, 6}) EXPECT_GT(heard(out.right, at), 10.0f * heard(out.left, at)) << at;
    for (const int at : {3, 5, 7}) EXPECT_GT(heard(out.left, at), 10.0f * heard(out.right, at)) << at;
}

TEST(PingPong, TheRightInputIsFirstHeardOnTheLeft) {
    Box box(pingPong, {1.0f, 0.02f, 0.7f, 0.0f, 0.0f}, 600.0f);
    const Sound out = box.play(impulse(4000, 0.0f, 1.0f));
    EXPECT_NEAR(onset(out.left), noteSamples(0.02f, rate, 600.0f), 2);
    EXPECT_NEAR(onset(out.right), 2 * noteSamples(0.02f, rate, 600.0f), 2);
}

TEST(Multitap, StepsStandAtEighthsOfTheLine) {
    Box box(multitap, {1.0f, 0.1f, 0.3f, 10.5f / 19.999f, 0.0f}, 600.0f);  // "Fall"
    const int length = 4 * noteSamples(0.02f, rate, 600.0f);
    const auto out = box.play(impulse(length)).left;
    EXPECT_GT(out[1], 0.5f);
    for (int i = 1; i < 8; ++i) {
        const int at = i * length / 8 + 1;
        EXPECT_GT(std::fabs(out[static_cast<std::size_t>(at)]), 4.0f * std::fabs(out[static_cast<std::size_t>(at - 4)])) << i;
    }
}

TEST(Multitap, AStepWithoutWeightKeepsItsLfoWhereItIs) {
    // Before: steps 0, 2, 4 and 6 run. Then "Chaos" plays steps 1, 3 and 7 on the left, which have stood still.
    const auto values = [](float pattern) { return std::vector<float>{1.0f, 0.1f, 0.5f, pattern, 1.0f}; };
    Box before(multitap, values(0.025f), 900.0f), fresh(multitap, values(0.99f), 900.0f);
    before.play(Sound(30000));
    before.effect.setParameter(3, 0.99f);
    const Sound a = before.play(noise(20000)), b = fresh.play(noise(20000));
    float left = 0.0f, right = 0.0f;
    for (int n = 0; n < a.count(); ++n) {
        left = std::max(left, std::fabs(a.left[n] - b.left[n]));
        right = std::max(right, std::fabs(a.right[n] - b.right[n]));
    }
    EXPECT_LT(left, 1e-3f);
    EXPECT_GT(right, 0.05f);  // step 2 had moved
}

TEST(Multitap, FeedbackHardlyChangesTheLevelOfTheFirstTap) {
    for (const float p2 : {0.3f, 0.9f}) {
        Box box(multitap, {1.0f, 0.1f, p2, 0.025f, 0.0f}, 600.0f);
        const float feedback = p2 * p2 * 0.995f + 0.005f;
        EXPECT_NEAR(box.play(impulse(50)).left[1], feedback / (feedback + 0.01f) * (1.0f - quickDamping(120.0f, rate)), 1e-4f);
    }
}

TEST(Echo, TheTimesAreFreeAndShownInMilliseconds) {
    Box box(echo, {1.0f, 0.2f, 0.1f, 0.0f, 0.5f});
    const Sound out = box.play(impulse(8000));
    EXPECT_NEAR(onset(out.left), 0.04f * rate, 2.0f);
    EXPECT_NEAR(onset(out.right), 0.01f * rate, 2.0f);
}

TEST(Echo, InTheMiddleThereIsOneRepeatAndNoMore) {
    for (const float p4 : {0.44f, 0.45f, 0.5f, 0.55f, 0.56f}) {
        Box box(echo, {1.0f, 0.1f, 0.1f, 0.0f, p4});
        const auto out = box.play(impulse(8000)).left;
        EXPECT_GT(peak(out, 870, 1700), 0.1f) << p4;
        if (p4 < 0.45f || p4 > 0.55f)
            EXPECT_GT(peak(out, 1760), 0.1f) << p4;
        else
            EXPECT_LT(peak(out, 1760), 1e-4f) << p4;
    }
}

TEST(Echo, FeedbackIsStraightAboveTheMiddleAndCrossedBelow) {
    const Sound in = impulse(8000, 1.0f, 0.0f);
    const int time = static_cast<int>(0.01f * rate) + 1;
    Box straight(echo, {1.0f, 0.1f, 0.1f, 0.0f, 0.9f}), crossed(echo, {1.0f, 0.1f, 0.1f, 0.0f, 0.1f});
    const Sound a = straight.play(in), b = crossed.play(in);
    EXPECT_LT(a.left[2 * time], -0.01f);
    EXPECT_LT(peak(a.right), 1e-4f);
    EXPECT_LT(peak(b.left, 2 * time - 5, 3 * time - 5), 0.01f);
    EXPECT_LT(b.right[2 * time], -0.01f);
}

TEST(Echo, TheTailLastsAsLongForShortDelaysAsForLongOnes) {
    // Seconds until the echoes have fallen by 60 dB, from the gain of one round.
    const auto tail = [](float p1) {
        Box box(echo, {1.0f, p1, p1, 0.0f, 0.8f});
        const Sound out = box.play(impulse(160000));
        const double whole = energy(out.left, 0, out.count());
        double sum = 0.0;
        int n = 0;
        while (sum < 0.99 * whole) sum += static_cast<double>(out.left[n]) * out.left[n], ++n;
        return n;
    };
    const double ratio = static_cast<double>(tail(0.12f)) / tail(0.2f);
    EXPECT_GT(ratio, 0.4);
    EXPECT_LT(ratio, 2.5);
}

TEST(DelayDual, TheSidesHaveNotesOfTheirOwnAndFeedOneAnother) {
    Box box(delayDual, {1.0f, noteValue(0), noteValue(2), 0.0f, 0.8f}, 600.0f);
    const int left = noteSamples(noteValue(0), rate, 600.0f), right = noteSamples(noteValue(2), rate, 600.0f);
    const Sound out = box.play(impulse(6000, 1.0f, 0.0f));
    EXPECT_NEAR(onset(out.left, 0.05f), left, 4);
    EXPECT_NEAR(onset(out.right, 0.05f), left + right, 6);
}

TEST(DelayDiffuse, BothOutputsReadTheLeftLine) {
    Box leftOnly(delayDiffuse, {1.0f, 0.02f, 0.8f, 0.0f, 0.0f}, 600.0f);
    const Sound a = leftOnly.play(impulse(6000, 1.0f, 0.0f));
    EXPECT_EQ(a.left, a.right);
    EXPECT_GT(peak(a.left, 1000), 0.01f);
    Box rightOnly(delayDiffuse, {1.0f, 0.02f, 0.8f, 0.0f, 0.0f}, 600.0f);
    const Sound b = rightOnly.play(impulse(6000, 0.0f, 1.0f));
    EXPECT_LT(peak(b.left), 1e-4f);
    EXPECT_LT(peak(b.right), 1e-4f);
    Box moving(delayDiffuse, {1.0f, 0.02f, 0.8f, 0.0f, 1.0f}, 600.0f);
    const Sound c = moving.play(impulse(6000, 1.0f, 0.0f));
    EXPECT_NE(c.left, c.right);
}

TEST(TapeDelay, TheLoopSaturatesBelowItsCeilingAndDoesNotRunAway) {
    for (const float feedback : {0.25f, 1.0f}) {
        Box box(tapeDelay, {1.0f, 0.02f, feedback, 0.0f, 0.3f}, 960.0f);
        EXPECT_LT(peak(box.play(noise(60000, 1.0f)).left), 0.0625f / feedback + 1e-3f);
    }
}

TEST(TapeDelay, HissesFromADrawOfItsOwnForEachSide) {
    Box quiet(tapeDelay, {1.0f, 0.02f, 0.5f, 0.0f, 0.0f}), hissing(tapeDelay, {1.0f, 0.02f, 0.5f, 1.0f, 0.0f});
    EXPECT_LT(peak(quiet.play(Sound(4000)).left), 1e-4f);
    const Sound out = hissing.play(Sound(4000));
    EXPECT_GT(peak(out.left), 1e-3f);
    EXPECT_LT(peak(out.left), 0.02f);
    EXPECT_NE(out.left, out.right);
}

TEST(Resonator, RingsAtItsDelayOrAtHalfItsPitchByTheSignOfTheFeedback) {
    const float p1 = 0.05f;
    const double period = p1 * p1 * rate + 2.0;
    Box below(resonator, {1.0f, p1, 0.05f, 0.0f, 0.0f}), above(resonator, {1.0f, p1, 0.95f, 0.0f, 0.0f});
    const auto a = below.play(impulse(30000)).left, b = above.play(impulse(30000)).left;
    // Within the bandwidth of the loop around the pitch itself and around half of it.
    const auto strongest = [&](const std::vector<float>& out, double center) {
        double best = 0.0;
        for (double f = center * 0.97; f < center * 1.03; f *= 1.002) best = std::max(best, response(out, f));
        return best;
    };
    EXPECT_GT(strongest(a, 1.0 / period), 5.0 * strongest(a, 0.5 / period));
    EXPECT_GT(strongest(b, 0.5 / period), 5.0 * strongest(b, 1.0 / period));
}

TEST(DelayFat, WithoutMixTheInputComesAtSevenTenths) {
    Box box(delayFat, {0.0f, 0.02f, 0.5f, 0.5f, 0.5f}, 600.0f);
    const Sound in = noise(8000), out = box.play(in);
    for (int n = 0; n < in.count(); ++n) ASSERT_NEAR(out.left[n], in.left[n] * 0.7071f, 1e-6f);
}

TEST(Reflections, GrowWithTheSize) {
    Box small(reflections, {1.0f, 0.0f, 0.0f, 0.0f, 0.5f}), large(reflections, {1.0f, 1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_NEAR(onset(small.play(impulse(20000)).left), 30 * static_cast<int>(0.0054829936f * rate), 2);
    EXPECT_NEAR(onset(large.play(impulse(290000)).left), 30 * static_cast<int>(0.1041768636f * rate), 2);
}

TEST(DelayWide, TheLeftSideIsFifteenMillisecondsLate) {
    Box box(delayWide, {1.0f, 0.02f, 0.5f, 0.0f, 0.0f}, 600.0f);
    const Sound out = box.play(impulse(5000));
    EXPECT_EQ(onset(out.left) - onset(out.right), static_cast<int>(rate * 0.015f));
}

TEST(ReverbGated, TheTapsAreTheSameInEveryBlockAndFollowTheParameters) {
    Box box(reverbGated, {1.0f, 0.5f, 1.0f, 0.5f, 0.5f});
    const auto before = box.effect.gatedTaps();
    EXPECT_EQ(before.count, 16);
    box.play(noise(1000));
    EXPECT_EQ(box.effect.gatedTaps().distance, before.distance);
    EXPECT_NE(before.distance[0], before.distance[1]);
    box.effect.setParameter(2, 0.0f);
    EXPECT_EQ(box.effect.gatedTaps().count, 1);
    box.effect.setTempo(240.0f);
    EXPECT_NE(box.effect.gatedTaps().distance, before.distance);
}

TEST(ReverbGated, ItEndsWithItsNote) {
    Box box(reverbGated, {1.0f, 0.02f, 1.0f, 0.0f, 0.3f}, 600.0f);  // 1102 samples
    const Sound out = box.play(impulse(16000));
    EXPECT_GT(energy(out.left, 0, 3000), 0.001);
    EXPECT_LT(energy(out.left, 12000, 16000), 1e-5 * energy(out.left, 0, 3000));
}

TEST(ReverbGated, TheEchoComesANoteLater) {
    Box now(reverbGated, {1.0f, 0.3f, 1.0f, 0.0f, 0.0f}, 480.0f), later(reverbGatedEcho, {1.0f, 0.3f, 1.0f, 0.0f, 0.0f}, 480.0f);
    const int half = noteSamples(0.3f, rate, 480.0f) / 2;
    EXPECT_LT(onset(now.play(impulse(8000)).left, 1e-3f), half / 2);
    EXPECT_GT(onset(later.play(impulse(8000)).left, 1e-3f), half);
}

TEST(ReverbGated, TheReverseGrowsTowardsItsEnd) {
    Box plain(reverbGated, {1.0f, 0.7f, 1.0f, 0.0f, 0.0f}, 240.0f),
        reverse(reverbReverse, {1.0f, 0.7f, 1.0f, 0.0f, 0.0f}, 240.0f);
    const int length = noteSamples(0.7f, rate, 240.0f);
    const Sound a = plain.play(impulse(length)), b = reverse.play(impulse(length));
    const auto growth = [&](const Sound& s) { return energy(s.left, length * 3 / 4, length) / energy(s.left, 0, length / 4); };
    EXPECT_GT(growth(b), 5.0);
    EXPECT_LT(growth(a), 2.0);
}

class EveryDelayVariant : public ::testing::TestWithParam<int> {};

constexpr int longPlay = sanitized ? 30000 : 300000;  // longer than the lines

const std::vector<float> lively{0.7f, 0.05f, 0.8f, 0.55f, 0.8f};

TEST_P(EveryDelayVariant, BlockLengthDoesNotMatter) {
    Box whole(GetParam(), lively, 960.0f), single(GetParam(), lively, 960.0f), odd(GetParam(), lively, 960.0f);
    const Sound out = whole.play(noise(4000), 4000);
    EXPECT_EQ(out, single.play(noise(4000), 1));
    EXPECT_EQ(out, odd.play(noise(4000), 97));
}

TEST_P(EveryDelayVariant, AResetLeavesNothingBehind) {
    Box fresh(GetParam(), lively), used(GetParam(), lively);
    used.play(noise(longPlay));
    for (int again = 0; again < 3; ++again) {
        used.play(noise(2500));
        used.effect.reset();
    }
    used.random = fresh.random;
    EXPECT_EQ(fresh.play(noise(longPlay / 2)), used.play(noise(longPlay / 2)));
}

TEST_P(EveryDelayVariant, LinesLeftInAnotherVariantAreCleared) {
    for (const int other : {delayDiffuse, reflections, multitap}) {
        Box fresh(GetParam(), lively), used(other, lively);
        used.play(noise(longPlay));
        used.effect.setVariant(GetParam());
        used.effect.reset();
        used.random = fresh.random;
        EXPECT_EQ(fresh.play(noise(20000)), used.play(noise(20000))) << other;
    }
}

TEST_P(EveryDelayVariant, StaysInBoundsAtEveryRateForEveryInput) {
    const std::vector<std::vector<float>> settings{{1.0f, 0.02f, 0.5f, 0.5f, 0.5f},
                                                   {1.0f, 1.0f, 1.0f, 1.0f, 1.0f},
                                                   {1.0f, 0.0f, 0.0f, 0.0f, 0.0f},
                                                   {1.0f, 0.0f, 1.0f, 0.0f, 1.0f}};
    const float bound = GetParam() == resonator ? 400.0f : 40.0f;  // noise adds up in a loop that loses nothing
    for (const float sampleRate : everyRate())
        for (const auto& values : settings)
            for (const Sound& in : {impulse(5000), Sound(5000), noise(5000, 1.0f), constant(5000, 1e-40f)}) {
                Box box(GetParam(), values, 960.0f, sampleRate);
                const Sound out = box.play(in);
                // NaN fails this comparison too.
                for (int n = 0; n < out.count(); ++n)
                    ASSERT_TRUE(std::fabs(out.left[n]) < bound && std::fabs(out.right[n]) < bound) << sampleRate << " " << n;
            }
}

TEST_P(EveryDelayVariant, HoldsValuesFromOutsideTheirRange) {
    Box wild(GetParam(), {5.0f, -3.0f, 1e30f, NAN, -INFINITY}), held(GetParam(), {1.0f, 0.0f, 1.0f, 0.0f, 0.0f});
    EXPECT_EQ(wild.play(noise(1000)), held.play(noise(1000)));
}

TEST_P(EveryDelayVariant, AnEmptyBlockDoesNothing) {
    Box one(GetParam(), lively, 960.0f), other(GetParam(), lively, 960.0f);
    one.play(noise(500));
    other.play(noise(500));
    one.effect.process(nullptr, nullptr, 0);
    one.effect.process(nullptr, nullptr, -1);
    EXPECT_EQ(one.play(noise(500)), other.play(noise(500)));
}

class DelayInTime : public ::testing::TestWithParam<int> {};

TEST_P(DelayInTime, AChangeOfTempoMovesTheTapsAtOnceAndClearsNothing) {
    Box box(GetParam(), {1.0f, 0.02f, 0.8f, 0.3f, 0.2f}, 600.0f);
    box.play(noise(3000));
    box.effect.setTempo(700.0f);
    EXPECT_GT(peak(box.play(Sound(3000)).left), 0.01f);
}

INSTANTIATE_TEST_SUITE_P(Delay, EveryDelayVariant, ::testing::Range(0, 15));
INSTANTIATE_TEST_SUITE_P(Delay, DelayInTime,
                         ::testing::Values(delay, pingPong, delayBand, multitap, delayDual, delayDiffuse, tapeDelay, delayFat,
                                           delayWide, reverbGated, reverbGatedEcho, reverbReverse));

}  // namespace
}  // namespace vantoric
