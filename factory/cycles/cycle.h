// Single cycles for the custom waves: how a spectrum becomes the 2048 samples of a file.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "factory/waves/spectrum.h"

namespace vantoric::cycles {

using waves::Spectrum;
using waves::Workshop;

using Cycle = std::array<std::int16_t, waves::cycleLength>;

inline constexpr int cyclePeak = 30000;        // no cycle is higher
inline constexpr double cycleLoudness = -9.0;  // dB at C3, of every cycle whose peak lets it

// A single cycle by the name of its file, which tells the sound and holds no note that a sample would be tuned by.
struct Recipe {
    std::string name;
    std::function<Spectrum(Workshop&)> make;
};

// All cycles, by family. The first is the plain sine of the base file.
const std::vector<Recipe>& recipes();

// The families, each in the order in which it is to be looked through.
std::vector<Recipe> analogCycles();      // curves.cpp
std::vector<Recipe> bentCycles();        // curves.cpp: phase distortion, hard sync, formants, folding, stairs
std::vector<Recipe> modulatedCycles();   // curves.cpp: frequency modulation
std::vector<Recipe> instrumentCycles();  // instruments.cpp: organs, reeds, flutes, brass, strings, keys, bells
std::vector<Recipe> voiceCycles();       // instruments.cpp
std::vector<Recipe> spectralCycles();    // instruments.cpp: chords and rows of partials

// Gives the harmonics the phases that spread their energy over the whole cycle, so that a rich sound has no
// crest (M. R. Schroeder, "Synthesis of low-peak-factor signals", 1970). Magnitudes stay.
void spread(Spectrum& spectrum);

// The finished cycle: softened at the very top, so that edges do not ring; turned until it begins at a rising
// zero crossing, near that of its fundamental and where it rises gently; at the common loudness or, if it has
// too much of a crest for that, at the highest peak, without a constant part.
Cycle finish(Spectrum spectrum, Workshop& workshop);

// Writes a mono file of 16 bits and 4140 bytes. False if it cannot be written.
bool writeCycle(const Cycle& cycle, const std::filesystem::path& path);

}  // namespace vantoric::cycles
