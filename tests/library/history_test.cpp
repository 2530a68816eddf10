#include "library/history.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "loading/sample_exchange.h"
#include "tests/engine/engine_rig.h"

namespace vantoric::test {
namespace {

using namespace std::chrono_literals;

// A host that keeps what it is told.
struct ListeningHost : HostPort {
    void editBegun(int index) override { told.push_back("begin " + std::to_string(index)); }
    void parameterEdited(int index, float) override { told.push_back("edit " + std::to_string(index)); }
    void editEnded(int index) override { told.push_back("end " + std::to_string(index)); }
    void patchChanged() override { told.push_back("patch"); }
    void latencyChanged(int) override {}
    bool sizeWanted(int, int) override { return false; }
    std::vector<std::string> told;
};

struct Lists : PatchPlaceKeeper {
    PatchPlace place() const override { return now; }
    void showPlace(const PatchPlace& place) override { now = place; }
    PatchPlace now{"Custom", ""};
};

struct UserHistory : ::testing::Test {
    UserHistory() {
        history.setClock([this] { return time; });
        audio.setHostPort(&host);
    }
    ~UserHistory() override { audio.setHostPort(nullptr); }

    float value(int index) const { return rig.audio.parameters().getParameter(index); }
    // A knob is dragged for a while.
    void drag(int index, float to) {
        time += 2s;
        edits.begin(index);
        time += 300ms;
        edits.set(index, (value(index) + to) / 2);
        edits.set(index, to);
        edits.end(index);
    }
    void wheel(int index, float to) {
        time += 200ms;
        edits.change(index, to);
    }
    // A patch of one value, as a file has it.
    void load(const std::string& name, float cutoff) {
        const History::Command command(history, "Load '" + name + "'");
        edits.write(par::Cutoff1, cutoff);
        const ChunkBytes bytes = audio.patchChunk().getChunk();
        audio.patchChunk().setChunk(bytes.data.get(), bytes.size);
        audio.program().setProgramName(name);
        lists.now = {"Bass", name};
        history.markLoaded();
    }
    void giveSample(int layer, int oscillator, int length, std::int16_t first = 100) {
        std::vector<std::int16_t> sound(static_cast<std::size_t>(length));
        std::iota(sound.begin(), sound.end(), first);
        Sample& holder = audio.layer(layer).sample(oscillator);
        exchangeSample(audio.patchChunk().access(), holder, {sound, 0, length / 2, 22050}, false, false);
    }
    // Of the voices, to hear whether a step silenced them.
    bool soundsAfter(const std::function<void()>& act) {
        rig.plainLayer();
        rig.send({{0x90, 60, 100}});
        for (int i = 0; i < 20; ++i) rig.block(256);
        act();
        const std::size_t from = rig.left.size();
        for (int i = 0; i < 20; ++i) rig.block(256);
        return rig.peak(from) > 0.01f;
    }

    EngineRig rig;
    Instrument& audio = rig.audio;
    ListeningHost host;
    Lists lists;
    ParameterEdits edits{audio};
    History::Time time{};
    History history{audio, edits, &lists};
};

TEST_F(UserHistory, AKnobDragIsOneStep) {
    const float before = value(par::Cutoff1);
    drag(par::Cutoff1, 0.9f);
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_EQ(history.undoName(), "Cutoff 1");
    host.told.clear();
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(value(par::Cutoff1), before);
    EXPECT_EQ(host.told, (std::vector<std::string>{"begin 97", "edit 97", "end 97"}));
    EXPECT_EQ(history.undoName(), "");
    EXPECT_EQ(history.redoName(), "Cutoff 1");
    EXPECT_TRUE(history.redo());
    EXPECT_EQ(value(par::Cutoff1), 0.9f);
    EXPECT_FALSE(history.redo());
}

TEST_F(UserHistory, StepsAreNamedByWhoeverKnowsBetter) {
    history.setNamer([](const std::vector<int>& indices) {
        std::string name = "Turn";
        for (const int index : indices) name += " " + std::to_string(index);
        return name;
    });
    drag(par::Cutoff1, 0.9f);
    EXPECT_EQ(history.undoName(), "Turn 97");
    {
        const History::Action event(history);
        for (int layer = 0; layer < 4; ++layer) edits.change(hostIndex(par::Reso1, layer), layer == 2 ? 0.0f : 0.8f);
        edits.change(par::Cutoff1, 0.1f);
    }
    EXPECT_EQ(history.undoName(), "Turn 99 399 999") << "of the layer that had the value already nothing changed";
}

TEST_F(UserHistory, ADragOfFourLayersIsOneStep) {
    for (int layer = 0; layer < 4; ++layer) rig.set(par::Reso1 + 1, 0.1f * layer, layer);
    for (int layer = 0; layer < 4; ++layer) edits.begin(hostIndex(par::Reso1 + 1, layer));
    for (int layer = 0; layer < 4; ++layer) edits.set(hostIndex(par::Reso1 + 1, layer), 0.8f);
    for (int layer = 0; layer < 4; ++layer) edits.end(hostIndex(par::Reso1 + 1, layer));
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_EQ(history.undoName(), "Reso 2");
    EXPECT_TRUE(history.undo());
    for (int layer = 0; layer < 4; ++layer) EXPECT_EQ(value(hostIndex(par::Reso1 + 1, layer)), 0.1f * layer);
}

TEST_F(UserHistory, WhatOneEventChangesIsOneStep) {
    rig.set(par::Layer2On, 0.0f);
    {
        const History::Action event(history);
        edits.change(par::Layer2On, 1.0f);
        edits.change(hostIndex(par::FxInMix, 1), 0.3f);
        edits.begin(hostIndex(par::FxInType, 1));
    }
    edits.set(hostIndex(par::FxInType, 1), 0.25f);
    edits.end(hostIndex(par::FxInType, 1));
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_EQ(history.undoName(), "FxInMix") << "the layer was woken by it";
    history.undo();
    EXPECT_EQ(value(par::Layer2On), 0.0f);
}

TEST_F(UserHistory, AModulationThatIsAddedIsOneStep) {
    for (const float source : {0.2f, 0.3f}) {
        time += 2s;
        edits.write(par::MatDst1 + 2, 0.5f);
        edits.write(par::MatSrc1 + 2, source);
        edits.write(par::MatVal1 + 2, 0.5f + source);
    }
    EXPECT_EQ(history.undoCount(), 2u);
    EXPECT_EQ(history.undoName(), "Modulation 3");
    history.undo();
    EXPECT_EQ(value(par::MatSrc1 + 2), 0.2f);
    history.undo();
    EXPECT_EQ(value(par::MatDst1 + 2), 0.0f);
    history.redo();
    EXPECT_EQ(value(par::MatVal1 + 2), 0.7f);
}

TEST_F(UserHistory, WhatIsWrittenDuringAGestureBelongsToIt) {
    edits.begin(par::FilType1);
    edits.set(par::FilType1, 0.25f);
    edits.write(par::Cutoff1, 0.125f);
    edits.end(par::FilType1);
    EXPECT_EQ(history.undoCount(), 1u);
    history.undo();
    EXPECT_NE(value(par::Cutoff1), 0.125f);
}

TEST_F(UserHistory, TurnsOfTheWheelWithinASecondAreOneStep) {
    const float before = value(par::Cutoff1);
    for (int i = 1; i <= 10; ++i) wheel(par::Cutoff1, 0.05f * i);
    EXPECT_EQ(history.undoCount(), 1u);
    wheel(par::Cutoff1 + 1, 0.5f);
    EXPECT_EQ(history.undoCount(), 2u) << "another knob";
    time += 1100ms;
    wheel(par::Cutoff1 + 1, 0.6f);
    EXPECT_EQ(history.undoCount(), 3u) << "later";
    drag(par::Cutoff1 + 1, 0.7f);
    wheel(par::Cutoff1 + 1, 0.8f);
    EXPECT_EQ(history.undoCount(), 5u) << "a drag is a step of its own";
    while (history.undo()) {
    }
    EXPECT_EQ(value(par::Cutoff1), before);
}

TEST_F(UserHistory, TheWheelTurnedOnAfterSavingIsAnotherStep) {
    wheel(par::Cutoff1, 0.1f);
    history.markSaved();
    wheel(par::Cutoff1, 0.2f);
    EXPECT_TRUE(history.isChanged());
    history.undo();
    EXPECT_FALSE(history.isChanged());
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
}

TEST_F(UserHistory, TheWheelTurnedBackLeavesNoStep) {
    const float before = value(par::Cutoff1);
    wheel(par::Cutoff1, 0.1f);
    wheel(par::Cutoff1, before);
    EXPECT_EQ(history.undoCount(), 0u);
    EXPECT_FALSE(history.isChanged());
}

TEST_F(UserHistory, EachClickOnASwitchIsAStep) {
    wheel(par::Sync1, 1.0f);
    wheel(par::Sync1, 0.0f);
    wheel(par::Sync1, 1.0f);
    EXPECT_EQ(history.undoCount(), 3u);
}

TEST_F(UserHistory, AGestureThatChangesNothingIsNoStep) {
    drag(par::Cutoff1, 0.9f);
    history.undo();
    drag(par::Cutoff1, value(par::Cutoff1));
    EXPECT_EQ(history.undoCount(), 0u);
    EXPECT_EQ(history.redoName(), "Cutoff 1") << "there still is something to do again";
}

TEST_F(UserHistory, ANewStepEndsWhatWasUndone) {
    drag(par::Cutoff1, 0.9f);
    drag(par::Reso1, 0.2f);
    history.undo();
    drag(par::Reso1, 0.7f);
    EXPECT_EQ(history.redoCount(), 0u);
    EXPECT_EQ(history.undoCount(), 2u);
}

TEST_F(UserHistory, UndoInTheMiddleOfADragTakesBackWhatItDidSoFar) {
    const float before = value(par::Cutoff1);
    edits.begin(par::Cutoff1);
    edits.set(par::Cutoff1, 0.9f);
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(value(par::Cutoff1), before);
    edits.set(par::Cutoff1, 0.3f);
    edits.end(par::Cutoff1);
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(value(par::Cutoff1), before);
}

TEST_F(UserHistory, MidiAndTheHostMakeNoSteps) {
    audio.setParameter(par::Cutoff1, 0.123f, ChangeSource::host);
    audio.setParameter(par::Reso1, 0.123f, ChangeSource::midi);
    EXPECT_EQ(history.undoCount(), 0u);
    EXPECT_FALSE(history.isChanged());
    drag(par::Reso1, 0.5f);
    audio.setParameter(par::Cutoff1, 0.2f, ChangeSource::host);
    history.undo();
    EXPECT_EQ(value(par::Cutoff1), 0.2f) << "the host's value stays";
    EXPECT_EQ(value(par::Reso1), 0.123f);
}

TEST_F(UserHistory, ALoadComesBackWithNamePlaceAndValues) {
    audio.program().setProgramName("First");
    lists.now = {"Pad", "First"};
    drag(par::Cutoff1, 0.11f);
    load("Glass Harbour", 0.7f);
    EXPECT_EQ(history.undoName(), "Load 'Glass Harbour'");
    EXPECT_EQ(history.undoCount(), 2u);
    const std::uint32_t loads = audio.patchesLoaded();
    EXPECT_TRUE(history.undo());
    EXPECT_EQ(audio.program().getProgramName(), "First");
    EXPECT_EQ(lists.now, (PatchPlace{"Pad", "First"}));
    EXPECT_EQ(value(par::Cutoff1), 0.11f);
    EXPECT_GT(audio.patchesLoaded(), loads) << "it came back as a patch does";
    EXPECT_EQ(host.told.back(), "patch");
    EXPECT_TRUE(history.redo());
    EXPECT_EQ(audio.program().getProgramName(), "Glass Harbour");
    EXPECT_EQ(lists.now, (PatchPlace{"Bass", "Glass Harbour"}));
    EXPECT_EQ(value(par::Cutoff1), 0.7f);
}

TEST_F(UserHistory, SamplesAndWavesComeBackWhateverTheOscillatorPlays) {
    giveSample(1, 2, 1000);
    CustomWaveSlot& slot = audio.layer(0).customWave(1);
    const CustomCycle cycle = slot.cycle;
    {
        const History::Command command(history, "Sample");
        giveSample(1, 2, 500, 7);
        giveSample(3, 0, 40);
        slot.forget();
        slot.cycle.fill(1234);
    }
    EXPECT_TRUE(history.undo());
    const Sample& sample = audio.layer(1).sample(2);
    EXPECT_EQ(sample.length, 1000);
    EXPECT_EQ(sample.levels[0][999], 1099);
    EXPECT_EQ(sample.loopEnd, 500);
    EXPECT_EQ(sample.sampleRate, 22050u);
    EXPECT_EQ(audio.layer(3).sample(0).length, 0);
    EXPECT_EQ(slot.cycle, cycle);
    EXPECT_TRUE(history.redo());
    EXPECT_EQ(audio.layer(1).sample(2).length, 500);
    EXPECT_EQ(audio.layer(1).sample(2).levels[0][0], 7);
    EXPECT_EQ(audio.layer(3).sample(0).length, 40);
}

TEST_F(UserHistory, AHalfMadeMatrixRowComesBackToo) {
    rig.setList(par::MatSrc1, 5);
    rig.setList(par::MatDst1, 0);
    load("Other", 0.5f);
    EXPECT_EQ(value(par::MatSrc1), 0.0f) << "a load tidies up";
    history.undo();
    EXPECT_EQ(value(par::MatSrc1), listValue(5));
}

TEST_F(UserHistory, ACommandOfParametersAloneIsTakenBackWithoutSilence) {
    const auto reset = [&] {
        const History::Command command(history, "Reset filters");
        edits.write(par::Reso1, 0.3f);
        edits.write(par::Reso1 + 1, 0.4f);
    };
    EXPECT_TRUE(soundsAfter([&] {
        reset();
        host.told.clear();
        EXPECT_TRUE(history.undo());
        EXPECT_EQ(host.told, std::vector<std::string>{"patch"});
    }));
}

TEST_F(UserHistory, AFailedCommandLeavesNoStep) {
    drag(par::Cutoff1, 0.4f);
    {
        const History::Command command(history, "Load 'broken'");
        edits.write(par::Cutoff1, 0.8f);
        edits.write(par::Cutoff1, 0.4f);
    }
    EXPECT_EQ(history.undoName(), "Cutoff 1");
}

TEST_F(UserHistory, SeveralStepsAreTakenBackAtOnce) {
    load("One", 0.1f);
    const auto begin = history.stateId();
    for (const auto& [name, cutoff] : {std::pair("Two", 0.2f), std::pair("Three", 0.3f), std::pair("Four", 0.4f)})
        load(name, cutoff);
    giveSample(1, 0, 500);
    EXPECT_TRUE(history.undoTo(begin));
    EXPECT_EQ(history.stateId(), begin);
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
    EXPECT_EQ(lists.now, (PatchPlace{"Bass", "One"}));
    EXPECT_FALSE(history.isChanged());
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_EQ(history.redoCount(), 3u);
    for (const auto& [name, cutoff] : {std::pair("Two", 0.2f), std::pair("Three", 0.3f), std::pair("Four", 0.4f)}) {
        EXPECT_EQ(history.redoName(), std::string("Load '") + name + "'");
        EXPECT_TRUE(history.redo());
        EXPECT_EQ(value(par::Cutoff1), cutoff) << name;
        EXPECT_EQ(lists.now.patch, name);
    }
    EXPECT_EQ(audio.layer(1).sample(0).length, 500) << "as it was when the steps were taken back";
    drag(par::Reso1, 0.9f);
    load("Five", 0.5f);
    EXPECT_TRUE(history.undoTo(begin)) << "past a knob";
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
    EXPECT_EQ(history.redoCount(), 5u);
    EXPECT_FALSE(history.undoTo(begin)) << "it is there";
    EXPECT_FALSE(history.undoTo(12345));
    EXPECT_EQ(history.redoCount(), 5u);
}

TEST_F(UserHistory, CommandsWithinCommandsAreOneStep) {
    {
        const History::Command outer(history, "Paste");
        const History::Command inner(history, "Load");
        edits.change(par::Cutoff1, 0.77f);
    }
    EXPECT_EQ(history.undoCount(), 1u);
    EXPECT_EQ(history.undoName(), "Paste");
}

TEST_F(UserHistory, APatchThatTheHostLoadsEndsTheHistory) {
    drag(par::Cutoff1, 0.4f);
    const ChunkBytes bytes = audio.patchChunk().getChunk();
    audio.patchChunk().setChunk(bytes.data.get(), bytes.size);
    history.follow();
    EXPECT_EQ(history.undoCount(), 0u);
    EXPECT_FALSE(history.undo());
    EXPECT_FALSE(history.isChanged());
}

TEST_F(UserHistory, UnsavedChangesEndWhereTheSavedStateComesBack) {
    EXPECT_FALSE(history.isChanged());
    drag(par::Cutoff1, 0.4f);
    EXPECT_TRUE(history.isChanged());
    history.undo();
    EXPECT_FALSE(history.isChanged());
    history.redo();
    EXPECT_TRUE(history.isChanged());
    history.markSaved();
    EXPECT_FALSE(history.isChanged());
    history.undo();
    EXPECT_TRUE(history.isChanged()) << "the file now holds the later state";
    history.redo();
    EXPECT_FALSE(history.isChanged());
}

TEST_F(UserHistory, ALoadedPatchIsUnchangedAndSoIsTheOneBeforeIt) {
    load("One", 0.1f);
    load("Two", 0.2f);
    EXPECT_FALSE(history.isChanged());
    drag(par::Reso1, 0.3f);
    EXPECT_TRUE(history.isChanged());
    history.undo();
    history.undo();
    EXPECT_FALSE(history.isChanged()) << "as it was loaded";
    EXPECT_EQ(audio.program().getProgramName(), "One");
}

TEST_F(UserHistory, AAndBKeepTheirPatches) {
    drag(par::Cutoff1, 0.1f);
    EXPECT_EQ(history.comparedSlot(), 0);
    EXPECT_TRUE(history.compare());
    EXPECT_EQ(history.comparedSlot(), 1);
    EXPECT_EQ(value(par::Cutoff1), 0.1f) << "B begins like A";
    drag(par::Cutoff1, 0.9f);
    EXPECT_TRUE(history.compare());
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
    EXPECT_TRUE(history.compare());
    EXPECT_EQ(value(par::Cutoff1), 0.9f);
    EXPECT_EQ(history.comparedSlot(), 1);
    EXPECT_EQ(history.undoCount(), 3u) << "coming back leaves no steps";
}

TEST_F(UserHistory, UndoGoesBackThroughAComparison) {
    drag(par::Cutoff1, 0.1f);
    history.compare();
    drag(par::Cutoff1, 0.9f);
    history.compare();
    drag(par::Cutoff1, 0.2f);
    EXPECT_EQ(history.undoCount(), 5u);
    history.undo();
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
    EXPECT_EQ(history.undoName(), "Compare with A");
    history.undo();
    EXPECT_EQ(value(par::Cutoff1), 0.9f);
    EXPECT_EQ(history.comparedSlot(), 1);
    history.undo();
    history.undo();
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
    EXPECT_EQ(history.comparedSlot(), 0);
    while (history.redo()) {
    }
    EXPECT_EQ(value(par::Cutoff1), 0.2f);
    EXPECT_EQ(history.comparedSlot(), 0);
    history.compare();
    EXPECT_EQ(value(par::Cutoff1), 0.9f);
}

TEST_F(UserHistory, CopyingAToBCanBeTakenBack) {
    drag(par::Cutoff1, 0.1f);
    history.compare();
    drag(par::Cutoff1, 0.9f);
    EXPECT_TRUE(history.copyToOther());
    EXPECT_EQ(history.undoName(), "Copy to A");
    history.compare();
    EXPECT_EQ(value(par::Cutoff1), 0.9f);
    history.undo();
    history.undo();
    history.compare();
    EXPECT_EQ(value(par::Cutoff1), 0.1f);
}

// ---- memory

TEST_F(UserHistory, AStepOfAKnobIsSmall) {
    drag(par::Cutoff1, 0.5f);
    const std::size_t before = history.memoryUsed();
    for (int i = 0; i < 1000; ++i) drag(par::Cutoff1, 0.4f + 0.0001f * static_cast<float>(i));
    EXPECT_EQ(history.undoCount(), 1001u);
    EXPECT_LT((history.memoryUsed() - before) / 1000, 200u);
}

TEST_F(UserHistory, LoadsShareTheirSamplesAndWaves) {
    giveSample(0, 0, 1000000);
    load("first", 0.3f);
    const std::size_t before = history.memoryUsed();
    for (int i = 0; i < 50; ++i) load("patch " + std::to_string(i), 0.01f * static_cast<float>(i));
    EXPECT_LT((history.memoryUsed() - before) / 50, 8000u) << "a sample of 2 MB is kept once";
}

TEST_F(UserHistory, TheOldestStepsGoWhenMemoryIsUsedUp) {
    history.setMemoryLimit(1 << 20);
    for (int i = 0; i < 20; ++i) {
        const History::Command command(history, "Sample " + std::to_string(i));
        giveSample(0, 0, 100000, static_cast<std::int16_t>(i));
    }
    EXPECT_LE(history.memoryUsed(), 1u << 20);
    EXPECT_GE(history.undoCount(), 4u);
    EXPECT_LT(history.undoCount(), 6u);
    EXPECT_EQ(history.undoName(), "Sample 19");
    while (history.undo()) {
    }
    EXPECT_EQ(audio.layer(0).sample(0).levels[0][0], 14) << "five steps of 200 KB back";
}

TEST_F(UserHistory, AnyOrderOfStepsComesBackToWhereItBegan) {
    LinearCongruence random{5};
    const auto below = [&](int n) { return static_cast<int>((random.next() >> 16) % static_cast<unsigned>(n)); };
    for (int round = 0; round < 20; ++round) {
        std::vector<float> start;
        for (int i = 0; i < parameterCount; ++i) start.push_back(value(i));
        history.clear();
        for (int i = 0; i < 40; ++i) {
            const float to = 0.01f * static_cast<float>(below(100));
            switch (below(8)) {
                case 0: load("patch " + std::to_string(below(5)), to); break;
                case 1: history.compare(); break;
                case 2: history.undo(); break;
                case 3: history.redo(); break;
                case 4: history.copyToOther(); break;
                case 5: wheel(par::Cutoff1 + below(2), to); break;
                default: drag(hostIndex(par::Reso1 + below(2), below(4)), to); break;
            }
        }
        while (history.undo()) {
        }
        for (int i = 0; i < parameterCount; ++i) ASSERT_EQ(value(i), start[static_cast<std::size_t>(i)]) << "round " << round;
        EXPECT_FALSE(history.isChanged());
    }
}

}  // namespace
}  // namespace vantoric::test
