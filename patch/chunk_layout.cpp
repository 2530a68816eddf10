#include "patch/chunk_layout.h"

#include "samples/sample.h"

namespace vantoric::chunk {

void readSamples(const std::uint8_t* from, std::int16_t* to, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) to[i] = static_cast<std::int16_t>(readWord(from + 2 * i));
}

void writeSamples(std::uint8_t* to, const std::int16_t* from, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) writeWord(to + 2 * i, static_cast<std::uint16_t>(from[i]));
}

SampleHeader readSampleHeader(const std::uint8_t* chunk, int index) {
    const std::uint8_t* at = chunk + sampleHeaderOffset + index * sampleHeaderBytes;
    return {static_cast<std::int32_t>(readLong(at)), static_cast<std::int32_t>(readLong(at + 4)),
            static_cast<std::int32_t>(readLong(at + 8)), readLong(at + 12)};
}

void writeSampleHeader(std::uint8_t* chunk, int index, const SampleHeader& header) {
    std::uint8_t* at = chunk + sampleHeaderOffset + index * sampleHeaderBytes;
    writeLong(at, static_cast<std::uint32_t>(header.length));
    writeLong(at + 4, static_cast<std::uint32_t>(header.loopStart));
    writeLong(at + 8, static_cast<std::uint32_t>(header.loopEnd));
    writeLong(at + 12, header.sampleRate);
    for (int k = 16; k < sampleHeaderBytes; ++k) at[k] = 0;
}

bool isSound(const SampleHeader& header, std::int64_t maxLength) {
    const auto within = [&](std::int32_t value) { return value >= 0 && value <= header.length; };
    return header.length >= 0 && header.length <= maxLength && within(header.loopStart) && within(header.loopEnd) &&
           header.sampleRate <= maxSampleRate;
}

}  // namespace vantoric::chunk
