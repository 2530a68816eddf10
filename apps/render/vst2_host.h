// What a host needs of the VST 2.4 binary interface, on a 64-bit machine: the record that a plug-in hands
// out, the numbers of the calls in both directions, and the records that travel with them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantoric::vst2 {

static_assert(sizeof(void*) == 8, "the record layouts below are those of 64-bit machines");

struct Plugin;

// Plug-in to host. Also the only argument of the plug-in's entry point.
using HostCallback = std::intptr_t (*)(Plugin*, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer,
                                       float option);
using EntryPoint = Plugin* (*)(HostCallback);
inline constexpr const char* entryNames[] = {"VSTPluginMain", "main"};

inline constexpr std::int32_t pluginMagic = 0x56737450;  // "VstP"
inline constexpr std::int32_t hostVersion = 2400;

// The plug-in's face. Owned by the plug-in; gone after the call `close`.
struct Plugin {
    std::int32_t magic;
    std::intptr_t (*dispatch)(Plugin*, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option);
    void (*processAdding)(Plugin*, float** inputs, float** outputs, std::int32_t frames);  // of version 1
    void (*setParameter)(Plugin*, std::int32_t index, float value);
    float (*getParameter)(Plugin*, std::int32_t index);
    std::int32_t programs, parameters, inputs, outputs;
    std::int32_t flags;
    std::intptr_t hostData[2];  // free for the host
    std::int32_t initialDelay;
    std::int32_t unusedQualities[2];
    float unusedRatio;
    void* object;
    void* user;
    std::int32_t uniqueId, version;
    void (*processReplacing)(Plugin*, float** inputs, float** outputs, std::int32_t frames);
    void (*processDoubleReplacing)(Plugin*, double** inputs, double** outputs, std::int32_t frames);
    char future[56];
};
static_assert(offsetof(Plugin, dispatch) == 8);
static_assert(offsetof(Plugin, getParameter) == 32);
static_assert(offsetof(Plugin, programs) == 40);
static_assert(offsetof(Plugin, flags) == 56);
static_assert(offsetof(Plugin, hostData) == 64);
static_assert(offsetof(Plugin, initialDelay) == 80);
static_assert(offsetof(Plugin, object) == 96);
static_assert(offsetof(Plugin, uniqueId) == 112);
static_assert(offsetof(Plugin, processReplacing) == 120);
static_assert(sizeof(Plugin) == 192);

enum PluginFlag : std::int32_t { flagReplacing = 1 << 4, flagChunks = 1 << 5, flagSynth = 1 << 8 };

// Host to plug-in: `dispatch`.
enum Call : std::int32_t {
    callOpen = 0,
    callClose = 1,
    callParameterLabel = 6,    // pointer: text
    callParameterDisplay = 7,  // pointer: text
    callParameterName = 8,     // pointer: text
    callSampleRate = 10,       // option
    callBlockSize = 11,        // value
    callSwitch = 12,           // value 1 on, 0 off
    callGetChunk = 23,         // pointer: void**; index 1 program, 0 bank; returns the size
    callSetChunk = 24,         // pointer, value: size; index likewise
    callEvents = 25,           // pointer: EventList
    callEffectName = 45,       // pointer: text
    callVendor = 47,           // pointer: text
    callStartProcess = 71,
    callStopProcess = 72,
};

// Plug-in to host: the callback.
enum HostCall : std::int32_t {
    hostAutomate = 0,
    hostVersionAsked = 1,
    hostIdle = 3,
    hostWantEvents = 6,
    hostTime = 7,  // value: wanted flags; returns TimeInfo*
    hostSampleRate = 16,
    hostBlockSize = 17,
    hostProcessLevel = 23,  // 2: the audio thread; 4: offline
    hostVendor = 32,
    hostProduct = 33,
    hostVendorVersion = 34,
    hostCanDo = 37,
    hostLanguage = 38,
    hostUpdateDisplay = 42,
};

enum TimeFlag : std::int32_t {
    timeChanged = 1,
    timePlaying = 1 << 1,
    timePpqValid = 1 << 9,
    timeTempoValid = 1 << 10,
    timeBarsValid = 1 << 11,
    timeMeterValid = 1 << 13,
};

struct TimeInfo {
    double samplePosition, sampleRate;
    double nanoseconds;
    double ppqPosition;  // quarter notes
    double tempo;        // beats a minute
    double barStart;     // quarter notes
    double cycleStart, cycleEnd;
    std::int32_t meterNumerator, meterDenominator;
    std::int32_t smpteOffset, smpteRate, samplesToClock;
    std::int32_t flags;
};
static_assert(offsetof(TimeInfo, tempo) == 32);
static_assert(offsetof(TimeInfo, flags) == 84);
static_assert(sizeof(TimeInfo) == 88);

struct MidiEvent {
    std::int32_t type = 1;
    std::int32_t size = 32;
    std::int32_t frame = 0;  // offset in the coming block
    std::int32_t flags = 0;
    std::int32_t noteLength = 0, noteOffset = 0;
    std::uint8_t data[4] = {};
    std::int8_t detune = 0;
    std::uint8_t offVelocity = 0;
    std::uint8_t reserved[2] = {};
};
static_assert(offsetof(MidiEvent, data) == 24);
static_assert(sizeof(MidiEvent) == 32);

// Followed by `count` pointers in all; the host allocates as many as it needs.
struct EventList {
    std::int32_t count;
    std::intptr_t reserved;
    MidiEvent* events[2];
};
static_assert(offsetof(EventList, events) == 16);

}  // namespace vantoric::vst2
