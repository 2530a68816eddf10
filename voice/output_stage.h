// The end of a voice: two filter outputs, ramped stereo gains, ring modulation and the terms that some
// sound modes add to every voice. Double precision; sixteen voices side by side, four at a time.
#pragma once

#include <array>

#include "base/engine_state.h"
#include "base/lane_bank.h"

namespace vantoric {

// Where a voice's gains are to arrive by the next tick.
struct OutputTargets {
    double left1 = 0, left2 = 0;    // filter 1 and 2 to the left
    double right1 = 0, right2 = 0;  // and to the right
    double ring = 0;                // product of the two filter outputs, to both sides
    double bass = 0;                // low end added by the dynamic sound modes
    double transient = 0;           // high end added by the transient sound modes
};

// What the tick knows of a voice's level.
struct OutputLevels {
    float envelope;          // volume envelope, 0 to 1
    float layerVolume;       // LayerVol, clamped to 0 to 9999 here
    float pan1, pan2;        // FilPan1, FilPan2
    float volume1, volume2;  // FilVol1, FilVol2
    float ringmod;           // Ringmod
};

// The gain targets of a tick.
OutputTargets outputTargets(const OutputLevels& levels);

// The end of sixteen voices between two samples: what the stage keeps, by kind and voice, so that four voices load as one
// vector.
struct OutputMemory {
    static constexpr int gainCount = 7;
    enum Gain : int { left1, left2, right1, right2, ring, bass, transient };
    enum Filter : int { bassLeft, bassRight, fastLeft, slowLeft, fastRight, slowRight, filterMemories };

    using Row = std::array<double, voiceCount>;
    alignas(32) std::array<Row, gainCount> gain{};
    alignas(32) std::array<Row, gainCount> step{};  // per sample
    alignas(32) std::array<Row, filterMemories> filter{};

    bool bassOn = false, transientOn = false;
    double bassCoefficient = 0.0, transientCoefficient = 0.0;

    // Sums of the voices, four partial sums a sample, so that the order of addition never depends on how
    // many voices sound.
    alignas(32) std::array<double, maxTickSamples * laneGroup> sumLeft{}, sumRight{};
};

class OutputStage {
public:
    // Sets the ramps of a voice (0 to 15): from the present gains to `targets` over `tickSamples` samples.
    // `jump`: the level gains are at their targets at once.
    void setTargets(int voice, const OutputTargets& targets, int tickSamples, bool jump);
    // Drops the level gains of a voice to 0, as a note begins.
    void clearLevels(int voice);
    // Clears a voice altogether, the memories of the sound modes included.
    void reset(int voice);

    // Which terms the sound mode adds, and the coefficients of their low-passes; once a tick, before the
    // voices set their targets.
    void setMode(int soundMode, double sampleRate);

    // Adds `count` samples of the voices in `mask` to left and right. f1 and f2 are the filter outputs,
    // sample i of voice v at i * 16 + v.
    void render(const float* f1, const float* f2, int count, LaneMask mask, float* left, float* right);

    // The present gains of a voice, for tests and displays.
    OutputTargets gains(int voice) const;

private:
    template <class Add>
    void renderVoice(const float* f1, const float* f2, int count, int voice, Add add);

    OutputMemory memory_;
};

}  // namespace vantoric
