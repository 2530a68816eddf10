#include "apps/render/mastering.h"

#include <ebur128.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <numbers>

namespace vantoric::render {

namespace {

double decibels(double factor) { return factor > 0.0 ? 20.0 * std::log10(factor) : -std::numeric_limits<double>::infinity(); }
double factor(double decibels) { return std::pow(10.0, decibels / 20.0); }

void scale(std::vector<double>& samples, double gain) {
    for (double& sample : samples) sample *= gain;
}

// A quarter, half and three quarters of a sample later, by a windowed sinc of 24 places (BS.1770-4, annex 2, looks four
// times a sample too).
constexpr int phases = 4, reach = 12;
using Interpolator = std::array<std::array<double, 2 * reach>, phases - 1>;

Interpolator interpolator() {
    Interpolator taps{};
    for (int phase = 1; phase < phases; ++phase) {
        double sum = 0.0;
        for (int i = 0; i < 2 * reach; ++i) {
            const double x = i - (reach - 1) - static_cast<double>(phase) / phases,
                         window = std::cos(std::numbers::pi * x / (2 * reach));
            sum += taps[phase - 1][i] = std::sin(std::numbers::pi * x) / (std::numbers::pi * x) * window * window;
        }
        for (double& tap : taps[phase - 1]) tap /= sum;
    }
    return taps;
}

// For every frame the highest level of both channels from it to the next one.
std::vector<double> truePeaks(const std::vector<double>& samples) {
    static const Interpolator taps = interpolator();
    const auto frames = static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::vector<double> peaks(samples.size() / 2);
    for (std::ptrdiff_t frame = 0; frame < frames; ++frame)
        for (int side = 0; side < 2; ++side) {
            double peak = std::fabs(samples[2 * frame + side]);
            for (const auto& phase : taps) {
                double between = 0.0;
                for (std::ptrdiff_t i = 0; i < 2 * reach; ++i) {
                    const std::ptrdiff_t at = frame + i - (reach - 1);
                    if (at >= 0 && at < frames) between += phase[i] * samples[2 * at + side];
                }
                peak = std::max(peak, std::fabs(between));
            }
            peaks[frame] = std::max(peaks[frame], peak);
        }
    return peaks;
}

// The lowest value from each place to `ahead` places later.
std::vector<double> lowestAhead(const std::vector<double>& values, std::size_t ahead) {
    std::vector<double> result(values.size());
    std::deque<std::size_t> rising;  // places of ever higher values, later ones first
    for (std::size_t i = values.size(); i-- > 0;) {
        while (!rising.empty() && values[rising.front()] >= values[i]) rising.pop_front();
        rising.push_front(i);
        while (rising.back() > i + ahead) rising.pop_back();
        result[i] = values[rising.back()];
    }
    return result;
}

}  // namespace

Measures measure(const std::vector<double>& samples, double rate) {
    struct Free {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    constexpr double none = -std::numeric_limits<double>::infinity();
    const std::unique_ptr<ebur128_state, Free> state(
        ebur128_init(2, static_cast<unsigned long>(rate), EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK));
    Measures measures{none, none};
    if (!state || ebur128_add_frames_double(state.get(), samples.data(), samples.size() / 2) != EBUR128_SUCCESS) return measures;
    ebur128_loudness_global(state.get(), &measures.loudness);
    for (unsigned side = 0; side < 2; ++side) {
        double peak = 0.0;
        ebur128_true_peak(state.get(), side, &peak);
        measures.truePeak = std::max(measures.truePeak, decibels(peak));
    }
    return measures;
}

double limit(std::vector<double>& samples, double rate, double ceiling) {
    const std::size_t ahead = static_cast<std::size_t>(0.005 * rate);
    const double comesBack = 1.0 - std::exp(-1.0 / (0.1 * rate));
    std::vector<double> gains = truePeaks(samples);
    for (double& gain : gains) gain = gain > ceiling ? ceiling / gain : 1.0;
    gains = lowestAhead(gains, ahead);
    double held = 1.0, lowest = 1.0;
    for (double& gain : gains) gain = held = std::min(gain, held + (1.0 - held) * comesBack);
    const double first = gains.empty() ? 1.0 : gains[0];
    double sum = static_cast<double>(ahead) * first;
    // The mean of the last `ahead` gains falls evenly, and has fallen when the peak comes.
    for (std::size_t i = 0; i < gains.size(); ++i) {
        sum += gains[i] - (i >= ahead ? gains[i - ahead] : first);
        const double gain = std::min(1.0, sum / static_cast<double>(ahead));
        lowest = std::min(lowest, gain);
        samples[2 * i] *= gain;
        samples[2 * i + 1] *= gain;
    }
    return lowest;
}

Mastered master(std::vector<double>& samples, double rate, double loudness, double ceiling) {
    Mastered result;
    const Measures before = measure(samples, rate);
    if (!std::isfinite(before.loudness)) return result;
    result.gain = loudness - before.loudness;
    if (before.truePeak + result.gain <= ceiling) {
        scale(samples, factor(result.gain));
        return result;
    }
    // A limiter takes from the loudness, so that the gain before it has to be found.
    const std::vector<double> plain = samples;
    for (int round = 0; round < 5; ++round) {
        samples = plain;
        scale(samples, factor(result.gain));
        result.reduction = -decibels(limit(samples, rate, factor(ceiling - 0.05)));
        const Measures after = measure(samples, rate);
        if (after.truePeak > ceiling) scale(samples, factor(ceiling - after.truePeak));
        const double missing = loudness - measure(samples, rate).loudness;
        if (std::fabs(missing) < 0.05) break;
        result.gain += missing;
    }
    return result;
}

}  // namespace vantoric::render
