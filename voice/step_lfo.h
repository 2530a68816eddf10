// The step LFO of a voice: up to sixteen steps, each a level or the size of a little waveform.
#pragma once

#include <array>
#include <cstdint>

#include "base/random.h"

namespace vantoric {

// Always synced to the tempo. Copyable. Audio thread, or the owner of a private copy; nothing allocates or fails.
class StepLfo {
public:
    enum Mode : int { FreeLoop = 0, TriggerLoop = 1, MonoLoop = 2, EnvelopeMode = 3 };

    // How many steps a value of `Steps`, 0 to 1, plays: 2 to 16.
    static int stepsPlayed(float value);

    // What a note hands over.
    struct Start {
        int shape = 0;              // list index of `StepShap`
        double speed = 0.5;         // `StepSped`, 0 to 1
        float stepCount = 1.0f;     // `Steps`, 0 to 1: two to sixteen steps
        double tempo = 120.0;       // BPM, above 0
        double songPosition = 0.0;  // beats
        double tickRate = 1000.0;   // ticks per second; 0 and below read as 1000
    };

    // Note-on by `StepMode` list index. In the mono mode with more than one voice active the state of `oldest` (the
    // step LFO of the oldest active voice, null if there is none) is taken over, all but the step values.
    void noteOn(int modeIndex, const Start& start, int activeVoices, const StepLfo* oldest);
    // Starts by flags: free takes the place from the song position, once holds the last step at the end.
    void trigger(const Start& start, bool free, bool once);
    // One tick.
    void advance();
    // The present value, 0 to 1. Shapes "Noise" and "Diffusion" draw once per call; the others draw nothing.
    float value(LinearCongruence& random) const;
    float value(RandomSources& random) const { return value(random.congruence); }

    std::int32_t shape = 0;
    double position = 0.0;   // in steps, not wrapped
    double increment = 0.0;  // steps per tick
    double tickRate = 1000.0;
    double tempo = 120.0;
    std::array<float, 16> steps{};  // 0 to 1; may be changed at any tick
    std::int32_t stepCount = 16;
    bool freeRunning = false;
    double speed = 0.0;
    bool oneShot = false;

private:
    double smoothValue() const;
};

}  // namespace vantoric
