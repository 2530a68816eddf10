// Wave banks: how frames become levels of 16-bit cycles, and the files that hold them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "factory/waves/spectrum.h"

namespace vantoric::waves {

inline constexpr int levels = 8;           // each with half the harmonics of the one before
inline constexpr double targetRms = 0.36;  // of full scale, for every frame that the cap lets reach it
inline constexpr double peakCap = 0.84;    // of full scale, -1.5 dB
inline constexpr int bytesPerFrame = levels * cycleLength * 2;

enum class Kind {
    morph,  // neighbouring frames are alike: the position can be swept
    set,    // a collection of single cycles
    scan,   // successive frames are successive cycles of one sound, which closes from last to first
};

// One bank: the stem of its file and how its frames are made.
struct Recipe {
    const char* stem;
    int frames;
    Kind kind;
    // The cycle of a frame, at any level and phase. Depends on the frame alone.
    Spectrum (*make)(Workshop& workshop, int frame);
};

// All 39 banks, in the order of the instrument's wave list and then of its scanned waves.
std::span<const Recipe> recipes();

struct Bank {
    int frames = 0;
    std::vector<std::int16_t> samples;  // level-major: (level x frames + frame) x 2048 + i

    const std::int16_t* cycle(int level, int frame) const {
        return samples.data() + (static_cast<std::size_t>(level) * frames + frame) * cycleLength;
    }
};

// Makes every frame and all its levels: level L keeps the harmonics below 1024 >> L. Frames are brought to
// the same RMS, unless that would lift their peak above the cap; the frames of a scan share one gain.
Bank makeBank(const Recipe& recipe, Workshop& workshop);

// Canonical RIFF wave, 16 bit, mono, 44100 Hz: 44 bytes of header, then the samples. False if the file
// cannot be written whole.
bool writeBank(const Bank& bank, const std::filesystem::path& path);

}  // namespace vantoric::waves
