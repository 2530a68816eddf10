#include "factory/cycles/cycle.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "platform/files.h"
#include "samples/wave_file.h"

namespace vantoric::cycles {

namespace {

constexpr double tau = 2.0 * math::pi;
constexpr int length = waves::cycleLength;

using Samples = std::array<double, length>;

// Lanczos' sigma factors: what is left of the ringing beside an edge is about one percent of it.
double sigma(int k) {
    const double x = math::pi * k / waves::harmonicLimit;
    return math::sin(x) / x;
}

double peakOf(const Samples& samples) {
    double peak = 0.0;
    for (const double x : samples) peak = std::max(peak, std::fabs(x));
    return peak;
}

// The first sample from `start` on, in steps of `step`, that is clearly not zero.
double firstClear(const Samples& samples, int start, int step, double threshold) {
    for (int i = 0; i < length; ++i)
        if (const double x = samples[static_cast<std::size_t>(start + i * step + 2 * length) % length]; std::fabs(x) > threshold)
            return x;
    return 0.0;
}

// Where the cycle rises through zero, clearly and not as a ripple: the gentlest place within a quarter of a
// cycle from the start, else the gentlest of all; in cycles, -1/2 to 1/2.
double risingZero(const Samples& samples) {
    const double threshold = 0.01 * peakOf(samples);
    double best = 0.0, gentlest = 1e9;
    for (const int reach : {length / 4, length / 2}) {
        for (int offset = -reach; offset < reach; ++offset) {
            const double here = samples[static_cast<std::size_t>(offset + length) % length];
            const double next = samples[static_cast<std::size_t>(offset + length + 1) % length];
            if (here > 0.0 || next <= 0.0 || next - here >= 0.99 * gentlest) continue;
            if (firstClear(samples, offset, -1, threshold) > 0.0 || firstClear(samples, offset + 1, 1, threshold) < 0.0) continue;
            gentlest = next - here;
            best = (offset - here / (next - here)) / length;
        }
        if (gentlest < 1e9) break;
    }
    return best;
}

// Moves the start onto the zero itself, by Newton's rule.
void settle(Spectrum& spectrum) {
    constexpr double widest = 0.5 / length;
    for (int round = 0; round < 8; ++round) {
        double value = 0.0, slope = 0.0;
        for (int k = 1; k < waves::harmonicLimit; ++k) {
            value += spectrum.cosine[k];
            slope += tau * k * spectrum.sine[k];
        }
        if (slope <= 0.0) return;
        spectrum.advance(std::clamp(-value / slope, -widest, widest));
    }
}

// Power gain of the ear's weighting in ITU-R BS.1770 at a frequency: its high shelf and its high-pass.
double weighting(double hertz) {
    struct Stage {
        double corner, q, high, band, low;
    };
    static constexpr Stage stages[] = {{1681.97, 0.70718, 1.58489, 1.25872, 1.0}, {38.135, 0.50033, 1.0, 0.0, 0.0}};
    double gain = 1.0;
    for (const Stage& stage : stages) {
        const double x = hertz / stage.corner, real = 1.0 - x * x, imaginary = x / stage.q;
        const double top = stage.low - stage.high * x * x, side = stage.band * x / stage.q;
        gain *= (top * top + side * side) / (real * real + imaginary * imaginary);
    }
    return gain;
}

// Loudness of a cycle at the peak of 1, in dB, played at C3.
double loudnessOf(const Spectrum& spectrum, double peak) {
    constexpr double pitch = 130.81;
    double power = 0.0;
    for (int k = 1; k <= 120; ++k) power += 0.5 * spectrum.magnitude(k) * spectrum.magnitude(k) * weighting(pitch * k);
    return 10.0 * math::log(power / (peak * peak)) / math::log(10.0);
}

}  // namespace

void spread(Spectrum& spectrum) {
    double total = 0.0, phase = 0.0, powerBelow = 0.0;
    for (int k = 1; k < waves::harmonicLimit; ++k) total += spectrum.magnitude(k) * spectrum.magnitude(k);
    for (int k = 1; k < waves::harmonicLimit; ++k) {
        const double size = spectrum.magnitude(k);
        spectrum.cosine[k] = size * math::sin(phase);
        spectrum.sine[k] = size * math::cos(phase);
        powerBelow += size * size / total;
        phase -= tau * powerBelow;
        phase -= tau * std::floor(phase / tau);
    }
}

Cycle finish(Spectrum spectrum, Workshop& workshop) {
    spectrum.shape(sigma);
    spectrum.alignFundamental();
    Samples samples;
    workshop.render(spectrum, waves::harmonicLimit, samples.data());
    spectrum.advance(risingZero(samples));
    settle(spectrum);
    workshop.render(spectrum, waves::harmonicLimit, samples.data());
    const double peak = peakOf(samples);
    Cycle cycle{};
    if (peak <= 0.0) return cycle;
    const double excess = std::max(0.0, loudnessOf(spectrum, peak) - cycleLoudness);
    const double gain = cyclePeak / peak * math::exp(-excess * math::log(10.0) / 20.0);
    std::transform(samples.begin(), samples.end(), cycle.begin(),
                   [gain](double x) { return static_cast<std::int16_t>(std::floor(x * gain + 0.5)); });
    return cycle;
}

bool writeCycle(const Cycle& cycle, const std::filesystem::path& path) {
    const std::vector<std::uint8_t> bytes = waveFileBytes(cycle);
    return platform::writeFile(path.string(), bytes.data(), bytes.size());
}

}  // namespace vantoric::cycles
