// From the internal rate to the host's: a fixed 31-tap low-pass, every second sample kept.
#pragma once

#include <array>
#include <cstdint>

namespace vantoric {

// Minimum-phase, sum of taps 1. Every input carries an offset of 0.00001 against denormal numbers, so
// silence comes out as 0.00001. Audio thread only.
class Decimator {
public:
    // Empties the rings and sets their index to 0.
    void reset();

    // Takes `internalCount` samples a side (even, 0 or more) and writes internalCount / 2 samples a side:
    // the first of each pair is kept. Input and output may be the same buffers; the input is left alone
    // otherwise.
    void process(const float* left, const float* right, int internalCount, float* outLeft, float* outRight);

    // Place of the next input in the rings, 0 to 31.
    int ringIndex() const { return index_; }

private:
    static constexpr int ringSize = 32;

    std::array<double, 2 * ringSize> ring_{};  // left and right side by side
    int index_ = 0;
};

}  // namespace vantoric
