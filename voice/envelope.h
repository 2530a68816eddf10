// The four envelopes of a voice: a state machine stepped once per control tick.
#pragma once

#include <cstdint>

namespace vantoric {

// Level from 0 to 1; a modulated `sustain` may push it beyond, so readers clamp (clampLevel). All functions
// belong to the audio thread, or to the owner of a private copy; none allocates or fails.
class Envelope {
public:
    enum State : std::int32_t { Idle = 0, Attack = 1, Hold = 2, Decay = 3, Sustain = 4, Release = 5, Fade = 6 };

    Envelope();

    // Start of a note: attack from level 0. Parameters stay; call setup before the first step.
    void start();
    // Stores the parameters (each 0 to 1; modulation may leave that range) and derives the steps. A stage of
    // value v lasts about 0.001 / E(-10 v) seconds. Phase, state and level stay. Call before each step: a step
    // whose parameter is unchanged is not computed again.
    void setup(float newAttack, float newHold, float newDecay, float newSustain, float newRelease, float newShape);
    // One tick of the state machine.
    void step();
    // The key was released. An attack that has a hold stage ahead, and the hold stage, run to their ends first.
    void noteOff();
    // A new note on a sounding voice: the attack goes on from the present level.
    void retrigger();
    // The voice was stolen: fades out within 51 ticks, without regard to the parameters.
    void fade() { state = Fade; }
    // Idle at once, as after construction; parameters stay.
    void silence();

    // The level clamped to 0 to 1, also written back. NaN reads as 0.
    float clampLevel();

    // Counts for chords and for stealing: sounding and neither released nor fading.
    bool held() const { return state >= Attack && state <= Sustain; }

    // Whether a note sounds that nobody has ended yet.
    bool awaitsNoteOff() const { return held() && releasePending == 0; }

    float phase = 1.0f;  // runs from 1 down to 0 within each timed state
    float attack = 0.5f;
    float hold = 0.0f;
    float decay = 0.5f;
    float sustain = 0.5f;  // the level itself
    float release = 0.5f;
    float attackStep;  // phase decrements per tick
    float holdStep;
    float decayStep;
    float releaseStep;
    std::int32_t state = Idle;
    float level = 0.0f;               // output
    float releaseLevel = 0.0f;        // level from which the release falls
    float shape = 0.0f;               // 0 straight, 1 steep
    std::int32_t releasePending = 0;  // a note-off came in a stage that is finished first

private:
    // Begins a timed stage.
    void enter(State next);
    void stepAttack();
    void stepHold();
    void stepDecay();
    void stepSustain();
    void stepRelease();
    void stepFade();
};

}  // namespace vantoric
