// The master chain does not hear in which blocks the host asks: every effect type, at any splitting.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>

#include "base/random.h"
#include "effects/type_table.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;

constexpr int segment = 4096;  // host frames that each type plays

// A held chord through two filters into the master effect, so that there is something to hear at any time.
void beginChord(EngineRig& rig) {
    rig.clearParameters();
    rig.plainLayer();
    rig.setList(par::SynType1, 4);
    rig.set(par::FxMaMix, 0.8f);
    rig.audio.resetEngine();
    rig.send({{0x90, 48, 100}, {0x90, 55, 100}, {0x90, 64, 100}});
}

void chooseEffect(EngineRig& rig, int type, float parameter) {
    rig.setList(par::FxMaType, type);
    for (int k = 0; k < 4; ++k) rig.set(par::FxMaPar1 + k, parameter);
}

using BothSides = std::array<std::vector<float>, 2>;

// A single note of a single oscillator, which draws at every sample.
void beginChance(EngineRig& rig, int synthesis) {
    rig.clearParameters();
    rig.plainLayer();
    rig.setList(par::SynType1, synthesis);
    rig.setList(par::NoiWave1, 1);  // "Lowpass": the congruence, as the effects
    rig.set(par::FxMaMix, 0.8f);
    rig.audio.resetEngine();
    rig.send({{0x90, 48, 100}});
}

// Plays every type for a segment in blocks as `nextBlock` gives them.
BothSides playAllTypes(const std::function<int()>& nextBlock, float parameter,
                       const std::function<void(EngineRig&)>& begin = beginChord) {
    EngineRig rig;
    begin(rig);
    for (int type = 0; type < effectTypeCount; ++type) {
        chooseEffect(rig, type, parameter);
        for (int left = segment; left > 0;) {
            const int frames = std::min(left, nextBlock());
            rig.block(frames);
            left -= frames;
        }
    }
    return {rig.left, rig.right};
}

void expectSameTypes(const BothSides& reference, const BothSides& other, const char* splitting) {
    for (const int side : {0, 1}) {
        ASSERT_EQ(reference[side].size(), other[side].size());
        for (int type = 0; type < effectTypeCount; ++type) {
            const auto from = reference[side].begin() + type * segment;
            EXPECT_TRUE(std::equal(from, from + segment, other[side].begin() + type * segment))
                << splitting << ", type " << type << ", side " << side;
        }
    }
}

TEST(MasterBlocks, EveryEffectSoundsTheSameInAnyBlocks) {
    for (const float parameter : {0.45f, 0.9f}) {
        const BothSides reference = playAllTypes([] { return 64; }, parameter);
        expectSameTypes(reference, playAllTypes([] { return segment; }, parameter), "blocks of 4096");
        expectSameTypes(reference, playAllTypes([] { return 1; }, parameter), "blocks of 1");
        expectSameTypes(reference, playAllTypes([] { return 257; }, parameter), "blocks of 257");
        LinearCongruence random{7};
        expectSameTypes(reference, playAllTypes([&] { return 1 + static_cast<int>(random.unit() * 4095); }, parameter),
                        "random blocks");
    }
}

// Chances of the voices and of the effect must not take turns: how they do depends on the blocks.
TEST(MasterBlocks, AnEffectThatDrawsSoundsTheSameBehindVoicesThatDraw) {
    constexpr int noise = 2, analog = 5;
    for (const int synthesis : {noise, analog}) {
        const auto begin = [&](EngineRig& rig) { beginChance(rig, synthesis); };
        const BothSides reference = playAllTypes([] { return 64; }, 0.6f, begin);
        expectSameTypes(reference, playAllTypes([] { return segment; }, 0.6f, begin), "blocks of 4096");
        expectSameTypes(reference, playAllTypes([] { return 257; }, 0.6f, begin), "blocks of 257");
    }
}

TEST(MasterBlocks, AnEffectWorksInLargeBlocksToo) {
    constexpr int ampSim = 60;
    const auto play = [](int type, const char* label) {
        EngineRig rig;
        beginChord(rig);
        chooseEffect(rig, type, 0.9f);
        EXPECT_EQ(rig.audio.parameters().displayText(par::FxMaType), label);
        for (int i = 0; i < 4; ++i) rig.block(2048);
        return rig.left;
    };
    EXPECT_NE(play(0, "off"), play(ampSim, "Amp Sim"));
}

TEST(MasterBlocks, WhatLeavesTheChainStaysWithinItsBound) {
    EngineRig rig(96000.0f);  // no decimator behind
    beginChord(rig);
    rig.set(par::Volume, 1.0f);
    rig.set(par::LayerVol, 1.0f);
    for (const int n : {par::EqLow, par::EqMid, par::EqHigh}) rig.set(n, 1.0f);
    for (int type = 0; type < effectTypeCount; ++type) {
        chooseEffect(rig, type, 1.0f);
        rig.left.clear();
        rig.right.clear();
        for (int i = 0; i < 40; ++i) rig.block(256);
        EXPECT_LE(rig.peak(), 16.0f) << type;
        for (const float x : rig.left) ASSERT_TRUE(std::isfinite(x)) << type;
    }
}

}  // namespace
}  // namespace vantoric
