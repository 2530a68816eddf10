// Wave files: the tolerant reader for the oscillators' sounds, and the writer. A file is read whole and
// searched by tag, so that files with an odd order of chunks or wrong chunk sizes load all the same.
// Everything works on 16-bit mono. Not for the audio thread; from any other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/outcome.h"
#include "base/progress.h"
#include "samples/sample_levels.h"

namespace vantoric {

inline constexpr std::size_t maxWaveFileBytes = 10000000;
inline constexpr std::int32_t maxPlayableSamples = 524277;  // what a 19-bit position and its reads reach

inline constexpr double sampleFloatScale = 32766.0 * 0.9;  // of 32-bit float files that become samples

// badRate: more than `maxSampleRate`, which a sample cannot keep in a patch. parseWave never gives it, as not all that is
// made of a wave keeps its rate.
enum class WaveError { none, badHeader, badEncoding, badChannels, badBits, noData, badRate };

// What the user is told of an error; empty for none.
const char* waveErrorText(WaveError error);

// Where a file keeps its sound.
struct WaveLayout {
    WaveError error = WaveError::none;
    int channels = 1;              // 1 or 2
    int bits = 16;                 // 8, 16, 24 or 32
    bool isFloat = false;          // 32-bit IEEE float
    std::uint32_t sampleRate = 0;  // Hz, as the file says: any value
    std::size_t dataOffset = 0;    // of the first frame
    std::int32_t frames = 0;
    bool loopOn = false;                       // the points below are those of the file's first loop: any values
    std::uint32_t loopStart = 0, loopEnd = 0;  // samples; the end is the last one inside
};

// Finds format, loop and data in the bytes of a file; tests them in the order of WaveError. The extensible format counts
// as what its sub-format says, PCM or float. `file` may hold anything and may be empty. A data size that passes the end of the
// file by more than the reader's margin of 1000 zero bytes is cut to the file; so the frames never take more than the file and
// that margin.
WaveLayout parseWave(std::span<const std::uint8_t> file);

// Whether the format chunk of a file's bytes says two channels.
bool isStereoWave(std::span<const std::uint8_t> file);

// The frames of one channel (0 left, 1 right; a mono file has only 0, whatever is asked) as signed 16-bit
// samples, -32767 to 32767 but for 8-bit sounds (-32640 to 32385). Float is multiplied by `floatScale`, truncated and clamped;
// NaN is 0. What lies behind the end of the file is 0 before conversion. May throw std::bad_alloc.
std::vector<std::int16_t> convertWave(std::span<const std::uint8_t> file, const WaveLayout& layout, int channel,
                                      double floatScale = sampleFloatScale);

// A sound on its way into a holder.
struct WaveSound {
    std::vector<std::int16_t> samples;
    std::uint32_t sampleRate = 44100;  // Hz
    bool loopOn = false;
    std::uint32_t loopStart = 0;  // samples
    std::uint32_t loopEnd = 0;    // before settleLoop the last sample inside, afterwards one behind it
};

// Halves a sound until it fits into `maxPlayableSamples`: low-pass by `row`, every second sample (an odd
// count loses its last), half the rate and loop points. Reports to `progress` (may be null) and returns false, with a sound
// that is good for nothing, once that is cancelled. May throw std::bad_alloc.
bool reduceSound(WaveSound& sound, const FirRow& row, Progress* progress = nullptr);

// Makes the loop points those of a holder: the end exclusive and at most the length, the whole sound if
// there is no loop. False if the file's loop was not valid (start not below end, or beyond the sound): it is
// then forgotten.
bool settleLoop(WaveSound& sound);

enum class WaveRead { done, unreadable, tooLarge, stopped };

// Reads a file of up to `limit` bytes whole. `bytes` is empty unless done. Reports to `progress` (may be null), which may cancel
// it. May throw std::bad_alloc.
WaveRead readWaveFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit = maxWaveFileBytes,
                      Progress* progress = nullptr);

// Whether a file can be read and its format chunk says two channels. No boxes.
bool isStereoFile(const std::string& path);

// The pitch that a file's name tells.
struct FileNameTuning {
    int note;    // 0 to 11, from C
    int octave;  // 0 to 6
    float oct;   // value of the oscillator's Oct that plays it at that pitch
    float semi;  // of Semi
};

// Looks for note names with an octave digit ("C3", "f#-2", "Bb4") in the file name of a path, letter case as
// in the five lists of names. Higher notes win over lower, higher octaves of a note over lower ones.
std::optional<FileNameTuning> fileNameTuning(const std::string& path);

// The bytes of a 16-bit mono file of `samples`; it claims 44100 Hz whatever they were recorded at. May throw
// std::bad_alloc.
std::vector<std::uint8_t> waveFileBytes(std::span<const std::int16_t> samples);

// Writes that file. A failure, told under the path, if it cannot be created. May throw std::bad_alloc.
Outcome writeWave(std::span<const std::int16_t> samples, const std::string& path);

}  // namespace vantoric
