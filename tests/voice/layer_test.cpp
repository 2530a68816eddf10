#include <gtest/gtest.h>

#include <bitset>

#include "tests/voice/layer_bench.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::LayerBench;

constexpr int monophonic = 0, legato = 1, polyphonic64 = 12, polyphonic1 = 13;

struct LayerTest : ::testing::Test, LayerBench {};

// ---- polyphonic allocation ------------------------------------------------------------------------------------

TEST_F(LayerTest, NotesFillTheVoicesFromTheTopDown) {
    for (int i = 0; i < 4; ++i) {
        press(60 + i);
        EXPECT_EQ(voice(15 - i).note, 60 + i);
        tick();
    }
    EXPECT_EQ(layer->activeVoiceCount(), 4);
}

TEST_F(LayerTest, EveryPlayModeHasItsLimit) {
    constexpr int limits[] = {1, 1, 2, 3, 4, 6, 8, 12, 16, 16, 16, 16, 16, 1};
    for (int mode = 0; mode < 14; ++mode) {
        EXPECT_EQ(playModeLimit(mode), limits[mode]) << mode;
        EXPECT_EQ(isOneVoiceMode(mode), mode <= legato) << mode;
    }
}

TEST_F(LayerTest, SixteenthNoteOfPolyphonic64AlreadyFadesTheOldest) {
    setList(par::PlayMode, polyphonic64);
    for (int i = 0; i < 15; ++i) {
        press(40 + i);
        tick();
    }
    EXPECT_EQ(layer->activeVoiceCount(), 15);
    press(60);
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(voice(15).state(), 6);
    EXPECT_EQ(layer->activeVoiceCount(), 15);
}

TEST_F(LayerTest, SeventeenthNoteOfPolyphonic64TakesVoiceZeroWhileNoneIsIdle) {
    setList(par::PlayMode, polyphonic64);
    for (int i = 0; i < 17; ++i) {
        press(40 + i);
        tick();
    }
    EXPECT_EQ(sounding(), 16);
    EXPECT_EQ(voice(0).note, 56);
    EXPECT_EQ(voice(15).state(), 6);
    EXPECT_LE(layer->activeVoiceCount(), 15);
}

TEST_F(LayerTest, SeventeenthNoteOfPolyphonic64TakesTheHighestIdleVoice) {
    setList(par::PlayMode, polyphonic64);
    for (int i = 0; i < 16; ++i) {
        press(40 + i);
        tick();
    }
    tick(60);  // the fade of the first has ended
    ASSERT_FALSE(voice(15).sounding());
    press(70);
    EXPECT_EQ(voice(15).note, 70);
    EXPECT_EQ(voice(14).state(), 6);  // the oldest begins to fade at the same note-on
}

TEST_F(LayerTest, Polyphonic1FadesTheOlderOfTwoKeysWithinFiftyTicks) {
    setList(par::PlayMode, polyphonic1);
    press(60);
    tick(5);
    press(64);
    EXPECT_EQ(voice(15).state(), 6);
    EXPECT_EQ(voice(14).note, 64);
    tick();
    EXPECT_EQ(sounding(), 2);
    tick(50);
    EXPECT_EQ(sounding(), 1);
    EXPECT_EQ(voice(14).state(), Envelope::Sustain);
    EXPECT_EQ(layer->currentNote, 64);
}

TEST_F(LayerTest, OfTwoVoicesOfOneAgeTheLowerIndexFadesFirst) {
    setList(par::PlayMode, 2);  // two voices
    press(60);
    press(62);
    tick();
    press(64);
    EXPECT_EQ(voice(14).state(), 6);
    EXPECT_TRUE(voice(15).active());
}

TEST_F(LayerTest, ReleasedVoicesFadeBeforeHeldOnes) {
    setList(par::PlayMode, 3);
    set(par::RelVol, 0.9f);
    press(60);
    tick();
    press(62);
    tick();
    release(62);
    tick();
    press(64);
    tick();
    press(65);
    EXPECT_EQ(voice(14).state(), 6);
    EXPECT_TRUE(voice(15).active());
}

TEST_F(LayerTest, VoicesOfThisTickFallBackToVoiceZero) {
    setList(par::PlayMode, 2);
    for (int i = 0; i < 3; ++i) press(60 + i);  // none is older than 0 ticks
    EXPECT_EQ(voice(0).state(), 6);
    EXPECT_EQ(layer->activeVoiceCount(), 3);
}

TEST_F(LayerTest, KeyAboveAllOscillatorsStartsNothing) {
    for (int i = 0; i < oscillatorCount; ++i) setList(par::KeyEnd1 + i, 50);
    press(60);
    EXPECT_EQ(sounding(), 0);
    EXPECT_EQ(layer->flipFlop, 0.0f);  // the event itself was taken
}

TEST_F(LayerTest, KeyAboveAllOscillatorsStartsASilentVoiceUnderGlide) {
    for (int i = 0; i < oscillatorCount; ++i) setList(par::KeyEnd1 + i, 50);
    set(par::GlideSpd, 0.011f);
    press(60);
    EXPECT_EQ(sounding(), 1);
    for (const bool on : voice(15).oscillatorOn) EXPECT_FALSE(on);
    play(20);
    EXPECT_LT(peak(), 1e-4f);
}

TEST_F(LayerTest, StolenVoiceStillTakesALaterNoteOffOfItsKey) {
    setList(par::PlayMode, 2);
    for (const int key : {60, 62, 64}) {
        press(key);
        tick();
    }
    ASSERT_EQ(voice(15).state(), 6);
    release(60);
    EXPECT_EQ(voice(15).state(), 6);
    EXPECT_EQ(voice(15).envelopes[filterEnvelope].state, Envelope::Release);
}

TEST_F(LayerTest, NoteOffWithoutAVoiceDoesNothing) {
    press(60);
    tick();
    release(61);
    tick();
    EXPECT_TRUE(voice(15).active());
    EXPECT_NE(voice(15).state(), Envelope::Release);
}

TEST_F(LayerTest, NewVoiceGlidesFromTheNoteBefore) {
    set(par::GlideSpd, 0.5f);
    press(48);
    tick();
    press(60);
    EXPECT_EQ(voice(14).pitch[0].position, static_cast<double>(engine.keyIncrement[48]));
    EXPECT_EQ(voice(14).smoothedNote, 48.0);
    tick(3000);
    EXPECT_NEAR(voice(14).smoothedNote, 60.0, 0.01);
}

// ---- one-voice modes ------------------------------------------------------------------------------------------

TEST_F(LayerTest, HalfKeyFollowPlaysAMonoLineAtThePitchOfKeySixty) {
    setList(par::PlayMode, monophonic);
    set(par::KeyFol1, 0.5f);
    for (const int key : {40, 72, 90}) {
        press(key);
        tick();
        EXPECT_EQ(voice(0).pitch[0].target, static_cast<double>(engine.keyIncrement[60])) << key;
    }
}

TEST_F(LayerTest, LegatoMovesThePitchAndLeavesTheEnvelopesAlone) {
    setList(par::PlayMode, legato);
    set(par::AttVol, 0.7f);
    press(60);
    tick(40);
    const float before = voice(0).envelopes[volumeEnvelope].phase;
    press(67);
    EXPECT_EQ(voice(0).note, 67);
    EXPECT_EQ(voice(0).envelopes[volumeEnvelope].phase, before);
    tick();
    release(67);
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(voice(0).state(), Envelope::Attack);
    EXPECT_LT(voice(0).envelopes[volumeEnvelope].phase, before);
    EXPECT_EQ(sounding(), 1);

    // Nor in a state that a retrigger would leave.
    while (voice(0).state() != Envelope::Sustain) tick();
    press(67);
    EXPECT_EQ(voice(0).state(), Envelope::Sustain);
    release(67);
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(voice(0).state(), Envelope::Sustain);
}

TEST_F(LayerTest, MonophonicRetriggersFromThePresentLevelAtBothKeys) {
    setList(par::PlayMode, monophonic);
    set(par::SusVol, 0.6f);
    press(60);
    tick(10);
    ASSERT_EQ(voice(0).state(), Envelope::Sustain);
    press(67);
    EXPECT_EQ(voice(0).state(), Envelope::Attack);
    EXPECT_NEAR(voice(0).envelopes[volumeEnvelope].phase, 0.4f, 1e-6f);
    tick(10);
    release(67);
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(voice(0).state(), Envelope::Attack);
    EXPECT_NEAR(voice(0).envelopes[volumeEnvelope].phase, 0.4f, 1e-6f);
}

TEST_F(LayerTest, ANewKeyOfALineBringsItsFlipFlopItsRandomNumberAndItsVelocity) {
    for (const int mode : {monophonic, legato}) {
        setList(par::PlayMode, mode);
        layer->reset();
        engine.heldNote.fill(0);
        press(60, 100);
        tick();
        const float drawn = voice(0).randomValue;
        EXPECT_EQ(voice(0).flipFlop, 0.0f);
        press(67, 31);
        EXPECT_EQ(voice(0).flipFlop, 1.0f);
        EXPECT_NE(voice(0).randomValue, drawn);
        EXPECT_EQ(voice(0).velocity, 31);
    }
}

TEST_F(LayerTest, ARetriggerBringsImpulseAndDecaysAnewAndALegatoKeyDoesNot) {
    for (const int mode : {monophonic, legato}) {
        setList(par::PlayMode, mode);
        layer->reset();
        engine.heldNote.fill(0);
        press(60);
        tick(5);
        ASSERT_EQ(voice(0).impulse, 0.0f);
        ASSERT_LT(voice(0).decays.d, 1.0f);
        press(67);
        EXPECT_EQ(voice(0).impulse, mode == monophonic ? 1.0f : 0.0f);
        EXPECT_EQ(voice(0).decays.a == 1.0f && voice(0).decays.b == 1.0f, mode == monophonic);
        EXPECT_EQ(voice(0).decays.c == 1.0f && voice(0).decays.d == 1.0f, mode == monophonic);
    }
}

TEST_F(LayerTest, ARetriggeredLfoFollowsTheNewKey) {
    constexpr int keyWhole = 7, sine = 2;
    setList(par::PlayMode, monophonic);
    setList(par::LfoMode1, keyWhole);
    setList(par::LfoWave1, sine);
    set(par::LfoSpd1, 0.5f);
    press(60);
    const double rate = voice(0).lfos[0].rate;
    tick();
    press(72);
    EXPECT_NEAR(voice(0).lfos[0].rate, 2.0 * rate, 0.01 * rate);
}

TEST_F(LayerTest, ARetriggerRestartsEachLfoByItsOwnMode) {
    constexpr int trigger = 3, mono = 8, saw = 4;
    const int modes[] = {trigger, mono, trigger};
    setList(par::PlayMode, monophonic);
    for (int i = 0; i < lfoCount; ++i) {
        setList(par::LfoMode1 + i, modes[i]);
        setList(par::LfoWave1 + i, saw);
        set(par::LfoSpd1 + i, 0.4f);
    }
    press(60);
    tick(20);
    press(64);
    EXPECT_EQ(voice(0).lfos[0].phase, 0.0);
    EXPECT_GT(voice(0).lfos[1].phase, 0.0);
    EXPECT_EQ(voice(0).lfos[2].phase, 0.0);
}

TEST_F(LayerTest, ARetriggerRestartsASingleSampleAndLetsALoopRunOn) {
    for (const int loopMode : {loopModeSingle, loopModeLoop}) {
        setList(par::PlayMode, monophonic);
        setList(par::SynType1, 3);
        setList(par::LoopMod1, loopMode);
        set(par::Start1, 0.25f);
        Sample& sample = layer->sample(0);
        ASSERT_TRUE(sample.allocate(20000));
        sample.length = sample.loopEnd = 20000;
        layer->reset();
        engine.heldNote.fill(0);
        press(60);
        play(10);
        const std::uint32_t reached = voice(0).oscillators[0].phase;
        ASSERT_GT(reached, 5000u << 13);
        press(67);
        EXPECT_EQ(voice(0).oscillators[0].phase, loopMode == loopModeSingle ? 5000u << 13 : reached);
    }
}

TEST_F(LayerTest, OneVoiceLineWithoutHeldKeysKeepsItsNoteAndTakesTheVelocity) {
    setList(par::PlayMode, monophonic);
    press(60, 100);
    tick();
    engine.heldNote.fill(0);
    layer->startNote(72, 55);  // as an arpeggiator may, whose keys have gone up
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(layer->currentNote, 60);
    EXPECT_EQ(voice(0).velocity, 55);
}

TEST_F(LayerTest, HeldKeysCountAtTheVelocityOfTheNewNoteAndAtAnyVelocityWhenOneGoesUp) {
    constexpr int upperHalf = 3, lowerHalf = 2;
    setList(par::PlayMode, monophonic);
    setList(par::VelRange, upperHalf);
    press(60, 100);
    tick();
    layer->startNote(72, 55);  // as an arpeggiator may, past the velocity range
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_EQ(voice(0).velocity, 55);

    setList(par::VelRange, lowerHalf);
    press(64, 20);
    tick();
    release(64);
    EXPECT_EQ(voice(0).note, 60);
    EXPECT_NE(voice(0).state(), Envelope::Release);
}

// A line on key 40, and key 90 held outside its split.
struct SplitLine : LayerTest {
    SplitLine() {
        constexpr int splitLow = 2;
        setList(par::PlayMode, monophonic);
        setList(par::Split, splitLow);
        press(40);
        press(90);
        tick();
    }
};

TEST_F(SplitLine, AKeyOutsideGoesUpUnnoticed) {
    const float drawn = voice(0).randomValue;
    release(90);
    EXPECT_EQ(voice(0).randomValue, drawn);  // a move to key 40 would have drawn anew
}

TEST_F(SplitLine, KeysOutsideDoNotHoldIt) {
    ASSERT_EQ(voice(0).note, 40);
    release(40);
    EXPECT_EQ(voice(0).state(), Envelope::Release);
}

TEST_F(LayerTest, OneVoiceLineFallsBackToTheHighestHeldKey) {
    setList(par::PlayMode, monophonic);
    for (const int key : {60, 72, 65, 64}) {
        press(key);
        tick();
    }
    release(64);
    EXPECT_EQ(voice(0).note, 72);
}

TEST_F(LayerTest, PedalFlushReleasesAMonoVoiceInsteadOfMovingIt) {
    setList(par::PlayMode, monophonic);
    press(60);
    tick();
    press(67);
    tick(3);
    engine.pedalRelease = true;
    release(67);
    engine.pedalRelease = false;
    EXPECT_EQ(voice(0).note, 67);  // key 60 is still held, and is not fallen back to
    engine.pedalRelease = true;
    release(60);
    engine.pedalRelease = false;
    EXPECT_EQ(voice(0).state(), Envelope::Release);
}

// Keys whose ends were lost: the layer is told once a tick which keys are down.
struct LateNotes : LayerTest {
    void ticksWith(const std::bitset<128>& keys, int count) {
        for (int i = 0; i < count; ++i) layer->releaseLateNotes(keys);
    }
    void setArpeggiator(int type, int chord) {
        setList(par::ArpType, type);
        setList(par::ArpChord, chord);
        setList(par::ArpSpeed, 4);
        setList(par::ArpRetri, 1);
        for (int step = 0; step < 16; ++step) setList(par::ArpVol1 + step, 9);  // its loudest
    }
    bool anyIsHeld() {
        bool any = false;
        for (int i = 0; i < voiceCount; ++i) any = any || isHeld(i);
        return any;
    }
    bool isHeld(int index = 15) { return voice(index).envelopes[volumeEnvelope].awaitsNoteOff(); }
    static constexpr int arpeggiatorOff = 0, arpeggioUp = 2, triad = 2;
    static std::bitset<128> key(int number) { return std::bitset<128>().set(static_cast<std::size_t>(number)); }
};

TEST_F(LateNotes, EndAfterTheirTimeWithoutAKey) {
    press(60);
    ticksWith({}, Layer::lateTicks - 1);
    EXPECT_TRUE(isHeld());
    ticksWith({}, 1);
    EXPECT_FALSE(isHeld());
}

TEST_F(LateNotes, ThePedalBeginsTheCountAnew) {
    press(60);
    ticksWith({}, Layer::lateTicks - 1);
    layer->keepUnheldNotes();
    ticksWith({}, Layer::lateTicks - 1);
    EXPECT_TRUE(isHeld());
    ticksWith({}, 1);
    EXPECT_FALSE(isHeld());
}

TEST_F(LateNotes, SoDoesAnArpeggiatorThatHasKeys) {
    setArpeggiator(arpeggioUp, triad);
    layer->reset();
    setArpeggiator(arpeggiatorOff, triad);
    press(60);
    ticksWith({}, Layer::lateTicks - 1);
    setArpeggiator(arpeggioUp, triad);
    for (int step = 0; step < 16; ++step) setList(par::ArpVol1 + step, 0);  // no step starts or ends a note
    layer->noteOn(72, 100);
    tick();
    ticksWith(key(72), 1);
    layer->noteOff(72);
    ticksWith({}, Layer::lateTicks - 1);
    EXPECT_TRUE(isHeld());
    ticksWith({}, 1);
    EXPECT_FALSE(isHeld());
}

TEST_F(LateNotes, AOneVoiceLineKeepsItsNoteWhileAnyKeyIsDown) {
    setList(par::PlayMode, 0);
    press(60);
    ticksWith(key(72), 2 * Layer::lateTicks);
    EXPECT_TRUE(isHeld(0));
    ticksWith({}, Layer::lateTicks);
    EXPECT_FALSE(isHeld(0));
}

TEST_F(LateNotes, AnArpeggiatorsNotesAreItsOwnWhileItHasKeys) {
    setArpeggiator(arpeggioUp, triad);
    layer->reset();
    press(60);
    tick(2);
    ASSERT_TRUE(anyIsHeld());
    layer->releaseUnheldNotes();
    EXPECT_TRUE(anyIsHeld());
    release(60);
    layer->releaseUnheldNotes();
    EXPECT_FALSE(anyIsHeld());
}

TEST_F(LateNotes, AnArpeggiatorThatIsOffKeepsNone) {
    for (const int chord : {0, triad}) {
        setArpeggiator(arpeggioUp, chord);
        layer->reset();
        press(60);
        tick(2);
        release(60);
        setArpeggiator(arpeggiatorOff, chord);
        tick();
        press(64);
        ASSERT_TRUE(anyIsHeld());
        layer->releaseUnheldNotes();
        EXPECT_FALSE(anyIsHeld()) << chord;
    }
}

TEST_F(LateNotes, AnArpeggiatorsKeysEndAfterTheirTimeAndThePedalBeginsThatAnewToo) {
    setArpeggiator(arpeggioUp, triad);
    layer->reset();
    press(60);
    tick();
    ticksWith({}, Layer::lateTicks - 1);
    layer->keepUnheldNotes();
    ticksWith({}, Layer::lateTicks - 1);
    EXPECT_TRUE(layer->arpeggiator().hasKeys());
    ticksWith({}, 1);
    EXPECT_FALSE(layer->arpeggiator().hasKeys());
}

TEST_F(LayerTest, EnteringAOneVoiceModeCutsTheOtherVoices) {
    for (const int key : {60, 64, 67}) press(key);
    tick();
    setList(par::PlayMode, legato);
    press(72);
    EXPECT_EQ(sounding(), 1);
    EXPECT_EQ(voice(0).note, 72);
}

TEST_F(LayerTest, FirstNoteOfALegatoPhraseNeverGlides) {
    setList(par::PlayMode, legato);
    set(par::GlideSpd, 0.8f);
    press(40);
    tick(5);
    release(40);
    tick(5);
    press(70);
    EXPECT_EQ(voice(0).smoothedNote, 70.0);
    EXPECT_EQ(voice(0).pitch[0].position, voice(0).pitch[0].target);
}

TEST_F(LayerTest, FirstNoteOfALegatoPhraseNeverGlidesUnderPartialKeyFollow) {
    setList(par::PlayMode, legato);
    set(par::GlideSpd, 0.8f);
    set(par::KeyFol1, 0.75f);
    press(72);
    const double target = voice(0).pitch[0].target;
    EXPECT_NE(target, engine.keyIncrement[72]);
    EXPECT_EQ(voice(0).pitch[0].position, target);
    EXPECT_EQ(voice(0).smoothedNote, 72.0);
    release(72);
    tick(2);
    press(48);  // the voice still sounds: its move tracks the key in full
    EXPECT_EQ(voice(0).pitch[0].target, engine.keyIncrement[48]);
    EXPECT_EQ(voice(0).pitch[0].position, engine.keyIncrement[48]);
}

TEST_F(LayerTest, ALineThatBeginsFromSilenceBeginsAtItsPitch) {
    set(par::GlideSpd, 0.8f);
    set(par::On1 + 1, 1.0f);
    set(par::Vol1 + 1, 1.0f);
    set(par::KeyFol1 + 1, 0.8f);  // tracked in part: the pitch is not that of the key
    for (const int mode : {monophonic, legato}) {
        setList(par::PlayMode, mode);
        press(40);
        tick(5);
        release(40);
        while (sounding() > 0) tick();
        press(70);
        tick();
        for (const OscillatorPitch& pitch : {voice(0).pitch[0], voice(0).pitch[1]})
            EXPECT_NEAR(pitch.position / pitch.target, 1.0, 1e-5) << mode;
        release(70);
        while (sounding() > 0) tick();
    }
}

// ---- filter in front, switch, slewing -------------------------------------------------------------------------

TEST_F(LayerTest, SeparatorsAndRowsWithoutARuleAcceptAll) {
    for (const int row : {1, 4, 9, 127})
        for (const int value : {0, 63, 127}) {
            EXPECT_TRUE(keyPasses(row, value));
            EXPECT_TRUE(velocityPasses(row, value));
        }
}

TEST_F(LayerTest, NoteOffSkipsTheVelocityTest) {
    setList(par::VelRange, 3);  // from 64
    press(60, 63);
    EXPECT_EQ(sounding(), 0);
    press(60, 64);
    tick();
    release(60);
    EXPECT_EQ(voice(15).state(), Envelope::Release);
}

TEST_F(LayerTest, SwitchedOffLayerStandsStillAndItsSwitchOnResetsIt) {
    press(60);
    play(10);
    set(par::Layer1On, 0.0f);
    tick();
    EXPECT_FALSE(layer->layerOn);
    EXPECT_TRUE(voice(15).sounding());  // where it was
    const std::size_t from = left.size();
    render(96);
    EXPECT_EQ(peak(from), 0.0f);
    press(64);
    EXPECT_EQ(sounding(), 1);  // an absent layer takes no notes

    set(par::Cutoff1, 0.25f);
    set(par::Layer1On, 1.0f);
    tick();
    EXPECT_EQ(sounding(), 0);
    EXPECT_EQ(layer->smoothed()[par::Cutoff1], 0.25f);
    EXPECT_EQ(layer->currentNote, 60);
    EXPECT_EQ(layer->flipFlop, 1.0f);
}

TEST_F(LayerTest, JumpAcrossTheRangeIsSlewedOverSome170Ticks) {
    set(par::Cutoff1, 0.0f);
    tick(300);
    ASSERT_EQ(layer->smoothed()[par::Cutoff1], 0.0f);
    set(par::Cutoff1, 1.0f);
    int ticks = 0;
    for (; layer->smoothed()[par::Cutoff1] != 1.0f; ++ticks) tick();
    EXPECT_NEAR(ticks, 170, 2);
}

TEST_F(LayerTest, LockedEngineStopsTheTickButNotTheSwitch) {
    press(60);
    tick();
    engine.flags.engineLocked.set();
    const int age = voice(15).age;
    tick();
    EXPECT_EQ(voice(15).age, age);
    press(64);
    EXPECT_EQ(sounding(), 1);  // no voice starts while a patch is loaded
    engine.flags.engineLocked.clear();
}

TEST_F(LayerTest, ResetVoiceLooksOlderThanAnyRealOne) {
    EXPECT_EQ(voice(3).age, 1410065407);
    EXPECT_EQ(layer->oldestActiveVoice(), -1);
}

TEST_F(LayerTest, TicksSinceTheLastNoteAreCounted) {
    press(60);
    EXPECT_EQ(layer->ticksSinceNote, 0);
    tick(7);
    EXPECT_EQ(layer->ticksSinceNote, 7);
}

// ---- sound ----------------------------------------------------------------------------------------------------

TEST_F(LayerTest, VelocityAloneIsNotHeard) {
    LayerBench soft;
    soft.press(60, 1);
    press(60, 127);
    soft.play(50);
    play(50);
    EXPECT_GT(peak(), 0.01f);
    EXPECT_EQ(left, soft.left);
    EXPECT_EQ(right, soft.right);
}

TEST_F(LayerTest, VelocitySpeaksThroughAMatrixSlot) {
    constexpr int sourceVelocity = 18;
    LayerBench soft;
    for (LayerBench* bench : {&soft, static_cast<LayerBench*>(this)}) {
        int row = 0;  // the destination list row of the layer's volume
        while (destinationNumber(row) != par::LayerVol) ++row;
        bench->setList(par::MatDst1, row);
        bench->setList(par::MatSrc1, sourceVelocity);
        bench->set(par::MatVal1, 1.0f);
    }
    soft.press(60, 1);
    press(60, 127);
    soft.play(50);
    play(50);
    EXPECT_GT(peak(), 1.2f * soft.peak());
}

TEST_F(LayerTest, StretchMayBeRenderedInPieces) {
    LayerBench pieces;
    press(60);
    pieces.press(60);
    for (int i = 0; i < 30; ++i) {
        play();
        pieces.tick();
        for (const int count : {1, 30, 0, 64, 1}) pieces.render(count);
    }
    EXPECT_EQ(left, pieces.left);
    EXPECT_EQ(right, pieces.right);
}

TEST_F(LayerTest, NegativeCountDoesNothing) {
    press(60);
    tick();
    layer->renderBlock(nullptr, nullptr, -1);
}

TEST_F(LayerTest, ResetLeavesNothingSounding) {
    for (int key = 40; key < 56; ++key) press(key);
    play(10);
    layer->reset();
    const std::size_t from = left.size();
    play(10);
    EXPECT_EQ(peak(from), 0.0f);
}

}  // namespace
}  // namespace vantoric
