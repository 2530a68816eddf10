#include <algorithm>
#include <string>

#include "tests/fuzz/targets.h"
#include "tests/patch/patch_bench.h"

namespace vantoric::fuzz {

namespace {

constexpr std::size_t shortestWhole = 1000;

// A script: records of 7 bytes, what and where to change, and a 32-bit value.
Bytes chunkByScript(const std::uint8_t* data, std::size_t size) {
    HandMadeChunk made;
    std::size_t dropped = 0;  // at the end, when all is written
    for (; size >= 7; data += 7, size -= 7) {
        const int place = data[1] | data[2] << 8;
        const std::uint32_t value = chunk::readLong(data + 3);
        switch (data[0] % 6) {
            case 0: chunk::writeLong(&made.bytes[chunk::sampleHeaderOffset + place % (chunk::waveCount * 8) * 4], value); break;
            case 1: made.bytes[0] = data[3]; break;
            case 2: made.bytes[chunk::nameOffset + place % chunk::nameRead] = data[3]; break;
            case 3: chunk::writeBigLong(&made.bytes[chunk::parameterOffset + place % parameterCount * 4], value); break;
            case 4: made.data(place, value); break;
            default: dropped += value % 64 + (data[1] == 0 ? 55000 : 0); break;
        }
    }
    const std::size_t kept = made.bytes.size() - std::min(made.bytes.size(), dropped);
    made.bytes.erase(made.bytes.begin() + static_cast<std::ptrdiff_t>(kept), made.bytes.end());
    return made.bytes;
}

void requireSoundSamples(const PatchBench& bench, std::size_t size) {
    for (const Sample& sample : bench.samples) {
        require(sample.length >= 0 && static_cast<std::size_t>(sample.length) * 2 <= size, "a sample is within its chunk");
        require(sample.loopStart >= 0 && sample.loopStart <= sample.length, "a loop starts within its sample");
        require(sample.loopEnd >= 0 && sample.loopEnd <= sample.length, "a loop ends within its sample");
        require(sample.sampleRate <= maxSampleRate, "a rate is bounded");
        for (const auto& level : sample.levels) require(sample.length == 0 || level != nullptr, "a sample has its buffers");
    }
}

void requireAllBuffersFilled(const PatchBench& bench) {
    for (const Sample& sample : bench.samples) {
        for (int i = 0; i < sample.length; ++i) require(sample.levels[4][i] == sample.levels[0][i], "all buffers are filled");
    }
}

void requireSoundPatch(PatchBench& bench, std::size_t size) {
    requireSoundSamples(bench, size);
    for (int i = 0; i < parameterCount; ++i) {
        const float value = bench.parameters.getParameter(i);
        require(value >= 0.0f && value <= 1.0f, "a parameter is from 0 to 1");
    }
    require(bench.program.getProgramName().size() <= 27, "a name has 27 characters at most");
}

// What was loaded can be saved, and what is saved loads.
void requireRoundTrip(PatchBench& bench) {
    const Bytes saved = bench.save();
    require(saved.size() >= static_cast<std::size_t>(chunk::fixedSize), "a chunk has its fixed part");
    PatchBench other;
    require(other.load(saved) == 1, "a saved chunk loads");
    require(!other.state.flags.engineLocked.isSet(), "a loaded chunk plays");
}

}  // namespace

Bytes chunkOf(const std::uint8_t* data, std::size_t size) {
    return size < shortestWhole ? chunkByScript(data, size) : Bytes(data, data + size);
}

void chunk(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes = chunkOf(data, size);
    PatchBench bench;
    for (int k = 0; k < chunk::waveCount; k += 5) bench.putSample(k, 30, 3, 20, 22050, 1);
    const int returned = bench.load(bytes);
    const bool locked = bench.state.flags.engineLocked.isSet();
    require(returned == 0 || returned == 1, "a load returns 0 or 1");
    require(returned == 1 || bench.told.boxes().size() >= 1, "a failure gives a box");
    require(!(returned == 1 && locked) || bytes.size() < static_cast<std::size_t>(chunk::fixedSize), "a loaded patch plays");
    if (bytes.size() >= static_cast<std::size_t>(chunk::fixedSize))
        requireSoundPatch(bench, std::max<std::size_t>(bytes.size(), 60));
    if (returned == 1 && !locked) requireAllBuffersFilled(bench);
    bench.state.flags.engineLocked.clear();
    requireRoundTrip(bench);
}

std::vector<Bytes> chunkSeeds() {
    HandMadeChunk sample;
    sample.name("Seed").header(1, {40, 3, 39, 32000}).data(40, 31);
    HandMadeChunk old(1);
    old.name(std::string(28, 'x')).parameter(parameter::AttVol, 0.0f);
    std::vector<Bytes> seeds = {sample.bytes, old.bytes};
    seeds.push_back({0, 8, 0, 40, 0, 0, 0, 4, 40, 0, 1, 2, 3, 4});                       // a sample and its data
    seeds.push_back({0, 16, 0, 255, 255, 255, 127, 1, 0, 0, 6, 0, 0, 0});                // the longest length
    seeds.push_back({3, 97, 0, 0, 0, 192, 127, 3, 24, 0, 0, 0, 128, 127});               // not a number, infinity
    seeds.push_back({4, 50, 0, 9, 0, 0, 0, 0, 0, 0, 50, 0, 0, 0, 5, 1, 0, 1, 0, 0, 0});  // a byte short
    return seeds;
}

}  // namespace vantoric::fuzz
