#include "factory/waves/bank.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

namespace vantoric::waves {

namespace {

// Gain that brings the full-band cycle to the target RMS or, if that comes first, the highest peak of any level
// to the cap: what is left of a narrow pulse can stand higher than the whole.
double wantedGain(const Spectrum& spectrum, Workshop& workshop) {
    double cycle[cycleLength], peak = 0.0, rms = 0.0;
    for (int level = levels - 1; level >= 0; --level) {
        workshop.render(spectrum, harmonicLimit >> level, cycle);
        double sum = 0.0;
        for (const double sample : cycle) {
            sum += sample * sample;
            peak = std::max(peak, std::fabs(sample));
        }
        rms = std::sqrt(sum / cycleLength);
    }
    return peak > 0.0 ? std::min(targetRms / rms, peakCap / peak) : 0.0;
}

void store(const double* samples, double gain, std::int16_t* out) {
    for (int i = 0; i < cycleLength; ++i) out[i] = static_cast<std::int16_t>(std::clamp(samples[i] * gain, -1.0, 1.0) * 32767.0);
}

void append(std::string& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
}

std::string riffHeader(std::uint32_t dataBytes) {
    constexpr std::uint32_t rate = 44100;
    std::string header = "RIFF";
    append(header, dataBytes + 36, 4);
    header += "WAVEfmt ";
    append(header, 16, 4);  // size of the format chunk
    append(header, 1, 2);   // plain PCM
    append(header, 1, 2);   // channels
    append(header, rate, 4);
    append(header, rate * 2, 4);  // bytes a second
    append(header, 2, 2);         // bytes a frame
    append(header, 16, 2);        // bits
    header += "data";
    append(header, dataBytes, 4);
    return header;
}

}  // namespace

Bank makeBank(const Recipe& recipe, Workshop& workshop) {
    Bank bank;
    bank.frames = recipe.frames;
    bank.samples.resize(static_cast<std::size_t>(recipe.frames) * levels * cycleLength);

    std::vector<Spectrum> spectra;
    std::vector<double> gains;
    for (int frame = 0; frame < recipe.frames; ++frame) {
        spectra.push_back(recipe.make(workshop, frame));
        gains.push_back(wantedGain(spectra.back(), workshop));
    }
    if (recipe.kind == Kind::scan) std::fill(gains.begin(), gains.end(), *std::min_element(gains.begin(), gains.end()));

    double cycle[cycleLength];
    for (int frame = 0; frame < recipe.frames; ++frame)
        for (int level = 0; level < levels; ++level) {
            workshop.render(spectra[frame], harmonicLimit >> level, cycle);
            store(cycle, gains[frame],
                  bank.samples.data() + (static_cast<std::size_t>(level) * bank.frames + frame) * cycleLength);
        }
    return bank;
}

bool writeBank(const Bank& bank, const std::filesystem::path& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!file) return false;
    const std::string header = riffHeader(static_cast<std::uint32_t>(bank.samples.size() * 2));
    std::string data;
    data.reserve(bank.samples.size() * 2);
    for (const std::int16_t sample : bank.samples) append(data, static_cast<std::uint16_t>(sample), 2);
    return std::fwrite(header.data(), 1, header.size(), file.get()) == header.size() &&
           std::fwrite(data.data(), 1, data.size(), file.get()) == data.size() && std::fflush(file.get()) == 0;
}

}  // namespace vantoric::waves
