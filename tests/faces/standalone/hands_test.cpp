// What reaches the instrument: who holds which key, at which frame, and how it gets on record.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <thread>

#include "base/parameters.h"
#include "faces/standalone/hands.h"
#include "faces/standalone/kept_state.h"
#include "faces/standalone/midi_inputs.h"
#include "faces/standalone/senders.h"
#include "faces/standalone/sound_system.h"
#include "faces/standalone/standalone.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "platform/user_state.h"
#include "tests/base/failing_allocation.h"
#include "tests/faces/standalone/program.h"
#include "tests/host/audio_watch.h"

namespace vantoric::standalone {
namespace {

using testhost::Recording;

class StandaloneTest : public testing::Test {
protected:
    StandaloneTest() { platform::setDataFolder(DATA_FOLDER); }

    // Plays so many blocks to nobody.
    void play(int blocks, int frames = 64) {
        left_.assign(static_cast<std::size_t>(frames), 0);
        right_ = left_;
        for (int i = 0; i < blocks; ++i) {
            player_.play(left_.data(), right_.data(), frames);
            played_.insert(played_.end(), left_.begin(), left_.end());
        }
    }
    // Effects and filters whisper a little where nothing is played.
    static constexpr float audible = 1e-4f;
    std::size_t onset() const {
        std::size_t frame = 0;
        while (frame < played_.size() && std::fabs(played_[frame]) < audible) ++frame;
        return frame;
    }

    platform::ScratchFolder folder_;
    Instrument instrument_;
    Recorder recorder_;
    Player player_{instrument_, recorder_};
    Hands hands_{player_};
    std::vector<float> left_, right_, played_;
};

TEST_F(StandaloneTest, KeysOfTheComputerPlayByTheirPlaces) {
    player_.prepare(48000);
    EXPECT_EQ(hands_.noteOf(52), 48);
    EXPECT_EQ(hands_.noteOf(24), 60);
    EXPECT_EQ(hands_.codeOf(60), 24u);
    EXPECT_EQ(hands_.noteOf(9), -1);
    EXPECT_TRUE(hands_.codeDown(52));
    EXPECT_FALSE(hands_.codeDown(9));
    play(1);
    EXPECT_TRUE(player_.isKeyDown(48));
    hands_.shiftOctave(1);
    EXPECT_EQ(hands_.noteOf(52), 60);
    hands_.codeUp(52);  // of the note that it began
    play(1);
    EXPECT_FALSE(player_.isKeyDown(48));
    for (int i = 0; i < 20; ++i) hands_.shiftOctave(1);
    EXPECT_EQ(hands_.octave(), Hands::highestOctave);
    EXPECT_EQ(hands_.noteOf(35), 127);
}

TEST_F(StandaloneTest, AKeyHeldTwiceSoundsUntilBothAreLetGo) {
    player_.prepare(48000);
    hands_.press(60, 90);
    hands_.codeDown(24);  // the same note
    hands_.release(60);
    play(1);
    EXPECT_TRUE(player_.isKeyDown(60));
    hands_.codeUp(24);
    play(1);
    EXPECT_FALSE(player_.isKeyDown(60));
}

TEST_F(StandaloneTest, KeysWhoseReleaseWentElsewhereAreLetGo) {
    player_.prepare(48000);
    hands_.codeDown(52);
    hands_.codeDown(53);
    hands_.releaseCodesBut(std::bitset<256>().set(53));
    play(1);
    EXPECT_FALSE(player_.isKeyDown(48));
    EXPECT_TRUE(player_.isKeyDown(50));
}

TEST_F(StandaloneTest, APedalWhoseKeyWasLetGoOfElsewhereComesUp) {
    player_.prepare(48000);
    hands_.pedalCodeDown(65);
    play(1);
    EXPECT_TRUE(hands_.isPedalDown() && hands_.isAnyCodeDown());
    hands_.releaseCodesBut({});
    play(2);
    EXPECT_FALSE(hands_.isPedalDown() || hands_.isAnyCodeDown());
    EXPECT_FALSE(instrument_.midi().sustainOn());
    hands_.setPedal(true);  // by the button of the bar: no key holds it
    hands_.releaseCodesBut({});
    EXPECT_TRUE(hands_.isPedalDown());
}

TEST_F(StandaloneTest, AKeyboardThatGoesLetsGo) {
    Senders senders;
    std::vector<ShortMessage> sent;
    const auto send = [&](const ShortMessage& message) { sent.push_back(message); };
    senders.follow({20, 0}, {0x91, 60, 100});
    senders.follow({20, 0}, {0x91, 64, 100});
    senders.follow({20, 0}, {0x81, 64, 0});
    senders.follow({20, 0}, {0x90, 62, 100});
    senders.follow({20, 0}, {0x90, 62, 0});
    senders.follow({20, 0}, {0xb1, 64, 127});
    senders.follow({24, 0}, {0x90, 70, 100});
    senders.leave({99, 9}, send);
    EXPECT_TRUE(sent.empty());
    senders.leave({20, 0}, send);
    EXPECT_EQ(sent, (std::vector<ShortMessage>{{0x81, 60, 0}, {0xb1, 64, 0}}));
    senders.leaveAll(send);
    EXPECT_EQ(sent.back(), (ShortMessage{0x80, 70, 0}));
    senders.leaveAll(send);
    EXPECT_EQ(sent.size(), 3u);
    senders.follow({20, 0}, {0x90, 60, 100});
    senders.follow({20, 0}, {0xb0, 123, 0});
    senders.leaveAll(send);
    EXPECT_EQ(sent.size(), 3u);
}

// Whoever can't be followed is not played: nobody would let go of the key.
TEST_F(StandaloneTest, AKeyboardThatThereIsNoMemoryForIsNotFollowed) {
    Senders senders;
    EXPECT_TRUE(senders.follow({20, 0}, {0x90, 60, 100}));
    test::allocationsLeft = 0;
    const bool isNewFollowed = senders.follow({24, 0}, {0x90, 70, 100}),
               isKnownFollowed = senders.follow({20, 0}, {0x90, 61, 100});
    test::allocationsLeft = -1;
    EXPECT_FALSE(isNewFollowed);
    EXPECT_TRUE(isKnownFollowed);
    std::vector<ShortMessage> sent;
    senders.leaveAll([&](const ShortMessage& message) { sent.push_back(message); });
    EXPECT_EQ(sent, (std::vector<ShortMessage>{{0x80, 60, 0}, {0x80, 61, 0}}));
}

TEST_F(StandaloneTest, WhatIsLostBetweenTwoBlocksHoldsNoNote) {
    player_.prepare(48000);
    for (int i = 0; i < 2000; ++i) {  // more than there is room for: the last ends are lost
        const double now = clockSeconds() - 1;
        player_.receiveAt(now, {0x90, static_cast<std::uint8_t>(i % 90), 100});
        player_.touch({0x90, static_cast<std::uint8_t>(90 + i % 30), 100});
    }
    for (int key = 0; key < 128; ++key) {
        player_.receiveAt(clockSeconds() - 1, {0x80, static_cast<std::uint8_t>(key), 0});
        player_.touch({0x80, static_cast<std::uint8_t>(key), 0});
    }
    play(40);
    for (int key = 0; key < 128; ++key) EXPECT_FALSE(player_.isKeyDown(key)) << key;
    EXPECT_TRUE(instrument_.midi().nothingHeld());
}

TEST_F(StandaloneTest, KeyboardsAtTheDeviceThatGoLetGo) {
    player_.prepare(48000);
    player_.receive(3, {0x90, 60, 100});
    hands_.press(64, 100);
    play(10);
    EXPECT_TRUE(player_.isKeyDown(60));
    player_.releaseDevice();
    play(10);
    EXPECT_FALSE(player_.isKeyDown(60));
    EXPECT_TRUE(player_.isKeyDown(64)) << "the hand on the screen is still there";
}

// Keyboards as a system offers them.
struct Offered final : MidiPort {
    std::vector<MidiInput> there;
    std::vector<MidiInput> inputs() override { return there; }
    void connect(const std::string& id, bool wanted) override {
        for (MidiInput& input : there)
            if (input.id == id) input.isConnected = wanted;
    }
    bool isConnected(std::size_t i) const { return there[i].isConnected; }
};

TEST_F(StandaloneTest, ConnectionsMadeByOtherMeansStay) {
    MidiInputs midi(player_);
    Offered port;
    port.there = {{"1", "Piano"}, {"2", "Organ"}};
    midi.setUnwanted({"Organ"});
    midi.poll(&port);
    EXPECT_TRUE(port.isConnected(0) && !port.isConnected(1));
    port.there[0].isConnected = false;  // by a patchbay
    port.there[1].isConnected = true;
    midi.poll(&port);
    EXPECT_TRUE(!port.isConnected(0) && port.isConnected(1));
    midi.setWanted("Organ", false);  // the user's tick is a wish of now
    midi.setWanted("Piano", true);
    midi.poll(&port);
    EXPECT_TRUE(port.isConnected(0) && !port.isConnected(1));
    port.there[0].isConnected = false;  // unplugged and plugged in again
    const MidiInput piano = port.there[0];
    port.there.erase(port.there.begin());
    midi.poll(&port);
    port.there.push_back(piano);
    midi.poll(&port);
    EXPECT_TRUE(port.isConnected(1));
}

TEST_F(StandaloneTest, PanicEndsEverything) {
    player_.prepare(48000);
    hands_.setPedal(true);
    for (int note = 40; note < 70; note += 3) hands_.press(note, 100);
    play(400);
    ASSERT_NE(left_.back(), 0.0f);
    hands_.panic();
    play(2);
    for (int note = 0; note < 128; ++note) EXPECT_FALSE(player_.isKeyDown(note)) << note;
    EXPECT_FALSE(hands_.isPedalDown());
    EXPECT_FALSE(instrument_.midi().sustainOn());
    EXPECT_TRUE(instrument_.midi().nothingHeld());
}

// It is no message that a knob could learn or follow.
TEST_F(StandaloneTest, PanicMovesNoParameterAndTeachesNoKnob) {
    player_.prepare(48000);
    ControllerMap& map = instrument_.controllerMap();
    std::array<int, 128> before{};
    for (int number = 0; number < 128; ++number) before[static_cast<std::size_t>(number)] = map.get(number);
    for (const int number : {1, 64, 120, 123}) map.set(number, parameter::Volume);
    instrument_.setParameter(parameter::Modwheel, 0.7f);
    instrument_.setParameter(parameter::Volume, 0.4f);
    hands_.setPedal(true);
    hands_.press(60, 100);
    play(10);
    for (int layer = 0; layer < layerCount; ++layer) instrument_.layer(layer).ticksSinceNote = 2000;  // its lamp is dark
    instrument_.setParameter(parameter::Volume, 0.4f);                                                // the pedal has moved it
    instrument_.midi().setLearnPending(parameter::EqLow);
    const float equalizer = instrument_.parameters().getParameter(parameter::EqLow);
    const std::uint64_t messages = player_.messages();
    hands_.panic();
    play(20);
    EXPECT_EQ(instrument_.parameters().getParameter(parameter::Modwheel), 0.7f);
    EXPECT_EQ(instrument_.parameters().getParameter(parameter::Volume), 0.4f);
    EXPECT_EQ(instrument_.parameters().getParameter(parameter::EqLow), equalizer);
    EXPECT_EQ(instrument_.midi().learnPending(), parameter::EqLow);
    EXPECT_EQ(player_.messages(), messages + 1) << "the key's end alone";
    for (int layer = 0; layer < layerCount; ++layer)
        EXPECT_GT(instrument_.layer(layer).ticksSinceNote, 1999) << "the lamp of layer " << layer + 1 << " lights";
    EXPECT_TRUE(instrument_.keysSounding().none());
    EXPECT_FALSE(instrument_.midi().sustainOn());
    instrument_.midi().setLearnPending(ControllerMap::none);
    for (int number = 0; number < 128; ++number) map.set(number, before[static_cast<std::size_t>(number)]);
}

TEST_F(StandaloneTest, PanicEndsWhatOtherKeyboardsAndOtherChannelsPlay) {
    player_.prepare(48000);
    player_.receive(0, {0x90, 50, 100});
    player_.receive(0, {0xb5, 64, 127});
    player_.receive(0, {0x95, 57, 100});
    player_.receiveAt(clockSeconds() - 1, {0x92, 64, 100});
    play(100);
    EXPECT_FALSE(instrument_.keysSounding().none());
    hands_.panic();
    play(1);
    EXPECT_TRUE(instrument_.keysSounding().none());
    EXPECT_TRUE(instrument_.midi().nothingHeld());
    hands_.press(62, 100);
    play(10);
    EXPECT_TRUE(player_.isKeyDown(62)) << "and plays on";
    EXPECT_FALSE(instrument_.keysSounding().none());
}

// As a click does between two blocks.
TEST_F(StandaloneTest, PanicOvertakesNoKeyThatWasHitBefore) {
    player_.prepare(48000);
    play(10);
    hands_.press(60, 100);
    hands_.setPedal(true);
    hands_.panic();
    play(10, 16);  // less than a tick long
    EXPECT_TRUE(instrument_.midi().nothingHeld());
    EXPECT_TRUE(instrument_.keysSounding().none());
    hands_.press(60, 100);
    play(1, 1);  // it waits for its tick
    hands_.panic();
    play(3000);
    EXPECT_FALSE(player_.isKeyDown(60));
    EXPECT_TRUE(instrument_.midi().nothingHeld());
    EXPECT_TRUE(instrument_.keysSounding().none());
}

TEST_F(StandaloneTest, DropoutsAreCountedAnewForAnotherDevice) {
    SoundSystem sound(player_);
    SoundChoice none;
    none.kind = SoundKind::none;
    ASSERT_TRUE(sound.open(none));
    for (int i = 0; i < 3; ++i) player_.noteDropout();
    EXPECT_EQ(player_.newDropouts(), 3);
    player_.forgetDropouts();
    EXPECT_EQ(player_.newDropouts(), 0);
    player_.noteDropout();
    EXPECT_EQ(player_.newDropouts(), 1);
    none.rate = 96000;
    ASSERT_TRUE(sound.open(none));
    EXPECT_EQ(player_.newDropouts(), 0);
    EXPECT_EQ(player_.dropouts(), 4) << "of the whole evening";
    sound.close();
}

TEST_F(StandaloneTest, RatesAreToldInKilohertz) {
    EXPECT_EQ(kilohertzText(44100), "44.1 kHz");
    EXPECT_EQ(kilohertzText(48000), "48 kHz");
    EXPECT_EQ(kilohertzText(88200), "88.2 kHz");
    EXPECT_EQ(kilohertzText(96000), "96 kHz");
    EXPECT_EQ(kilohertzText(176400), "176.4 kHz");
    EXPECT_EQ(kilohertzText(22050), "22.05 kHz");
}

TEST_F(StandaloneTest, MessagesSoundAtTheirFrame) {
    const auto onsetOfNoteAt = [](int frame) {
        Instrument instrument;
        Recorder recorder;
        Player player(instrument, recorder);
        EXPECT_TRUE(instrument.patchFiles().loadPatchFile(PATCH_FILE));
        player.prepare(48000);
        player.receive(frame + 9000, {0x80, 60, 0});  // in any order
        player.receive(frame, {0x90, 60, 100});
        std::vector<float> left(20000), right(20000);
        player.play(left.data(), right.data(), 20000);
        std::size_t onset = 0;
        while (onset < left.size() && std::fabs(left[onset]) < audible) ++onset;
        return static_cast<int>(onset);
    };
    const int first = onsetOfNoteAt(3000);
    EXPECT_GE(first, 3000 - 48);
    EXPECT_LT(first, 6000);
    // Two blocks of the engine later, and in its second piece.
    EXPECT_NEAR(onsetOfNoteAt(3000 + 100 * 48), first + 100 * 48, 12);
    EXPECT_NEAR(onsetOfNoteAt(3000 + 150 * 48), first + 150 * 48, 12);
}

TEST_F(StandaloneTest, MoreMessagesThanTheQueueHoldsAreAllHeard) {
    player_.prepare(48000);
    for (int i = 0; i < 500; ++i) player_.receive(4 * i, {0xb0, 1, static_cast<std::uint8_t>(i % 128)});
    player_.receive(2010, {0x90, 60, 100});
    play(1, 4096);
    EXPECT_EQ(player_.messages(), 501u);
    EXPECT_FALSE(instrument_.midi().nothingHeld());
    // In the millisecond that it falls into.
    EXPECT_GE(onset(), 2010u - 48);
    EXPECT_LE(onset(), 2010u + 48);
}

TEST_F(StandaloneTest, TheSequencersMessagesKeepTheirDistances) {
    player_.prepare(48000);
    play(1, 480);
    const double now = clockSeconds();
    // From a block before; a frame that lies before it counts as its first.
    player_.receiveAt(now - 10, {0x90, 60, 100});
    player_.receiveAt(now + 100, {0x90, 61, 100});  // not yet
    play(1, 480);
    EXPECT_TRUE(player_.isKeyDown(60));
    EXPECT_FALSE(player_.isKeyDown(61));
}

TEST_F(StandaloneTest, ChannelsKeepTheirMessages) {
    player_.prepare(48000);
    player_.receive(0, {0x95, 64, 1});
    play(1);
    EXPECT_TRUE(player_.isKeyDown(64));
    player_.receive(0, {0x95, 64, 0});
    play(1);
    EXPECT_FALSE(player_.isKeyDown(64));
}

TEST_F(StandaloneTest, ABlockTakesNoMemoryNoLockAndCallsNoSystem) {
    if (!testhost::AudioWatch::available()) GTEST_SKIP();
    player_.prepare(48000);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 48000, problem)) << problem;
    std::vector<float> left(2048), right(2048);
    player_.play(left.data(), right.data(), 2048);  // what happens but once
    for (int block = 0; block < 100; ++block) {
        hands_.press(40 + block % 50, 100);
        player_.receiveAt(clockSeconds(), {0x80, static_cast<std::uint8_t>(40 + block % 50), 0});
        const testhost::AudioWatch watch;
        for (int i = 0; i < 300; ++i) player_.receive(i, {0xb0, 1, 3});
        player_.play(left.data(), right.data(), 1 + 20 * block);
    }
    recorder_.stop();
    EXPECT_EQ(testhost::AudioWatch::allocations(), 0);
    EXPECT_EQ(testhost::AudioWatch::releases(), 0);
    EXPECT_EQ(testhost::AudioWatch::locks(), 0);
    if (testhost::AudioWatch::seesSystemCalls()) {
        EXPECT_EQ(testhost::AudioWatch::systemCalls(), 0) << "the last one: " << testhost::AudioWatch::lastSystemCall();
    }
}

TEST_F(StandaloneTest, ARecordingHoldsWhatWasPlayed) {
    player_.prepare(44100);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 44100, problem)) << problem;
    EXPECT_FALSE(recorder_.start(folder_ / "other.wav", 44100, problem));
    player_.receive(10, {0x90, 60, 100});
    for (int i = 0; i < 300; ++i) {
        play(1, 100 + i % 7);
        if (i % 50 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(recorder_.stop()) << recorder_.trouble();
    play(3);  // not on it any more
    const Recording take = testhost::readRecording(folder_ / "take.wav");
    EXPECT_EQ(take.rate, 44100);
    ASSERT_EQ(take.frames(), played_.size() - 3 * 64);
    for (std::size_t i = 0; i < take.frames(); ++i) ASSERT_EQ(take.samples[2 * i], played_[i]) << i;
    EXPECT_GT(take.peak(), 0.01f);
}

TEST_F(StandaloneTest, ASecondRecordingBeginsAnew) {
    player_.prepare(48000);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "first.wav", 48000, problem));
    play(10, 100);
    ASSERT_TRUE(recorder_.stop());
    ASSERT_TRUE(recorder_.start(folder_ / "second.wav", 48000, problem));
    play(3, 100);
    ASSERT_TRUE(recorder_.stop());
    EXPECT_EQ(testhost::readRecording(folder_ / "second.wav").frames(), 300u);
}

TEST_F(StandaloneTest, AFullDiskEndsARecordingAndNothingElse) {
    player_.prepare(48000);
    std::string problem;
    ASSERT_FALSE(recorder_.start(folder_ / "none/take.wav", 48000, problem));
    EXPECT_FALSE(problem.empty());
    // A device that takes no byte.
    EXPECT_FALSE(recorder_.start("/dev/full", 48000, problem));
    EXPECT_EQ(problem, "No space left on device");
    play(20);
    EXPECT_FALSE(recorder_.isRecording());
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 48000, problem)) << problem;
    play(2, 100);
    EXPECT_TRUE(recorder_.stop());
    EXPECT_EQ(testhost::readRecording(folder_ / "take.wav").frames(), 200u);
}

// In the middle of it.
TEST_F(StandaloneTest, WhatWasRecordedBeforeTheDiskWasFullIsAWholeFile) {
    player_.prepare(48000);
    const testhost::FileSizeLimit full(300000);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 48000, problem)) << problem;
    for (int i = 0; i < 400 && recorder_.isRecording(); ++i) {
        play(1, 480);
        testhost::pause(0.005);
    }
    EXPECT_TRUE(testhost::within(10, [&] { return recorder_.hasFailed(); }));
    EXPECT_FALSE(recorder_.stop());
    EXPECT_EQ(recorder_.trouble(), "File too large");
    const Recording take = testhost::readRecording(folder_ / "take.wav");
    EXPECT_GT(take.frames(), 30000u);
    for (std::size_t i = 0; i < take.frames(); ++i) ASSERT_EQ(take.samples[2 * i], played_[i]) << i;
}

// From now on this process has the device of a full disk in place of an open file.
void fillDiskOf(const std::string& path) {
    for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code none;
        if (std::filesystem::read_symlink(open.path(), none) != path) continue;
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        ASSERT_GE(dup2(full, std::stoi(open.path().filename().string())), 0);
        ::close(full);
        return;
    }
    FAIL() << path << " is not open";
}

// A full disk, and no memory for the words that say so.
TEST_F(StandaloneTest, ARecordingThatThereIsNoMemoryForEndsAlone) {
    player_.prepare(48000);
    play(1, 480);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 48000, problem)) << problem;
    fillDiskOf(std::filesystem::canonical(folder_ / "take.wav").string());
    test::allocationsLeft = 0;
    player_.play(left_.data(), right_.data(), 480);
    for (int i = 0; i < 2000 && !recorder_.hasFailed(); ++i) platform::sleepMilliseconds(5);
    test::allocationsLeft = -1;
    EXPECT_TRUE(recorder_.hasFailed());
    EXPECT_FALSE(recorder_.stop());
    EXPECT_EQ(recorder_.trouble(), "no memory left");
}

// The file is named once there is sound, and the device may have another rate than what was asked of it.
TEST_F(StandaloneTest, ARecordingHoldsWhatWasPlayedBeforeItsFileWasNamed) {
    recorder_.listen(48000);
    player_.prepare(44100);
    player_.receive(10, {0x90, 60, 100});
    play(20, 100);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 44100, problem)) << problem;
    play(20, 100);
    EXPECT_TRUE(recorder_.stop()) << recorder_.trouble();
    const Recording take = testhost::readRecording(folder_ / "take.wav");
    EXPECT_EQ(take.rate, 44100);
    ASSERT_EQ(take.frames(), played_.size());
    for (std::size_t i = 0; i < take.frames(); ++i) ASSERT_EQ(take.samples[2 * i], played_[i]) << i;
}

TEST_F(StandaloneTest, ARecordingEndsWithItsRate) {
    player_.prepare(48000);
    std::string problem;
    ASSERT_TRUE(recorder_.start(folder_ / "take.wav", 48000, problem));
    player_.prepare(96000);  // nothing is on it yet: it begins anew
    EXPECT_TRUE(recorder_.isRecording());
    play(5, 100);
    player_.prepare(44100);
    EXPECT_FALSE(recorder_.isRecording());
    EXPECT_TRUE(recorder_.hasFailed());
    EXPECT_EQ(recorder_.trouble(), "the sample rate changed");
    const Recording take = testhost::readRecording(folder_ / "take.wav");
    EXPECT_EQ(take.rate, 96000);
    EXPECT_EQ(take.frames(), 500u);
}

TEST_F(StandaloneTest, TimePassesWithoutADevice) {
    SoundSystem sound(player_);
    SoundChoice choice;
    choice.kind = SoundKind::none;
    choice.rate = 96000;
    choice.period = 128;
    EXPECT_TRUE(sound.open(choice));
    EXPECT_FALSE(sound.isHeard());
    EXPECT_EQ(sound.description(), "no sound");
    EXPECT_TRUE(testhost::within(10, [&] { return player_.frames() > 4000; }));
    EXPECT_EQ(player_.rate(), 96000);
    EXPECT_EQ(instrument_.hostRate(), 96000.0f);
}

TEST_F(StandaloneTest, ADeviceThatIsNotThereIsSaidAndSoughtAgain) {
    SoundSystem sound(player_);
    SoundChoice choice;
    choice.kind = SoundKind::alsa;
    choice.device = "no such device";
    EXPECT_FALSE(sound.open(choice));
    EXPECT_NE(sound.problem().find("ALSA: device \"no such device\": "), std::string::npos) << sound.problem();
    EXPECT_TRUE(testhost::within(10, [&] { return player_.frames() > 1000; }));  // silently
    for (int i = 0; i < 30; ++i) {
        sound.poll();
        testhost::pause(0.05);
    }
    EXPECT_FALSE(sound.isHeard());
    const std::uint64_t before = player_.frames();
    EXPECT_TRUE(testhost::within(10, [&] { return player_.frames() > before + 1000; }));
    choice.device = "null";
    EXPECT_TRUE(sound.open(choice));
    EXPECT_TRUE(sound.isHeard());
    EXPECT_EQ(sound.description(), "ALSA \"null\", 48000 Hz, 256 frames");
}

// A block that there is no memory for: nothing plays until there is, and the device's thread never sees the lack of it.
TEST_F(StandaloneTest, ADeviceThatThereIsNoMemoryForIsSaidAndSoughtAgain) {
    constexpr int period = 1 << 14;
    for (const SoundKind kind : {SoundKind::none, SoundKind::alsa}) {
        SoundSystem sound(player_);
        SoundChoice choice;
        choice.kind = kind;
        choice.device = "null";
        choice.period = period;
        test::throwingAllocation = period * sizeof(float);
        EXPECT_FALSE(sound.open(choice));
        EXPECT_EQ(sound.problem(), kind == SoundKind::none ? "no memory left" : "ALSA: device \"null\": Cannot allocate memory");
        EXPECT_EQ(sound.system(), "none");
        testhost::pause(1.1);
        sound.poll();
        test::throwingAllocation = 0;
        const std::uint64_t before = player_.frames();
        EXPECT_TRUE(testhost::within(10, [&] {
            sound.poll();
            return player_.frames() > before;
        }));
        EXPECT_EQ(sound.isHeard(), kind == SoundKind::alsa);
    }
}

// ---- what is kept

class KeptStateTest : public testing::Test {
protected:
    KeptStateTest() { platform::setStateFolder(folder_.path()); }
    ~KeptStateTest() override { platform::setStateFolder(""); }
    void write(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    platform::ScratchFolder folder_;
};

TEST_F(KeptStateTest, SettingsComeBack) {
    EXPECT_EQ(readKeptSettings(), KeptSettings{});
    KeptSettings settings;
    settings.sound = {SoundKind::alsa, "plughw:CARD=Box,DEV=1", 96000, 64};
    settings.tempo = 133.5;
    settings.octave = 5;
    settings.showsKeys = false;
    settings.unwantedInputs = {"One = two", "Tasten \xc3\xa4"};
    ASSERT_TRUE(keepSettings(settings));
    EXPECT_EQ(readKeptSettings(), settings);
}

TEST_F(KeptStateTest, NonsenseHasItsDefault) {
    write("standalone.settings",
          "rate=0\nperiod=99999999999\ntempo=nan\noctave=x\nsound=loud\ndevice=\n\n=\nnothing\nkeys=hidden");
    KeptSettings expected;
    expected.showsKeys = false;
    EXPECT_EQ(readKeptSettings(), expected);
    write("standalone.settings", std::string(100000, 'a'));
    EXPECT_EQ(readKeptSettings(), KeptSettings{});
}

// What an instrument that is no plug-in asks of its host.
struct NoHost : HostPort {
    void editBegun(int) override {}
    void parameterEdited(int, float) override {}
    void editEnded(int) override {}
    void patchChanged() override {}
    void latencyChanged(int) override {}
    bool sizeWanted(int, int) override { return false; }
};

TEST_F(KeptStateTest, ThePatchComesBack) {
    platform::setDataFolder(DATA_FOLDER);
    NoHost host;
    PluggedInstrument first(host), second(host);
    EXPECT_EQ(loadKeptPatch(second), KeptPatch::none);
    first.instrument().setParameter(100, 0.37f);
    first.instrument().program().setProgramName("As I left it");
    ASSERT_TRUE(keepPatch(first));
    ASSERT_EQ(loadKeptPatch(second), KeptPatch::loaded);
    EXPECT_EQ(second.instrument().parameters().getParameter(100), 0.37f);
    EXPECT_EQ(second.instrument().program().getProgramName(), "As I left it");
}

// As with an installation that belongs to the system.
TEST_F(KeptStateTest, APatchByNameMayBeTheUsersOwnAndHidesTheFactorys) {
    platform::setDataFolder(DATA_FOLDER);
    platform::setOwnFolder(folder_ / "own");
    platform::RecordedDialogs dialogs;
    Standalone program(dialogs);
    program.instrument().setParameter(100, 0.37f);
    for (const char* name : {"User/Mine", PATCH}) {
        const std::string path = platform::ownPath(platform::belowSounds() + name) + ".fxp";
        ASSERT_TRUE(platform::makeFolder(path.substr(0, path.rfind('/'))));
        ASSERT_TRUE(program.instrument().patchFiles().savePatchFile(path));
    }
    const auto loaded = [&](const char* name) {
        program.instrument().setParameter(100, 0.0f);
        EXPECT_EQ(program.loadPatch(name), PatchLoad::done) << name;
        return program.instrument().parameters().getParameter(100);
    };
    EXPECT_EQ(loaded("User/Mine"), 0.37f);
    EXPECT_EQ(loaded(PATCH), 0.37f);
    EXPECT_EQ(program.loadPatch("Keys"), PatchLoad::missing) << "a category";
    platform::setOwnFolder("");
}

TEST_F(KeptStateTest, ABrokenPatchChangesNothing) {
    platform::setDataFolder(DATA_FOLDER);
    NoHost host;
    PluggedInstrument plugged(host);
    ASSERT_TRUE(keepPatch(plugged));
    plugged.instrument().program().setProgramName("In force");
    plugged.instrument().setParameter(100, 0.37f);
    const std::string path = folder_ / "standalone.patch";
    std::ifstream file(path, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    std::string newer = whole, headless = whole;
    newer[0] = 99;
    for (std::size_t i = 0; i < 384; ++i) headless[54785 + i] = static_cast<char>(0xff);  // the samples' headers
    for (const std::string& broken : {std::string(), std::string("short"), newer, headless}) {
        write("standalone.patch", broken);
        EXPECT_EQ(loadKeptPatch(plugged), KeptPatch::unreadable);
        EXPECT_EQ(plugged.instrument().program().getProgramName(), "In force");
        EXPECT_EQ(plugged.instrument().parameters().getParameter(100), 0.37f);
        EXPECT_FALSE(plugged.instrument().flags().engineLocked.isSet());
    }
}

// It may be of a newer version, which can read it.
TEST_F(KeptStateTest, AnUnreadablePatchIsNotWrittenOver) {
    platform::setDataFolder(DATA_FOLDER);
    platform::RecordedDialogs dialogs;
    Standalone program(dialogs);
    const auto content = [this](const std::string& name) {
        std::ifstream file(folder_ / name, std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    const auto told = [&] {
        const auto messages = program.instrument().messages().take();
        return messages.empty() ? std::string() : messages.back().text;
    };
    const std::string unreadable = "The patch of the last time cannot be read.";
    program.loadLastPatch(true);
    EXPECT_EQ(told(), "") << "there is none";
    for (const std::string aside : {"standalone.patch.unreadable", "standalone.patch.unreadable 2"}) {
        write("standalone.patch", "of " + aside);
        program.loadLastPatch(false);
        EXPECT_EQ(told(), unreadable) << "nothing is kept at the end of this time";
        EXPECT_EQ(content("standalone.patch"), "of " + aside);
        program.loadLastPatch(true);
        EXPECT_EQ(told(), unreadable + " It is kept as " + folder_ / aside);
        ASSERT_TRUE(keepPatch(program.plugged()));
        EXPECT_EQ(content(aside), "of " + aside);
    }
}

}  // namespace
}  // namespace vantoric::standalone
