// What an engine hands on to its parts, and what its resets clear. The parts themselves have tests of their own.
#include <gtest/gtest.h>

#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;

constexpr int effectDelay = 6, effectEcho = 48;
constexpr int soundAnalogBoost = 5, soundScientific = 8;

void preparePlain(EngineRig& rig) {
    rig.clearParameters();
    rig.plainLayer();
}

void setMaster(EngineRig& rig, int type, float mix, float firstTwo) {
    rig.setList(par::FxMaType, type);
    rig.set(par::FxMaMix, mix);
    rig.set(par::FxMaPar1, firstTwo);
    rig.set(par::FxMaPar1 + 1, firstTwo);
}

// Frames until a note comes back from a wet master effect, at 48 kHz.
int masterEchoOf(int type, float firstTwo, double tempo) {
    EngineRig rig;
    preparePlain(rig);
    setMaster(rig, type, 1.0f, firstTwo);
    rig.host.tell(tempo, 1.0);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    for (int i = 0; i < 200; ++i) rig.block(256);
    for (std::size_t i = 0; i < rig.left.size(); ++i)
        if (std::fabs(rig.left[i]) > 0.01f) return static_cast<int>(i);
    return -1;
}

TEST(EngineParts, TheMasterEffectKnowsTheRateAndTheTempo) {
    EXPECT_NEAR(masterEchoOf(effectEcho, 0.5f, 120.0), 12000, 150);
    const int slow = masterEchoOf(effectDelay, 0.3f, 120.0), fast = masterEchoOf(effectDelay, 0.3f, 240.0);
    EXPECT_GT(fast, 2000);
    EXPECT_NEAR(slow, 2 * fast, 300);
}

TEST(EngineParts, TheEqualizerActsByItsThreeParametersAtTheInternalRate) {
    EngineRig flat(96000.0f), shaped(96000.0f);
    for (EngineRig* rig : {&flat, &shaped}) {
        preparePlain(*rig);
        rig->setList(par::SoundMod, soundScientific);  // a factor and nothing else
        rig->audio.resetEngine();
        rig->send({{0x90, 60, 100}});
    }
    constexpr float low = 0.9f, mid = 0.2f, high = 0.05f;
    shaped.set(par::EqLow, low);
    shaped.set(par::EqMid, mid);
    shaped.set(par::EqHigh, high);
    for (EngineRig* rig : {&flat, &shaped})
        for (int i = 0; i < 8; ++i) rig->block(256);
    ASSERT_GT(flat.peak(), 0.01f);

    Equalizer equalizer;
    equalizer.setSampleRate(96000.0);
    equalizer.setLowGain(low);
    equalizer.setMidGain(mid);
    equalizer.setHighGain(high);
    for (auto* side : {&flat.left, &flat.right})
        for (float& x : *side) x /= 1.3f;
    equalizer.process(flat.left.data(), flat.right.data(), static_cast<int>(flat.left.size()));
    for (std::size_t i = 0; i < flat.left.size(); ++i) ASSERT_NEAR(shaped.left[i], 1.3f * flat.left[i], 1e-4f) << i;
}

TEST(EngineParts, EveryoneReadsTheGlobalListsFromTheNextTickOn) {
    EngineRig rig;
    rig.clearParameters();
    rig.setList(par::Quality, 2);
    rig.setList(par::SoundMod, 7);
    rig.setList(par::Microtun, 6);
    rig.tick();
    EXPECT_EQ(rig.audio.state().quality, 2);
    EXPECT_EQ(rig.audio.state().soundMode, 7);
    EXPECT_EQ(rig.audio.state().microtuning, 6);
}

TEST(EngineParts, AResetAndASuspendEndTheMastersEchoes) {
    for (const bool suspended : {false, true}) {
        EngineRig rig;
        preparePlain(rig);
        setMaster(rig, effectEcho, 1.0f, 0.5f);
        rig.audio.resetEngine();
        rig.send({{0x90, 60, 100}});
        for (int i = 0; i < 40; ++i) rig.block(256);
        if (suspended) {
            rig.audio.stop();
            rig.audio.start();
        } else {
            rig.audio.allNotesOff();
            rig.audio.resetEngine();
        }
        rig.block(64);  // what the decimator holds
        const std::size_t from = rig.left.size();
        for (int i = 0; i < 80; ++i) rig.block(256);
        EXPECT_LT(rig.peak(from), 1e-4f) << suspended;
    }
}

TEST(EngineParts, AResetAndASuspendEmptyTheLastStage) {
    for (const bool suspended : {false, true}) {
        EngineRig rig;
        preparePlain(rig);
        rig.setList(par::SoundMod, soundAnalogBoost);
        rig.set(par::Volume, 1.0f);
        rig.audio.resetEngine();
        rig.send({{0x90, 60, 100}});
        for (int i = 0; i < 40; ++i) rig.block(256);
        if (suspended)
            rig.audio.stop();
        else
            rig.audio.resetEngine();
        rig.block(64);  // what the decimator holds
        const std::size_t from = rig.left.size();
        rig.block(256);
        EXPECT_LT(rig.peak(from), 2e-5f) << suspended;
    }
}

TEST(EngineParts, AfterAResetTheVolumeStandsWhereItIsWanted) {
    EngineRig always, later;
    for (EngineRig* rig : {&always, &later}) preparePlain(*rig);
    later.set(par::Volume, 0.0f);
    later.audio.resetEngine();
    later.set(par::Volume, 0.5f);
    for (EngineRig* rig : {&always, &later}) {
        rig->audio.resetEngine();
        rig->send({{0x90, 60, 100}});
        rig->block(512);
    }
    EXPECT_GT(always.peak(), 0.01f);
    EXPECT_EQ(always.left, later.left);
}

TEST(EngineParts, AResetASuspendAndAResumeTakeTheSongToItsStart) {
    for (const int call : {0, 1, 2}) {
        EngineRig rig;
        rig.host.tell(120.0, 3.0);
        rig.tick();
        ASSERT_EQ(rig.audio.state().songPosition, 3.0);
        ASSERT_EQ(rig.audio.lastPpqPos(), 3.0);
        if (call == 0) rig.audio.resetEngine();
        if (call == 1) rig.audio.stop();
        if (call == 2) rig.audio.start();
        EXPECT_EQ(rig.audio.state().songPosition, 0.0) << call;
        EXPECT_EQ(rig.audio.lastPpqPos(), 0.0) << call;
    }
}

}  // namespace
}  // namespace vantoric
