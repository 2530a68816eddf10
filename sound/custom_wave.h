// A user's single cycle and the 32 frames of 8 mip levels that are made from it.
#pragma once

#include <array>
#include <cstdint>

#include "base/fft.h"
#include "base/flag.h"
#include "sound/kernel_reads.h"
#include "sound/oscillator_state.h"

namespace vantoric {

// One oscillator's custom wave, 1 MiB: level-major like the waves of the store. Frame 0 of level 0 holds the
// cycle as the user gave it. Voices read while the worker rebuilds: a frame may be heard half old and half
// new, which is accepted.
struct CustomWave {
    std::array<std::int16_t, mipLevels * customFrames * cycleSamples> samples{};

    std::int16_t* frame(int level, int index) { return samples.data() + cycleOffset(customFrames, index, level); }
    const std::int16_t* frame(int level, int index) const { return samples.data() + cycleOffset(customFrames, index, level); }
};

// Makes the mip levels of a cycle: its spectrum, cut at 1024 >> level harmonics and without DC. Owns its work
// space; one per thread.
class CycleBandlimiter {
public:
    CycleBandlimiter();

    // `cycle`: 2048 samples in -1 to +1. levels[L]: 2048 samples of level L, clamped and scaled by 32767.
    // Checks `cancel` between levels: false as soon as it is set. `cancel` may be null. Not for the audio thread.
    bool run(const double* cycle, std::int16_t* const levels[mipLevels], const Flag* cancel = nullptr);

private:
    RealFft fft_;
    std::array<double, cycleSamples / 2 + 1> real_, imaginary_, cutReal_, cutImaginary_;
    std::array<double, cycleSamples> signal_;
};

// Rebuilds all frames and levels from frame 0 of level 0. Frame j moves the wave's middle by 32 j samples: a
// pulse width for any wave. False when `cancel` was set; the frames done until then stay. Worker thread.
bool makeCustomMips(CustomWave& wave, const Flag& cancel);

// True if the 2048 samples of two cycles all differ by less than 3: then one's mips serve the other.
bool sameCycle(const std::int16_t* a, const std::int16_t* b);
inline bool sameFirstFrame(const CustomWave& a, const CustomWave& b) { return sameCycle(a.frame(0, 0), b.frame(0, 0)); }

// Copies all frames and levels. Worker thread.
void copyMips(const CustomWave& from, CustomWave& to);

// Copies frame 0 of level 0 into every frame and level, until the mips are made. Worker thread.
void spreadFirstFrame(CustomWave& wave);

}  // namespace vantoric
