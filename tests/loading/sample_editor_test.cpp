#include "loading/sample_editor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "samples/sample_levels.h"

#include "tests/base/failing_allocation.h"
#include "tests/base/told.h"

namespace vantoric {
namespace {

using test::failingAllocation;

namespace par = parameter;
using Data = std::vector<std::int16_t>;

EngineFlags* watched = nullptr;
std::vector<int> sleeps;
int sleepsWhileMuted = 0;
void recordSleep(int milliseconds) {
    sleeps.push_back(milliseconds);
    sleepsWhileMuted += watched != nullptr && watched->audioMuted.isSet() ? milliseconds : 0;
    if (watched != nullptr) watched->rebuildRunning.clear();  // the worker gives up
}

constexpr int undo = 0, clearAll = 2, loopAll = 8, loopHalf = 9, reverse = 11, autotune = 13, tune96 = 15, trim = 17, invert = 42;

struct SampleEditing : testing::Test {
    SampleEditing() {
        for (std::size_t i = 0; i < samples.size(); ++i) holders[i] = &samples[i];
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.25f);
        editor = std::make_unique<SampleEditor>(access, parameters, holders, messages);
        watched = &flags;
        sleeps.clear();
        sleepsWhileMuted = 0;
    }
    ~SampleEditing() override { watched = nullptr; }

    Sample& put(int layer, int oscillator, const Data& data) {
        Sample& sample = samples[static_cast<std::size_t>(layer * 3 + oscillator)];
        EXPECT_TRUE(sample.allocate(static_cast<std::int32_t>(data.size())));
        std::copy(data.begin(), data.end(), sample.levels[0].get());
        sample.length = sample.loopEnd = static_cast<std::int32_t>(data.size());
        return sample;
    }
    static Data dataOf(const Sample& sample) {
        return sample.length == 0 ? Data() : Data(sample.levels[0].get(), sample.levels[0].get() + sample.length);
    }

    platform::ScratchFolder folder;
    EngineFlags flags;
    EngineAccess access{flags, recordSleep};
    ParameterModel parameters;
    Messages messages;
    test::Told told{messages};
    ParameterChanges::Reader window{parameters.changes()};
    std::array<Sample, layerCount * oscillatorCount> samples;
    SampleHolders holders{};
    std::unique_ptr<SampleEditor> editor;
};

TEST_F(SampleEditing, AnEditThatComesAfterAnotherSampleChangesNothing) {
    Sample& sample = put(0, 0, {1, 2, 3});
    auto edit = editor->beginEdit(0, 0, reverse);
    ASSERT_TRUE(edit);
    SampleEditor::makeEdit(*edit, flags.rebuildCancel);
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3})) << "making it touches nothing";
    sample = Sample();
    put(0, 0, {7, 8});
    EXPECT_FALSE(editor->finishEdit(std::move(*edit)));
    EXPECT_EQ(dataOf(sample), Data({7, 8}));
    EXPECT_FALSE(editor->beginEdit(0, 0, undo)) << "there is nothing to take back";
}

TEST_F(SampleEditing, ChangesTheSampleOfItsOscillatorAlone) {
    Sample& sample = put(2, 1, {1, 2, 3});
    const Sample& other = put(2, 2, {1, 2, 3});
    EXPECT_TRUE(editor->editSample(2, 1, reverse));
    EXPECT_EQ(dataOf(sample), Data({3, 2, 1}));
    EXPECT_EQ(dataOf(other), Data({1, 2, 3}));
    const auto news = window.take();
    EXPECT_TRUE(news.changed.none());
    EXPECT_TRUE(news.all);
}

TEST_F(SampleEditing, UndoGivesTheSampleBackAndRedoTakesItAgain) {
    Sample& sample = put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, reverse);
    EXPECT_TRUE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3}));
    EXPECT_TRUE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({3, 2, 1}));
}

TEST_F(SampleEditing, UndoHoldsTheEngineMutedForAHundredMilliseconds) {
    put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, reverse);
    EXPECT_EQ(sleepsWhileMuted, 0) << "other commands do not";
    editor->editSample(0, 0, undo);
    EXPECT_EQ(sleepsWhileMuted, 100);
    EXPECT_FALSE(flags.audioMuted.isSet());
    EXPECT_FALSE(flags.engineLocked.isSet());
}

TEST_F(SampleEditing, UndoLeavesAnEngineMutedThatWas) {
    put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, reverse);
    flags.audioMuted.set();
    editor->editSample(0, 0, undo);
    EXPECT_TRUE(flags.audioMuted.isSet());
}

TEST_F(SampleEditing, UndoWithNothingStoredDoesNothing) {
    Sample& sample = put(0, 0, {1, 2, 3});
    EXPECT_FALSE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3}));
    EXPECT_TRUE(sleeps.empty());
}

TEST_F(SampleEditing, UndoIsOneLevelDeepAndOfItsOscillator) {
    Sample& first = put(0, 0, {1, 2, 3});
    Sample& second = put(3, 2, {7, 8});
    editor->editSample(0, 0, reverse);
    editor->editSample(3, 2, invert);
    editor->editSample(3, 2, reverse);
    editor->editSample(3, 2, undo);
    EXPECT_EQ(dataOf(second), Data({-7, -8}));
    EXPECT_EQ(dataOf(first), Data({3, 2, 1}));
}

TEST_F(SampleEditing, UndoOfClearAllBringsTheSampleBack) {
    Sample& sample = put(0, 0, {1, 2, 3});
    EXPECT_TRUE(editor->editSample(0, 0, clearAll));
    EXPECT_EQ(sample.length, 0);
    EXPECT_FALSE(editor->editSample(0, 0, reverse)) << "an empty sample takes only undo";
    EXPECT_TRUE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3}));
}

TEST_F(SampleEditing, UndoOfATrimFitsAShorterSampleLoadedMeanwhile) {
    Sample& sample = put(0, 0, Data(5000, 9));
    sample.loopStart = 10;
    sample.loopEnd = 20;
    editor->editSample(0, 0, trim);
    EXPECT_EQ(sample.length, 10);
    put(0, 0, {1});  // a load does not clear what is stored
    editor->editSample(0, 0, undo);
    EXPECT_EQ(sample.length, 5000);
    for (const auto& level : sample.levels) EXPECT_EQ(level[4999 + 8], level[4999]) << "guards";
    EXPECT_EQ(sample.loopEnd, 20);
}

TEST_F(SampleEditing, SeparatorsStoreNothing) {
    Sample& sample = put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, reverse);
    for (const int separator : {1, 4, 12, 16, 19, 27}) EXPECT_FALSE(editor->editSample(0, 0, separator));
    editor->editSample(0, 0, undo);
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3}));
}

TEST_F(SampleEditing, LoopCommandsSwitchTheLoopOnAndBuildLevelsWithWrap) {
    Sample& sample = put(1, 2, Data(300, 10000));
    EXPECT_TRUE(editor->editSample(1, 2, loopHalf));
    EXPECT_EQ(sample.loopStart, 150);
    EXPECT_EQ(parameters.getListIndex(hostIndex(par::LoopMod1 + 2, 1)), loopModeLoop);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Start1 + 2, 1)), 0.0f);
    EXPECT_EQ(window.take().changed.count(), 2u);
    EXPECT_GT(sample.levels[4][0], 9000) << "the filter finds the other end in front of the start";
    EXPECT_TRUE(editor->editSample(1, 2, invert));
    EXPECT_GT(sample.levels[4][299], -9000) << "and here nothing";
}

TEST_F(SampleEditing, TuneSetsRateAndPitchOfItsOscillator) {
    Sample& sample = put(3, 1, {1, 2});
    EXPECT_TRUE(editor->editSample(3, 1, tune96));
    EXPECT_EQ(sample.sampleRate, 96000u);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Oct1 + 1, 3)), 0.5f);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Semi1 + 1, 3)), 0.0f);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Interv1 + 1, 3)), 0.0f);
    EXPECT_EQ(parameters.getParameter(hostIndex(par::Detune1 + 1, 3)), 0.5f);
    editor->editSample(3, 1, undo);
    EXPECT_EQ(sample.sampleRate, 44100u);
}

TEST_F(SampleEditing, AutotuneSetsTheRateFromThePitch) {
    Data square(4000);
    for (std::size_t i = 0; i < square.size(); ++i) square[i] = i / 50 % 2 == 0 ? 9000 : -9000;
    Sample& sample = put(0, 0, square);
    EXPECT_TRUE(editor->editSample(0, 0, autotune));
    EXPECT_EQ(sample.sampleRate, 13081u);
}

TEST_F(SampleEditing, TuningLeavesTheLevelsOfALoopedSampleAsTheyAre) {
    const Sample& sample = put(0, 0, Data(300, 10000));
    editor->editSample(0, 0, loopAll);
    const Data built(sample.levels[4].get(), sample.levels[4].get() + 300);
    for (const int command : {autotune, tune96}) {
        EXPECT_TRUE(editor->editSample(0, 0, command));
        EXPECT_TRUE(std::equal(built.begin(), built.end(), sample.levels[4].get())) << command;
        EXPECT_EQ(sample.loopEnd, 300);
    }
    EXPECT_EQ(sample.sampleRate, 96000u);
}

TEST_F(SampleEditing, ExportWritesTheWholeSampleAndChangesNothing) {
    Sample& sample = put(0, 0, {1, 2, 3});
    sample.loopStart = 1;
    sample.loopEnd = 2;
    EXPECT_FALSE(editor->editSample(0, 0, exportCommand)) << "it needs a path";
    EXPECT_TRUE(editor->exportWave(0, 0, folder / "out.wav"));
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(platform::readFile(folder / "out.wav", bytes));
    EXPECT_EQ(bytes.size(), 50u);
    EXPECT_FALSE(window.take().any());
    EXPECT_FALSE(editor->exportWave(0, 1, folder / "empty.wav")) << "there is none";
    EXPECT_TRUE(told.boxes().empty());
}

TEST_F(SampleEditing, ExportDoesNotTouchTheUndo) {
    Sample& sample = put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, reverse);
    EXPECT_TRUE(editor->exportWave(0, 0, folder / "out.wav"));
    EXPECT_TRUE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3}));
}

TEST_F(SampleEditing, ExportToAPlaceThatCannotBeWrittenGivesABox) {
    put(0, 0, {1, 2, 3});
    EXPECT_FALSE(editor->exportWave(0, 0, folder / "none/out.wav"));
    ASSERT_EQ(told.boxes().size(), 1u);
    EXPECT_EQ(told.boxes()[0].text, "File write error. File is write protected or opened by another application.");
}

TEST_F(SampleEditing, PeaksAreTheExtremesOfEqualStretches) {
    put(1, 0, {0, 16384, -8192, 0, 100, 200, -32768, 32767});
    std::array<float, 2> low{}, high{};
    ASSERT_TRUE(editor->readPeaks(1, 0, low, high));
    EXPECT_EQ(low, (std::array{-0.25f, -1.0f}));
    EXPECT_EQ(high, (std::array{0.5f, 32767.0f / 32768.0f}));
    EXPECT_FALSE(editor->readPeaks(1, 1, low, high));
    EXPECT_FALSE(editor->readPeaks(7, 0, low, high));
    EXPECT_EQ(low[0], -0.25f);
}

TEST_F(SampleEditing, PeaksOfAShortSampleFillAllStretches) {
    put(0, 0, {8192});
    std::array<float, 5> low{}, high{};
    ASSERT_TRUE(editor->readPeaks(0, 0, low, high));
    for (const float peak : high) EXPECT_EQ(peak, 0.25f);
}

TEST_F(SampleEditing, TheLoopMovesWithinTheSampleAndIsMirrored) {
    Sample& sample = put(2, 1, Data(1000, 5));
    ASSERT_TRUE(editor->setLoopPoints(2, 1, 750, 250));
    EXPECT_EQ(sample.loopStart, 250);
    EXPECT_EQ(sample.loopEnd, 750);
    EXPECT_FLOAT_EQ(parameters.getParameter(hostIndex(par::LoopSta1 + 1, 2)), 0.25f);
    EXPECT_FLOAT_EQ(parameters.getParameter(hostIndex(par::LoopEnd1 + 1, 2)), 0.75f);
    ASSERT_TRUE(editor->setLoopPoints(2, 1, -5, 4000));
    EXPECT_EQ(sample.loopStart, 0);
    EXPECT_EQ(sample.loopEnd, 1000);
    EXPECT_FALSE(editor->setLoopPoints(2, 0, 0, 1));
    EXPECT_FALSE(editor->setLoopPoints(0, 3, 0, 1));
}

TEST_F(SampleEditing, ShortMemoryIsToldAndChangesNothing) {
    Sample& sample = put(0, 0, {1, 2, 3});
    editor->editSample(0, 0, invert);
    for (const int command : {reverse, undo, loopAll}) {
        told.clear();
        failingAllocation = 100;
        EXPECT_FALSE(editor->editSample(0, 0, command)) << command;
        failingAllocation = 0;
        ASSERT_EQ(told.boxes().size(), 1u);
        EXPECT_EQ(told.boxes()[0].title, "Error");
        EXPECT_EQ(told.boxes()[0].text, "Not enought memory.");
        EXPECT_EQ(dataOf(sample), Data({-1, -2, -3}));
        EXPECT_EQ(parameters.getParameter(par::LoopMod1), 0.25f);
        EXPECT_FALSE(flags.audioMuted.isSet() || flags.engineLocked.isSet());
    }
    EXPECT_TRUE(editor->editSample(0, 0, undo));
    EXPECT_EQ(dataOf(sample), Data({1, 2, 3})) << "what was stored is stored still";
}

TEST_F(SampleEditing, IndicesOutOfRangeDoNothing) {
    put(0, 0, {1, 2, 3});
    for (const int command : {-1, 45, 1000}) EXPECT_FALSE(editor->editSample(0, 0, command));
    for (const int layer : {-1, 4}) EXPECT_FALSE(editor->editSample(layer, 0, reverse));
    for (const int oscillator : {-1, 3}) EXPECT_FALSE(editor->editSample(0, oscillator, reverse));
}

TEST_F(SampleEditing, MakesARunningRebuildGiveWayAndStartAgain) {
    put(0, 0, {1, 2, 3});
    flags.rebuildRunning.set();
    editor->editSample(0, 0, reverse);
    EXPECT_FALSE(flags.rebuildCancel.isSet());
    EXPECT_TRUE(flags.rebuildRequested.isSet());
    EXPECT_EQ(sleeps, std::vector<int>({100}));
}

TEST_F(SampleEditing, RunsEveryCommandOnEveryShortSample) {
    for (int command = 0; command < editCommandCount; ++command) {
        for (int length = 0; length < 5; ++length) {
            put(0, 0, Data(static_cast<std::size_t>(length), -32768));
            editor->editSample(0, 0, command);
            EXPECT_LE(samples[0].loopEnd, std::max(samples[0].length, 5));
        }
    }
    EXPECT_FALSE(flags.audioMuted.isSet());
}

}  // namespace
}  // namespace vantoric
