// What reaches a plug-in of the host's calls, and what the host gets back.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "faces/vst2/audio_effect.h"

using namespace vantoric;

namespace {

struct Log {
    std::vector<std::string> calls;
    std::vector<int> events;  // first data byte of every event that arrived
    int deleted = 0;
    int editorsDeleted = 0;
    void add(const std::string& call) { calls.push_back(call); }
    bool has(const std::string& call) const { return std::find(calls.begin(), calls.end(), call) != calls.end(); }
};

Log* theLog = nullptr;
bool everythingThrows = false;

void mayThrow() {
    if (everythingThrows) throw std::runtime_error("whatever it is");
}

std::vector<int> hostCalls;
bool hostAnswers = true;
VstTimeInfo hostTime{};

std::intptr_t hostCallback(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void* ptr, float) {
    hostCalls.push_back(opcode);
    if (!hostAnswers) return 0;
    if (opcode == hostGetProductString) std::strcpy(static_cast<char*>(ptr), "Orion");
    if (opcode == hostGetVendorString) std::memset(ptr, 'x', 200);
    if (opcode == hostGetTime) return reinterpret_cast<std::intptr_t>(&hostTime);
    return 1;
}

class FakeEditor : public AEffEditor {
public:
    ~FakeEditor() override { ++theLog->editorsDeleted; }
    bool getRect(ERect** rect) override {
        mayThrow();
        *rect = &rect_;
        return true;
    }
    bool open(void*) override {
        mayThrow();
        theLog->add("editor open");
        return opens;
    }
    void close() override {
        mayThrow();
        theLog->add("editor close");
    }
    void idle() override {
        mayThrow();
        theLog->add("editor idle");
    }
    bool onKeyDown(const VstKeyCode& key) override {
        mayThrow();
        theLog->add("key " + std::to_string(key.character) + " " + std::to_string(key.virt) + " " + std::to_string(key.modifier));
        return true;
    }
    bool opens = true;

private:
    ERect rect_{0, 0, 300, 400};
};

class FakeEffect : public AudioEffectX {
public:
    explicit FakeEffect(HostCallback host) : AudioEffectX(host, 2, 5) {
        setNumOutputs(2);
        setUniqueID(fourCharacters('F', 'a', 'k', 'e'));
        canProcessReplacing();
        programsAreChunks();
        isSynth();
        canDoubleReplacing();
    }
    ~FakeEffect() override { ++theLog->deleted; }
    void open() override { add("open"); }
    void close() override { add("close"); }
    void suspend() override { add("suspend"); }
    void resume() override {
        mayThrow();
        wantEvents();
    }
    void setSampleRate(float rate) override { add("rate " + std::to_string(static_cast<int>(rate))); }
    void setBlockSize(std::int32_t frames) override { add("block " + std::to_string(frames)); }
    void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) override {
        if (!everythingThrows) return AudioEffectX::processDoubleReplacing(inputs, outputs, frames);
        std::fill_n(outputs[0], frames / 2, 0.25);
        mayThrow();
    }
    void processReplacing(float**, float** outputs, std::int32_t frames) override {
        theLog->add("process " + std::to_string(frames));
        for (int i = 0; i < frames; ++i) {
            if (i == frames / 2) mayThrow();
            outputs[0][i] = outputs[1][i] = 0.5f;
        }
    }
    void setParameter(std::int32_t index, float value) override {
        mayThrow();
        values.at(index) = value;
    }
    float getParameter(std::int32_t index) override {
        mayThrow();
        return values.at(index);
    }
    void getParameterName(std::int32_t, char* text) override {
        mayThrow();
        std::strcpy(text, "FilSerial and a long tail");
    }
    void setProgram(std::int32_t program) override { add("program " + std::to_string(program)); }
    std::int32_t getProgram() override {
        mayThrow();
        return 1;
    }
    void setProgramName(const char* name) override {
        mayThrow();
        programName = name;
    }
    void getProgramName(char* text) override {
        mayThrow();
        copyText(text, programName.c_str(), textBufferSize - 1);
    }
    std::int32_t getChunk(void** data, bool) override {
        mayThrow();
        *data = std::malloc(100);
        std::memset(*data, 7, 100);
        return chunkSize;
    }
    std::int32_t setChunk(void*, std::int32_t size, bool isPreset) override {
        mayThrow();
        theLog->add("chunk " + std::to_string(size) + (isPreset ? " preset" : " bank"));
        return 1;
    }
    std::int32_t processEvents(VstEvents* events) override {
        mayThrow();
        ++eventCalls;
        for (int i = 0; i < events->numEvents; ++i)
            theLog->events.push_back(static_cast<unsigned char>(events->events[i]->data[8]));
        return 1;
    }
    bool canParameterBeAutomated(std::int32_t index) override {
        mayThrow();
        return index == 3;
    }
    bool getProgramNameIndexed(std::int32_t, std::int32_t index, char* text) override {
        mayThrow();
        if (index != 0) return false;
        getProgramName(text);
        return true;
    }
    bool getOutputProperties(std::int32_t index, VstPinProperties* properties) override {
        mayThrow();
        properties->flags = index + 1;
        return true;
    }
    bool getEffectName(char* text) override {
        mayThrow();
        std::memset(text, 'n', 200);
        return true;
    }
    std::int32_t canDo(const char* text) override {
        mayThrow();
        return std::strcmp(text, "receiveVstEvents") == 0 ? 1 : -1;
    }
    std::int32_t getVendorVersion() override {
        mayThrow();
        return 3300;
    }

    std::vector<float> values = std::vector<float>(5);
    std::string programName = "a name of more than twenty-four characters";
    std::int32_t chunkSize = 100;
    int eventCalls = 0;

private:
    static void add(const std::string& call) {
        mayThrow();
        theLog->add(call);
    }
};

class Dispatcher : public ::testing::Test {
protected:
    Dispatcher() {
        theLog = &log;
        everythingThrows = false;
        hostCalls.clear();
        hostAnswers = true;
        effect = new FakeEffect(hostCallback);
        record = effect->getAeffect();
    }
    ~Dispatcher() override {
        everythingThrows = false;
        if (!log.deleted) call(pluginClose);
        theLog = nullptr;
    }
    std::intptr_t call(int opcode, int index = 0, std::intptr_t value = 0, void* ptr = nullptr, float opt = 0) {
        return record->dispatcher(record, opcode, index, value, ptr, opt);
    }
    FakeEditor* giveEditor() {
        auto editor = std::make_unique<FakeEditor>();
        FakeEditor* const raw = editor.get();
        effect->setEditor(std::move(editor));
        return raw;
    }
    // A text buffer of `length` characters, a zero and a fence; what the opcode writes into it.
    std::string text(int opcode, std::size_t length, int index = 0) {
        std::vector<char> buffer(length + 1 + 16, '#');
        call(opcode, index, 0, buffer.data());
        for (std::size_t i = length + 1; i < buffer.size(); ++i) EXPECT_EQ(buffer[i], '#') << "written beyond the grant";
        return buffer.data();
    }

    Log log;
    FakeEffect* effect;
    AEffect* record;
    int window = 0;
};

}  // namespace

TEST_F(Dispatcher, TheRecordTellsWhatThePluginIs) {
    EXPECT_EQ(record->magic, effectMagic);
    EXPECT_EQ(record->numPrograms, 2);
    EXPECT_EQ(record->numParams, 5);
    EXPECT_EQ(record->numInputs, 0);
    EXPECT_EQ(record->numOutputs, 2);
    EXPECT_EQ(record->flags, effectCanReplacing | effectProgramChunks | effectIsSynth | effectCanDoubleReplacing);
    EXPECT_EQ(call(pluginGetPlugCategory), categorySynth);
    EXPECT_EQ(call(pluginGetVstVersion), 2400);
    EXPECT_EQ(call(pluginGetVendorVersion), 3300);
    EXPECT_EQ(call(pluginIdentify), identifyAnswer);
}

TEST_F(Dispatcher, CloseDeletesThePluginEvenIfItWasNeverOpened) {
    EXPECT_EQ(call(pluginClose), 1);
    EXPECT_TRUE(log.has("close"));
    EXPECT_EQ(log.deleted, 1);
}

TEST_F(Dispatcher, UnknownOperationsAnswerZero) {
    for (int opcode : {-1, 9, 16, 21, 30, 36, 46, 55, 62, 70, 80, 1000, std::numeric_limits<int>::max()})
        EXPECT_EQ(call(opcode), 0) << opcode;
}

TEST_F(Dispatcher, EveryOperationToleratesNullAndZero) {
    for (int opcode = -5; opcode < 200; ++opcode)
        if (opcode != pluginClose) call(opcode);
    EXPECT_EQ(log.deleted, 0);
}

TEST_F(Dispatcher, TextsNeverExceedWhatTheInterfaceGrants) {
    EXPECT_EQ(text(pluginGetParamName, 8), "FilSeria");
    EXPECT_EQ(text(pluginGetProgramName, 27), effect->programName.substr(0, 27));
    EXPECT_EQ(text(pluginGetProgramNameIndexed, 27), effect->programName.substr(0, 27));
    EXPECT_EQ(text(pluginGetEffectName, 32), std::string(32, 'n'));
    EXPECT_EQ(text(pluginGetVendorString, 64), "");
}

TEST_F(Dispatcher, ParametersOutsideTheRangeAreNotReached) {
    for (int index : {-1, 5, 1224, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        record->setParameter(record, index, 0.5f);
        EXPECT_EQ(record->getParameter(record, index), 0.0f);
        EXPECT_EQ(text(pluginGetParamName, 8, index), "");
        EXPECT_EQ(call(pluginCanBeAutomated, index), 0);
    }
    record->setParameter(record, 4, 0.25f);
    EXPECT_EQ(record->getParameter(record, 4), 0.25f);
    EXPECT_EQ(call(pluginCanBeAutomated, 3), 1);
    EXPECT_EQ(call(pluginCanBeAutomated, 4), 0);
}

TEST_F(Dispatcher, OnlyExistingProgramsAreSet) {
    for (std::intptr_t program : {-1L, 2L, 1L << 40}) call(pluginSetProgram, 0, program);
    EXPECT_TRUE(log.calls.empty());
    call(pluginSetProgram, 0, 1);
    EXPECT_TRUE(log.has("program 1"));
    EXPECT_EQ(call(pluginGetProgram), 1);
}

TEST_F(Dispatcher, ProgramNamesAreTakenUpToTheBuffer) {
    std::string name(1000, 'z');
    call(pluginSetProgramName, 0, 0, name.data());
    EXPECT_EQ(effect->programName.size(), textBufferSize - 1);
}

TEST_F(Dispatcher, NoTextIsCutWithinACharacter) {
    effect->programName = std::string(26, 'n') + "\xc3\xa9 and more";
    EXPECT_EQ(text(pluginGetProgramName, 27), std::string(26, 'n'));
    EXPECT_EQ(text(pluginGetProgramNameIndexed, 27), std::string(26, 'n'));
    effect->programName = std::string(25, 'n') + "\xc3\xa9 and more";
    EXPECT_EQ(text(pluginGetProgramName, 27), std::string(25, 'n') + "\xc3\xa9");
    std::string name = std::string(textBufferSize - 2, 'z') + "\xe2\x82\xac";
    call(pluginSetProgramName, 0, 0, name.data());
    EXPECT_EQ(effect->programName, std::string(textBufferSize - 2, 'z'));
}

TEST_F(Dispatcher, RateAndBlockSizeActSwitchedOnOrOff) {
    call(pluginSetSampleRate, 0, 0, nullptr, 96000.0f);
    call(pluginSetBlockSize, 0, 64);
    call(pluginSetBlockSizeAndSampleRate, 0, 128, nullptr, 22050.0f);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"rate 96000", "block 64", "rate 22050", "block 128"}));
}

TEST_F(Dispatcher, RatesThatAreNoNumberAndEmptyBlocksAreIgnored) {
    call(pluginSetSampleRate, 0, 0, nullptr, std::nanf(""));
    call(pluginSetSampleRate, 0, 0, nullptr, std::numeric_limits<float>::infinity());
    call(pluginSetBlockSize, 0, 0);
    call(pluginSetBlockSize, 0, -5);
    call(pluginSetBlockSize, 0, 1L << 40);
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(Dispatcher, MainsSwitchesAndAsksForEvents) {
    call(pluginMainsChanged, 0, 0);
    EXPECT_TRUE(log.has("suspend"));
    call(pluginMainsChanged, 0, 1);
    EXPECT_EQ(hostCalls, std::vector<int>{hostWantMidi});
}

TEST_F(Dispatcher, ChunksStayTheBoundarysAndAreNotLeaked) {
    void* first = nullptr;
    EXPECT_EQ(call(pluginGetChunk, 1, 0, &first), 100);
    EXPECT_EQ(static_cast<char*>(first)[99], 7);
    void* second = nullptr;
    EXPECT_EQ(call(pluginGetChunk, 0, 0, &second), 100);
    EXPECT_EQ(static_cast<char*>(second)[99], 7);
    EXPECT_EQ(call(pluginGetChunk, 0, 0, nullptr), 0);
    effect->chunkSize = 0;
    EXPECT_EQ(call(pluginGetChunk, 0, 0, &second), 0);
    EXPECT_EQ(second, nullptr);
}

TEST_F(Dispatcher, ChunksOfImpossibleSizeDoNotReachThePlugin) {
    char data[8] = {};
    EXPECT_EQ(call(pluginSetChunk, 1, 8, nullptr), 0);
    EXPECT_EQ(call(pluginSetChunk, 1, -1, data), 0);
    EXPECT_EQ(call(pluginSetChunk, 1, 1L << 33, data), 0);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(call(pluginSetChunk, 1, 8, data), 1);
    EXPECT_EQ(call(pluginSetChunk, 0, 0, data), 1);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"chunk 8 preset", "chunk 0 bank"}));
}

TEST_F(Dispatcher, ExceptionsOfEveryOperationEndAtTheBoundary) {
    giveEditor();
    std::vector<char> memory(4096);
    VstMidiEvent note{};
    note.type = midiEventType;
    struct {
        std::int32_t count = 1;
        std::intptr_t reserved = 0;
        void* events[2] = {};
    } list;
    list.events[0] = &note;
    everythingThrows = true;
    for (int opcode = -5; opcode < 200; ++opcode) {
        if (opcode == pluginClose) continue;
        void* const argument = opcode == pluginProcessEvents ? static_cast<void*>(&list) : memory.data();
        EXPECT_NO_THROW(call(opcode, 1, 0, argument, 1.0f)) << opcode;
    }
    for (const int opcode : {pluginOpen, pluginSetChunk, pluginGetChunk, pluginProcessEvents, pluginEditOpen, pluginEditIdle})
        EXPECT_EQ(call(opcode, 0, 8, opcode == pluginProcessEvents ? static_cast<void*>(&list) : memory.data()), 0) << opcode;
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(effect->eventCalls, 0);
}

TEST_F(Dispatcher, ExceptionsOfTheParametersEndAtTheBoundary) {
    record->setParameter(record, 3, 0.5f);
    everythingThrows = true;
    EXPECT_NO_THROW(record->setParameter(record, 3, 0.75f));
    EXPECT_EQ(record->getParameter(record, 3), 0.0f);
    everythingThrows = false;
    EXPECT_EQ(record->getParameter(record, 3), 0.5f);
}

TEST_F(Dispatcher, ABlockThatThrowsHalfwayIsSilentToItsEnd) {
    constexpr int frames = 64;
    const auto run = [](auto process, AEffect* plugin, auto first) {
        using Sample = decltype(first);
        std::vector<Sample> left(frames, first), right(frames, first);
        Sample* outputs[] = {left.data(), right.data()};
        EXPECT_NO_THROW(process(plugin, nullptr, outputs, frames));
        left.insert(left.end(), right.begin(), right.end());
        return left;
    };
    EXPECT_EQ(run(record->processReplacing, record, 9.0f), std::vector<float>(2 * frames, 0.5f));
    everythingThrows = true;
    EXPECT_EQ(run(record->processReplacing, record, 9.0f), std::vector<float>(2 * frames, 0.0f));
    EXPECT_EQ(run(record->processDoubleReplacing, record, 9.0), std::vector<double>(2 * frames, 0.0));
}

TEST_F(Dispatcher, APluginThatThrowsAsItClosesIsStillGone) {
    everythingThrows = true;
    EXPECT_NO_THROW(call(pluginClose));
    everythingThrows = false;
    EXPECT_EQ(log.deleted, 1);
}

TEST_F(Dispatcher, EventsArriveInOrderWithoutTheNulls) {
    std::vector<VstMidiEvent> notes(300);
    struct {
        std::int32_t count = 300;
        std::intptr_t reserved = 0;
        void* events[300] = {};
    } list;
    for (int i = 0; i < 300; ++i) {
        notes[i].type = midiEventType;
        notes[i].midiData[0] = static_cast<unsigned char>(i % 251);
        list.events[i] = &notes[i];
    }
    EXPECT_EQ(call(pluginProcessEvents, 0, 0, &list), 1);
    EXPECT_EQ(effect->eventCalls, 1);
    ASSERT_EQ(log.events.size(), 300u);
    EXPECT_EQ(log.events[299], 299 % 251);

    log.events.clear();
    for (int i = 0; i < 300; i += 3) list.events[i] = nullptr;
    EXPECT_EQ(call(pluginProcessEvents, 0, 0, &list), 1);
    ASSERT_EQ(log.events.size(), 200u);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(log.events[i], (i / 2 * 3 + 1 + i % 2) % 251);
}

TEST_F(Dispatcher, EmptyEventListsDoNotReachThePlugin) {
    VstEvents list{};
    for (int count : {0, -1, std::numeric_limits<int>::min()}) {
        list.numEvents = count;
        EXPECT_EQ(call(pluginProcessEvents, 0, 0, &list), 1);
    }
    list.numEvents = 2;
    EXPECT_EQ(call(pluginProcessEvents, 0, 0, &list), 1);
    EXPECT_EQ(call(pluginProcessEvents), 0);
    EXPECT_EQ(effect->eventCalls, 0);
}

TEST_F(Dispatcher, OutputPropertiesOnlyOfOutputsThatExist) {
    VstPinProperties p;
    std::memset(&p, 0x55, sizeof p);
    EXPECT_EQ(call(pluginGetOutputProperties, 1, 0, &p), 1);
    EXPECT_EQ(p.flags, 2);
    EXPECT_EQ(p.label[0], 0);
    EXPECT_EQ(call(pluginGetOutputProperties, 2, 0, &p), 0);
    EXPECT_EQ(call(pluginGetOutputProperties, -1, 0, &p), 0);
    EXPECT_EQ(call(pluginGetOutputProperties, 0, 0, nullptr), 0);
    EXPECT_EQ(call(pluginGetInputProperties, 0, 0, &p), 0);
}

TEST_F(Dispatcher, CanDoPassesTheText) {
    char yes[] = "receiveVstEvents", no[] = "bypass";
    EXPECT_EQ(call(pluginCanDo, 0, 0, yes), 1);
    EXPECT_EQ(call(pluginCanDo, 0, 0, no), -1);
    EXPECT_EQ(call(pluginCanDo), 0);
}

TEST_F(Dispatcher, PrecisionIsSingleOrDouble) {
    EXPECT_EQ(call(pluginSetProcessPrecision, 0, 0), 1);
    EXPECT_EQ(call(pluginSetProcessPrecision, 0, 1), 1);
    EXPECT_EQ(call(pluginSetProcessPrecision, 0, 2), 0);
}

TEST_F(Dispatcher, BlocksWithoutBuffersAreNotProcessed) {
    float left[4] = {9, 9, 9, 9};
    float* half[2] = {left, nullptr};
    float* both[2] = {left, left};
    record->processReplacing(record, nullptr, nullptr, 4);
    record->processReplacing(record, nullptr, both, -1);
    EXPECT_EQ(left[0], 9);
    record->processReplacing(record, nullptr, half, 4);
    EXPECT_EQ(left[3], 0);
    record->process(record, nullptr, nullptr, 4);
    EXPECT_TRUE(log.calls.empty());
    record->processReplacing(record, nullptr, both, 0);
    EXPECT_TRUE(log.has("process 0"));
    record->processReplacing(record, nullptr, both, 4);
    EXPECT_EQ(left[3], 0.5f);
}

TEST_F(Dispatcher, DoubleBlocksAreCheckedTheSameWay) {
    double left[2] = {9, 9}, right[2] = {9, 9};
    double* both[2] = {left, right};
    double* half[2] = {nullptr, right};
    record->processDoubleReplacing(record, nullptr, nullptr, 2);
    record->processDoubleReplacing(record, nullptr, both, -2);
    EXPECT_EQ(left[0], 9);
    record->processDoubleReplacing(record, nullptr, half, 2);
    EXPECT_EQ(right[1], 0);
    record->processDoubleReplacing(record, nullptr, both, 2);
    EXPECT_EQ(left[1], 0);
}

TEST_F(Dispatcher, WithoutAnEditorTheWindowOperationsAnswerZero) {
    ERect* rect = reinterpret_cast<ERect*>(&window);
    EXPECT_EQ(call(pluginEditGetRect, 0, 0, &rect), 0);
    EXPECT_EQ(rect, nullptr);
    for (int opcode : {13, 14, 15, 19, 59, 60, 61}) EXPECT_EQ(call(opcode, 0, 0, nullptr), 0);
    EXPECT_EQ(call(pluginEditOpen, 0, 0, &window), 0);
    EXPECT_EQ(record->flags & effectHasEditor, 0);
}

TEST_F(Dispatcher, TheEditorIsOpenedClosedAndOwned) {
    giveEditor();
    EXPECT_NE(record->flags & effectHasEditor, 0);
    ERect* rect = nullptr;
    EXPECT_EQ(call(pluginEditGetRect, 0, 0, &rect), 1);
    EXPECT_EQ(rect->right, 400);
    call(pluginEditIdle);
    call(pluginEditClose);
    EXPECT_EQ(call(pluginEditOpen, 0, 0, nullptr), 0);
    EXPECT_TRUE(log.calls.empty()) << "nothing before the window is open";
    EXPECT_EQ(call(pluginEditOpen, 0, 0, &window), 1);
    call(pluginEditIdle);
    EXPECT_EQ(call(pluginEditKeyDown, 'a', 300, nullptr, 2.0f), 1);
    EXPECT_EQ(call(pluginEditKeyDown, 'b', 1, nullptr, std::nanf("")), 1);
    call(pluginClose);
    EXPECT_EQ(log.calls,
              (std::vector<std::string>{"editor open", "editor idle", "key 97 44 2", "key 98 1 0", "editor close", "close"}));
    EXPECT_EQ(log.editorsDeleted, 1);
}

TEST_F(Dispatcher, AWindowThatDidNotOpenIsNotClosed) {
    giveEditor()->opens = false;
    EXPECT_EQ(call(pluginEditOpen, 0, 0, &window), 0);
    call(pluginEditIdle);
    call(pluginEditClose);
    EXPECT_EQ(log.calls, std::vector<std::string>{"editor open"});
    effect->setEditor(nullptr);
    EXPECT_EQ(record->flags & effectHasEditor, 0);
}

TEST_F(Dispatcher, AnAutomatedParameterIsToldToTheHost) {
    effect->setParameterAutomated(2, 0.75f);
    EXPECT_EQ(effect->values[2], 0.75f);
    EXPECT_EQ(hostCalls, std::vector<int>{hostAutomate});
    EXPECT_TRUE(effect->beginEdit(2));
    EXPECT_TRUE(effect->endEdit(2));
    EXPECT_TRUE(effect->updateDisplay());
    EXPECT_TRUE(effect->sizeWindow(10, 20));
    EXPECT_EQ(hostCalls, (std::vector<int>{hostAutomate, hostBeginEdit, hostEndEdit, hostUpdateDisplay, hostSizeWindow}));
}

TEST_F(Dispatcher, HostTextsAreCutAndEmptyWithoutAnAnswer) {
    char text[65];
    EXPECT_TRUE(effect->getHostProductString(text));
    EXPECT_STREQ(text, "Orion");
    EXPECT_TRUE(effect->getHostVendorString(text));
    EXPECT_EQ(std::strlen(text), 64u);
    hostAnswers = false;
    EXPECT_FALSE(effect->getHostProductString(text));
    EXPECT_STREQ(text, "");
    EXPECT_EQ(effect->getTimeInfo(timeTempoValid), nullptr);
    hostAnswers = true;
    EXPECT_EQ(effect->getTimeInfo(timeTempoValid), &hostTime);
}

TEST(WithoutAHost, NothingIsAsked) {
    Log log;
    theLog = &log;
    {
        FakeEffect effect(nullptr);
        char text[65];
        effect.setParameterAutomated(1, 0.5f);
        EXPECT_EQ(effect.values[1], 0.5f);
        effect.resume();
        EXPECT_EQ(effect.getTimeInfo(0x600), nullptr);
        EXPECT_FALSE(effect.getHostProductString(text));
        EXPECT_FALSE(effect.sizeWindow(1, 1));
        EXPECT_EQ(effect.canHostDo("sizeWindow"), 0);
        EXPECT_EQ(effect.getHostVendorVersion(), 0);
    }
    theLog = nullptr;
}

TEST(WithoutARecord, EntryPointsAnswerZero) {
    Log log;
    theLog = &log;
    {
        FakeEffect effect(nullptr);
        AEffect* const record = effect.getAeffect();
        EXPECT_EQ(record->dispatcher(nullptr, pluginGetVstVersion, 0, 0, nullptr, 0), 0);
        EXPECT_EQ(record->getParameter(nullptr, 0), 0.0f);
        record->setParameter(nullptr, 0, 1.0f);
        record->processReplacing(nullptr, nullptr, nullptr, 1);
    }
    theLog = nullptr;
}
