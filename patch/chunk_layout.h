// Where things stand in a patch chunk, and how numbers are written there. Integers are little-endian,
// parameter values big-endian. Nothing here allocates or fails.
#pragma once

#include <bit>
#include <cstdint>

#include "base/engine_state.h"
#include "base/parameters.h"

namespace vantoric::chunk {

inline constexpr int waveCount = layerCount * oscillatorCount;  // custom waves and samples: layer x 3 + oscillator
inline constexpr int waveSamples = 2048;                        // of a custom wave: its plain cycle

inline constexpr int formatVersion = 7;
inline constexpr int versionOffset = 0;
inline constexpr int nameOffset = 1;
inline constexpr int nameWritten = 26;  // bytes that the writer stores
inline constexpr int nameRead = 28;     // bytes that the reader takes
inline constexpr int parameterOffset = 737;
inline constexpr int customWaveOffset = parameterOffset + 4 * parameterCount;
inline constexpr int sampleHeaderOffset = customWaveOffset + waveCount * waveSamples * 2;
inline constexpr int sampleHeaderBytes = 32;
inline constexpr int sampleDataOffset = sampleHeaderOffset + waveCount * sampleHeaderBytes;
inline constexpr int fixedSize = sampleDataOffset;  // the lowest size of a chunk
static_assert(customWaveOffset == 5633 && sampleHeaderOffset == 54785 && fixedSize == 55169);

inline std::uint16_t readWord(const std::uint8_t* at) { return static_cast<std::uint16_t>(at[0] | at[1] << 8); }
inline std::uint32_t readLong(const std::uint8_t* at) {
    return readWord(at) | static_cast<std::uint32_t>(readWord(at + 2)) << 16;
}
inline void writeWord(std::uint8_t* at, std::uint16_t value) {
    at[0] = static_cast<std::uint8_t>(value);
    at[1] = static_cast<std::uint8_t>(value >> 8);
}
inline void writeLong(std::uint8_t* at, std::uint32_t value) {
    writeWord(at, static_cast<std::uint16_t>(value));
    writeWord(at + 2, static_cast<std::uint16_t>(value >> 16));
}

inline std::uint32_t readBigLong(const std::uint8_t* at) {
    return static_cast<std::uint32_t>(at[0]) << 24 | static_cast<std::uint32_t>(at[1]) << 16 |
           static_cast<std::uint32_t>(at[2]) << 8 | at[3];
}
inline void writeBigLong(std::uint8_t* at, std::uint32_t value) {
    for (int k = 0; k < 4; ++k) at[k] = static_cast<std::uint8_t>(value >> (24 - 8 * k));
}
// Any bit pattern, NaN included.
inline float readBigFloat(const std::uint8_t* at) { return std::bit_cast<float>(readBigLong(at)); }
inline void writeBigFloat(std::uint8_t* at, float value) { writeBigLong(at, std::bit_cast<std::uint32_t>(value)); }

// Signed 16-bit samples; count of zero or less does nothing.
void readSamples(const std::uint8_t* from, std::int16_t* to, std::int64_t count);
void writeSamples(std::uint8_t* to, const std::int16_t* from, std::int64_t count);

struct SampleHeader {
    std::int32_t length = 0;           // samples
    std::int32_t loopStart = 0;        // samples
    std::int32_t loopEnd = 0;          // samples
    std::uint32_t sampleRate = 44100;  // Hz
};

// Header of oscillator `index` (0 to 11) of a chunk that has at least its fixed size.
SampleHeader readSampleHeader(const std::uint8_t* chunk, int index);
void writeSampleHeader(std::uint8_t* chunk, int index, const SampleHeader& header);

// True if the loop lies within the length, the length is from 0 to `maxLength` and the rate not above
// 384000 Hz. A rate of 0 is accepted.
bool isSound(const SampleHeader& header, std::int64_t maxLength);

}  // namespace vantoric::chunk
