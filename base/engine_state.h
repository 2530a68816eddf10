// What the engine tells everybody: a plain record, refreshed by the engine before each control tick
// and read by layers, voices, kernels and effects. Nothing below the engine writes to it.
#pragma once

#include <array>
#include <cstdint>

#include "base/doorbell.h"
#include "base/flag.h"
#include "base/passes.h"

namespace vantoric {

inline constexpr int layerCount = 4;
inline constexpr int voiceCount = 16;       // per layer
inline constexpr int oscillatorCount = 3;   // per voice
inline constexpr int filterCount = 2;       // per voice
inline constexpr int maxTickSamples = 256;  // longest stretch that a voice renders at once

// The flags by which the threads exclude each other; each bounded wait clears its flag by force.
struct EngineFlags {
    Flag engineLocked;                         // a patch is being loaded: the block is silent, the queue stands
    Flag audioRunning;                         // the audio block is inside the engine
    Flag audioMuted;                           // sample commands, or the first instance before its banks are loaded
    Flag bootPending;                          // the wave worker has not started yet
    Flag editorClosing;                        // the instance is going away
    Doorbell workerBell;                       // the wave worker waits here
    RingingFlag rebuildRequested{workerBell};  // waves changed: the worker is to rebuild all levels
    RingingFlag rebuildOwed{workerBell};       // a load that failed took a request back: once the engine is free
    Flag rebuildCancel;                        // the worker is to give up its rebuild
    Flag rebuildRunning;                       // the worker is rebuilding
    Flag workerStop;                           // the worker is to end
    Flag workerStopped;                        // the worker has ended

    // Who may be reading waves whatever the flags say: one was cleared by force.
    Passes blockPasses;   // the audio block
    Passes workerPasses;  // the worker, from one look at the flags to the next
};

struct EngineState {
    // Rates. Everything renders at the internal rate: the host's above 48 kHz, else twice the host's.
    float internalRate = 88200.0f;           // Hz
    double internalRateExact = 88200.0;      // Hz
    float reciprocalRate = 1.0f / 88200.0f;  // seconds
    float rateTo44100 = 0.5f;                // 44100 / internal rate
    int tickSamples = 88;                    // samples of a control tick; 0 silences the engine
    float reciprocalTickSamples = 1.0f / 88;
    double ticksPerSecond = 88200.0 / 88;
    bool oversampled = true;                // the host runs at half the internal rate
    std::array<float, 256> keyIncrement{};  // cycles per sample of each key at octave 0

    // Time.
    double tempoBpm = 120.0;
    double songPosition = 0.0;  // quarter notes

    // Controllers.
    float modwheelSmoothed = 0.0f;             // 0 to 1
    float pitchWheelSmoothed = 0.5f;           // 0 to 1, 0.5 is the centre
    float channelPressureSmoothed = 0.0f;      // 0 to 1
    float pitchBendFactor = 1.0f;              // frequency factor
    std::array<float, 128> ccValue{};          // value / 128
    std::array<std::uint8_t, 128> heldNote{};  // 1 while the key is held
    bool pedalRelease = false;                 // deferred note-offs are being dealt out

    // Global parameters as list indices.
    int quality = 0;
    int soundMode = 0;
    int microtuning = 0;

    EngineFlags flags;
};

}  // namespace vantoric
