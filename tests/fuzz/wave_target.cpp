#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>

#include "samples/sample_levels.h"
#include "samples/wave_file.h"
#include "tests/fuzz/targets.h"

namespace vantoric::fuzz {

namespace {

constexpr std::uint8_t dataBytes = 40;

void put(Bytes& bytes, const char* tag, std::initializer_list<std::uint32_t> words) {
    bytes.insert(bytes.end(), tag, tag + 4);
    for (const std::uint32_t word : words)
        for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

// A sound file of 40 bytes of data, with a sampler chunk behind them if there is a loop.
Bytes madeWave(std::uint32_t tag, std::uint32_t channels, std::uint32_t bits, bool loop) {
    Bytes bytes;
    put(bytes, "RIFF", {100});
    put(bytes, "WAVE", {});
    put(bytes, "fmt ", {16, tag | channels << 16, 44100, 88200, 2 | bits << 16});
    put(bytes, "data", {dataBytes});
    for (std::uint8_t i = 0; i < dataBytes; ++i) bytes.push_back(static_cast<std::uint8_t>(i * 37));
    if (loop) put(bytes, "smpl", {60, 0, 0, 0, 60, 0, 0, 0, 1, 0, 0, 0, 2, 9, 0, 0});
    return bytes;
}

// With a sub-format of the standard kind.
Bytes extensibleWave() {
    Bytes bytes;
    put(bytes, "RIFF", {100});
    put(bytes, "WAVE", {});
    put(bytes, "fmt ", {40, 0xfffe | 1 << 16, 44100, 88200, 2 | 16 << 16, 22 | 16 << 16, 0, 1, 0x100000, 0xaa000080, 0x719b3800});
    put(bytes, "data", {dataBytes});
    for (std::uint8_t i = 0; i < dataBytes; ++i) bytes.push_back(static_cast<std::uint8_t>(i * 37));
    return bytes;
}

void requireSoundSamples(const WaveSound& sound) {
    require(sound.samples.size() <= static_cast<std::size_t>(maxPlayableSamples), "a sound is within reach");
    require(sound.loopStart <= sound.loopEnd && sound.loopEnd <= sound.samples.size(), "a loop is within its sound");
    for (const std::int16_t sample : sound.samples) require(sample >= -32767, "-32768 never occurs");
}

// What is written loads as the same sound, one up.
void requireRoundTrip(const WaveSound& sound) {
    const Bytes written = waveFileBytes(sound.samples);
    const WaveLayout layout = parseWave(written);
    require(layout.error == (sound.samples.empty() ? WaveError::noData : WaveError::none), "a written sound loads");
    require(static_cast<std::size_t>(layout.frames) == sound.samples.size(), "as long as it was");
    const auto again = convertWave(written, layout, 0);
    for (std::size_t i = 0; i < again.size(); ++i)
        require(again[i] == std::min(sound.samples[i] + 1, 32767), "with the samples it had");
}

}  // namespace

void waveFile(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> file(data, size);
    const WaveLayout layout = parseWave(file);
    isStereoWave(file);
    if (layout.error != WaveError::none) return require(*waveErrorText(layout.error) != 0, "an error has its text");
    require(layout.frames >= 0 && static_cast<std::size_t>(layout.frames) <= size + 1000, "frames come from the file");
    WaveSound sound;
    for (int channel = 1; channel >= 0; --channel) {
        sound = {convertWave(file, layout, channel), layout.sampleRate, layout.loopOn, layout.loopStart, layout.loopEnd};
        reduceSound(sound, levelRows().front());
        settleLoop(sound);
        requireSoundSamples(sound);
    }
    requireRoundTrip(sound);
    fileNameTuning(std::string(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 64)));
}

std::vector<Bytes> waveFileSeeds() {
    std::vector<Bytes> seeds = {madeWave(1, 1, 8, false), madeWave(1, 2, 16, true), madeWave(1, 2, 24, false),
                                madeWave(3, 1, 32, true), extensibleWave()};
    Bytes headless = seeds[1];
    headless.erase(headless.begin(), headless.begin() + 12);
    seeds.push_back(headless);
    return seeds;
}

}  // namespace vantoric::fuzz
