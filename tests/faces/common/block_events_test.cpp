#include "faces/common/block_events.h"

#include <gtest/gtest.h>

#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;

struct Rig : EngineRig {
    Rig() { plainLayer(); }

    void note(int frame, int key, bool on = true) {
        events.addMidi(frame, on ? 0x90 : 0x80, static_cast<std::uint8_t>(key), 100);
    }
    void play(int frames) {
        const std::size_t at = left.size();
        left.resize(at + static_cast<std::size_t>(frames));
        right.resize(left.size());
        events.play(audio, left.data() + at, right.data() + at, frames, host.transport);
    }
    BlockEvents events;
};

TEST(BlockEvents, DividingABlockChangesNoSample) {
    Rig parts;
    EngineRig whole;
    whole.plainLayer();
    parts.play(512);  // the volume arrives, by steps that follow the block
    whole.block(512);
    for (int block = 0; block < 12; ++block) {
        // One voice: several draw their noise in turns, which are those of the parts.
        if (block == 0 || block == 5) {
            parts.note(37, 60, block == 0);
            whole.send({{block == 0 ? 0x90 : 0x80, 60, 100, 37}});
        }
        for (const int frame : {1, 2, 100, 101, 300, 511}) parts.events.addParameter(frame, par::Volume, 0.5f);
        parts.play(512);
        whole.block(512);
    }
    ASSERT_GT(whole.peak(), 0.01f);
    for (std::size_t i = 0; i < whole.left.size(); ++i) {
        ASSERT_EQ(parts.left[i], whole.left[i]) << i;
        ASSERT_EQ(parts.right[i], whole.right[i]) << i;
    }
}

TEST(BlockEvents, AParameterIsHeardFromItsFrameOn) {
    Rig still, moved;
    for (Rig* rig : {&still, &moved}) {
        rig->note(0, 60);
        rig->play(4096);
    }
    const std::size_t before = still.left.size();
    moved.events.addParameter(200, par::Volume, 0.0f);
    for (Rig* rig : {&still, &moved}) rig->play(512);
    for (std::size_t i = 0; i < 512; ++i) {
        const bool same = still.left[before + i] == moved.left[before + i];
        if (i < 200) {
            EXPECT_TRUE(same) << i;
        } else if (i > 210) {
            EXPECT_FALSE(same) << i;
        }
    }
}

TEST(BlockEvents, OrderIsThatOfFramesThenThatOfArrival) {
    Rig rig;
    rig.events.addParameter(300, par::EqLow, 0.3f);
    rig.events.addParameter(100, par::EqLow, 0.1f);
    rig.events.addParameter(300, par::EqLow, 0.4f);
    rig.events.addParameter(299, par::EqLow, 0.2f);
    rig.play(512);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::EqLow), 0.4f);
}

TEST(BlockEvents, FramesOutsideTheBlockAreItsEnds) {
    Rig rig;
    rig.events.addParameter(-5, par::EqLow, 0.1f);
    rig.events.addParameter(std::int64_t{1} << 40, par::EqMid, 0.2f);
    rig.events.addMidi(1 << 30, 0x90, 60, 100);
    rig.play(64);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::EqLow), 0.1f);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::EqMid), 0.2f);
    rig.play(2048);
    EXPECT_GT(rig.peak(), 0.001f);
}

TEST(BlockEvents, ABlockOfNoFramesSetsParametersAndKeepsNotes) {
    Rig rig;
    rig.events.addParameter(3, par::EqLow, 0.1f);
    rig.note(3, 60);
    rig.play(0);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::EqLow), 0.1f);
    rig.play(1024);
    EXPECT_GT(rig.peak(), 0.001f);
}

TEST(BlockEvents, NoNoteOfAFloodHangsInBlocksShorterThanATick) {
    for (const int frames : {16, 50, 64}) {
        Rig rig;
        for (int i = 0; i < 1500; ++i) rig.note(0, i % 100, i % 3 != 0);
        for (int key = 0; key < 128; ++key) rig.note(0, key, false);
        for (int i = 0; i < 200; ++i) rig.play(frames);
        EXPECT_TRUE(rig.audio.midi().nothingHeld()) << frames;
    }
}

TEST(BlockEvents, WhatADroppedMessageWouldHaveEndedEnds) {
    Rig rig;
    for (std::size_t i = 0; i < BlockEvents::most; ++i) rig.note(0, 60 + static_cast<int>(i % 12));
    rig.note(0, 60, false);  // there is no room for it
    rig.play(512);
    for (int i = 0; i < 200; ++i) rig.play(512);
    EXPECT_TRUE(rig.audio.midi().nothingHeld());
}

// As if the block had been cut there.
TEST(BlockEvents, ATransportIsHeardFromItsFrameOn) {
    Rig rig;
    Transport first, second;
    first.known = second.known = true;
    first.ppqPos = 8;
    second.ppqPos = 40;
    second.tempo = 90;
    rig.host.transport = first;
    rig.events.addTransport(480, second);
    rig.play(479);
    EXPECT_LT(rig.audio.state().songPosition, 9);
    EXPECT_TRUE(rig.events.isEmpty()) << "what lies behind the block is not kept";
    rig.events.addTransport(240, second);
    rig.play(480);
    EXPECT_NEAR(rig.audio.state().songPosition, 40, 0.1);
    EXPECT_EQ(rig.audio.state().tempoBpm, 90);
}

TEST(BlockEvents, NoNoteOfAFloodHangs) {
    Rig rig;
    for (int round = 0; round < 40; ++round)
        for (int key = 30; key < 60; ++key) rig.note(round * 4, key, round % 2 == 0);
    rig.play(512);
    rig.play(512);
    EXPECT_TRUE(rig.audio.midi().nothingHeld());
    for (int i = 0; i < 200; ++i) rig.note(0, 60), rig.note(0, 60, false);
    for (int i = 0; i < 200; ++i) rig.note(1, 61), rig.note(1, 61, false);
    for (int i = 0; i < 60; ++i) rig.play(16);
    EXPECT_TRUE(rig.audio.midi().nothingHeld());
    EXPECT_TRUE(rig.events.isEmpty());
}

TEST(BlockEvents, ModulationIsHeardAndChangesNoValue) {
    Rig still, moved;
    for (Rig* rig : {&still, &moved}) {
        rig->note(0, 60);
        rig->play(4096);
    }
    moved.events.addModulation(0, par::FilVol1, -0.75f);
    moved.events.addModulation(0, par::Volume, -0.5f);
    for (Rig* rig : {&still, &moved}) rig->play(4096);
    EXPECT_NE(still.left, moved.left);
    EXPECT_LT(std::fabs(moved.left.back()), 1e-3f);
    EXPECT_EQ(moved.audio.parameters().getParameter(par::Volume), 0.5f);
    EXPECT_EQ(moved.audio.parameters().getParameter(par::FilVol1), 1.0f);
}

TEST(BlockEvents, ChannelsThatNobodyWantsAreLeftOut) {
    Rig both, one;
    one.note(5, 60);
    both.note(5, 60);
    std::vector<float> left(5000), right(5000), alone(5000);
    both.events.play(both.audio, left.data(), right.data(), 5000, {});
    one.events.play(one.audio, nullptr, alone.data(), 5000, {});
    EXPECT_GT(both.audio.peak(0), 0.001f);
    EXPECT_NEAR(both.audio.peak(1), one.audio.peak(1), 0.05f);
    one.events.play(one.audio, static_cast<float*>(nullptr), nullptr, 5000, {});
}

TEST(BlockEvents, MoreThanItHoldsIsDropped) {
    Rig rig;
    for (std::size_t i = 0; i < BlockEvents::most + 10; ++i)
        rig.events.addParameter(0, par::EqLow, i < BlockEvents::most ? 0.5f : 1.0f);
    rig.events.addParameter(0, -1, 1.0f);
    rig.events.addParameter(0, parameterCount, 1.0f);
    rig.play(16);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::EqLow), 0.5f);
}

}  // namespace
}  // namespace vantoric
