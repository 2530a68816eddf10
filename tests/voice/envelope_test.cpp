#include "voice/envelope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/numbers.h"

namespace vantoric {
namespace {

struct Knobs {
    float attack = 0.0f, hold = 0.0f, decay = 0.0f, sustain = 0.5f, release = 0.0f, shape = 0.0f;
};

void tick(Envelope& envelope, const Knobs& k) {
    envelope.setup(k.attack, k.hold, k.decay, k.sustain, k.release, k.shape);
    envelope.step();
}

// Ticks until the envelope is in `state`, at most `limit`; -1 if it never gets there.
int ticksUntil(Envelope& envelope, const Knobs& k, int state, int limit = 5000) {
    for (int i = 1; i <= limit; ++i) {
        tick(envelope, k);
        if (envelope.state == state) return i;
    }
    return -1;
}

TEST(Envelope, IsIdleAfterConstruction) {
    const Envelope envelope;
    EXPECT_EQ(envelope.state, Envelope::Idle);
    EXPECT_EQ(envelope.phase, 1.0f);
    EXPECT_EQ(envelope.level, 0.0f);
    EXPECT_EQ(envelope.decay, 0.5f);
    EXPECT_EQ(envelope.decayStep, static_cast<float>(fastExp(-5.0)));
    EXPECT_EQ(envelope.holdStep, 1.0f);
}

TEST(Envelope, AttackBelowTheThresholdJumpsInTheFirstTick) {
    Envelope envelope;
    envelope.start();
    tick(envelope, {.attack = 0.049f});
    EXPECT_EQ(envelope.level, 1.0f);
    EXPECT_EQ(envelope.state, Envelope::Decay);
}

TEST(Envelope, AttackAtTheThresholdTakesAboutTwoTicks) {
    Envelope envelope;
    envelope.start();
    tick(envelope, {.attack = 0.05f});
    EXPECT_LT(envelope.level, 1.0f);
    EXPECT_EQ(envelope.state, Envelope::Attack);
    tick(envelope, {.attack = 0.05f});
    EXPECT_EQ(envelope.level, 1.0f);
}

TEST(Envelope, HoldAtTheThresholdIsNoHold) {
    Envelope envelope;
    envelope.start();
    tick(envelope, {.hold = 0.005f});
    EXPECT_EQ(envelope.state, Envelope::Decay);
}

TEST(Envelope, HoldJustAboveTheThresholdLastsTwoTicks) {
    const Knobs knobs{.hold = 0.0051f, .decay = 0.5f};
    Envelope envelope;
    envelope.start();
    tick(envelope, knobs);
    ASSERT_EQ(envelope.state, Envelope::Hold);
    EXPECT_EQ(ticksUntil(envelope, knobs, Envelope::Decay), 3);  // two of full phase steps, then the change
}

TEST(Envelope, HoldEndsAtTheTickThatFindsItsPhaseAtZero) {
    const Knobs knobs{.hold = 0.5f, .decay = 0.5f};
    Envelope envelope;
    envelope.start();
    tick(envelope, knobs);
    ASSERT_EQ(envelope.state, Envelope::Hold);
    envelope.phase = 0.0f;
    tick(envelope, knobs);
    EXPECT_EQ(envelope.state, Envelope::Decay);
}

TEST(Envelope, NoteOffInAnAttackWithHoldAtTheThresholdIsForgotten) {
    const Knobs knobs{.attack = 0.3f, .hold = 0.005f, .decay = 0.1f};
    Envelope envelope;
    envelope.start();
    tick(envelope, knobs);
    envelope.noteOff();
    EXPECT_EQ(envelope.releasePending, 1);
    EXPECT_GT(ticksUntil(envelope, knobs, Envelope::Sustain), 0);
    for (int i = 0; i < 50; ++i) tick(envelope, knobs);
    EXPECT_EQ(envelope.state, Envelope::Sustain);
}

TEST(Envelope, SustainOfExactlyZeroEndsByItself) {
    Envelope envelope;
    envelope.start();
    EXPECT_GT(ticksUntil(envelope, {.decay = 0.2f, .sustain = 0.0f}, Envelope::Idle), 0);
}

TEST(Envelope, SmallSustainLivesUntilNoteOff) {
    const Knobs knobs{.decay = 0.2f, .sustain = 0.001f, .release = 0.2f};
    Envelope envelope;
    envelope.start();
    EXPECT_EQ(ticksUntil(envelope, knobs, Envelope::Idle, 2000), -1);
    envelope.noteOff();
    EXPECT_GT(ticksUntil(envelope, knobs, Envelope::Idle), 0);
}

TEST(Envelope, NoteOffDuringHoldChangesNothingUntilTheHoldEnds) {
    const Knobs knobs{.hold = 0.3f, .release = 0.3f};
    Envelope released, kept;
    released.start();
    kept.start();
    tick(released, knobs);
    tick(kept, knobs);
    released.noteOff();
    while (kept.state == Envelope::Hold) {
        tick(released, knobs);
        tick(kept, knobs);
        EXPECT_EQ(released.level, kept.level);
    }
    EXPECT_EQ(released.state, Envelope::Release);
    EXPECT_EQ(released.level, 1.0f);
    tick(released, knobs);
    EXPECT_NEAR(released.level, 1.0f - released.releaseStep, 1e-6f);
}

TEST(Envelope, NoteOffDuringHoldIsForgottenByTheNextNote) {
    const Knobs knobs{.hold = 0.3f};
    Envelope envelope;
    envelope.start();
    tick(envelope, knobs);
    envelope.noteOff();
    envelope.start();
    EXPECT_GT(ticksUntil(envelope, knobs, Envelope::Hold), 0);
    while (envelope.state == Envelope::Hold) tick(envelope, knobs);
    EXPECT_EQ(envelope.state, Envelope::Decay);
}

TEST(Envelope, NoteOffInAnAttackWithoutHoldFallsFromTheLevelReached) {
    const Knobs knobs{.attack = 0.4f, .release = 0.4f};
    Envelope envelope;
    envelope.start();
    for (int i = 0; i < 5; ++i) tick(envelope, knobs);
    const float reached = envelope.level;
    ASSERT_LT(reached, 0.5f);
    envelope.noteOff();
    EXPECT_EQ(envelope.releaseLevel, reached);
    tick(envelope, knobs);
    EXPECT_LT(envelope.level, reached);
}

TEST(Envelope, RetriggeredReleaseContinuesTheAttackFromThePresentLevel) {
    const Knobs knobs{.attack = 0.4f, .decay = 0.2f, .sustain = 0.8f, .release = 0.4f};
    Envelope envelope;
    envelope.start();
    ticksUntil(envelope, knobs, Envelope::Sustain);
    envelope.noteOff();
    for (int i = 0; i < 10; ++i) tick(envelope, knobs);
    const float before = envelope.level;
    envelope.retrigger();
    EXPECT_EQ(envelope.state, Envelope::Attack);
    tick(envelope, knobs);
    EXPECT_NEAR(envelope.level, before + envelope.attackStep, 1e-6f);
}

TEST(Envelope, RetriggerLeavesAttackAndFadeAlone) {
    Envelope envelope;
    envelope.start();
    tick(envelope, {.attack = 0.4f});
    const float phase = envelope.phase;
    envelope.retrigger();
    EXPECT_EQ(envelope.phase, phase);
    envelope.fade();
    envelope.retrigger();
    EXPECT_EQ(envelope.state, Envelope::Fade);
}

TEST(Envelope, ReleaseOfZeroTakesOneTick) {
    const Knobs knobs{.release = 0.0f};
    Envelope envelope;
    envelope.start();
    ticksUntil(envelope, knobs, Envelope::Sustain);
    envelope.noteOff();
    EXPECT_EQ(envelope.releaseStep, 1.0f);
    tick(envelope, knobs);
    EXPECT_EQ(envelope.level, 0.0f);
    tick(envelope, knobs);
    EXPECT_EQ(envelope.state, Envelope::Idle);
}

TEST(Envelope, StolenVoiceFadesWithinFiftyOneTicks) {
    const Knobs knobs{.decay = 1.0f};
    Envelope envelope;
    envelope.start();
    tick(envelope, knobs);
    ASSERT_EQ(envelope.level, 1.0f);
    envelope.fade();
    EXPECT_LE(ticksUntil(envelope, knobs, Envelope::Idle), 51);
    EXPECT_EQ(envelope.level, 0.0f);
}

TEST(Envelope, ModulatedTimeActsOnTheRunningStage) {
    Knobs knobs{.decay = 0.8f, .sustain = 0.0f};
    Envelope envelope;
    envelope.start();
    for (int i = 0; i < 10; ++i) tick(envelope, knobs);
    ASSERT_EQ(envelope.state, Envelope::Decay);
    knobs.decay = 0.05f;
    EXPECT_LT(ticksUntil(envelope, knobs, Envelope::Idle), 6);
}

TEST(Envelope, ClampingReaderWritesTheLevelBack) {
    Envelope envelope;
    envelope.level = 1.25f;
    EXPECT_EQ(envelope.clampLevel(), 1.0f);
    EXPECT_EQ(envelope.level, 1.0f);
    envelope.level = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(envelope.clampLevel(), 0.0f);
}

}  // namespace
}  // namespace vantoric
