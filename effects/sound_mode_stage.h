// The last stage of the master chain: the filters of the chosen sound mode, the removal of DC and the
// master volume.
#pragma once

#include <array>

#include "base/lanes.h"

namespace vantoric {

// Audio thread only.
class SoundModeStage {
public:
    static constexpr int designCount = 10;

    // y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2.
    struct Coefficients {
        double b0 = 1.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
    };

    SoundModeStage();

    // Hz, above 0. Computes all filters anew.
    void setSampleRate(double rate);
    // 0 to 10 are the modes; above, audio passes untouched and the gain stands.
    void setMode(int mode) { mode_ = mode; }
    // The gain at the end of the next block; within the block the gain moves there in equal steps.
    void setTargetGain(float gain) { targetGain_ = gain; }
    // The gain of a `Volume` value: 1 at 0.5, 4 at 1.
    static float gainOfVolume(float volume) { return volume * volume * 4.0f; }

    // Clears filters and DC states; the gain jumps to its target.
    void reset();
    // Processes `count` samples in place. A block without finite numbers, or one that would leave memory
    // without, is silenced and the memory cleared, in any mode.
    void process(float* left, float* right, int count);

    double gain() const { return gain_; }
    // Filter 0 to 9; both channels share it.
    const Coefficients& coefficients(int index) const { return coefficients_[index]; }
    // Share of the input that the DC follower takes per sample.
    double hpCoefficient() const { return hpCoefficient_; }

private:
    using Pair = Lanes<double, 2>;  // left, right
    struct Memory {
        Pair x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    };

    template <int Filters>
    void run(const int* order, double factor, float* left, float* right, int count);
    void runScientific(float* left, float* right, int count);
    void runMode(float* left, float* right, int count);
    void keepFinite(float* left, float* right, int count);

    double sampleRate_ = 44100.0;
    int mode_ = 0;
    float targetGain_ = 0.0f;
    double gain_ = 0.0;
    double hpCoefficient_ = 0.0;
    std::array<Coefficients, designCount> coefficients_;
    std::array<Memory, designCount> memory_;
    Pair dc_ = 0.0;
};

}  // namespace vantoric
