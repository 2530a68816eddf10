// The three low-frequency oscillators of a voice, stepped once per control tick.
#pragma once

#include <array>
#include <cstdint>

#include "base/random.h"

namespace vantoric {

// Cycles per beat of a tempo-synced speed, from 1/32 to 16.
inline constexpr int tempoRatioCount = 14;
extern const std::array<double, tempoRatioCount> tempoRatios;

// What an `LfoMode` list index means.
struct LfoMode {
    bool freeRunning = false;  // phase follows the song position
    bool tempoSynced = false;
    double keyAmount = 0.0;  // how much the note moves the rate: 1 doubles it every octave
    bool mono = false;       // shares the state of a voice that sounds already, and runs on at a retrigger
};
// Rows beyond the list are plain triggers.
LfoMode lfoMode(int index);

// Cycle tables that all objects share.
struct LfoTables {
    std::array<float, 256> sine;      // 0 to 1; its step is a little more than a 256th of a turn
    std::array<float, 256> triangle;  // odd harmonics up to 128, 0 to 1
};
const LfoTables& lfoTables();

// Copyable; a copy carries on exactly like the original. Audio thread, or the owner of a private copy; nothing
// allocates or fails. The first object builds the shared tables, so construct one before the audio starts.
class Lfo {
public:
    // What a note hands over.
    struct Start {
        int wave = 0;               // list index of `LfoWave`
        double speed = 0.5;         // `LfoSpd`, 0 to 1; modulation may leave that range
        float startPhase = 0.0f;    // `LfoPhas`, 0 to 1; above 0.99 random unless free-running
        int note = 60;              // 0 to 127
        float fade = 0.0f;          // `LfoFade`, 0 to 1; up to 0.01 there is none
        double tempo = 120.0;       // BPM, above 0
        double songPosition = 0.0;  // beats
        double tickRate = 1000.0;   // ticks per second; 0 and below read as 1000
    };

    Lfo();

    // Note-on in any mode. For the mono modes with more than one voice active, the whole state of `oldest` (the
    // same LFO of the oldest active voice, null if there is none) is taken over; otherwise they start plainly.
    void noteOn(int modeIndex, const Start& start, int activeVoices, const Lfo* oldest);
    // A new note on a sounding voice: as noteOn, but the mono modes run on untouched.
    void retrigger(int modeIndex, const Start& start);
    // Starts by flags. Waves 8 to 11 keep phase, memories and output.
    void trigger(const Start& start, bool free, bool synced, double keyAmount);
    // A new speed for a running LFO, with the tempo of its last trigger; the phase stays. Costs nothing if the
    // speed is unchanged. Call before step.
    void setSpeed(double newSpeed);
    // One tick; the result is in `output`.
    void step();

    LinearCongruence seed{22222};  // never reset
    std::int32_t wave = 0;
    double speed = 0.0;
    bool freeRunning = false;
    bool tempoSynced = false;
    double tickRate = 1000.0;
    double tickTime = 0.001;
    double tempo = 120.0;
    double phase = 0.0;  // 0 to below 1
    double previousPhase = 0.99999;
    double heldA = 0.0;  // memories of the random waves
    double heldB = 0.5;
    double rate = 0.0;  // cycles per tick
    double output = 0.5;
    double keyRate = 1.0;  // rate per unit of the speed curve
    double fadeLevel = 1.0;
    double fadeStep = 0.0;  // per tick

private:
    double waveValue();
    double oneShot() const;
    double randomWalk();

    const LfoTables* tables_;
};

}  // namespace vantoric
