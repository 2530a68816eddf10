#include "apps/patch/wave_text.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/math.h"

namespace vantoric::patch {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr double samplePitch = 130.8128;  // Hz at which a sample plays as it is
constexpr double fadeSeconds = 0.005;
constexpr double highestPartial = 20000.0;                  // Hz
constexpr std::size_t cycleBytes = 2 * chunk::waveSamples;  // 4096: one byte and a padding of two at the end

struct CloseFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using SoundFile = std::unique_ptr<SNDFILE, CloseFile>;

}  // namespace

std::string writeCycle(const Cycle& cycle) {
    std::array<std::uint8_t, cycleBytes> bytes;
    chunk::writeSamples(bytes.data(), cycle.data(), chunk::waveSamples);
    std::string text;
    for (std::size_t i = 0; i < cycleBytes; i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) group = group << 8 | (i + k < cycleBytes ? bytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k) text += i + k > cycleBytes ? '=' : alphabet[group >> (18 - 6 * k) & 63];
    }
    return text;
}

Cycle readCycle(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    std::uint32_t group = 0;
    int bits = 0;
    while (text.ends_with('=')) text.remove_suffix(1);
    for (const char c : text) {
        const auto digit = alphabet.find(c);
        if (digit == alphabet.npos) throw PatchError("", std::string("'") + c + "' is no digit of base64");
        group = group << 6 | static_cast<std::uint32_t>(digit);
        if ((bits += 6) >= 8) bytes.push_back(static_cast<std::uint8_t>(group >> (bits -= 8)));
    }
    if (bytes.size() != cycleBytes)
        throw PatchError("", "holds " + std::to_string(bytes.size() / 2) + " samples, a custom wave has 2048");
    Cycle cycle;
    chunk::readSamples(bytes.data(), cycle.data(), chunk::waveSamples);
    return cycle;
}

Cycle cycleOfHarmonics(std::span<const double> amplitudes) {
    std::array<double, chunk::waveSamples> sum{};
    for (std::size_t i = 0; i < sum.size(); ++i)
        for (std::size_t k = 0; k < amplitudes.size(); ++k) {
            const std::size_t turn = (k + 1) * i % chunk::waveSamples;
            sum[i] += amplitudes[k] * math::sin(2.0 * math::pi * static_cast<double>(turn) / chunk::waveSamples);
        }
    double highest = 0.0;
    for (const double sample : sum) highest = std::max(highest, std::fabs(sample));
    Cycle cycle{};
    if (highest > 0.0)
        for (std::size_t i = 0; i < sum.size(); ++i)
            cycle[i] = static_cast<std::int16_t>(std::floor(sum[i] / highest * 32767.0 + 0.5));
    return cycle;
}

std::vector<std::int16_t> struckSample(std::span<const Partial> partials, double seconds) {
    std::vector<double> sum(static_cast<std::size_t>(seconds * struckRate) + 1);
    for (const Partial& partial : partials) {
        const double hertz = samplePitch * partial.ratio;
        if (hertz > highestPartial) continue;
        const double decay = math::exp(-math::log(1000.0) / (partial.seconds * struckRate));
        double level = partial.level;
        for (std::size_t i = 0; i < sum.size(); ++i, level *= decay)
            sum[i] += level * math::sin(2.0 * math::pi * hertz * static_cast<double>(i) / struckRate);
    }
    double highest = 1e-9;
    for (std::size_t i = 0; i < sum.size(); ++i) {
        sum[i] *= std::min(1.0, static_cast<double>(sum.size() - 1 - i) / (fadeSeconds * struckRate));
        highest = std::max(highest, std::fabs(sum[i]));
    }
    std::vector<std::int16_t> frames;
    frames.reserve(sum.size());
    for (const double sample : sum) frames.push_back(static_cast<std::int16_t>(std::floor(sample / highest * 32767.0 + 0.5)));
    return frames;
}

void writeSampleFile(const std::string& path, const Sample& sample) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(std::max<std::uint32_t>(1, sample.sampleRate));
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    const SoundFile file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file || sf_write_short(file.get(), sample.levels[0].get(), sample.length) != sample.length)
        throw PatchError(path, "cannot be written");
}

SampleFile readSampleFile(const std::string& path) {
    SF_INFO info{};
    const SoundFile file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file) throw PatchError(path, sf_strerror(nullptr));
    if (info.channels != 1) throw PatchError(path, "has " + std::to_string(info.channels) + " channels, a sample has one");
    if (info.frames > maxSampleLength) throw PatchError(path, "longer than 16777216 samples");
    SampleFile sample;
    sample.frames.resize(static_cast<std::size_t>(info.frames));
    sample.rate = static_cast<std::uint32_t>(info.samplerate);
    if (sf_read_short(file.get(), sample.frames.data(), info.frames) != info.frames) throw PatchError(path, "ends too early");
    SF_INSTRUMENT instrument{};
    if (sf_command(file.get(), SFC_GET_INSTRUMENT, &instrument, sizeof instrument) == SF_TRUE && instrument.loop_count > 0) {
        const sf_count_t end = std::min<sf_count_t>(instrument.loops[0].end, info.frames);
        if (instrument.loops[0].start < end) {
            sample.loop[0] = static_cast<int>(instrument.loops[0].start);
            sample.loop[1] = static_cast<int>(end);
        }
    }
    return sample;
}

}  // namespace vantoric::patch
