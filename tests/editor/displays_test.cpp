#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include "editor/model/envelope_display.h"
#include "editor/model/filter_display.h"
#include "editor/model/lfo_display.h"
#include "editor/model/wave_display.h"
#include "parameters/label_lists.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;

constexpr DisplayLayout small{.columns = 129, .factor = 1.0f}, large{.columns = 193, .factor = 1.5f};

std::span<const float> used(const DisplayTraces& traces) {
    return std::span(traces.traceA).first(static_cast<std::size_t>(traces.columns));
}
float highest(const DisplayTraces& traces) { return *std::max_element(used(traces).begin(), used(traces).end()); }
float lowest(const DisplayTraces& traces) { return *std::min_element(used(traces).begin(), used(traces).end()); }
void expectWithin(const DisplayTraces& traces, const DisplayLayout& layout) {
    ASSERT_EQ(traces.columns, layout.columns);
    for (const float y : used(traces)) ASSERT_LE(std::fabs(y), layout.halfHeight() * 1.001f);
}

// ---- filter responses

TEST(FilterDisplay, IsDrawnAnewOnlyForAnotherFilterOrWhenDirty) {
    FilterDisplay display;
    const ShownFilter filter{.type = 5, .cutoff = 0.5f, .resonance = 0.2f};
    EXPECT_TRUE(display.refresh(filter, small));
    EXPECT_FALSE(display.refresh(filter, small));
    EXPECT_TRUE(display.refresh(filter, small, true));
    EXPECT_TRUE(display.refresh(filter, large));
    ShownFilter other = filter;
    other.cutoff = 0.51f;
    EXPECT_TRUE(display.refresh(other, large));
}

TEST(FilterDisplay, ALowPassFallsAndBypassIsFlat) {
    FilterDisplay display;
    display.refresh({.type = 5, .cutoff = 0.5f}, large);
    expectWithin(display.traces(), large);
    EXPECT_GT(used(display.traces())[40], used(display.traces())[180] + 20.0f);
    display.refresh({.type = 0}, small);
    EXPECT_NEAR(highest(display.traces()), lowest(display.traces()), 0.1f);
    EXPECT_NEAR(highest(display.traces()), 8.0f, 0.1f);
}

TEST(FilterDisplay, EveryTypeStaysWithinItsDisplay) {
    FilterDisplay display;
    for (int type = 0; type < 128; ++type)
        for (const float value : {0.0f, 0.5f, 1.0f}) {
            display.refresh({.type = type, .cutoff = std::min(value, 0.99f), .resonance = value, .analog = value}, small);
            expectWithin(display.traces(), small);
        }
}

TEST(FilterDisplay, HasANoiseFloorThatCanBeSeen) {
    FilterDisplay display;
    display.refresh({.type = 5, .cutoff = 0.5f}, large);
    float highestGrain = 0;
    for (int i = 0; i < display.traces().columns; ++i) {
        const float grain = display.traces().traceB[static_cast<std::size_t>(i)];
        ASSERT_GE(grain, 0.0f);
        highestGrain = std::max(highestGrain, grain);
    }
    EXPECT_GT(highestGrain, 10.0f);
    EXPECT_LT(highestGrain, 15.1f);
}

TEST(FilterDisplay, FollowsTheVoiceAndWithoutOneTheParameters) {
    test::EngineRig rig;
    rig.clearParameters();
    rig.plainLayer();
    rig.set(par::Cutoff1, 0.3f);
    rig.set(par::FilEnv1, 0.75f);
    rig.set(par::SusFil, 0.5f);
    Layer& layer = rig.audio.layer(0);
    const auto cutoff = [&] { return shownFilter(rig.audio.parameters(), 0, 0, shownVoice(layer)).cutoff; };
    EXPECT_FALSE(shownVoice(layer));
    EXPECT_FLOAT_EQ(cutoff(), 0.3f);
    rig.send({{0x90, 64, 100}});
    for (int i = 0; i < 300; ++i) rig.tick();
    ASSERT_TRUE(shownVoice(layer));
    EXPECT_NEAR(cutoff(), 0.3f + 0.5f * shownVoice(layer)->filterEnvelope, 1e-4f);
    EXPECT_GT(cutoff(), 0.4f);
    rig.send({{0x80, 64, 0}});
    for (int i = 0; i < 300; ++i) rig.tick();
    EXPECT_FLOAT_EQ(cutoff(), 0.3f);
}

// ---- envelopes

TEST(EnvelopeDisplay, EndsForTheSlowestAndTheStrangestSettings) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const EnvelopeSettings& settings : {EnvelopeSettings{1, 1, 1, 1, 1, 1}, EnvelopeSettings{0, 0, 0, 0, 0, 0},
                                             EnvelopeSettings{nan, nan, nan, nan, nan, nan}}) {
        EnvelopeDisplay display;
        EXPECT_TRUE(display.refresh(settings, large));
        expectWithin(display.traces(), large);
    }
}

TEST(EnvelopeDisplay, ASustainOfNothingEndsWithoutARelease) {
    const EnvelopeCourse course = runEnvelope({0.2f, 0, 0.3f, 0, 0.9f, 0.5f});
    EXPECT_EQ(course.sustainEnd, static_cast<int>(course.levels.size()));
    EXPECT_EQ(course.levels.back(), 0);
    const EnvelopeCourse held = runEnvelope({0.2f, 0, 0.3f, 0.5f, 0.5f, 0.5f});
    EXPECT_GT(static_cast<int>(held.levels.size()), held.sustainEnd + 50);
}

TEST(EnvelopeDisplay, BreaksItsLineAroundTheSustain) {
    EnvelopeDisplay display;
    const EnvelopeSettings settings{0.4f, 0, 0.4f, 0.5f, 0.5f, 0.5f};
    display.refresh(settings, small);
    const EnvelopeCourse course = runEnvelope(settings);
    const auto [first, second] = display.breaks();
    EXPECT_NEAR(first * static_cast<double>(course.levels.size()) / 129, course.firstPart, 10.0);
    EXPECT_LT(first, second);
    EXPECT_LE(second, 129);
    EXPECT_FALSE(display.refresh(settings, small));
}

// Whole levels make stairs in a window of 300 %.
TEST(EnvelopeDisplay, HasAnExactLineAlongTheOneOfWholeLevels) {
    EnvelopeDisplay display;
    display.refresh({0, 0, 0.6f, 0, 0, 0.5f}, large);
    const auto& whole = display.traces().traceA;
    const auto& exact = display.exactTrace();
    constexpr float level = 1.5f / 3;  // pixels
    int equalWhole = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(display.breaks()[0]); ++i) {
        EXPECT_GE(exact[i], whole[i] - 0.001f) << i;
        EXPECT_LE(exact[i], whole[i] + level) << i;
        if (i < 2) continue;
        EXPECT_LT(exact[i], exact[i - 1]) << i;
        equalWhole += whole[i] == whole[i - 1] ? 1 : 0;
    }
    EXPECT_GT(equalWhole, 10) << "the whole levels do lie on stairs here";
}

TEST(EnvelopeDisplay, ReadsTheParametersOfItsTabAndLayer) {
    test::EngineRig rig;
    rig.clearParameters();
    rig.set(par::AttAux2, 0.25f, 3);
    rig.set(par::ShapAux2, 0.75f, 3);
    EXPECT_EQ(envelopeSettings(rig.audio.parameters(), 3, 3), (EnvelopeSettings{0.25f, 0, 0, 0, 0, 0.75f}));
}

// ---- LFOs

TEST(LfoDisplay, EveryWaveAndShapeStaysWithinItsLimits) {
    LfoDisplay display;
    for (int tab = 0; tab < 4; ++tab)
        for (int wave = 0; wave < 128; ++wave) {
            LfoSettings settings{.tab = tab, .wave = wave, .mode = wave % 10, .phase = 0.7f, .fade = 0.5f, .steps = 0.6f};
            settings.stepValues.fill(0.9f);
            EXPECT_TRUE(display.refresh(settings, large));
            expectWithin(display.traces(), large);
        }
}

TEST(LfoDisplay, BeginsAtTheStartPhase) {
    LfoDisplay display;
    display.refresh({.wave = 4, .phase = 0.5f}, small);  // a rising saw
    EXPECT_GT(used(display.traces())[60], used(display.traces())[10]);
    EXPECT_LT(used(display.traces())[70], used(display.traces())[60]);
}

TEST(LfoDisplay, AOneShotFadesOverTheWidth) {
    LfoDisplay display;
    display.refresh({.wave = 14, .fade = 0.5f}, small);
    EXPECT_NEAR(used(display.traces())[0], 0.0f, 0.5f);
    EXPECT_NEAR(used(display.traces())[128], 20.0f, 0.5f);
}

// ---- waves

class WaveDisplayTest : public testing::Test {
protected:
    WaveDisplayTest() { rig.clearParameters(); }
    Sample& putSample(int length) {
        rig.setList(par::SynType1, sampleType);
        Sample& sample = rig.audio.layer(0).sample(0);
        EXPECT_TRUE(sample.allocate(length));
        std::fill_n(sample.levels[0].get(), length, std::int16_t{16384});
        sample.length = sample.loopEnd = length;
        return sample;
    }

    test::EngineRig rig;
    ParameterEdits edits{rig.audio};
    std::unique_ptr<WaveDisplay> display = std::make_unique<WaveDisplay>(rig.audio, 0);
};

TEST_F(WaveDisplayTest, NoiseKeepsMovingAndAStillWaveDoesNot) {
    rig.setList(par::SynType1, noiseType);
    EXPECT_TRUE(display->refresh(0, {}, small));
    const DisplayTraces before = display->traces();
    EXPECT_TRUE(display->refresh(0, {}, small));
    EXPECT_FALSE(std::equal(used(before).begin(), used(before).end(), used(display->traces()).begin()));
    rig.setList(par::SynType1, customWaveType);
    EXPECT_TRUE(display->refresh(0, {}, small));
    EXPECT_FALSE(display->refresh(0, {}, small));
    EXPECT_TRUE(display->refresh(0, {}, small, true));
    EXPECT_TRUE(display->refresh(1, {}, small));
}

TEST_F(WaveDisplayTest, ShowsEveryNoise) {
    rig.setList(par::SynType1, noiseType);
    rig.set(par::Pw1, 0.5f);
    for (int row = 0; row < static_cast<int>(noiseTypeLabels.size()); ++row) {
        rig.setList(par::NoiWave1, row);
        display->refresh(0, {}, large);
        expectWithin(display->traces(), large);
        EXPECT_GT(highest(display->traces()) - lowest(display->traces()), 5.0f) << row;
    }
}

TEST_F(WaveDisplayTest, ShowsAStackAsItsKernelPlaysIt) {
    rig.setList(par::SynType1, hypersawType);
    rig.setList(par::SSWave1, 9);  // needs no file
    rig.set(par::Pw1, 0.5f);
    display->refresh(0, {}, small);
    expectWithin(display->traces(), small);
    EXPECT_GT(highest(display->traces()) - lowest(display->traces()), 5.0f);
    EXPECT_FALSE(display->refresh(0, {}, small));
    rig.set(par::Pw1, 0.9f);
    EXPECT_TRUE(display->refresh(0, {}, small));
}

TEST_F(WaveDisplayTest, ListsBeyondTheirEndsDrawALine) {
    for (int type = 0; type < 128; ++type)
        for (const int number : {par::WTWave1, par::SSWave1, par::NoiWave1, par::AnaWave1}) {
            rig.setList(par::SynType1, type);
            rig.setList(number, 127);
            display->refresh(0, {}, small, true);
            expectWithin(display->traces(), small);
        }
}

TEST_F(WaveDisplayTest, ShowsTheMarkersOfASampleAndMovesItsLoop) {
    Sample& sample = putSample(4000);
    sample.loopStart = 1000;
    display->refresh(0, {}, small);
    EXPECT_FLOAT_EQ(highest(display->traces()), 12.0f);
    SampleMarkers& markers = display->markers();
    EXPECT_TRUE(markers.showMarkers);
    EXPECT_FLOAT_EQ(markers.loopStart, 0.25f);
    markers.press(0.9f, MouseButton::left);
    markers.move(0.5f);
    display->refresh(0, {}, small, true);  // does not disturb the drag
    EXPECT_FLOAT_EQ(markers.loopEnd, 0.5f);
    EXPECT_FALSE(display->writeMarkers(0, edits));
    markers.release();
    EXPECT_TRUE(display->writeMarkers(0, edits));
    EXPECT_FALSE(display->writeMarkers(0, edits));
    EXPECT_EQ(sample.loopStart, 2000);
    EXPECT_EQ(sample.loopEnd, 3600);
    EXPECT_TRUE(display->refresh(0, {}, small));
    EXPECT_FLOAT_EQ(markers.loopEnd, 0.9f);
}

TEST_F(WaveDisplayTest, TheRightButtonMovesTheStartPointOfTheSound) {
    putSample(1000);
    display->refresh(0, {}, small);
    display->markers().press(0.75f, MouseButton::right);
    display->markers().move(0.25f);
    display->markers().release();
    EXPECT_TRUE(display->writeMarkers(0, edits));
    EXPECT_FLOAT_EQ(rig.audio.parameters().getParameter(par::Start1), 0.25f);
    EXPECT_EQ(rig.audio.layer(0).sample(0).loopEnd, 750);
}

TEST_F(WaveDisplayTest, WithoutASampleThereIsALineAndNothingToDrag) {
    rig.setList(par::SynType1, sampleType);
    display->refresh(0, {}, small);
    EXPECT_EQ(highest(display->traces()), 0.0f);
    display->markers().press(0.5f, MouseButton::left);
    display->markers().release();
    EXPECT_FALSE(display->writeMarkers(0, edits));
}

TEST(SampleMarkers, KeysMoveTheEndsOfTheLoopButNotPastEachOther) {
    SampleMarkers markers;
    EXPECT_FALSE(markers.nudge(0.1f, 0.0f)) << "there is no sample";
    markers.showMarkers = true;
    markers.loopStart = 0.2f;
    markers.loopEnd = 0.3f;
    EXPECT_TRUE(markers.nudge(0.05f, -0.02f));
    EXPECT_NEAR(markers.loopStart, 0.25f, 1e-6f);
    EXPECT_NEAR(markers.loopEnd, 0.28f, 1e-6f);
    markers.nudge(0.5f, 0);
    EXPECT_EQ(markers.loopStart, markers.loopEnd);
    const auto moved = markers.takeMoved(1000);
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->end, 280);
    markers.press(0.1f, MouseButton::left);
    EXPECT_FALSE(markers.nudge(0.1f, 0)) << "the mouse holds them";
}

}  // namespace
}  // namespace vantoric
