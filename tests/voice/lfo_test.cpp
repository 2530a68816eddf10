#include "voice/lfo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace vantoric {
namespace {

constexpr int freeMode = 0, freeBpm = 1, triggerBpm = 2, triggerMode = 3, key100 = 7, mono = 8, monoBpm = 9;

Lfo started(int mode, const Lfo::Start& start) {
    Lfo lfo;
    lfo.noteOn(mode, start, 1, nullptr);
    return lfo;
}

void run(Lfo& lfo, int ticks) {
    for (int i = 0; i < ticks; ++i) lfo.step();
}

TEST(Lfo, FreeVoicesStartedAtDifferentTimesShareOnePhase) {
    for (int mode : {freeMode, freeBpm}) {
        Lfo::Start start{.wave = 4, .speed = 0.4, .startPhase = 0.2f, .tempo = 130.0, .songPosition = 1.5};
        Lfo early = started(mode, start);
        const int later = 700;
        run(early, later);
        start.songPosition += later * 0.001 * start.tempo / 60.0;  // the transport ran on
        Lfo late = started(mode, start);
        EXPECT_NEAR(std::remainder(late.phase - early.phase, 1.0), 0.0, 1e-4) << mode;
    }
}

TEST(Lfo, FreeStartsAtTheStartPhaseWhileTheTransportStands) {
    for (int note = 0; note < 3; ++note) {
        const Lfo lfo = started(freeMode, {.wave = 2, .speed = 0.7, .startPhase = 0.25f, .songPosition = 0.0});
        EXPECT_DOUBLE_EQ(lfo.phase, 0.25);
    }
}

TEST(Lfo, FadeUpToTheThresholdHasFullDepthAtOnce) {
    Lfo lfo = started(triggerMode, {.wave = 6, .fade = 0.01f});
    lfo.step();
    EXPECT_DOUBLE_EQ(lfo.fadeLevel, 1.0);
    EXPECT_DOUBLE_EQ(lfo.output, 0.893);
    Lfo fading = started(triggerMode, {.wave = 6, .fade = 0.5f});
    fading.step();
    EXPECT_LT(fading.fadeLevel, 0.01);
    EXPECT_NEAR(fading.output, 0.5, 0.01);
}

TEST(Lfo, FadeInGoesFromTheMiddleToTheTop) {
    Lfo lfo = started(triggerMode, {.wave = 14, .fade = 0.3f});
    lfo.step();
    EXPECT_NEAR(lfo.output, 0.5, 0.05);
    double last = lfo.output;
    for (int i = 0; i < 300; ++i) {
        lfo.step();
        EXPECT_GE(lfo.output, last);
        last = lfo.output;
    }
    EXPECT_DOUBLE_EQ(last, 1.0);
}

TEST(Lfo, HighStartPhaseIsRandomUnlessFree) {
    Lfo lfo;
    std::set<double> phases;
    for (int i = 0; i < 8; ++i) {
        lfo.noteOn(triggerMode, {.wave = 2, .startPhase = 0.995f}, 1, nullptr);
        phases.insert(lfo.phase);
    }
    EXPECT_EQ(phases.size(), 8u);
    const std::uint32_t seed = lfo.seed.state;
    lfo.noteOn(freeMode, {.wave = 2, .startPhase = 0.995f}, 1, nullptr);
    EXPECT_FLOAT_EQ(static_cast<float>(lfo.phase), 0.995f);
    EXPECT_EQ(lfo.seed.state, seed);
}

TEST(Lfo, AStartPhaseAtTheThresholdIsJustAPhase) {
    EXPECT_EQ(started(triggerMode, {.wave = 2, .startPhase = 0.99f}).phase, static_cast<double>(0.99f));
}

TEST(Lfo, ATriggerOfACycleClearsTheMemoriesOfARandomWave) {
    constexpr int randomRamp = 9, sine = 2;
    Lfo lfo = started(triggerMode, {.wave = randomRamp, .speed = 0.8});
    run(lfo, 500);
    ASSERT_NE(lfo.heldB, 0.5);
    lfo.retrigger(triggerMode, {.wave = sine});
    EXPECT_EQ(lfo.heldA, 0.0);
    EXPECT_EQ(lfo.heldB, 0.5);
    EXPECT_EQ(lfo.previousPhase, 0.99999);
    EXPECT_EQ(lfo.output, 0.5);
}

TEST(Lfo, TempoChangeReachesASyncedRateOnlyByTriggerOrSpeed) {
    Lfo::Start start{.wave = 2, .speed = 0.5, .tempo = 120.0};
    Lfo lfo = started(triggerBpm, start);
    const double rate = lfo.rate;
    EXPECT_NEAR(rate, 120.0 / 60.0 / 1000.0, 1e-12);
    lfo.setSpeed(0.5);
    run(lfo, 10);
    EXPECT_DOUBLE_EQ(lfo.rate, rate);
    lfo.setSpeed(0.6);  // still by the tempo of the trigger
    EXPECT_NEAR(lfo.rate, 2.0 * rate, 1e-12);
    start.tempo = 60.0;
    lfo.retrigger(triggerBpm, start);
    EXPECT_NEAR(lfo.rate, rate / 2.0, 1e-12);
}

TEST(Lfo, RateCurveReachesFromASixteenthToFourHundredAndFortyHertz) {
    EXPECT_NEAR(started(triggerMode, {.wave = 2, .speed = 0.0}).rate * 1000.0, 0.0625, 1e-9);
    EXPECT_NEAR(started(triggerMode, {.wave = 2, .speed = 0.5}).rate * 1000.0, 5.29, 0.06);
    EXPECT_NEAR(started(triggerMode, {.wave = 2, .speed = 1.0}).rate * 1000.0, 440.0, 3.0);
}

TEST(Lfo, FullKeyAmountDoublesTheRateEveryOctave) {
    const double low = started(key100, {.wave = 2, .note = 60}).rate;
    const double high = started(key100, {.wave = 2, .note = 72}).rate;
    EXPECT_NEAR(high / low, 2.0, 0.01);
}

TEST(Lfo, MonoTakesOverTheStateOfTheOldestVoice) {
    Lfo oldest = started(mono, {.wave = 8, .speed = 0.8});
    run(oldest, 333);
    Lfo lfo;
    lfo.noteOn(mono, {.wave = 8, .speed = 0.8}, 2, &oldest);
    EXPECT_EQ(lfo.seed.state, oldest.seed.state);
    for (int i = 0; i < 200; ++i) {
        lfo.step();
        oldest.step();
        ASSERT_DOUBLE_EQ(lfo.output, oldest.output);
    }
}

TEST(Lfo, MonoStartsPlainlyAlone) {
    Lfo other = started(mono, {.wave = 4});
    run(other, 100);
    Lfo lfo;
    lfo.noteOn(mono, {.wave = 4, .startPhase = 0.3f, .songPosition = 7.7}, 1, &other);
    EXPECT_FLOAT_EQ(static_cast<float>(lfo.phase), 0.3f);
    lfo.noteOn(monoBpm, {.wave = 4, .startPhase = 0.4f, .songPosition = 7.7}, 5, nullptr);
    EXPECT_FLOAT_EQ(static_cast<float>(lfo.phase), 0.4f);
}

TEST(Lfo, MonoRunsOnAtARetrigger) {
    Lfo lfo = started(mono, {.wave = 4});
    run(lfo, 77);
    const double phase = lfo.phase;
    lfo.retrigger(mono, {.wave = 4});
    EXPECT_DOUBLE_EQ(lfo.phase, phase);
    lfo.retrigger(triggerMode, {.wave = 4});
    EXPECT_DOUBLE_EQ(lfo.phase, 0.0);
}

TEST(Lfo, OffKeepsTheOutputAtRest) {
    Lfo lfo = started(triggerMode, {.wave = 0, .speed = 0.9});
    run(lfo, 50);
    EXPECT_DOUBLE_EQ(lfo.output, 0.5);
}

TEST(Lfo, EveryWaveStaysFiniteUnderAbsurdSpeeds) {
    for (int wave = 0; wave < 33; ++wave) {
        Lfo lfo = started(key100, {.wave = wave, .speed = 1.0, .note = 127, .songPosition = -3.25});
        for (double speed : {16.0, -16.0, 200.0, 0.3}) {
            lfo.setSpeed(speed);
            for (int i = 0; i < 100; ++i) {
                lfo.step();
                ASSERT_TRUE(std::isfinite(static_cast<float>(lfo.output))) << wave;
                ASSERT_GE(lfo.phase, 0.0);
                ASSERT_LT(lfo.phase, 1.0);
            }
        }
    }
}

}  // namespace
}  // namespace vantoric
