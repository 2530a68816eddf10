#include "faces/vst2/q7audio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>
#include <thread>

#include "base/version.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "tests/base/failing_allocation.h"
#include "tests/base/failing_thread.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;

// A host that answers as told and writes down what it is asked.
struct Host {
    std::string product = "Test host";
    VstTimeInfo time{};
    bool knowsTime = false;
    std::vector<std::int32_t> asked;

    static std::intptr_t callback(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void* ptr, float) {
        return current->answer(opcode, ptr);
    }
    std::intptr_t answer(std::int32_t opcode, void* ptr) {
        asked.push_back(opcode);
        if (opcode == hostGetTime) return knowsTime ? reinterpret_cast<std::intptr_t>(&time) : 0;
        if (opcode == hostSizeWindow) return 1;
        if (opcode != hostGetProductString) return 0;
        copyText(static_cast<char*>(ptr), product.c_str(), 64);
        return 1;
    }
    int count(std::int32_t opcode) const { return static_cast<int>(std::count(asked.begin(), asked.end(), opcode)); }

    static inline Host* current = nullptr;
};

struct Q7AudioTest : testing::Test {
    Q7AudioTest() {
        Host::current = &host;
        test::sharedDataFolder();
        audio = std::make_unique<Q7Audio>(Host::callback, dialogs);
    }
    void play(int frames) {
        std::vector<float> left(static_cast<std::size_t>(frames)), right(left);
        float* outputs[] = {left.data(), right.data()};
        audio->processReplacing(nullptr, outputs, frames);
    }
    Host host;
    platform::RecordedDialogs dialogs;
    std::unique_ptr<Q7Audio> audio;
};

TEST_F(Q7AudioTest, ThatGetsNoThreadOrNoMemoryLeavesNothingBehind) {
    audio.reset();
    {
        const test::NoMoreThreads none;
        EXPECT_THROW(Q7Audio(Host::callback, dialogs), std::system_error);
    }
    EXPECT_FALSE(WaveLibrary::shared().loaded());
    const int failures = test::failuresUntilMade([this] { const Q7Audio plugin(Host::callback, dialogs); },
                                                 [] { EXPECT_FALSE(WaveLibrary::shared().loaded()); });
    EXPECT_GT(failures, 4);
    EXPECT_EQ(Q7Audio(Host::callback, dialogs).instrument().instanceNumber(), 1);
}

TEST_F(Q7AudioTest, TellsTheHostWhatItIs) {
    const AEffect& effect = *audio->getAeffect();
    EXPECT_EQ(effect.numPrograms, 1);
    EXPECT_EQ(effect.numParams, 1224);
    EXPECT_EQ(effect.numInputs, 0);
    EXPECT_EQ(effect.numOutputs, 2);
    EXPECT_EQ(effect.uniqueID, fourCharacters('Q', '7', 'D', 'I'));
    EXPECT_EQ(effect.flags, effectCanReplacing | effectProgramChunks | effectIsSynth);
    EXPECT_EQ(audio->getVendorVersion(), versionNumber);
    EXPECT_EQ(audio->getPlugCategory(), categorySynth);
    char text[textBufferSize] = {};
    EXPECT_TRUE(audio->getProductString(text));
    EXPECT_STREQ(text, "Vantoric");
    EXPECT_TRUE(audio->getEffectName(text));
    EXPECT_STREQ(text, "Vantoric");
}

TEST_F(Q7AudioTest, SaysWhatItCanDo) {
    for (const char* known : {"receiveVstEvents", "receiveVstMidiEvent", "midiProgramNames", "receiveVstTimeInfo"})
        EXPECT_EQ(audio->canDo(known), 1) << known;
    for (const char* other : {"", "bypass", "sendVstEvents", "receivevstevents", "receiveVstEvents "})
        EXPECT_EQ(audio->canDo(other), -1) << other;
    for (const int precision : {0, 1}) EXPECT_TRUE(audio->setProcessPrecision(precision));
    EXPECT_FALSE(audio->setProcessPrecision(2));
}

TEST_F(Q7AudioTest, TheHostsProductDecidesWhatMayBeAutomated) {
    EXPECT_TRUE(audio->canParameterBeAutomated(par::Volume));
    EXPECT_FALSE(audio->canParameterBeAutomated(par::FxMaType));
    host.product = "Orion";
    for (const int index : {0, 5, 15, 1223}) EXPECT_TRUE(audio->canParameterBeAutomated(index));
    EXPECT_FALSE(canParameterBeAutomated(par::FilType1, "Orion 2"));
    EXPECT_FALSE(canParameterBeAutomated(5, nullptr));
    EXPECT_TRUE(canParameterBeAutomated(1224, "Orion"));
}

TEST_F(Q7AudioTest, AsksForEventsAtEachResumeButNotWhileItIsMade) {
    EXPECT_EQ(host.count(hostWantMidi), 0);
    audio->resume();
    EXPECT_EQ(host.count(hostWantMidi), 1);
    audio->resume();
    EXPECT_EQ(host.count(hostWantMidi), 2);
}

TEST_F(Q7AudioTest, AsksForTheTimeOnceABlock) {
    host.knowsTime = true;
    host.time.tempo = 90.0;
    host.time.ppqPos = 4.0;
    play(4096);
    EXPECT_EQ(host.count(hostGetTime), 1);
    EXPECT_EQ(audio->instrument().state().tempoBpm, 90.0);
    EXPECT_GT(audio->instrument().state().songPosition, 4.0) << "the song runs on inside the block";
}

TEST_F(Q7AudioTest, TellsTheHostOfTheUsersGestures) {
    HostPort& port = *audio->instrument().hostPort();
    host.asked.clear();
    port.editBegun(5);
    port.parameterEdited(5, 0.25f);
    port.editEnded(5);
    EXPECT_TRUE(port.sizeWanted(1200, 660));
    port.latencyChanged(12);
    EXPECT_EQ(host.asked, (std::vector<std::int32_t>{hostBeginEdit, hostAutomate, hostEndEdit, hostSizeWindow, hostIoChanged}));
    EXPECT_EQ(audio->getAeffect()->initialDelay, 12);
}

TEST_F(Q7AudioTest, TellsTheHostOfANewPatchWithinACallOfItsWindowsThread) {
    AEffect& effect = *audio->getAeffect();
    host.asked.clear();
    std::thread([&] { audio->instrument().hostPort()->patchChanged(); }).join();
    play(64);
    effect.dispatcher(&effect, pluginProcessEvents, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(host.count(hostUpdateDisplay), 0);
    effect.dispatcher(&effect, pluginEditIdle, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(host.count(hostUpdateDisplay), 1);
    effect.dispatcher(&effect, pluginEditIdle, 0, 0, nullptr, 0.0f);
    EXPECT_EQ(host.count(hostUpdateDisplay), 1) << "told once";
}

TEST_F(Q7AudioTest, ThirdOutputDoesNotExist) {
    VstPinProperties pin{};
    EXPECT_FALSE(audio->getOutputProperties(2, &pin));
    EXPECT_FALSE(audio->getOutputProperties(-1, &pin));
    EXPECT_TRUE(audio->getOutputProperties(1, &pin));
    EXPECT_STREQ(pin.label, "Vantoric Out 2");
    EXPECT_STREQ(std::string(pin.shortLabel, 8).c_str(), "Vantoric");
    EXPECT_EQ(pin.flags, 3);
}

TEST_F(Q7AudioTest, NamesTheOneMidiProgramOfEveryChannel) {
    AEffect& effect = *audio->getAeffect();
    audio->setProgramName("Glass");
    MidiProgramName program{};
    EXPECT_EQ(effect.dispatcher(&effect, pluginGetMidiProgramName, 9, 0, &program, 0.0f), 1);
    EXPECT_STREQ(program.name, "Glass");
    EXPECT_EQ(program.parentCategoryIndex, -1);
    program = {7, "kept", 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(effect.dispatcher(&effect, pluginGetMidiProgramName, 9, 0, &program, 0.0f), 0);
    EXPECT_STREQ(program.name, "kept");
    EXPECT_EQ(effect.dispatcher(&effect, pluginGetCurrentMidiProgram, 0, 0, &program, 0.0f), 0);
    EXPECT_STREQ(program.name, "Glass");
    EXPECT_EQ(effect.dispatcher(&effect, pluginGetMidiProgramCategory, 0, 0, &program, 0.0f), 0);
    for (const int channel : {-1, 16}) {
        EXPECT_EQ(effect.dispatcher(&effect, pluginGetMidiProgramName, channel, 0, &program, 0.0f), 0);
        EXPECT_EQ(effect.dispatcher(&effect, pluginGetCurrentMidiProgram, channel, 0, &program, 0.0f), -1);
    }
    EXPECT_EQ(effect.dispatcher(&effect, pluginGetMidiProgramName, 0, 0, nullptr, 0.0f), 0);
}

TEST_F(Q7AudioTest, TellsEachChannelOfANewMidiProgramOnce) {
    AEffect& effect = *audio->getAeffect();
    const auto changed = [&](int channel) {
        return effect.dispatcher(&effect, pluginHasMidiProgramsChanged, channel, 0, nullptr, 0.0f);
    };
    for (int channel = 0; channel < 16; ++channel) changed(channel);
    EXPECT_EQ(changed(0), 0);
    audio->setProgramName("Another");
    for (int channel = 0; channel < 16; ++channel) {
        EXPECT_EQ(changed(channel), 1) << channel;
        EXPECT_EQ(changed(channel), 0) << channel;
    }
}

TEST_F(Q7AudioTest, EventsOtherThanMidiAreIgnored) {
    VstEvent sysex{};
    sysex.type = sysexEventType;
    VstEvents list{};
    list.numEvents = 1;
    list.events[0] = &sysex;
    EXPECT_EQ(audio->processEvents(&list), 1);
    EXPECT_EQ(audio->instrument().midi().queued(0).status, 0);
}

TEST_F(Q7AudioTest, ProgramChangesStepThroughThePatchesWithoutAWindow) {
    PatchFiles& files = audio->instrument().patchFiles();
    for (const char* name : {"a", "b"}) {
        const std::string path = patchPath("Bass", name);
        ASSERT_TRUE(platform::makeFolder(folderOfPath(path)));
        ASSERT_TRUE(files.savePatchFile(path));
    }
    ASSERT_TRUE(files.loadPatchFile(patchPath("Bass", "a")));
    VstMidiEvent change{};
    change.type = midiEventType;
    change.midiData[0] = static_cast<char>(0xc0);
    change.midiData[1] = 1;
    VstEvents list{};
    list.numEvents = 1;
    list.events[0] = reinterpret_cast<VstEvent*>(&change);
    audio->processEvents(&list);
    play(256);
    const auto name = [&] { return audio->instrument().program().getProgramName(); };
    for (int i = 0; i < 500 && name() != "b"; ++i) platform::sleepMilliseconds(10);
    EXPECT_EQ(name(), "b");
    const auto isTold = [&] {
        AEffect& effect = *audio->getAeffect();
        effect.dispatcher(&effect, pluginGetProgram, 0, 0, nullptr, 0.0f);
        return host.count(hostUpdateDisplay) > 0;
    };
    for (int i = 0; i < 500 && !isTold(); ++i) platform::sleepMilliseconds(10);
    EXPECT_TRUE(isTold());
    audio.reset();
    std::filesystem::remove_all(platform::soundsFolder());
}

TEST_F(Q7AudioTest, ShowsWhatTheInstrumentHasToTellAtTheEndOfTheCall) {
    ASSERT_EQ(dialogs.boxes().size(), 1u) << "a start without factory sounds";
    EXPECT_EQ(dialogs.boxes()[0].text, "The factory sounds are missing. Please reinstall the software.");
    audio->setProgramName("a name of twenty-eight bytes");
    ASSERT_EQ(dialogs.boxes().size(), 2u);
    EXPECT_EQ(dialogs.boxes()[1].title, "Warning");
    void* data = nullptr;
    const std::int32_t size = audio->getChunk(&data, false);
    ASSERT_GT(size, 0);
    *static_cast<std::uint8_t*>(data) = 8;
    EXPECT_EQ(audio->setChunk(data, size, false), 0);
    std::free(data);
    ASSERT_EQ(dialogs.boxes().size(), 3u);
    EXPECT_EQ(dialogs.boxes()[2].title, "Error");
}

TEST_F(Q7AudioTest, ChunkBringsThePatchBack) {
    audio->setParameter(par::Cutoff1, 0.375f);
    audio->setProgramName("Mine");
    void* data = nullptr;
    const std::int32_t size = audio->getChunk(&data, false);
    ASSERT_GT(size, 0);
    audio->setParameter(par::Cutoff1, 0.5f);
    audio->setProgramName("Other");
    EXPECT_EQ(audio->setChunk(data, size, false), 1);
    EXPECT_EQ(audio->getParameter(par::Cutoff1), 0.375f);
    char name[textBufferSize] = {};
    audio->getProgramName(name);
    EXPECT_STREQ(name, "Mine");
    std::free(data);
}

}  // namespace
}  // namespace vantoric
