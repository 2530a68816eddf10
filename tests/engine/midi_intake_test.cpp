#include "engine/midi_intake.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/numbers.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

using Call = PatchBench::Call;
using Calls = std::vector<Call>;

// An instrument that hears all channels on layer 1 only, so that calls are easy to read.
struct MidiInput : ::testing::Test, PatchBench {
    MidiInput() {
        for (int layer = 1; layer < 4; ++layer) split(layer, 17);
    }
    void split(int layer, int index) { parameters.writeRaw(hostIndex(parameter::MidiSpli, layer), listValue(index)); }
    int queuedEvents() const {
        int count = 0;
        for (int place = 0; place < MidiIntake::queuePlaces; ++place) count += intake.queued(place).status != 0;
        return count;
    }
};

TEST_F(MidiInput, NoteWaitsForItsFrame) {
    receive(0x90, 60, 100, 10);
    intake.drainMidiQueue(9);
    EXPECT_TRUE(calls.empty());
    intake.drainMidiQueue(10);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 60, 100}}));
    EXPECT_EQ(state.heldNote[60], 1);
    EXPECT_EQ(queuedEvents(), 0);
}

TEST_F(MidiInput, OrderOfThePlacesDecidesWithinADrain) {
    receive(0x90, 60, 100, 30);
    receive(0x90, 61, 100, 0);
    intake.drainMidiQueue(30);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 60, 100}, {"noteOn", 0, 61, 100}}));
}

TEST_F(MidiInput, EventMissedByABlockIsTakenInTheNextAtTheSameOffset) {
    receive(0x90, 60, 100, 500);
    intake.drainMidiQueue(499);
    intake.drainMidiQueue(44);
    EXPECT_TRUE(calls.empty());
    intake.drainMidiQueue(510);
    EXPECT_EQ(calls.size(), 1u);
}

// Blocks may have become shorter for good.
TEST_F(MidiInput, EventThatTwoBlocksDidNotReachIsTakenInTheThird) {
    receive(0x80, 60, 0, 600);
    for (int block = 0; block < 2; ++block) {
        intake.beginBlock();
        for (int pos = 0; pos <= 512; pos += 48) intake.drainMidiQueue(pos);
        EXPECT_TRUE(calls.empty());
    }
    intake.beginBlock();
    intake.drainMidiQueue(0);
    EXPECT_EQ(calls, (Calls{{"noteOff", 0, 60, 0}}));
    EXPECT_EQ(queuedEvents(), 0);
}

TEST_F(MidiInput, SilentBlocksAreNotCountedAsWaiting) {
    receive(0x80, 60, 0, 600);
    state.flags.engineLocked.set();
    for (int block = 0; block < 5; ++block) {
        intake.beginBlock();
        intake.drainMidiQueue(512);
    }
    state.flags.engineLocked.clear();
    intake.beginBlock();
    intake.drainMidiQueue(512);
    EXPECT_TRUE(calls.empty());
}

TEST_F(MidiInput, AnEndThatAFullQueueLosesComesWithTheNextBlock) {
    play(0x90, 60, 100);
    calls.clear();
    receive(0x80, 60, 0, 0);
    for (int i = 0; i < MidiIntake::queuePlaces; ++i) receive(0xe0, 0, 64, 0);
    intake.beginBlock();
    intake.drainMidiQueue(0);
    EXPECT_EQ(calls, (Calls{{"noteOff", 0, 60, 0}}));
    EXPECT_TRUE(intake.nothingHeld());
    intake.beginBlock();
    intake.drainMidiQueue(0);
    EXPECT_EQ(calls.size(), 1u) << "once";
}

TEST_F(MidiInput, ALostEndWaitsForItsQueuedBegin) {
    receive(0xe0, 0, 64, 0);
    receive(0x90, 61, 100, 300);
    for (int i = 2; i < MidiIntake::queuePlaces; ++i) receive(0xe0, 0, 64, 0);
    receive(0x80, 61, 0, 400);
    receive(0xe0, 0, 64, 0);  // over that end
    intake.beginBlock();
    intake.drainMidiQueue(299);
    EXPECT_TRUE(calls.empty());
    intake.drainMidiQueue(511);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 61, 100}}));
    intake.beginBlock();
    intake.drainMidiQueue(0);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 61, 100}, {"noteOff", 0, 61, 0}}));
}

TEST_F(MidiInput, AKeyStruckAgainAfterALostEndIsHeld) {
    play(0x90, 60, 100);
    receive(0x80, 60, 0, 0);
    for (int i = 0; i < MidiIntake::queuePlaces; ++i) receive(0xe0, 0, 64, 0);
    receive(0x90, 60, 90, 0);
    for (int block = 0; block < 3; ++block) {
        intake.beginBlock();
        intake.drainMidiQueue(0);
    }
    EXPECT_FALSE(intake.nothingHeld());
}

TEST_F(MidiInput, NothingIsDrainedWhileTheEngineIsLocked) {
    receive(0x90, 60, 100, 0);
    state.flags.engineLocked.set();
    intake.drainMidiQueue(1000);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(queuedEvents(), 1);
    state.flags.engineLocked.clear();
    intake.drainMidiQueue(1000);
    EXPECT_EQ(calls.size(), 1u);
}

TEST_F(MidiInput, VelocityZeroIsANoteOff) {
    play(0x90, 60, 100);
    play(0x90, 60, 0);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 60, 100}, {"noteOff", 0, 60}}));
    EXPECT_EQ(state.heldNote[60], 0);
}

TEST_F(MidiInput, VelocityZeroDuringSustainMarksTheKey) {
    play(0xb0, 64, 127);
    play(0x90, 60, 100);
    play(0x90, 60, 0);
    EXPECT_TRUE(intake.sustainedOff(60));
    EXPECT_EQ(state.heldNote[60], 1);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 60, 100}}));
}

TEST_F(MidiInput, KeyPressedAgainUnderThePedalIsReleasedWithIt) {
    play(0xb0, 64, 64);
    play(0x90, 60, 100);
    play(0x80, 60, 0);
    play(0x90, 60, 90);
    EXPECT_TRUE(intake.sustainedOff(60));
    calls.clear();
    play(0xb0, 64, 63);
    EXPECT_EQ(calls, (Calls{{"noteOff", 0, 60}}));
    EXPECT_FALSE(intake.sustainedOff(60));
    EXPECT_FALSE(intake.sustainOn());
    EXPECT_FALSE(state.pedalRelease);
}

TEST_F(MidiInput, LayersCanTellDeferredNoteOffs) {
    struct Watcher : MidiListener {
        explicit Watcher(const EngineState& s) : state(s) {}
        void noteOn(int, int, int) override {}
        void noteOff(int, int) override { marks.push_back(state.pedalRelease); }
        void allNotesOff() override {}
        void resetEngine() override {}
        void programPending(int) override {}
        const EngineState& state;
        std::vector<bool> marks;
    } watcher(state);
    MidiIntake watched(state, parameters, ccMap, watcher);
    const auto send = [&](std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
        watched.enqueueMidi(status, data1, data2, 0);
        watched.drainMidiQueue(0);
    };
    send(0x80, 50, 0);
    send(0xb0, 64, 127);
    send(0x80, 51, 0);
    send(0xb0, 64, 0);
    EXPECT_EQ(watcher.marks, (std::vector<bool>{false, true}));
}

TEST_F(MidiInput, PedalReleasesOnChannelZero) {
    split(0, 3);
    split(1, 1);
    play(0x92, 60, 100);
    play(0xb2, 64, 127);
    play(0x82, 60, 0);
    calls.clear();
    play(0xb2, 64, 0);
    EXPECT_EQ(calls, (Calls{{"noteOff", 1, 60}}));
}

TEST_F(MidiInput, LayersHearTheirOwnChannel) {
    for (int layer = 0; layer < 4; ++layer) split(layer, layer);
    play(0x90, 60, 1);
    play(0x91, 61, 2);
    EXPECT_EQ(calls, (Calls{{"noteOn", 0, 60, 1}, {"noteOn", 1, 60, 1}, {"noteOn", 0, 61, 2}, {"noteOn", 2, 61, 2}}));
}

TEST_F(MidiInput, ASplitAbove16HearsNothing) {
    split(0, 17);
    for (int channel = 0; channel < 16; ++channel) play(static_cast<std::uint8_t>(0x90 | channel), 60, 100);
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(state.heldNote[60], 1);
}

TEST_F(MidiInput, The257thEventOverwritesTheFirst) {
    for (int k = 0; k < 257; ++k) receive(0x90, static_cast<std::uint8_t>(k % 128), static_cast<std::uint8_t>(1 + k % 3), 5);
    EXPECT_EQ(queuedEvents(), 256);
    EXPECT_EQ(intake.queued(0).data1, 256 % 128);
    EXPECT_EQ(intake.queued(0).data2, 1 + 256 % 3);
    EXPECT_EQ(intake.queued(1).data1, 1);
    EXPECT_EQ(intake.queued(255).data1, 127);
}

TEST_F(MidiInput, HighDataBytesBecomeZeroInTheCallersEventToo) {
    std::uint8_t data1 = 200, data2 = 130;
    intake.receive(0x90, data1, data2, 0);
    EXPECT_EQ(data1, 0);
    EXPECT_EQ(data2, 0);
    EXPECT_EQ(intake.queued(0).data1, 0);
    EXPECT_EQ(intake.queued(0).data2, 0);
}

TEST_F(MidiInput, OtherStatusesAreFreedWithoutAction) {
    for (const int status : {0x10, 0x7f, 0xa0, 0xf0, 0xf8}) receive(static_cast<std::uint8_t>(status), 60, 70, 0);
    EXPECT_EQ(queuedEvents(), 5);
    intake.drainMidiQueue(0);
    EXPECT_EQ(queuedEvents(), 0);
    EXPECT_TRUE(calls.empty());
}

TEST_F(MidiInput, BytesOfTheEditorAreHeldToTheTables) {
    for (int status = 0x80; status < 0xf0; status += 0x10) {
        intake.enqueueMidi(static_cast<std::uint8_t>(status), 255, 255, 0);
        intake.enqueueMidi(static_cast<std::uint8_t>(status), 60, 255, 0);
    }
    intake.drainMidiQueue(0);
    EXPECT_EQ(calls, (Calls{{"noteOff", 0, 60}, {"noteOn", 0, 60, 127}}));
}

TEST_F(MidiInput, LearnTakesTheFirstControllerOfAnyChannelAndValue) {
    intake.setLearnPending(parameter::Cutoff1);
    receive(0x90, 20, 99, 0);
    EXPECT_EQ(intake.learnPending(), parameter::Cutoff1);
    EXPECT_FALSE(intake.ccMapDirty());
    receive(0xb7, 20, 0, 700);
    EXPECT_EQ(ccMap.get(20), parameter::Cutoff1);
    EXPECT_EQ(intake.learnPending(), ControllerMap::none);
    EXPECT_TRUE(intake.ccMapDirty());
}

TEST_F(MidiInput, TheLearnedMessageSetsTheParameterAtOnce) {
    intake.setLearnPending(parameter::Cutoff1);
    receive(0xb0, 20, 32, 700);
    EXPECT_EQ(parameters.getParameter(parameter::Cutoff1), 0.25f);
    receive(0xb3, 20, 127, 900);
    EXPECT_EQ(parameters.getParameter(parameter::Cutoff1), 127.0f / 128);
    EXPECT_EQ(state.ccValue[20], 0.0f);
    EXPECT_EQ(queuedEvents(), 2);
}

TEST_F(MidiInput, AMapEntryBeyondTheParametersDoesNothing) {
    ccMap.set(9, 2000);
    play(0xb0, 9, 100);
    EXPECT_EQ(state.ccValue[9], 100.0f / 128);
}

TEST_F(MidiInput, ControllersEndInTheirTable) {
    play(0xb5, 2, 96);
    EXPECT_EQ(state.ccValue[2], 0.75f);
    play(0xb0, 1, 64);
    EXPECT_EQ(state.ccValue[1], 0.5f);
    EXPECT_EQ(parameters.getParameter(parameter::Modwheel), 0.5f);
}

TEST_F(MidiInput, SoundOffAndNotesOffResetTheEngine) {
    for (const std::uint8_t controller : {120, 123}) {
        calls.clear();
        play(0xb0, 64, 127);
        play(0x90, 60, 100);
        play(0x80, 60, 0);
        calls.clear();
        play(0xb0, controller, 0);
        EXPECT_EQ(calls, (Calls{{"allNotesOff"}, {"resetEngine"}}));
        EXPECT_EQ(heldNotes(), 0);
        EXPECT_FALSE(intake.sustainOn());
        EXPECT_FALSE(intake.sustainedOff(60));
    }
}

TEST_F(MidiInput, AllNotesOffReachesAllLayersButNotTheHighestKey) {
    state.heldNote.fill(1);
    allNotesOff();
    EXPECT_EQ(heldNotes(), 0);
    for (int key = 0; key < 127; ++key) EXPECT_EQ(quietNoteOffs[key], 4) << key;
    EXPECT_EQ(quietNoteOffs[127], 0);
}

TEST_F(MidiInput, AllNotesOffForgetsTheKeysOfEveryChannel) {
    for (const int channel : {0, 7, 15}) play(static_cast<std::uint8_t>(0x90 + channel), 60, 100);
    EXPECT_FALSE(intake.nothingHeld());
    EXPECT_TRUE(intake.keysHeard(0).test(60));
    allNotesOff();
    EXPECT_TRUE(intake.nothingHeld());
    EXPECT_TRUE(intake.keysHeard(0).none());
}

TEST_F(MidiInput, ResetControllersClearsTheTableAndCentresTheWheel) {
    parameters.writeRaw(parameter::PitchWhl, listValue(6));
    play(0xe0, 127, 127);
    play(0xd0, 90, 0);
    play(0xb0, 7, 100);
    EXPECT_EQ(intake.pitchWheel(), 1.0f);
    EXPECT_EQ(intake.channelPressure(), 90.0f / 128);
    EXPECT_NEAR(state.pitchBendFactor, 2.0, 1e-6);
    play(0xb0, 121, 5);
    EXPECT_EQ(intake.pitchWheel(), 0.5f);
    EXPECT_EQ(intake.channelPressure(), 0.0f);
    EXPECT_EQ(state.pitchBendFactor, 1.0f);
    for (const float value : state.ccValue) EXPECT_EQ(value, 0.0f);
}

TEST_F(MidiInput, ProgramChangeIsHandedOn) {
    play(0xc3, 42, 0);
    EXPECT_EQ(pendingPrograms, (std::vector<int>{42}));
}

TEST_F(MidiInput, ResetsLeaveTheQueue) {
    receive(0x90, 60, 100, 500);
    allNotesOff();
    resetEngine();
    EXPECT_EQ(queuedEvents(), 1);
}

TEST_F(MidiInput, EditorAndHostMayQueueAtOnce) {
    const int each = 20000;
    std::thread editor([&] {
        for (int k = 0; k < each; ++k) intake.enqueueMidi(0x90, 10, 10, 0);
    });
    for (int k = 0; k < each; ++k) {
        receive(0x90, 100, 100, 0);
        intake.drainMidiQueue(0);
    }
    editor.join();
    intake.drainMidiQueue(0);
    EXPECT_EQ(queuedEvents(), 0);
    EXPECT_FALSE(calls.empty());
    for (const Call& call : calls) EXPECT_EQ(call.key, call.velocity);  // no event is torn
}

}  // namespace
}  // namespace vantoric
