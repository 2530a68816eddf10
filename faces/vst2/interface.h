// The binary interface between a host and a VST 2.4 plug-in: the records both sides share, the numbers of the
// operations they ask of each other, and the flags. 64-bit layouts; every size and offset is asserted below.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantoric {

struct AEffect;

// host -> plug-in: one operation, see PluginOpcode.
using DispatcherFunction = std::intptr_t (*)(AEffect*, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                             float opt);
// plug-in -> host: one operation, see HostOpcode. `effect` may be null while the plug-in is being made.
using HostCallback = std::intptr_t (*)(AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                       float opt);
using ProcessFunction = void (*)(AEffect*, float** inputs, float** outputs, std::int32_t frames);
using ProcessDoubleFunction = void (*)(AEffect*, double** inputs, double** outputs, std::int32_t frames);
using SetParameterFunction = void (*)(AEffect*, std::int32_t index, float value);
using GetParameterFunction = float (*)(AEffect*, std::int32_t index);

// Four characters as the number that identifies a record or a plug-in: the first is the highest byte.
constexpr std::int32_t fourCharacters(char a, char b, char c, char d) {
    const auto byte = [](char ch) { return static_cast<std::uint32_t>(static_cast<unsigned char>(ch)); };
    return static_cast<std::int32_t>(byte(a) << 24 | byte(b) << 16 | byte(c) << 8 | byte(d));
}

constexpr std::int32_t effectMagic = fourCharacters('V', 's', 't', 'P');
constexpr std::int32_t identifyAnswer = fourCharacters('N', 'v', 'E', 'f');
constexpr std::int32_t interfaceVersion = 2400;

// The plug-in as the host sees it. The plug-in owns it.
struct AEffect {
    std::int32_t magic;
    DispatcherFunction dispatcher;
    ProcessFunction process;  // adds to the outputs; hosts of this version use processReplacing
    SetParameterFunction setParameter;
    GetParameterFunction getParameter;
    std::int32_t numPrograms;
    std::int32_t numParams;
    std::int32_t numInputs;
    std::int32_t numOutputs;
    std::int32_t flags;  // EffectFlag
    std::intptr_t hostReserved1;
    std::intptr_t hostReserved2;
    std::int32_t initialDelay;
    std::int32_t realQualities;
    std::int32_t offQualities;
    float ioRatio;
    void* object;  // the plug-in's own object
    void* user;
    std::int32_t uniqueID;
    std::int32_t version;
    ProcessFunction processReplacing;
    ProcessDoubleFunction processDoubleReplacing;
    char future[56];
};

enum EffectFlag : std::int32_t {
    effectHasEditor = 1 << 0,
    effectCanReplacing = 1 << 4,
    effectProgramChunks = 1 << 5,
    effectIsSynth = 1 << 8,
    effectNoSoundInStop = 1 << 9,
    effectCanDoubleReplacing = 1 << 12,
};

enum PluginOpcode : std::int32_t {
    pluginOpen = 0,
    pluginClose = 1,
    pluginSetProgram = 2,       // value
    pluginGetProgram = 3,       // returns the number
    pluginSetProgramName = 4,   // ptr: text
    pluginGetProgramName = 5,   // ptr: 24 characters and a zero
    pluginGetParamLabel = 6,    // index, ptr: 8 characters and a zero
    pluginGetParamDisplay = 7,  // the same
    pluginGetParamName = 8,     // the same
    pluginSetSampleRate = 10,   // opt
    pluginSetBlockSize = 11,    // value
    pluginMainsChanged = 12,    // value: 0 off, else on
    pluginEditGetRect = 13,     // ptr: ERect**
    pluginEditOpen = 14,        // ptr: the parent window
    pluginEditClose = 15,
    pluginEditIdle = 19,
    pluginIdentify = 22,
    pluginGetChunk = 23,        // index: 1 program, 0 bank; ptr: void**; returns bytes
    pluginSetChunk = 24,        // index as above; value: bytes; ptr: data
    pluginProcessEvents = 25,   // ptr: VstEvents
    pluginCanBeAutomated = 26,  // index
    pluginStringToParameter = 27,
    pluginGetProgramNameIndexed = 29,  // index, value: category, ptr: 24 characters and a zero
    pluginGetInputProperties = 33,     // index, ptr: VstPinProperties
    pluginGetOutputProperties = 34,    // the same
    pluginGetPlugCategory = 35,
    pluginSetBlockSizeAndSampleRate = 43,  // value, opt
    pluginGetEffectName = 45,              // ptr: 32 characters and a zero
    pluginGetVendorString = 47,            // ptr: 64 characters and a zero
    pluginGetProductString = 48,           // the same
    pluginGetVendorVersion = 49,
    pluginVendorSpecific = 50,
    pluginCanDo = 51,        // ptr: text; 1 yes, 0 don't know, -1 no
    pluginGetTailSize = 52,  // 0 don't know, 1 none, else samples
    pluginGetParameterProperties = 56,
    pluginGetVstVersion = 58,
    pluginEditKeyDown = 59,      // index: character, value: virtual key, opt: modifiers
    pluginEditKeyUp = 60,        // the same
    pluginSetEditKnobMode = 61,  // value
    pluginGetMidiKeyName = 66,
    pluginBeginSetProgram = 67,
    pluginEndSetProgram = 68,
    pluginStartProcess = 71,
    pluginStopProcess = 72,
    pluginSetProcessPrecision = 77,  // value: 0 single, 1 double
};

enum HostOpcode : std::int32_t {
    hostAutomate = 0,  // index, opt: the new value
    hostVersion = 1,
    hostCurrentId = 2,
    hostIdle = 3,
    hostWantMidi = 6,     // value: 1
    hostGetTime = 7,      // value: VstTimeInfoFlag wanted; returns VstTimeInfo* or null
    hostIoChanged = 13,   // the record's inputs, outputs or delay are to be read anew
    hostSizeWindow = 15,  // index: width, value: height
    hostGetSampleRate = 16,
    hostGetBlockSize = 17,
    hostGetCurrentProcessLevel = 23,  // returns 0 unknown, 1 window's thread, 2 audio, 3 prefetch, 4 offline
    hostGetVendorString = 32,         // ptr: 64 characters and a zero
    hostGetProductString = 33,        // the same
    hostGetVendorVersion = 34,
    hostCanDo = 37,  // ptr: text
    hostUpdateDisplay = 42,
    hostBeginEdit = 43,  // index
    hostEndEdit = 44,    // index
};

enum PlugCategory : std::int32_t { categoryUnknown = 0, categoryEffect = 1, categorySynth = 2 };

// Characters a host's buffer grants, without the closing zero. The interface names 24 for a program; hosts keep
// 64 and more, and names of up to 27 are in use.
constexpr std::size_t parameterTextLength = 8;
constexpr std::size_t programNameLength = 27;
constexpr std::size_t effectNameLength = 32;
constexpr std::size_t vendorTextLength = 64;
constexpr std::size_t productTextLength = 64;

enum VstEventType : std::int32_t { midiEventType = 1, sysexEventType = 6 };

// What all events begin with; `type` says which record it really is.
struct VstEvent {
    std::int32_t type;
    std::int32_t byteSize;
    std::int32_t deltaFrames;  // from the start of the block that follows
    std::int32_t flags;
    char data[16];
};

struct VstMidiEvent {
    std::int32_t type;  // midiEventType
    std::int32_t byteSize;
    std::int32_t deltaFrames;
    std::int32_t flags;
    std::int32_t noteLength;
    std::int32_t noteOffset;
    unsigned char midiData[4];  // three bytes and a zero
    signed char detune;
    unsigned char noteOffVelocity;
    char reserved[2];
};

struct VstMidiSysexEvent {
    std::int32_t type;  // sysexEventType
    std::int32_t byteSize;
    std::int32_t deltaFrames;
    std::int32_t flags;
    std::int32_t dumpBytes;
    std::intptr_t reserved1;
    char* sysexDump;
    std::intptr_t reserved2;
};

struct VstEvents {
    std::int32_t numEvents;
    std::intptr_t reserved;
    VstEvent* events[2];  // really numEvents of them
};

enum VstTimeInfoFlag : std::int32_t {
    timeTransportChanged = 1 << 0,
    timeTransportPlaying = 1 << 1,
    timeNanosValid = 1 << 8,
    timePpqPosValid = 1 << 9,
    timeTempoValid = 1 << 10,
    timeBarsValid = 1 << 11,
    timeSignatureValid = 1 << 13,
};

struct VstTimeInfo {
    double samplePos;
    double sampleRate;
    double nanoSeconds;
    double ppqPos;  // quarter notes
    double tempo;   // quarter notes a minute
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    std::int32_t timeSigNumerator;
    std::int32_t timeSigDenominator;
    std::int32_t smpteOffset;
    std::int32_t smpteFrameRate;
    std::int32_t samplesToNextClock;
    std::int32_t flags;  // VstTimeInfoFlag
};

enum VstPinFlag : std::int32_t { pinIsActive = 1, pinIsStereo = 2, pinUseSpeaker = 4 };

struct VstPinProperties {
    char label[64];
    std::int32_t flags;  // VstPinFlag
    std::int32_t arrangementType;
    char shortLabel[8];
    char future[48];
};

// The editor's place on screen in pixels.
struct ERect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

struct VstKeyCode {
    std::int32_t character;
    unsigned char virt;
    unsigned char modifier;
};

static_assert(sizeof(void*) == 8, "the layouts below are those of 64-bit hosts");

static_assert(sizeof(AEffect) == 192);
static_assert(offsetof(AEffect, dispatcher) == 8 && offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24 && offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40 && offsetof(AEffect, numParams) == 44);
static_assert(offsetof(AEffect, numInputs) == 48 && offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56 && offsetof(AEffect, hostReserved1) == 64);
static_assert(offsetof(AEffect, hostReserved2) == 72 && offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, ioRatio) == 92 && offsetof(AEffect, object) == 96 && offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112 && offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120 && offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(offsetof(AEffect, future) == 136);

static_assert(sizeof(VstEvent) == 32 && offsetof(VstEvent, data) == 16);
static_assert(sizeof(VstMidiEvent) == 32 && offsetof(VstMidiEvent, deltaFrames) == 8);
static_assert(offsetof(VstMidiEvent, noteLength) == 16 && offsetof(VstMidiEvent, midiData) == 24);
static_assert(offsetof(VstMidiEvent, detune) == 28 && offsetof(VstMidiEvent, noteOffVelocity) == 29);
static_assert(sizeof(VstMidiSysexEvent) == 48 && offsetof(VstMidiSysexEvent, dumpBytes) == 16);
static_assert(offsetof(VstMidiSysexEvent, sysexDump) == 32);
static_assert(sizeof(VstEvents) == 32 && offsetof(VstEvents, events) == 16);

static_assert(sizeof(VstTimeInfo) == 88 && offsetof(VstTimeInfo, ppqPos) == 24 && offsetof(VstTimeInfo, tempo) == 32);
static_assert(offsetof(VstTimeInfo, timeSigNumerator) == 64 && offsetof(VstTimeInfo, flags) == 84);
static_assert(sizeof(VstPinProperties) == 128 && offsetof(VstPinProperties, flags) == 64);
static_assert(offsetof(VstPinProperties, shortLabel) == 72 && offsetof(VstPinProperties, future) == 80);
static_assert(sizeof(ERect) == 8 && offsetof(ERect, bottom) == 4);
static_assert(sizeof(VstKeyCode) == 8 && offsetof(VstKeyCode, virt) == 4 && offsetof(VstKeyCode, modifier) == 5);

}  // namespace vantoric
