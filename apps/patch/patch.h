// A whole patch in memory, as the engine reads and writes it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "parameters/parameter_model.h"
#include "patch/chunk_layout.h"
#include "samples/sample.h"

namespace vantoric::patch {

// A patch or its text is not what it should be: where (a key such as "layers[2].Cutoff1", may be empty) and
// what was expected.
class PatchError : public std::runtime_error {
public:
    PatchError(const std::string& where, const std::string& what)
        : std::runtime_error(where.empty() ? what : where + ": " + what) {}
};

using Cycle = std::array<std::int16_t, chunk::waveSamples>;

// Waves and samples are indexed layer x 3 + oscillator.
struct Patch {
    // The init state, version 1, from which every text patch starts. It never changes.
    Patch();

    std::string name = "Init";      // 1 to 26 characters
    std::string author, about;      // of the text form only: a patch file has no place for them
    std::vector<std::string> tags;  // likewise, for the browser; none holds a comma
    ParameterModel parameters;
    std::array<Cycle, chunk::waveCount> customWaves;
    std::array<Sample, chunk::waveCount> samples;
};

// The custom wave of the init state: one cycle of a sine at full scale.
const Cycle& initCycle();

// Whether oscillator `index` is one that plays samples: the others' samples are not stored.
bool playsSample(const Patch& patch, int index);

// Gives oscillator `index` a sample. `frames`: mono, at most 2^24. Throws PatchError if it is too long or memory
// is short.
void setSample(Patch& patch, int index, std::span<const std::int16_t> frames, std::uint32_t rate, std::int32_t loopStart,
               std::int32_t loopEnd);

// Clears every matrix row that has no source or no destination, as loading a patch does.
void cleanMatrix(Patch& patch);

// The bytes of a patch file, and back. Both go through the engine's own reader and writer, so values are
// clamped and lists guarded as when the instrument loads the file. Throw PatchError.
std::vector<std::uint8_t> toPatchFile(Patch& patch);
void fromPatchFile(std::span<const std::uint8_t> file, Patch& patch);

}  // namespace vantoric::patch
