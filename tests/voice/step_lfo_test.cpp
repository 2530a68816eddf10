#include "voice/step_lfo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace vantoric {
namespace {

StepLfo withSteps(const StepLfo::Start& start, int mode) {
    StepLfo lfo;
    for (std::size_t i = 0; i < 16; ++i) lfo.steps[i] = static_cast<float>((i * 7) % 16) / 15.0f;
    lfo.noteOn(mode, start, 1, nullptr);
    return lfo;
}

TEST(StepLfo, EnvelopeHoldsItsLastStep) {
    LinearCongruence random;
    StepLfo lfo = withSteps({.shape = 5, .speed = 0.6, .stepCount = 0.2f}, StepLfo::EnvelopeMode);
    const auto last = static_cast<std::size_t>(lfo.stepCount - 1);
    for (int i = 0; i < 5000; ++i) lfo.advance();
    EXPECT_EQ(static_cast<std::size_t>(lfo.position), last);
    EXPECT_FLOAT_EQ(lfo.value(random), lfo.steps[last]);
    const double position = lfo.position;
    lfo.advance();
    EXPECT_DOUBLE_EQ(lfo.position, position);
}

TEST(StepLfo, StepCountReachesFromTwoToSixteen) {
    EXPECT_EQ(withSteps({.stepCount = 0.0f}, StepLfo::TriggerLoop).stepCount, 2);
    EXPECT_EQ(withSteps({.stepCount = 1.0f}, StepLfo::TriggerLoop).stepCount, 16);
    EXPECT_EQ(withSteps({.stepCount = -3.0f}, StepLfo::TriggerLoop).stepCount, 1);
    EXPECT_EQ(withSteps({.stepCount = 9.0f}, StepLfo::TriggerLoop).stepCount, 16);
}

TEST(StepLfo, FreeTakesItsPlaceFromTheSong) {
    const StepLfo lfo = withSteps({.speed = 0.45, .songPosition = 2.5}, StepLfo::FreeLoop);  // one cycle a beat
    EXPECT_DOUBLE_EQ(lfo.position, 10.0);
    EXPECT_DOUBLE_EQ(withSteps({.speed = 0.45, .songPosition = 2.5}, StepLfo::TriggerLoop).position, 0.0);
}

TEST(StepLfo, FreeAtTheFastestSpeedTakesItsPlaceFromTheSlowestRow) {
    const StepLfo lfo = withSteps({.speed = 1.0, .songPosition = 16.0}, StepLfo::FreeLoop);
    EXPECT_DOUBLE_EQ(lfo.position, 16.0 * 4.0 / 32.0);
    EXPECT_DOUBLE_EQ(lfo.increment, 16.0 * 120.0 / 15.0 / 1000.0);
}

TEST(StepLfo, MonoFollowsTheOldestVoiceIfThereIsOne) {
    StepLfo oldest = withSteps({.shape = 0, .speed = 0.5}, StepLfo::MonoLoop);
    for (int i = 0; i < 321; ++i) oldest.advance();
    StepLfo lfo;
    lfo.noteOn(StepLfo::MonoLoop, {.shape = 3, .speed = 0.9}, 2, &oldest);
    EXPECT_DOUBLE_EQ(lfo.position, oldest.position);
    EXPECT_DOUBLE_EQ(lfo.increment, oldest.increment);
    EXPECT_EQ(lfo.shape, 0);
    lfo.noteOn(StepLfo::MonoLoop, {.shape = 3, .speed = 0.9}, 2, nullptr);
    EXPECT_DOUBLE_EQ(lfo.position, 0.0);
    lfo.noteOn(StepLfo::MonoLoop, {.shape = 3, .speed = 0.9}, 1, &oldest);
    EXPECT_DOUBLE_EQ(lfo.position, 0.0);
}

TEST(StepLfo, MonoTakesOverAllButTheSteps) {
    for (const int mode : {StepLfo::FreeLoop, StepLfo::EnvelopeMode}) {
        const StepLfo oldest = withSteps({.shape = 5, .speed = 0.5, .stepCount = 0.2f, .tempo = 90.0}, mode);
        StepLfo lfo;
        lfo.steps.fill(0.25f);
        lfo.noteOn(StepLfo::MonoLoop, {.shape = 3, .speed = 0.9, .stepCount = 1.0f, .tempo = 130.0}, 2, &oldest);
        EXPECT_EQ(lfo.stepCount, oldest.stepCount);
        EXPECT_EQ(lfo.tempo, 90.0);
        EXPECT_EQ(lfo.freeRunning, mode == StepLfo::FreeLoop);
        EXPECT_EQ(lfo.oneShot, mode == StepLfo::EnvelopeMode);
        for (const float step : lfo.steps) EXPECT_EQ(step, 0.25f);
    }
}

TEST(StepLfo, EnvelopeNeverReachesItsLength) {
    StepLfo lfo = withSteps({.stepCount = 0.0f}, StepLfo::EnvelopeMode);
    lfo.position = 1.0;
    lfo.increment = 1.0;
    lfo.advance();
    EXPECT_EQ(lfo.position, 1.0);
}

TEST(StepLfo, TickRateOfZeroCountsAsAThousand) {
    EXPECT_DOUBLE_EQ(withSteps({.tickRate = 0.0}, StepLfo::TriggerLoop).increment,
                     withSteps({.tickRate = 1000.0}, StepLfo::TriggerLoop).increment);
}

TEST(StepLfo, SmoothStepsHoldTheirLevelsAwayFromTheBoundary) {
    LinearCongruence random;
    StepLfo lfo = withSteps({.shape = 1, .stepCount = 1.0f}, StepLfo::TriggerLoop);
    for (int step = 1; step < 15; ++step) {
        lfo.position = step + 0.5;
        EXPECT_FLOAT_EQ(lfo.value(random), lfo.steps[static_cast<std::size_t>(step)]);
        lfo.position = step;  // halfway through the crossfade
        EXPECT_FLOAT_EQ(lfo.value(random),
                        0.5f * (lfo.steps[static_cast<std::size_t>(step)] + lfo.steps[static_cast<std::size_t>(step - 1)]));
    }
}

TEST(StepLfo, SmoothLoopStartsFromTheSixteenthStepEvenIfItIsNotPlayed) {
    LinearCongruence random;
    StepLfo lfo = withSteps({.shape = 4, .stepCount = 0.2f}, StepLfo::TriggerLoop);
    lfo.position = 0.0;
    const float unplayed = lfo.steps[15], first = lfo.steps[0];
    EXPECT_FLOAT_EQ(lfo.value(random), (6.0f * unplayed + 10.0f * first) / 16.0f);
}

TEST(StepLfo, ChangedStepsAreHeardAtOnce) {
    LinearCongruence random;
    StepLfo lfo = withSteps({.shape = 2}, StepLfo::TriggerLoop);
    lfo.position = 3.5;
    lfo.steps[3] = 0.123f;
    EXPECT_FLOAT_EQ(lfo.value(random), 0.123f);
}

TEST(StepLfo, EveryShapeStaysInRangeAnywhere) {
    RandomSources random;
    for (int shape = 0; shape < 40; ++shape) {
        StepLfo lfo = withSteps({.shape = shape, .speed = 0.8, .stepCount = 0.7f}, StepLfo::FreeLoop);
        for (double position : {-1e9 - 0.3, -17.4, -1e-9, 0.0, 5.999999999, 1e9 + 0.7}) {
            lfo.position = position;
            for (int i = 0; i < 50; ++i) {
                const float v = lfo.value(random);
                ASSERT_GE(v, 0.0f) << shape;
                ASSERT_LE(v, 1.0f) << shape;
                lfo.advance();
            }
        }
    }
}

}  // namespace
}  // namespace vantoric
