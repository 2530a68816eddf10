// The VST 2.4 binary interface as this test host knows it: laid out by byte offsets, apart from the plug-in's own
// declaration, so that a slip on either side shows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wire {

using i32 = std::int32_t;
using word = std::int64_t;  // as wide as a pointer

struct Effect;
using HostFunction = word (*)(Effect*, i32 op, i32 index, word value, void* ptr, float opt);
using EntryFunction = Effect* (*)(HostFunction);

struct Effect {
    /*   0 */ i32 magic;
    i32 gap4;
    /*   8 */ word (*dispatch)(Effect*, i32 op, i32 index, word value, void* ptr, float opt);
    /*  16 */ void (*accumulate)(Effect*, float** in, float** out, i32 frames);
    /*  24 */ void (*setParameter)(Effect*, i32 index, float value);
    /*  32 */ float (*getParameter)(Effect*, i32 index);
    /*  40 */ i32 programs;
    /*  44 */ i32 parameters;
    /*  48 */ i32 inputs;
    /*  52 */ i32 outputs;
    /*  56 */ i32 flags;
    i32 gap60;
    /*  64 */ void* hostData;
    /*  72 */ word hostData2;
    /*  80 */ i32 latency;
    /*  84 */ i32 qualities[2];
    /*  92 */ float ratio;
    /*  96 */ void* object;
    /* 104 */ void* user;
    /* 112 */ i32 identifier;
    /* 116 */ i32 version;
    /* 120 */ void (*render)(Effect*, float** in, float** out, i32 frames);
    /* 128 */ void (*renderDouble)(Effect*, double** in, double** out, i32 frames);
    /* 136 */ unsigned char spare[56];
};
static_assert(sizeof(Effect) == 192 && offsetof(Effect, programs) == 40 && offsetof(Effect, hostData) == 64);
static_assert(offsetof(Effect, object) == 96 && offsetof(Effect, identifier) == 112 && offsetof(Effect, spare) == 136);

struct Midi {
    /*  0 */ i32 kind = 1;
    /*  4 */ i32 bytes = 32;
    /*  8 */ i32 offset = 0;
    /* 12 */ i32 flags = 0;
    /* 16 */ i32 length = 0;
    /* 20 */ i32 start = 0;
    /* 24 */ unsigned char data[4] = {};
    /* 28 */ unsigned char rest[4] = {};
};
static_assert(sizeof(Midi) == 32 && offsetof(Midi, data) == 24);

struct SysEx {
    /*  0 */ i32 kind = 6;
    /*  4 */ i32 bytes = 48;
    /*  8 */ i32 offset = 0;
    /* 12 */ i32 flags = 0;
    /* 16 */ i32 dumpBytes = 0;
    i32 gap20 = 0;
    /* 24 */ word spare1 = 0;
    /* 32 */ void* dump = nullptr;
    /* 40 */ word spare2 = 0;
};
static_assert(sizeof(SysEx) == 48 && offsetof(SysEx, dump) == 32);

// Bytes before the pointers of an event list: the count, four bytes of nothing, one word of nothing.
constexpr std::size_t eventListHead = 16;

struct Time {
    /*  0 */ double samples = 0;
    /*  8 */ double rate = 48000;
    /* 16 */ double nanoseconds = 0;
    /* 24 */ double quarters = 0;
    /* 32 */ double tempo = 120;
    /* 40 */ double barStart = 0;
    /* 48 */ double cycle[2] = {};
    /* 64 */ i32 beats = 4;
    /* 68 */ i32 beatUnit = 4;
    /* 72 */ i32 smpte[2] = {};
    /* 80 */ i32 nextClock = 0;
    /* 84 */ i32 flags = 0x0602;  // playing, quarters and tempo valid
};
static_assert(sizeof(Time) == 88 && offsetof(Time, beats) == 64 && offsetof(Time, flags) == 84);

struct Pin {
    /*  0 */ char label[64];
    /* 64 */ i32 flags;
    /* 68 */ i32 arrangement;
    /* 72 */ char shortLabel[8];
    /* 80 */ char spare[48];
};
static_assert(sizeof(Pin) == 128);

struct Rect {
    std::int16_t top, left, bottom, right;
};

constexpr i32 magic = 0x56737450;

// Flags of an effect.
constexpr i32 hasEditor = 1, canReplace = 16, chunks = 32, synth = 256, canReplaceDouble = 4096;

// Operations of a plug-in.
constexpr i32 opOpen = 0, opClose = 1, opSetProgram = 2, opGetProgram = 3, opSetProgramName = 4, opProgramName = 5,
              opParameterLabel = 6, opParameterDisplay = 7, opParameterName = 8, opRate = 10, opBlockSize = 11, opMains = 12,
              opEditRect = 13, opEditOpen = 14, opEditClose = 15, opEditIdle = 19, opGetChunk = 23, opSetChunk = 24,
              opEvents = 25, opAutomatable = 26, opIndexedName = 29, opInput = 33, opOutput = 34, opCategory = 35,
              opEffectName = 45, opVendor = 47, opProduct = 48, opVendorVersion = 49, opCanDo = 51, opTail = 52,
              opInterfaceVersion = 58, opKeyDown = 59, opStart = 71, opStop = 72, opPrecision = 77;

// Operations of a host.
constexpr i32 hostAutomated = 0, hostInterface = 1, hostIdentity = 2, hostWantsMidi = 6, hostTime = 7, hostSize = 15,
              hostRate = 16, hostBlockSize = 17, hostProcessLevel = 23, hostVendor = 32, hostProduct = 33, hostVendorVersion = 34,
              hostCanDo = 37, hostRedraw = 42, hostEditBegins = 43, hostEditEnds = 44;

}  // namespace wire
