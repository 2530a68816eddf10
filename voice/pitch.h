// Pitch of a voice's oscillators: key values, glide, drift and the increment. All arithmetic runs once per
// control tick on the audio thread; nothing allocates or fails.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/random.h"

namespace vantoric {

// Cycles per sample of each key at octave 0, as the engine keeps them.
using KeyIncrements = std::array<float, 256>;

// Glide target of an oscillator at a voice's note-on. note: 0 to 127; keyFollow: its `KeyFol`. Around the
// middle of the knob the pitch is that of key 60; below 0.98 the key is tracked in part, reversed at 0.
double keyTarget(const KeyIncrements& keyIncrement, int note, float keyFollow);
// The same for a note change of a sounding voice, where partial tracking deliberately does not act.
double keyTargetOfMove(const KeyIncrements& keyIncrement, int note, float keyFollow);

// Ratios of the stepped pitch parameters, by stored value; values beyond 0 to 1 and NaN read as the ends.
double octFactor(float value);     // `Oct`: 1/16 to 16
double intervFactor(float value);  // `Interv`: 1 to 7/4
double semiFactor(float value);    // `Semi`: 0 to 12 semitones, as rounded ratios
double fineFactor(float value);    // `Fine` and `Detune`: about a semitone down to one up, linear, not clamped

// How an oscillator wanders under the analog rows of `Microtun`. Per voice.
struct Drift {
    double amount = 0.0;  // 0: no drift
    double speed = 1.0;
    double step = 0.001;

    // The constants for a `Microtun` list index.
    static Drift forMicrotuning(int index);
};

// Pitch of one oscillator of a voice. Copyable.
struct OscillatorPitch {
    double target = 0.0;    // cycles per sample the glide runs to
    double position = 0.0;  // where it is; 0: nowhere yet, takes the target
    double driftPosition = 0.0;
    double driftDirection = 0.0;  // per tick
    double tuning = 1.0;          // detune of the analog oscillators

    // Start of a note: a random place and direction. Draws twice.
    void startDrift(const Drift& drift, LinearCongruence& random);
    // One tick of the drift; returns its frequency factor. Turns around beyond +-1 at a newly drawn speed.
    // Without drift it returns 1, draws nothing and leaves the place alone.
    double stepDrift(const Drift& drift, LinearCongruence& random);
    // One tick of the glide towards `target` in the logarithm of the pitch. factor: glideFactor().
    void stepGlide(float factor);
    // Position and target at once, without a glide.
    void jump(double increment) { position = target = increment; }

private:
    // A glide that has come to rest computes the same number for ever: it is kept instead. These are the
    // factor, target and position of the rest.
    float restFactor_ = -1.0f;
    double restTarget_ = 0.0;
    double restPosition_ = 0.0;
};

// Share of the way to the target that a glide takes per tick: 1 at `GlideSpd` 0 (no glide), 0.00254 at 1.
float glideFactor(float glideSpeed);
// One tick of the note that the filters track. smoothed: the value of the last tick; factor: glideFactor().
double smoothNote(double smoothed, int note, float factor);

// Factor that all oscillators of a voice share in one tick. `pitch` and `fine` are `Pitch` and `Fine` from the
// voice's modulated parameters, which may leave 0 to 1; slideFactor is the arpeggiator's.
double voicePitchFactor(float pitch, float fine, double slideFactor, double tuneFactor, double bendFactor);

// What one oscillator adds, from the voice's modulated parameters.
struct OscillatorPitchValues {
    float oct = 0.5f;
    float interv = 0.0f;
    float semi = 0.0f;
    float detune = 0.5f;
    float pitch = 0.5f;     // `Pitch1` to `Pitch3`
    float pitchOct = 0.5f;  // `PitchOct1` to `PitchOct3`: half an octave up and down
};

// Cycles per sample of one oscillator: its glide position x its own factors x its drift factor x the voice's
// factor. Finite for every finite input.
double oscillatorIncrement(const OscillatorPitch& oscillator, const OscillatorPitchValues& values, double driftFactor,
                           double voiceFactor);

}  // namespace vantoric
