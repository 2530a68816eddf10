#include "voice/pitch.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/math.h"

namespace vantoric {
namespace {

KeyIncrements keysAt88200() {
    KeyIncrements increments;
    double frequency = 523.2511306007598;  // of key 0, times 128
    for (float& increment : increments) {
        increment = static_cast<float>(frequency) * 0.0078125f / 88200.0f;
        frequency *= 1.059463094359;
    }
    return increments;
}
const KeyIncrements keys = keysAt88200();

TEST(Pitch, KeySixtyIsTheCBelowMiddleC) {
    EXPECT_NEAR(static_cast<double>(keys[60]) * 88200.0, 130.81, 0.01);
    EXPECT_NEAR(static_cast<double>(keys[72] / keys[60]), 2.0, 1e-6);
}

TEST(Pitch, HalfKeyFollowPlaysAllNotesAtTheReferenceKey) {
    for (int note = 0; note < 128; ++note) {
        EXPECT_EQ(keyTarget(keys, note, 0.5f), static_cast<double>(keys[60]));
        EXPECT_EQ(keyTargetOfMove(keys, note, 0.5f), static_cast<double>(keys[60]));
    }
}

TEST(Pitch, PartialKeyFollowActsOnlyAtNoteOn) {
    EXPECT_NEAR(keyTarget(keys, 72, 0.0f) / static_cast<double>(keys[60]), 0.5, 1e-4);  // reversed
    EXPECT_EQ(keyTargetOfMove(keys, 72, 0.0f), static_cast<double>(keys[72]));
    EXPECT_EQ(keyTarget(keys, 72, 0.98f), static_cast<double>(keys[72]));
    EXPECT_NE(keyTarget(keys, 72, 0.546f), static_cast<double>(keys[60]));
}

TEST(Pitch, NoGlideAtZeroSpeed) {
    EXPECT_EQ(glideFactor(0.0f), 1.0f);
    OscillatorPitch oscillator;
    oscillator.position = 0.001;
    oscillator.target = 0.002;
    oscillator.stepGlide(glideFactor(0.0f));
    EXPECT_EQ(oscillator.position, 0.002);
    EXPECT_EQ(smoothNote(40.0, 64, glideFactor(0.0f)), 64.0);
}

TEST(Pitch, SlowestGlideMovesAQuarterPercentOfTheWayPerTick) {
    const float factor = glideFactor(1.0f);
    EXPECT_NEAR(static_cast<double>(factor), 0.00254, 0.00001);
    OscillatorPitch oscillator;
    oscillator.position = static_cast<double>(keys[48]);
    oscillator.target = static_cast<double>(keys[72]);
    const double whole = std::log(oscillator.target / oscillator.position);
    const double from = oscillator.position;
    oscillator.stepGlide(factor);
    EXPECT_NEAR(std::log(oscillator.position / from) / whole, 0.0025, 0.0001);
}

TEST(Pitch, GlideFromNowhereStartsAtItsTarget) {
    OscillatorPitch oscillator;
    oscillator.target = 0.003;
    oscillator.stepGlide(glideFactor(0.7f));
    EXPECT_NEAR(oscillator.position, 0.003, 1e-8);
}

TEST(Pitch, RestedGlideGivesTheBitsOfAFullComputation) {
    const float factor = glideFactor(0.3f);
    OscillatorPitch oscillator;
    oscillator.position = static_cast<double>(keys[50]);
    oscillator.target = static_cast<double>(keys[61]);
    float position = keys[50];
    for (int tick = 0; tick < 1000; ++tick) {
        oscillator.stepGlide(factor);
        position = math::exp(factor * math::log(keys[61]) + (1.0f - factor) * math::log(position));
        ASSERT_EQ(oscillator.position, static_cast<double>(position)) << tick;
    }
    oscillator.target = static_cast<double>(keys[40]);  // a new key wakes it
    oscillator.stepGlide(factor);
    EXPECT_LT(oscillator.position, static_cast<double>(position));
}

TEST(Pitch, HeavyDriftTurnsAroundWithinItsPaces) {
    const Drift drift = Drift::forMicrotuning(3);
    LinearCongruence random{12345};
    OscillatorPitch oscillator;
    oscillator.startDrift(drift, random);
    EXPECT_EQ(std::fabs(oscillator.driftDirection), 0.001);
    int turns = 0;
    double direction = oscillator.driftDirection;
    for (int tick = 0; tick < 50000; ++tick) {
        oscillator.stepDrift(drift, random);
        ASSERT_LT(std::fabs(oscillator.driftPosition), 1.01);
        if (oscillator.driftDirection == direction) continue;
        ++turns;
        direction = oscillator.driftDirection;
        ASSERT_GE(std::fabs(direction), 0.0005 * 0.999);
        ASSERT_LE(std::fabs(direction), 0.002 * 1.001);
    }
    EXPECT_GT(turns, 10);
}

TEST(Pitch, NoDriftOutsideTheAnalogRows) {
    LinearCongruence random{1};
    OscillatorPitch oscillator;
    oscillator.driftPosition = 0.5;
    for (int index : {0, 4, 5, 6, 7, 8, 9, 10}) EXPECT_EQ(oscillator.stepDrift(Drift::forMicrotuning(index), random), 1.0);
    EXPECT_EQ(oscillator.driftPosition, 0.5);
    EXPECT_EQ(random.state, 1u);
}

TEST(Pitch, SteppedListsHoldAtTheirEnds) {
    EXPECT_EQ(octFactor(-4.0f), 0.0625);
    EXPECT_EQ(octFactor(0.5f), 1.0);
    EXPECT_EQ(octFactor(7.0f), 16.0);
    EXPECT_EQ(intervFactor(-1.0f), 1.0);
    EXPECT_EQ(intervFactor(2.0f), 1.75);
    EXPECT_EQ(semiFactor(std::nanf("")), 1.0);
    EXPECT_EQ(semiFactor(1.0f), 2.0);
    EXPECT_EQ(semiFactor(3.5f / 12.99f), 1.1892);  // a rounded constant, not a power
}

TEST(Pitch, UntouchedControlsLeaveTheKeyAlone) {
    OscillatorPitch oscillator;
    oscillator.jump(static_cast<double>(keys[69]));
    const double voice = voicePitchFactor(0.5f, 0.5f, 1.0, 1.0, 1.0);
    EXPECT_DOUBLE_EQ(voice, 1.0);
    EXPECT_DOUBLE_EQ(oscillatorIncrement(oscillator, {}, 1.0, voice), static_cast<double>(keys[69]));
}

TEST(Pitch, PitchDestinationsSpanHalfAnOctaveAndTwoPowersOfE) {
    OscillatorPitch oscillator;
    oscillator.jump(0.001);
    EXPECT_NEAR(oscillatorIncrement(oscillator, {.pitchOct = 1.0f}, 1.0, 1.0) / 0.001, std::sqrt(2.0), 1e-3);
    EXPECT_NEAR(oscillatorIncrement(oscillator, {.pitch = 1.0f}, 1.0, 1.0) / 0.001, std::exp(2.0), 1e-6);
    EXPECT_NEAR(voicePitchFactor(0.0f, 0.5f, 1.0, 1.0, 1.0), std::exp(-2.0), 1e-9);
}

}  // namespace
}  // namespace vantoric
