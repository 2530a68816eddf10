#include "voice/arpeggiator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"

namespace vantoric {
namespace {

namespace par = parameter;

// List indices.
enum Type {
    typeOff = 0,
    up = 2,
    up2 = 3,
    down = 6,
    altUp = 10,
    altDown = 11,
    pop = 12,
    pop2 = 13,
    chordGate = 15,
    stack = 17,
    root = 18
};
enum Event { dot = 0, velocity1 = 2, velocity8 = 9, releaseEvent = 11, loopEvent = 13, endEvent = 14, sortEvent = 16 };
enum Pitch { semitone12 = 12, minus12 = 21, glideUp12 = 50, third = 94, tenth = 95 };
enum Chord { noChord = 0, firstSeparatorChord = 1, triad = 2, separatorChord = 7, fifth2 = 8, minor3 = 18 };
constexpr int oneBpm = 4;
constexpr int ticksPerStep = 100;

// Writes down what the arpeggiator asks of its layer: "+60v127", "-60", "release", "stop all".
struct Log final : ArpeggiatorTarget {
    void startNote(int note, int velocity) override {
        EXPECT_TRUE(note >= 0 && note <= 127 && velocity >= 0 && velocity <= 127);
        write('+', std::to_string(note) + "v" + std::to_string(velocity));
        started.push_back(note);
    }
    void stopNote(int note) override {
        write('-', std::to_string(note));
        if (note == 127 && entries.size() >= 128 && entries[entries.size() - 128] == "-0") {
            entries.resize(entries.size() - 128);
            entries.push_back("stop all");
        }
    }
    void releaseAllEnvelopes() override { entries.push_back("release"); }

    void write(char sign, const std::string& text) {
        entries.emplace_back(1, sign);
        entries.back() += text;
    }

    std::vector<std::string> entries;
    std::vector<int> started;
};

using Notes = std::vector<int>;
using Entries = std::vector<std::string>;

class ArpeggiatorTest : public testing::Test {
protected:
    ArpeggiatorTest() {
        engine.ticksPerSecond = 1000.0;
        engine.tempoBpm = 150.0;  // at one step per sixteenth a step is 100 ticks
        set(par::ArpSpeed, oneBpm);
        set(par::ArpRetri, 1);
        for (int step = 0; step < 16; ++step) set(par::ArpVol1 + step, velocity8);
        select(up);
    }

    void set(int number, int index) { block[static_cast<std::size_t>(number)] = listValue(index); }
    void setEvent(int step, Event event) { set(par::ArpVol1 + step, event); }
    void setPitch(int step, Pitch pitch) { set(par::ArpStp1 + step, pitch); }
    void useSongPosition() { set(par::ArpRetri, 0); }

    // Chooses a type from the start, as after a patch was loaded.
    void select(Type type, Chord chord = noChord) {
        set(par::ArpType, type);
        set(par::ArpChord, chord);
        arpeggiator.reset(block.data());
    }

    void press(int note, int velocity = 100) { arpeggiator.noteOn(note, velocity, block.data(), log); }
    void lift(int note) { arpeggiator.noteOff(note, block.data(), log); }
    void tick(int count = 1) {
        for (int i = 0; i < count; ++i) arpeggiator.tick(block.data(), engine, log);
    }
    // What a number of steps start.
    Notes steps(int count) {
        log.started.clear();
        tick(count * ticksPerStep);
        return log.started;
    }
    Entries entriesOf(int ticks) {
        log.entries.clear();
        tick(ticks);
        return log.entries;
    }

    std::array<float, layerParameterEnd> block{};
    EngineState engine;
    Arpeggiator arpeggiator;
    Log log;
};

// ---- off and on ------------------------------------------------------------------------------------------------

TEST_F(ArpeggiatorTest, OffPassesKeysStraightOn) {
    select(typeOff);
    press(60, 33);
    tick();
    lift(60);
    tick(500);
    EXPECT_EQ(log.entries, (Entries{"+60v33", "-60"}));
}

TEST_F(ArpeggiatorTest, SwitchingOffStopsAllKeysOnce) {
    press(60);
    tick(10);
    set(par::ArpType, typeOff);
    EXPECT_EQ(entriesOf(5), (Entries{"stop all"}));
}

TEST_F(ArpeggiatorTest, AnotherTypeOrChordStopsAllKeysAndForgetsThem) {
    press(60);
    tick(10);
    set(par::ArpType, down);
    EXPECT_EQ(entriesOf(1), (Entries{"stop all"}));
    EXPECT_EQ(steps(2), Notes{});
    press(64);
    tick();
    set(par::ArpChord, triad);
    EXPECT_EQ(entriesOf(1), (Entries{"stop all"}));
    EXPECT_EQ(steps(2), Notes{});
}

TEST_F(ArpeggiatorTest, TheFirstKeyAfterAResetCounts) {
    select(stack, triad);
    press(60, 99);
    EXPECT_EQ(log.started, (Notes{60, 64, 67}));
    select(up, triad);
    press(62);
    EXPECT_EQ(steps(3), (Notes{62, 65, 69}));
}

TEST_F(ArpeggiatorTest, SeparatorTypesRunAndPlayNothing) {
    for (const int type : {1, 14, 16, 19, 100, 127}) {
        select(static_cast<Type>(type));
        press(60);
        EXPECT_EQ(steps(3), Notes{}) << type;
    }
}

// ---- sequence ---------------------------------------------------------------------------------------------------

TEST_F(ArpeggiatorTest, AFirstKeyRestartsTheSequenceInTriggerMode) {
    setEvent(0, velocity1);
    press(60);
    tick(250);
    lift(60);
    tick(33);
    press(62);
    EXPECT_EQ(entriesOf(100), (Entries{"release", "+62v14"}));
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+62v127"}));
}

TEST_F(ArpeggiatorTest, ANewKeyStartsInTheMiddleOfThePatternInSongMode) {
    useSongPosition();
    setEvent(5, velocity1);
    engine.songPosition = 5.5 / 4.0;
    press(60);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v14"}));
}

TEST_F(ArpeggiatorTest, InSongModeWithAStoppedTransportOnlyAKeyChangeMatters) {
    useSongPosition();
    engine.songPosition = 2.3;
    press(60);
    EXPECT_EQ(entriesOf(1000), (Entries{"release", "+60v127"}));
    press(64);
    EXPECT_EQ(entriesOf(1000), Entries{});
    lift(60);
    lift(64);
    EXPECT_EQ(entriesOf(1000), Entries{});
    press(65);
    EXPECT_EQ(entriesOf(1000), (Entries{"release", "+65v127"}));
}

TEST_F(ArpeggiatorTest, ADotAsTheFirstStepPlaysNothingUntilANumberedStep) {
    setEvent(0, dot);
    setEvent(1, dot);
    press(60);
    EXPECT_EQ(entriesOf(200), Entries{});
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v127"}));
}

TEST_F(ArpeggiatorTest, ADotHoldsAndAnRReleases) {
    setEvent(1, dot);
    setEvent(2, releaseEvent);
    press(60);
    EXPECT_EQ(entriesOf(200), (Entries{"release", "+60v127"}));
    EXPECT_EQ(entriesOf(100), (Entries{"release"}));
}

TEST_F(ArpeggiatorTest, AnLAtIndexEightGivesEightSteps) {
    setEvent(0, velocity1);
    setEvent(8, loopEvent);
    press(60);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v14"}));
    tick(799);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v14"}));
}

TEST_F(ArpeggiatorTest, AnLAtTheFirstStepHasNoEffect) {
    setEvent(0, loopEvent);
    press(60);
    EXPECT_EQ(steps(16).size(), 15u);
}

TEST_F(ArpeggiatorTest, TheLowestLoopStepWins) {
    setEvent(12, loopEvent);
    setEvent(2, loopEvent);
    setEvent(0, velocity1);
    press(60);
    tick(200);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v14"}));
}

TEST_F(ArpeggiatorTest, AnEPlaysThroughItsStepAndStopsForGoodUntilAllKeysWereUp) {
    setEvent(8, endEvent);
    press(60);
    EXPECT_EQ(steps(9).size(), 8u);
    EXPECT_EQ(entriesOf(1), (Entries{"stop all"}));
    press(64);
    EXPECT_EQ(entriesOf(3000), Entries{});
    lift(60);
    EXPECT_EQ(entriesOf(100), Entries{});
    lift(64);
    press(65);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+65v127"}));
}

TEST_F(ArpeggiatorTest, AnEndedSequenceGoesOnInSongMode) {
    setEvent(1, endEvent);
    press(60);
    tick(300);
    useSongPosition();
    engine.songPosition = 1.0;
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v127"}));
}

TEST_F(ArpeggiatorTest, AnELoopsInSongMode) {
    useSongPosition();
    setEvent(0, velocity1);
    setEvent(4, endEvent);
    engine.songPosition = 4.1 / 4.0;
    press(60);
    EXPECT_EQ(entriesOf(1), (Entries{"release", "+60v14"}));
}

TEST_F(ArpeggiatorTest, UpTwoPlaysAllKeysInOneOctaveAndThenInTheNext) {
    select(up2);
    press(60);
    press(64);
    EXPECT_EQ(steps(6), (Notes{60, 64, 72, 76, 60, 64}));
}

TEST_F(ArpeggiatorTest, AnSJumpsBackToTheLowestKeyAndStepsTheOctave) {
    select(up2);
    setEvent(1, sortEvent);
    press(60);
    press(64);
    EXPECT_EQ(entriesOf(300), (Entries{"release", "+60v127", "release", "+72v126", "release", "+76v127"}));
}

TEST_F(ArpeggiatorTest, WalksTurnAndWrap) {
    const std::pair<Type, Notes> walks[] = {
        {up, {60, 64, 67, 60, 64, 67}},      {down, {67, 64, 60, 67, 64, 60}}, {altUp, {60, 64, 67, 64, 60, 64}},
        {altDown, {67, 64, 60, 64, 67, 64}}, {pop, {60, 64, 60, 67, 60, 64}},  {pop2, {67, 60, 64, 60, 67, 60}},
    };
    for (const auto& [type, notes] : walks) {
        select(type);
        press(64);
        press(60);
        press(67);
        EXPECT_EQ(steps(6), notes) << type;
    }
}

TEST_F(ArpeggiatorTest, EveryWalkPlaysALoneKeyOnEveryStep) {
    for (const Type type : {up, down, altUp, altDown, pop, pop2, chordGate}) {
        select(type);
        press(60);
        EXPECT_EQ(steps(5), (Notes(5, 60))) << type;
    }
}

TEST_F(ArpeggiatorTest, SwingMovesTheSecondToFourthStepOfEachFour) {
    block[par::ArpSwing] = 1.0f;
    press(60);
    std::vector<int> starts;
    for (int t = 0; t < 900; ++t) {
        const std::size_t before = log.started.size();
        tick();
        if (log.started.size() != before) starts.push_back(t);
    }
    // Thirds of a step are 33.3 and 66.6 ticks.
    EXPECT_EQ(starts, (std::vector<int>{0, 134, 267, 334, 400, 534, 667, 734, 800}));
}

TEST_F(ArpeggiatorTest, AChordGateStartsAllKeysAndThoseThatJoin) {
    select(chordGate);
    press(60);
    press(64);
    EXPECT_EQ(entriesOf(10), (Entries{"release", "+60v127", "+64v127"}));
    press(67);
    EXPECT_EQ(entriesOf(90), (Entries{"release", "+67v127"}));
    EXPECT_EQ(entriesOf(10), (Entries{"release", "+60v127", "+64v127", "+67v127"}));
}

TEST_F(ArpeggiatorTest, AChordGateThatBeginsAnewLetsKeysJoinAgain) {
    select(chordGate);
    press(60);
    tick(150);
    lift(60);
    tick();
    press(62);
    EXPECT_EQ(entriesOf(10), (Entries{"release", "+62v127"}));
    press(65);
    EXPECT_EQ(entriesOf(10), (Entries{"release", "+65v127"}));
}

// ---- pitch column ----------------------------------------------------------------------------------------------

TEST_F(ArpeggiatorTest, AThirdFollowsTheScaleOfCMajor) {
    setPitch(0, third);
    setPitch(1, tenth);
    const std::pair<int, Notes> cases[] = {{60, {64, 76}}, {62, {65, 77}}, {65, {69, 81}}, {71, {74, 86}}};
    for (const auto& [key, notes] : cases) {
        select(up);
        press(key);
        EXPECT_EQ(steps(2), notes);
    }
}

TEST_F(ArpeggiatorTest, AGlideRisesAnOctaveAcrossItsStepAndIsForgottenByTheNext) {
    setPitch(0, glideUp12);
    press(60);
    tick();
    EXPECT_EQ(arpeggiator.slideFactor(), 1.0f);
    tick(50);
    EXPECT_NEAR(arpeggiator.slideFactor(), 1.41421f, 1e-4f);
    tick(49);
    EXPECT_NEAR(arpeggiator.slideFactor(), 1.98618f, 1e-4f);  // 99 hundredths of an octave
    EXPECT_EQ(log.started, Notes{60});
    tick();
    EXPECT_EQ(arpeggiator.slideFactor(), 1.0f);
}

TEST_F(ArpeggiatorTest, AResetEndsAGlide) {
    setPitch(0, glideUp12);
    press(60);
    tick(50);
    EXPECT_GT(arpeggiator.slideFactor(), 1.2f);
    arpeggiator.reset(block.data());
    EXPECT_EQ(arpeggiator.slideFactor(), 1.0f);
}

TEST_F(ArpeggiatorTest, ANoteBeyondTheKeyboardPlaysKeyZero) {
    setPitch(0, semitone12);
    press(120);
    EXPECT_EQ(steps(1), Notes{0});
    select(up);
    setPitch(0, minus12);
    press(5);
    EXPECT_EQ(steps(1), Notes{0});
}

// ---- chords and roots ------------------------------------------------------------------------------------------

TEST_F(ArpeggiatorTest, TheNewestKeyBecomesTheRootOfTheChord) {
    select(up, triad);
    press(60);
    EXPECT_EQ(steps(3), (Notes{60, 64, 67}));
    press(65);
    tick();
    lift(60);
    const Notes after = steps(3);
    for (const int note : after) EXPECT_TRUE(note == 65 || note == 69 || note == 72) << note;
    lift(65);
    EXPECT_EQ(steps(3), Notes{});
}

TEST_F(ArpeggiatorTest, ASeparatorChordLeavesNoKeys) {
    select(up, separatorChord);
    press(60);
    EXPECT_EQ(steps(4), Notes{});
}

TEST_F(ArpeggiatorTest, TheFirstSeparatorChordKeepsTheNewestKeyAlone) {
    select(up, firstSeparatorChord);
    press(60);
    EXPECT_EQ(steps(2), (Notes{60, 60}));
    press(64);
    EXPECT_EQ(steps(2), (Notes{64, 64}));
}

TEST_F(ArpeggiatorTest, AnotherTypeForgetsTheHeldKeysOfAChord) {
    select(up, triad);
    press(60);
    tick(10);
    set(par::ArpType, down);
    tick();
    press(62);
    tick();
    lift(62);
    EXPECT_EQ(steps(2), Notes{});
}

TEST_F(ArpeggiatorTest, ChordKeysBeyondTheKeyboardAreLeftOut) {
    select(up, triad);
    press(124);
    EXPECT_EQ(steps(3), (Notes{124, 127, 124}));
}

TEST_F(ArpeggiatorTest, AStackPlaysItsChordOnEachKeyAtItsVelocity) {
    select(stack, fifth2);
    tick();
    press(60, 35);
    press(67, 90);  // shares key 67 with the first chord
    lift(60);
    lift(67);
    EXPECT_EQ(log.entries, (Entries{"+60v35", "+67v35", "-67", "+67v90", "+74v90", "-60", "-67", "-67", "-74", "stop all"}));
    EXPECT_EQ(entriesOf(500), Entries{});
}

TEST_F(ArpeggiatorTest, AStackWithoutAChordStopsJustItsKey) {
    select(stack);
    tick();
    press(60, 35);
    press(64, 36);
    log.entries.clear();
    lift(60);
    EXPECT_EQ(log.entries, (Entries{"-60"}));
}

TEST_F(ArpeggiatorTest, ChordRootPlaysOnlyTheRootOfTheHeldKeys) {
    select(root);
    tick();
    press(64, 80);
    press(67, 81);  // a minor third on 64
    press(72, 82);  // C major: the root moves to 72
    lift(72);
    lift(64);
    lift(67);
    EXPECT_EQ(log.entries,
              (Entries{"stop all", "+64v80", "stop all", "+72v82", "stop all", "+64v64", "stop all", "+67v64", "stop all"}));
}

TEST_F(ArpeggiatorTest, ChordRootOfKeyZeroAloneIsSilent) {
    select(root);
    tick();
    press(0, 80);
    lift(0);
    EXPECT_EQ(log.started, Notes{});
}

TEST_F(ArpeggiatorTest, TheSameRootSoundsAgainAfterAllKeysWereUp) {
    select(root);
    tick();
    press(60, 80);
    lift(60);
    press(60, 70);
    EXPECT_EQ(log.entries, (Entries{"stop all", "+60v80", "stop all", "stop all", "+60v70"}));
}

TEST_F(ArpeggiatorTest, TheSameRootSoundsAgainAfterOnlyKeyZeroWasHeld) {
    select(root);
    tick();
    press(60, 80);
    press(0, 81);
    lift(60);
    press(60, 90);
    EXPECT_EQ(log.entries, (Entries{"stop all", "+60v80", "stop all", "stop all", "+60v90"}));
}

KeySet held(const Notes& notes) {
    KeySet keys;
    for (const int note : notes) keys.add(note);
    return keys;
}

TEST(ChordRoot, PrefersAWholeToneToAFifthAndAFifthToAThird) {
    EXPECT_EQ(chordRoot(held({})), -1);
    EXPECT_EQ(chordRoot(held({64})), 64);
    EXPECT_EQ(chordRoot(held({64, 76})), 64);
    EXPECT_EQ(chordRoot(held({60, 67})), 60);
    EXPECT_EQ(chordRoot(held({60, 65})), 65);
    EXPECT_EQ(chordRoot(held({60, 70})), 70);
    EXPECT_EQ(chordRoot(held({60, 66})), 60);
}

TEST(ChordRoot, FindsTheRootOfATriadInAnyInversion) {
    EXPECT_EQ(chordRoot(held({64, 67, 72})), 72);
    EXPECT_EQ(chordRoot(held({67, 72, 76})), 72);
    EXPECT_EQ(chordRoot(held({63, 67, 72})), 72);
    EXPECT_EQ(chordRoot(held({60, 65, 67})), 60);
    EXPECT_EQ(chordRoot(held({60, 64, 68})), 60);
    EXPECT_EQ(chordRoot(held({62, 64, 67, 72})), 62);
}

}  // namespace
}  // namespace vantoric
