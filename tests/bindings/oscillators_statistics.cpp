// Noise and chaos: stretches of samples and long-run statistics.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>

#include "base/fft.h"
#include "base/math.h"
#include "bindings/oscillators.h"

namespace {

using namespace golden;
using Samples = std::vector<std::int16_t>;

double lag1Correlation(const Samples& s, double mean) {
    double product = 0, square = 0;
    for (std::size_t i = 0; i < s.size(); ++i) {
        square += (s[i] - mean) * (s[i] - mean);
        if (i > 0) product += (s[i] - mean) * (s[i - 1] - mean);
    }
    return square > 0 ? product / square : 0.0;
}

// Slope of the power spectrum in dB per octave, from 1/256 to 1/8 of the rate: Welch's mean over Hann
// windows, then a least squares line.
double slopeDbPerOctave(const Samples& s) {
    constexpr int size = 4096;
    vantoric::RealFft fft(size);
    std::vector<double> signal(size), re(size / 2 + 1), im(size / 2 + 1), power(size / 2 + 1);
    for (std::size_t start = 0; start + size <= s.size(); start += size / 2) {
        for (int i = 0; i < size; ++i)
            signal[i] = s[start + i] * (0.5 - 0.5 * vantoric::math::cos(2 * vantoric::math::pi * i / size));
        fft.forward(signal.data(), re.data(), im.data());
        for (int k = 0; k <= size / 2; ++k) power[k] += re[k] * re[k] + im[k] * im[k];
    }
    double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (int k = size / 256; k <= size / 8; ++k) {
        const double x = std::log2(static_cast<double>(k)), y = 10 * std::log10(power[k]);
        n += 1;
        sx += x;
        sy += y;
        sxx += x * x;
        sxy += x * y;
    }
    return (n * sxy - sx * sy) / (n * sxx - sx * sx);
}

json statistics(const Samples& s) {
    double sum = 0, square = 0, absolute = 0;
    int peak = 0, rising = 0, changes = 0;
    std::vector<double> runs;
    std::size_t lastChange = 0;
    for (std::size_t i = 0; i < s.size(); ++i) {
        sum += s[i];
        square += static_cast<double>(s[i]) * s[i];
        absolute += std::abs(static_cast<int>(s[i]));
        peak = std::max(peak, std::abs(static_cast<int>(s[i])));
        if (i == 0) continue;
        rising += s[i] > 0 && s[i - 1] <= 0;
        if ((s[i] < 0) == (s[i - 1] < 0)) continue;
        if (changes > 0) runs.push_back(static_cast<double>(i - lastChange));
        ++changes;
        lastChange = i;
    }
    const double n = static_cast<double>(s.size());
    json result = {{"mean", sum / n},
                   {"rms", std::sqrt(square / n)},
                   {"meanAbs", absolute / n},
                   {"peak", peak},
                   {"lag1Correlation", lag1Correlation(s, sum / n)},
                   {"risingCrossingsPerSample", rising / n},
                   {"signChanges", changes}};
    if (!runs.empty()) {
        double mean = 0, variance = 0;
        for (const double run : runs) mean += run / static_cast<double>(runs.size());
        for (const double run : runs) variance += (run - mean) * (run - mean) / static_cast<double>(runs.size());
        result["meanRun"] = mean;
        result["runDeviation"] = std::sqrt(variance);
        result["shortestRun"] = *std::min_element(runs.begin(), runs.end());
        result["longestRun"] = *std::max_element(runs.begin(), runs.end());
    }
    if (s.size() >= 4096) result["slopeDbPerOctave"] = slopeDbPerOctave(s);
    return result;
}

// A scalar or every element of a list.
std::vector<int> choices(const json& input, const char* key) {
    if (!input.contains(key)) return {0};
    if (input.at(key).is_array()) return input.at(key).get<std::vector<int>>();
    return {input.at(key).get<int>()};
}

void checkRuns(Outcome& outcome, const json& expected, const json& got) {
    if (expected.contains("minRunAtLeast") && got.at("shortestRun") < expected.at("minRunAtLeast"))
        outcome.fail("shortest run " + got.at("shortestRun").dump());
    if (expected.contains("maxRunAtMost") && got.at("longestRun") > expected.at("maxRunAtMost"))
        outcome.fail("longest run " + got.at("longestRun").dump());
}

void checkLevels(Outcome& outcome, const json& expected, const Samples& samples) {
    if (!expected.contains("levels")) return;
    const auto levels = expected.at("levels").get<std::set<int>>();
    for (const std::int16_t sample : samples)
        if (levels.count(sample) == 0) return outcome.fail("level " + std::to_string(sample));
}

Outcome longRun(const Case& c) {
    Outcome outcome;
    json expected = c.expected;
    for (const char* bound : {"minRunAtLeast", "maxRunAtMost", "levels"}) expected.erase(bound);
    for (const int increment : choices(c.input, "increment"))
        for (const int frame : choices(c.input, "frame")) {
            KernelRun run(c.input);
            if (c.input.contains("waves")) {
                const Samples zeros(static_cast<std::size_t>(vantoric::bankFrameBytes) / 2);
                for (int i = 0; i < vantoric::wtWaveCount; ++i) run.waves.setWave(i, false, zeros.data(), 1);
                run.waves.buildWaveRows();
            }
            run.state.increment = static_cast<std::uint32_t>(increment);
            run.state.frame = run.state.framePending = frame;
            const int skip = c.input.value("skip", 0);
            Samples samples = run.run(c.input.at("count"));
            samples.erase(samples.begin(), samples.begin() + skip);
            const json got = statistics(samples);
            compareInto(outcome, expected, got, c.tolerance, "");
            checkRuns(outcome, c.expected, got);
            checkLevels(outcome, c.expected, samples);
        }
    return outcome;
}

Outcome chaosSteps(const Case& c) {
    json rows = json::array();
    for (const json& row : c.input.at("rows")) {
        const auto step = vantoric::chaosStep(row[0], row[1]);
        rows.push_back({step.subSteps, step.dt});
    }
    return compare(c.expected, {{"rows", rows}}, c.tolerance);
}

Outcome chaosStretch(const Case& c) {
    KernelRun run(c.input);
    run.state.phase = c.input.value("phase", 0u);
    run.state.increment = c.input.at("increment");
    run.state.frame = run.state.framePending = c.input.at("frame");
    json listed = c.input.value("listed", json::object());
    const int to = listed.value("to", c.input.value("count", 0));
    const Samples samples = run.run(to);
    json got, output = json::array();
    for (int i = listed.value("from", 0); i < to; i += listed.value("stride", 1))
        output.push_back(samples[static_cast<std::size_t>(i)]);
    got["output"] = output;
    if (c.expected.contains("dt")) {
        const auto step = vantoric::chaosStep(c.input.at("NoiWave"), c.input.at("increment"));
        got["dt"] = step.dt;
        got["subSteps"] = step.subSteps;
    }
    json expected = c.expected;
    expected.erase("outputOneDrawPerSample");
    return compare(expected, got, c.tolerance);
}

Outcome chaosExact(const Case& c) { return c.input.contains("rows") ? chaosSteps(c) : chaosStretch(c); }

const Binding bindings[] = {
    {"oscillators", "analog_hiss", longRun},
    {"oscillators", "noise_stats", longRun},
    {"oscillators", "chaos_stats", longRun},
    {"oscillators", "chaos_exact", chaosExact},
};

}  // namespace
