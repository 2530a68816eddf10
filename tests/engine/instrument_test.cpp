#include "engine/instrument.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <new>
#include <system_error>
#include <thread>

#include "tests/base/failing_allocation.h"
#include "tests/base/failing_thread.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;

struct StepCount final : BlockObserver {
    int ticks = 0, stages = 0, stageSamples = -1;
    void onStep(BlockStep step, int first, int) override {
        if (step == BlockStep::drainMidiQueue) ++ticks;
        if (step == BlockStep::finalStage) {
            ++stages;
            stageSamples = first;
        }
    }
};

// The simplest instrument: a layer of one oscillator, all else off.
struct PlainInstrument : testing::Test {
    PlainInstrument() {
        rig.clearParameters();
        rig.plainLayer();
    }
    // The first layer hears one channel, counted from 1.
    void onChannel(int channel) {
        rig.setList(par::MidiSpli, channel);
        rig.audio.resetEngine();
    }
    void layersOnChannels1And2() {
        rig.plainLayer(1);
        rig.setList(par::MidiSpli, 2, 1);
        onChannel(1);
    }
    void ticks(int count) {
        for (int i = 0; i < count; ++i) rig.tick();
    }
    // Of a layer's voice: 15 takes the first note of many, 0 that of a layer of one voice.
    bool isHeld(int layer = 0, int voice = 15) { return rig.audio.layer(layer).voice(voice).envelopes[0].awaitsNoteOff(); }
    bool isReleased(int layer = 0, int voice = 15) { return rig.audio.layer(layer).voice(voice).state() == Envelope::Release; }
    EngineRig rig;
};

TEST(Instrument, EveryReaderOfTheRateGetsTheInternalOne) {
    EngineRig rig;
    const std::pair<float, float> rates[] = {
        {44100.0f, 88200.0f}, {48000.0f, 96000.0f}, {48001.0f, 48001.0f}, {192000.0f, 192000.0f}, {32000.0f, 64000.0f}};
    for (const auto& [host, internal] : rates) {
        rig.audio.setSampleRate(host);
        EXPECT_EQ(rig.audio.internalRate(), internal);
        EXPECT_EQ(rig.audio.state().internalRate, internal);
        EXPECT_EQ(rig.audio.state().oversampled, internal != host);
    }
}

TEST(Instrument, TheWelcomePatchIsThePatchOfAFreshInstance) {
    const std::string path = test::sharedDataFolder().path() + "Vantoric_sounds/ArpMultilayer/0Welcome.fxp";
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    {
        EngineRig rig;
        rig.audio.parameters().setParameter(par::Cutoff1, 0.375f);
        ASSERT_TRUE(rig.audio.patchFiles().savePatchFile(path));
    }
    EngineRig fresh;
    std::filesystem::remove(path);
    EXPECT_TRUE(fresh.told.boxes().empty());
    EXPECT_EQ(fresh.audio.parameters().getParameter(par::Cutoff1), 0.375f);
    EXPECT_EQ(fresh.audio.program().getProgramName(), "0Welcome");
    EXPECT_EQ(fresh.audio.state().songPosition, 0.0);
    EXPECT_FALSE(fresh.audio.flags().engineLocked.isSet());
}

TEST(Instrument, ItsEndSavesTheControllerMapEvenUnchangedAndThePath) {
    const std::string folder = test::sharedDataFolder().path(), path = folder + "Vantoric_data/Vantoricmidi.cfg";
    std::filesystem::create_directories(folder + "Vantoric_data");
    std::filesystem::remove(path);
    {
        EngineRig rig;
    }
    EXPECT_EQ(std::filesystem::file_size(path), 258u);
    EXPECT_EQ(platform::readSetting("Path"), folder);
    {
        EngineRig rig;
        rig.audio.controllerMap().set(7, par::Volume);
    }
    EngineRig again;
    EXPECT_EQ(again.audio.controllerMap().get(7), par::Volume);
    EXPECT_EQ(again.audio.controllerMap().get(8), ControllerMap::none);
    EXPECT_FALSE(again.audio.midi().ccMapDirty());
    EXPECT_EQ(again.audio.midi().learnPending(), ControllerMap::none);
    again.audio.controllerMap().clear();
}

TEST_F(PlainInstrument, BeforeTheWorkerHasStartedTheBlockIsSilentAndLeavesItsMark) {
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    rig.audio.flags().bootPending.set();
    rig.block(256);
    EXPECT_LT(rig.peak(), 1e-4f);
    EXPECT_TRUE(rig.audio.flags().audioRunning.isSet());
    EXPECT_EQ(rig.audio.midi().queued(0).data1, 60);
    rig.audio.flags().bootPending.clear();
    rig.block(256);
    EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
    EXPECT_GT(rig.peak(), 1e-3f);
}

TEST(Instrument, ARateWithoutATickIsSilent) {
    EngineRig rig(400.0f);
    rig.clearParameters();
    rig.plainLayer();
    EXPECT_EQ(rig.audio.state().tickSamples, 0);
    rig.send({{0x90, 60, 100}});
    rig.block(256);
    EXPECT_LT(rig.peak(), 1e-4f);
    EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
    EXPECT_EQ(rig.audio.midi().queued(0).data1, 60);
}

// All that a suspend brings back, and what it leaves.
TEST_F(PlainInstrument, SuspendEndsPedalAndSmoothingAndKeepsTheDecimator) {
    rig.audio.resetEngine();
    rig.host.tell(120.0, 3.0);
    rig.send({{0x90, 60, 100}, {0xb0, 64, 127}, {0xb0, 1, 64}, {0xe0, 0, 127}, {0xd0, 96, 0}});
    rig.tick();
    rig.send({{0x80, 60, 0}});
    rig.tick();
    EXPECT_TRUE(rig.audio.midi().sustainedOff(60));
    EXPECT_LT(rig.audio.state().modwheelSmoothed, 0.1f);
    rig.audio.stop();
    EXPECT_FALSE(rig.audio.midi().sustainOn());
    EXPECT_FALSE(rig.audio.midi().sustainedOff(60));
    EXPECT_EQ(rig.audio.state().heldNote[60], 0);
    EXPECT_EQ(rig.audio.state().modwheelSmoothed, 0.5f);
    EXPECT_EQ(rig.audio.state().pitchWheelSmoothed, 1.0f);
    EXPECT_EQ(rig.audio.state().channelPressureSmoothed, 0.75f);
    EXPECT_EQ(rig.audio.state().songPosition, 0.0);
    EXPECT_EQ(rig.audio.lastPpqPos(), 0.0);
    rig.audio.flags().audioMuted.set();
    const std::size_t from = rig.left.size();
    rig.block(16);
    EXPECT_GT(rig.peak(from), 1e-3f) << "the decimator still holds the last samples";
    rig.audio.resetEngine();
    const std::size_t later = rig.left.size();
    rig.block(16);
    EXPECT_LE(rig.peak(later), 2e-5f) << "a full reset empties it";
    rig.audio.flags().audioMuted.clear();
}

TEST(Instrument, MissingFactorySoundsAreReportedAndTheEngineGoesOn) {
    EngineRig rig;
    ASSERT_FALSE(rig.told.boxes().empty());
    EXPECT_EQ(rig.told.boxes()[0].title, "Error");
    EXPECT_EQ(rig.told.boxes()[0].text, "The factory sounds are missing. Please reinstall the software.");
    rig.block(64);
    EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
}

TEST(Instrument, BlockOfNoFramesRunsNoTickAndTheStagesWithNoSamples) {
    EngineRig rig;
    StepCount steps;
    rig.audio.setBlockObserver(&steps);
    rig.block(0);
    EXPECT_EQ(steps.ticks, 0);
    EXPECT_EQ(steps.stages, 1);
    EXPECT_EQ(steps.stageSamples, 0);
    rig.audio.setBlockObserver(nullptr);
}

TEST(Instrument, BlockShorterThanATickOnlyLowersTheCount) {
    EngineRig rig;
    rig.block(1);
    StepCount steps;
    rig.audio.setBlockObserver(&steps);
    const float before = rig.audio.samplesToTick();
    rig.block(10);
    EXPECT_EQ(steps.ticks, 0);
    EXPECT_EQ(rig.audio.samplesToTick(), before - 20.0f);
    rig.block(48);
    EXPECT_EQ(steps.ticks, 1);
    rig.audio.setBlockObserver(nullptr);
}

TEST(Instrument, SongRunsOnUnderAHostThatStandsStill) {
    EngineRig rig;
    rig.host.tell(90.0, 4.0);
    for (int i = 0; i < 1001; ++i) rig.tick();
    EXPECT_NEAR(rig.audio.state().songPosition, 4.0 + 90.0 / 60.0, 1e-6);
}

TEST(Instrument, SongStandsUnderAHostThatDoesNotAnswer) {
    EngineRig rig;
    rig.host.tell(90.0, 4.0);
    rig.tick();
    rig.host.transport.known = false;
    for (int i = 0; i < 100; ++i) rig.tick();
    EXPECT_EQ(rig.audio.state().songPosition, 4.0);
    EXPECT_EQ(rig.audio.state().tempoBpm, 120.0);
}

TEST(Instrument, NonsenseTempoReadsAs120) {
    EngineRig rig;
    for (const double tempo : {0.0, -20.0, 10000.5, std::nan("")}) {
        rig.host.tell(tempo, 1.0);
        rig.tick();
        EXPECT_EQ(rig.audio.state().tempoBpm, 120.0) << tempo;
    }
    rig.host.tell(10000.0, 1.0);
    rig.tick();
    EXPECT_EQ(rig.audio.state().tempoBpm, 10000.0);
}

TEST(Instrument, InsertThatIsNoMasterEffectBehavesAsOff) {
    ParameterModel parameters;
    parameters.writeRaw(par::FxMaType, listValue(17));
    EXPECT_EQ(masterControls(parameters).effectType, 0);
    parameters.writeRaw(par::FxMaType, listValue(18));
    EXPECT_EQ(masterControls(parameters).effectType, 18);
}

TEST(Instrument, WhatLeavesTheMasterChainIsFiniteAndNotTooLoud) {
    const float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> samples = {0.5f, -16.0f, 17.0f, -1e30f, infinity, -infinity, std::nanf(""), -std::nanf("")};
    holdWithinLoudest(samples.data(), 8);
    EXPECT_EQ(samples, (std::vector<float>{0.5f, -16.0f, 16.0f, -16.0f, 16.0f, -16.0f, 0.0f, 0.0f}));
}

TEST(Instrument, TheLoudestOfFourLayersReachesTheLimitOnBothSidesAndNoFarther) {
    EngineRig rig(96000.0f);  // where nothing comes behind the master chain
    rig.clearParameters();
    for (int layer = 0; layer < layerCount; ++layer) {
        rig.plainLayer(layer);
        rig.set(par::LayerVol, 1.0f, layer);
    }
    for (const int n : {par::Volume, par::EqLow, par::EqMid, par::EqHigh}) rig.set(n, 1.0f);
    rig.audio.resetEngine();
    for (int key = 40; key < 55; ++key) rig.send({{0x90, key, 127}});
    for (int i = 0; i < 40; ++i) rig.block(256);
    const auto loudestOf = [](const std::vector<float>& side) {
        return std::fabs(
            *std::max_element(side.begin(), side.end(), [](float a, float b) { return std::fabs(a) < std::fabs(b); }));
    };
    EXPECT_EQ(loudestOf(rig.left), loudest);
    EXPECT_EQ(loudestOf(rig.right), loudest);
}

TEST(Instrument, VolumeIsAGainOfOneInTheMiddleAndFourAtTheTop) {
    ParameterModel parameters;
    const std::pair<float, float> gains[] = {{0.0f, 0.0f}, {0.5f, 1.0f}, {1.0f, 4.0f}};
    for (const auto& [volume, gain] : gains) {
        parameters.writeRaw(par::Volume, volume);
        EXPECT_EQ(masterControls(parameters).gain, gain);
    }
}

TEST_F(PlainInstrument, SilenceAtVolumeZero) {
    rig.set(par::Volume, 0.0f);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    for (int i = 0; i < 20; ++i) rig.block(256);
    const std::size_t from = rig.left.size();
    for (int i = 0; i < 20; ++i) rig.block(256);
    EXPECT_LT(rig.peak(from), 1e-4f);  // but for the decimator's offset
}

TEST(Instrument, SilenceLeavesTheDecimatorsOffset) {
    EngineRig rig;
    rig.clearParameters();
    rig.audio.resetEngine();
    rig.block(256);
    EXPECT_NEAR(rig.left.back(), 0.00001f, 2e-7f);
}

TEST_F(PlainInstrument, MasterTailRunsOnWithAllLayersOff) {
    rig.setList(par::FxMaType, 6);  // a delay
    rig.set(par::FxMaMix, 1.0f);
    for (int k = 0; k < 4; ++k) rig.set(par::FxMaPar1 + k, 0.7f);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    for (int i = 0; i < 40; ++i) rig.block(256);
    rig.set(par::Layer1On, 0.0f);
    for (int i = 0; i < 10; ++i) rig.block(256);
    const std::size_t from = rig.left.size();
    for (int i = 0; i < 400; ++i) rig.block(256);
    EXPECT_GT(rig.peak(from), 1e-3f);
    EXPECT_FALSE(rig.audio.layer(0).layerOn);
}

TEST_F(PlainInstrument, AllLayersOffAreSilent) {
    rig.set(par::Layer1On, 0.0f);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    for (int i = 0; i < 20; ++i) rig.block(256);
    EXPECT_LT(rig.peak(), 1e-4f);
}

TEST_F(PlainInstrument, PedalHoldsNotesAndItsReleaseEndsThem) {
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}, {0xb0, 64, 127}});
    rig.tick();
    rig.send({{0x80, 60, 0}});
    rig.tick();
    EXPECT_EQ(rig.audio.layer(0).voice(15).state(), Envelope::Decay);
    rig.send({{0xb0, 64, 0}});
    rig.tick();
    EXPECT_TRUE(isReleased());
}

TEST_F(PlainInstrument, PedalReleaseEndsAMonoVoiceInsteadOfMovingIt) {
    rig.setList(par::PlayMode, 0);
    rig.audio.resetEngine();
    rig.send({{0xb0, 64, 127}, {0x90, 60, 100}});
    rig.tick();
    rig.send({{0x90, 67, 100}});
    rig.tick();
    rig.send({{0x80, 67, 0}, {0x80, 60, 0}});
    rig.tick();
    EXPECT_EQ(rig.audio.layer(0).voice(0).note, 67);
    rig.send({{0xb0, 64, 0}});
    rig.tick();
    EXPECT_EQ(rig.audio.layer(0).voice(0).note, 67);
    EXPECT_TRUE(isReleased(0, 0));
}

TEST_F(PlainInstrument, AOneVoiceLayerLetsGoThoughAKeyOfAnotherChannelWasHeldAtItsEnd) {
    rig.setList(par::PlayMode, 0);
    onChannel(1);
    rig.send({{0x91, 72, 100}, {0x90, 60, 100}});
    rig.tick();
    rig.send({{0x80, 60, 0}});  // it sees the key of channel 2 and plays on
    rig.tick();
    EXPECT_TRUE(isHeld(0, 0));
    rig.send({{0x81, 72, 0}});
    ticks(3);
    EXPECT_TRUE(isReleased(0, 0));
}

TEST_F(PlainInstrument, AKeyHeldOnOneChannelSoundsOnWhenAnotherChannelLetsGoOfIt) {
    layersOnChannels1And2();
    rig.send({{0x90, 60, 100}, {0x91, 60, 100}});
    rig.tick();
    rig.send({{0x80, 60, 0}});
    ticks(5);
    EXPECT_TRUE(isHeld(1));
}

TEST_F(PlainInstrument, ThePedalOfAnotherChannelLeavesNoNoteBehind) {
    onChannel(3);
    rig.send({{0xb2, 64, 127}, {0x92, 60, 100}});
    rig.tick();
    rig.send({{0x82, 60, 0}, {0xb2, 64, 0}});  // the pedal's deferred ends go out on channel 1
    ticks(3);
    EXPECT_TRUE(isReleased());
}

// As a panic button wants it: nothing but sound ends.
TEST_F(PlainInstrument, IsSilentFromTheNextBlockOnAndStandsAsItStood) {
    rig.set(par::Modwheel, 0.6f);
    rig.send({{0xb0, 64, 127}, {0xb0, 20, 90}, {0xe0, 0, 100}, {0x90, 60, 100}, {0x90, 64, 100}, {0x80, 64, 0}});
    ticks(20);
    ASSERT_GT(rig.peak(), 0.01f);
    for (int i = 0; i < layerCount; ++i) rig.audio.layer(i).ticksSinceNote = 3000;
    const float wheel = rig.audio.midi().pitchWheel();
    rig.audio.midi().setLearnPending(par::Volume);
    const std::size_t before = rig.left.size();
    rig.audio.silenceNextBlock();
    ticks(5);
    EXPECT_LE(rig.peak(before), 2e-5f);
    EXPECT_TRUE(rig.audio.keysSounding().none());
    EXPECT_TRUE(rig.audio.midi().nothingHeld()) << "the pedal with them";
    EXPECT_EQ(rig.audio.parameters().getParameter(par::Modwheel), 0.6f);
    EXPECT_EQ(rig.audio.state().ccValue[20], 90.0f / 128);
    EXPECT_EQ(rig.audio.midi().pitchWheel(), wheel);
    EXPECT_EQ(rig.audio.midi().learnPending(), par::Volume);
    for (int i = 0; i < layerCount; ++i)
        EXPECT_GE(rig.audio.layer(i).ticksSinceNote, 3000) << "layer " << i + 1 << " was not played";
    rig.send({{0x90, 60, 100}});
    ticks(5);
    EXPECT_TRUE(isHeld());
}

TEST_F(PlainInstrument, TellsTheKeysThatSound) {
    EXPECT_TRUE(rig.audio.keysSounding().none());
    std::bitset<128> struck;
    for (int key = 40; key < 40 + rig.audio.layer(0).limit(); ++key) {
        rig.send({{0x90, key, 100}});
        struck.set(static_cast<std::size_t>(key));
    }
    ticks(2);
    EXPECT_EQ(rig.audio.keysSounding(), struck);
    rig.send({{0x80, 45, 0}});
    ticks(40);
    EXPECT_EQ(rig.audio.keysSounding(), struck.reset(45));
    rig.set(par::Layer1On, 0.0f);
    rig.tick();
    EXPECT_TRUE(rig.audio.keysSounding().none());
}

TEST_F(PlainInstrument, AnEndOnAnotherChannelEndsTheNote) {
    onChannel(1);
    rig.send({{0x90, 60, 100}});
    rig.tick();
    EXPECT_TRUE(isHeld());
    rig.send({{0x81, 60, 0}});
    ticks(3);
    EXPECT_TRUE(isReleased());
}

// One tick late, so that an arpeggiator whose keys have just gone ends its own notes first.
TEST_F(PlainInstrument, ANoteWithoutAKeyEndsAtTheSecondTick) {
    onChannel(1);
    rig.send({{0x90, 60, 100}});
    ticks(2);
    rig.send({{0x81, 60, 0}});
    rig.tick();
    EXPECT_TRUE(isHeld());
    rig.tick();
    EXPECT_TRUE(isReleased());
}

TEST_F(PlainInstrument, OneEndTakesOneKeyOff) {
    layersOnChannels1And2();
    rig.send({{0x90, 60, 100}, {0x91, 60, 100}});
    rig.tick();
    rig.send({{0x82, 60, 0}});
    ticks(3);
    EXPECT_TRUE(isHeld(1));
    rig.send({{0x83, 60, 0}});
    ticks(3);
    EXPECT_TRUE(isReleased(1));
}

TEST_F(PlainInstrument, AKeyOfOtherChannelsLeftDownByALostEndKeepsNoNoteForGood) {
    rig.setList(par::MidiSpli, 3);
    for (const int playMode : {8, 0}) {
        rig.setList(par::PlayMode, playMode);
        rig.audio.resetEngine();
        rig.send({{0x94, 40, 1}});  // its end never comes
        rig.send({{0xb2, 64, 127}, {0x92, 60, 100}});
        rig.tick();
        rig.send({{0x82, 60, 0}, {0xb2, 64, 0}});
        rig.tick();
        const Voice& voice = rig.audio.layer(0).voice(playMode == 0 ? 0 : 15);
        EXPECT_TRUE(voice.envelopes[0].awaitsNoteOff());
        ticks(Layer::lateTicks);
        EXPECT_FALSE(voice.envelopes[0].awaitsNoteOff()) << playMode;
    }
}

TEST_F(PlainInstrument, AKeyOfItsOwnChannelLeftDownKeepsNoOtherNoteForGood) {
    onChannel(3);
    rig.send({{0x92, 40, 100}, {0xb2, 64, 127}, {0x92, 60, 100}});
    rig.tick();
    rig.send({{0x82, 60, 0}, {0xb2, 64, 0}});
    ticks(Layer::lateTicks + 2);
    EXPECT_TRUE(isHeld());                                                    // 40, which is down
    EXPECT_FALSE(rig.audio.layer(0).voice(14).envelopes[0].awaitsNoteOff());  // 60
}

TEST_F(PlainInstrument, AnArpeggiatorDoesNotPlayOnWithAKeyWhoseEndWentToAnotherChannel) {
    rig.setList(par::MidiSpli, 1);
    rig.setList(par::ArpType, 2);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    ticks(Layer::lateTicks + 10);
    EXPECT_GE(rig.audio.layer(0).arpeggiator().playingStep(), 0);
    rig.send({{0x81, 60, 0}});
    ticks(Layer::lateTicks + 2);
    EXPECT_EQ(rig.audio.layer(0).arpeggiator().playingStep(), -1);
}

TEST_F(PlainInstrument, HeldKeysAndThePedalKeepTheirNotes) {
    rig.audio.resetEngine();
    rig.send({{0x93, 40, 100}});
    ticks(2 * Layer::lateTicks);
    EXPECT_TRUE(isHeld());
    rig.send({{0xb3, 64, 127}, {0x83, 40, 0}});
    ticks(2 * Layer::lateTicks);
    EXPECT_TRUE(isHeld());
}

TEST(Instrument, ThatGetsNoThreadLeavesNothingBehind) {
    test::sharedDataFolder();
    {
        const test::NoMoreThreads none;
        EXPECT_THROW(Instrument(), std::system_error);
    }
    EXPECT_FALSE(WaveLibrary::shared().loaded());
    EXPECT_EQ(EngineRig().audio.instanceNumber(), 1);
}

TEST(Instrument, ThatGetsNoMemoryLeavesNothingBehind) {
    test::sharedDataFolder();
    {
        EngineRig();
    }  // what the process keeps for good is there now
    const int failures =
        test::failuresUntilMade([] { const Instrument instrument; }, [] { EXPECT_FALSE(WaveLibrary::shared().loaded()); });
    EXPECT_GT(failures, 4);
    EXPECT_EQ(EngineRig().audio.instanceNumber(), 1);
}

TEST_F(PlainInstrument, SuspendLeavesSwitchedOffLayersAlone) {
    rig.plainLayer(1);
    rig.audio.resetEngine();
    rig.send({{0x90, 60, 100}});
    rig.tick();
    rig.set(par::Layer2On, 0.0f);
    rig.tick();
    rig.audio.stop();
    EXPECT_FALSE(rig.audio.layer(0).voice(15).sounding());
    EXPECT_TRUE(rig.audio.layer(1).voice(15).sounding());
    EXPECT_EQ(rig.audio.state().songPosition, 0.0);
}

TEST_F(PlainInstrument, MutedEngineIsSilentAndKeepsItsEvents) {
    rig.audio.resetEngine();
    for (Flag* flag : {&rig.audio.flags().audioMuted, &rig.audio.flags().engineLocked, &rig.audio.flags().editorClosing}) {
        flag->set();
        rig.send({{0x90, 60, 100}});
        rig.block(16);  // what the decimator still holds
        const std::size_t from = rig.left.size();
        rig.block(256);
        EXPECT_LT(rig.peak(from), 1e-4f);
        EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
        EXPECT_EQ(rig.audio.midi().queued(0).data1, 60);
        flag->clear();
        rig.block(256);
        EXPECT_EQ(rig.audio.midi().queued(0).status, 0);
    }
}

TEST(Instrument, DoublesAreTheWidenedFloats) {
    EngineRig narrow, wide;
    for (EngineRig* rig : {&narrow, &wide}) {
        rig->clearParameters();
        rig->plainLayer();
        rig->audio.resetEngine();
        rig->send({{0x90, 60, 100}});
    }
    narrow.block(1000);
    std::vector<double> left(1000), right(1000);
    wide.audio.render(left.data(), right.data(), 1000, wide.host.transport);
    EXPECT_GT(narrow.peak(), 0.001f);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(left[i], static_cast<double>(narrow.left[i]));
        ASSERT_EQ(right[i], static_cast<double>(narrow.right[i]));
    }
}

TEST(Instrument, FollowersSeeProgramChangesAndPatches) {
    EngineRig rig;
    ProgramChanges::Reader programs(rig.audio.programChanges());
    ParameterChanges::Reader values(rig.audio.parameters().changes());
    rig.send({{0xc3, 9, 0}, {0xb0, 1, 64}});
    rig.tick();
    EXPECT_EQ(programs.take(), 9);
    const auto turned = values.take();
    EXPECT_TRUE(turned.changed.test(par::Modwheel) && turned.from(ChangeSource::midi));

    const std::string path = test::sharedDataFolder().path() + "heard.fxp";
    ASSERT_TRUE(rig.audio.patchFiles().savePatchFile(path));
    const std::uint32_t loaded = rig.audio.patchesLoaded();
    EXPECT_TRUE(rig.audio.patchFiles().loadPatchFile(path));
    EXPECT_EQ(rig.audio.patchesLoaded(), loaded + 1);
    EXPECT_FALSE(rig.audio.isBusy());
    const auto replaced = values.take();
    EXPECT_TRUE(replaced.all && replaced.from(ChangeSource::patch));
}

TEST_F(PlainInstrument, StateBringsThePatchBack) {
    rig.audio.parameters().setParameter(par::Cutoff1, 0.375f);
    rig.audio.program().setProgramName("Mine");
    const ChunkBytes state = rig.audio.patchChunk().getChunk();
    ASSERT_GT(state.size, 0);
    rig.audio.parameters().setParameter(par::Cutoff1, 0.5f);
    rig.audio.program().setProgramName("Other");
    EXPECT_EQ(rig.audio.patchChunk().setChunk(state.data.get(), state.size), 1);
    EXPECT_EQ(rig.audio.parameters().getParameter(par::Cutoff1), 0.375f);
    EXPECT_EQ(rig.audio.program().getProgramName(), "Mine");
}

TEST(Instrument, ALoadThatFailedLeavesItSilentWhateverIsSwitchedUntilTheNextLoad) {
    EngineRig rig;
    const ChunkBytes whole = rig.audio.patchChunk().getChunk();
    EXPECT_EQ(rig.audio.patchChunk().setChunk(whole.data.get(), 100), 1);
    rig.audio.setSampleRate(96000.0f);
    rig.audio.stop();
    rig.audio.start();
    EXPECT_TRUE(rig.audio.flags().engineLocked.isSet());
    EXPECT_EQ(rig.audio.patchChunk().setChunk(whole.data.get(), whole.size), 1);
    EXPECT_FALSE(rig.audio.flags().engineLocked.isSet());
}

TEST(Instrument, LayersFollowTheParametersAtTheNextTick) {
    EngineRig rig;
    rig.tick();
    rig.audio.parameters().setParameter(hostIndex(par::Reso1, 2), 0.625f);
    EXPECT_NE(rig.audio.layer(2).block()[par::Reso1], 0.625f);
    rig.tick();
    EXPECT_EQ(rig.audio.layer(2).block()[par::Reso1], 0.625f);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // these map memory of their own

// Pages that the system has to map for the playing thread while a change is made, and while it then plays long enough to go
// once round a delay's lines.
long pagesAfter(EngineRig& rig, const std::function<void(Instrument&)>& change) {
    constexpr int block = 256, blocks = 600;
    std::array<float, block> left, right;
    const auto play = [&](int count) {
        for (int i = 0; i < count; ++i) rig.audio.render(left.data(), right.data(), block, {});
    };
    const auto mapped = [] {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_minflt;
    };
    for (int key = 60; key < 68; ++key) rig.send({{0x90, key, 100}});
    play(20);
    const long before = mapped();
    change(rig.audio);
    play(blocks);
    return mapped() - before;
}

// The lines of an effect or a filter that is chosen while it plays are mapped by whoever chooses it.
TEST(Instrument, AnEffectOrAFilterChosenOnAnotherThreadIsMappedBeforeItPlays) {
    constexpr int delay = 6, comb = 24, few = 40;
    const auto elsewhere = [](std::function<void(Instrument&)> work) {
        return [work](Instrument& audio) { std::thread([&] { work(audio); }).join(); };
    };
    const float wanted = listValue(delay);
    const std::pair<const char*, std::function<void(Instrument&)>> changes[] = {
        {"first insert", [&](Instrument& audio) { audio.setParameter(hostIndex(par::FxInType, 0), wanted); }},
        {"second insert", [&](Instrument& audio) { audio.setParameter(hostIndex(par::FxIn2Type, 0), wanted); }},
        {"master", [&](Instrument& audio) { audio.setParameter(par::FxMaType, wanted); }},
        {"a layer with an insert",
         [&](Instrument& audio) {
             audio.setParameter(hostIndex(par::FxInType, 1), wanted);
             audio.setParameter(par::Layer1On + 1, 1.0f);
         }},
        {"first filter", [&](Instrument& audio) { audio.setParameter(hostIndex(par::FilType1, 0), listValue(comb)); }},
        {"second filter", [&](Instrument& audio) { audio.setParameter(hostIndex(par::FilType1 + 1, 0), listValue(comb)); }},
        {"a layer with a filter",
         [&](Instrument& audio) {
             audio.setParameter(hostIndex(par::FilType1, 0), listValue(comb));
             audio.setParameter(par::Layer1On, 1.0f);
         }},
        {"a command",
         [&](Instrument& audio) {
             audio.parameters().writeRaw(hostIndex(par::FxInType, 0), wanted);
             audio.parametersWritten();
         }},
    };
    for (const auto& [what, change] : changes) {
        EngineRig rig;
        rig.clearParameters();
        rig.plainLayer();
        EXPECT_LE(pagesAfter(rig, elsewhere(change)), few) << what;
    }
    EngineRig automated;
    automated.clearParameters();
    automated.plainLayer();
    EXPECT_GT(pagesAfter(automated, changes[0].second), 300) << "else the figures above say nothing";
}

#endif

}  // namespace
}  // namespace vantoric
