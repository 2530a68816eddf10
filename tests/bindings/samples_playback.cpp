// Vectors of sample playback: step, reads, FM, filtered copies, autotune.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <stdexcept>

#include "bindings/samples_signals.h"
#include "samples/autotune.h"
#include "samples/sample_kernels.h"
#include "samples/sample_levels.h"
#include "sound/wave_store.h"

namespace golden {

namespace {

using namespace vantoric;

FirRow rowOfHalf(const json& half) {
    FirRow row{};
    for (int k = 0; k <= firCentre; ++k) row[firCentre - k] = row[firCentre + k] = half.at(static_cast<std::size_t>(k));
    return row;
}

// So much of a signal, with silence behind one that is shorter.
Samples firstSamples(const json& signal, std::int32_t count) {
    Samples samples = sampleSignal(signal);
    samples.resize(static_cast<std::size_t>(count));
    return samples;
}

// A sample with the five levels of a case, or with level `only` in the place of all.
Sample sampleOf(const json& input, int only = -1) {
    Sample sample;
    const std::int32_t length = input.at("length");
    if (!sample.allocate(length)) throw std::runtime_error("no memory");
    for (std::size_t level = 0; level < sampleLevels; ++level) {
        const Samples data = sampleSignal(input.at("levels").at(only < 0 ? level : static_cast<std::size_t>(only)));
        std::copy_n(data.begin(), std::min(data.size(), static_cast<std::size_t>(length)), sample.levels[level].get());
    }
    sample.length = length;
    sample.loopStart = input.value("loopStart", 0);
    sample.loopEnd = input.value("loopEnd", 0);
    sample.sampleRate = input.value("sampleRate", 44100u);
    writeSampleGuards(sample, input.value("LoopMod", 0) == loopModeLoop);
    return sample;
}

Kernel kernelOf(const std::string& name) {
    if (name == "sampleRead") return kernels::sampleRead;
    if (name == "sampleFmPlain") return kernels::sampleFmPlain;
    if (name == "sampleFmLevels") return kernels::sampleFmLevels;
    throw std::runtime_error("unknown kernel " + name);
}

// Runs the calls of a case one after the other.
Samples play(Kernel kernel, const json& input, const Sample& sample, OscillatorState& state) {
    static const EngineState engine;
    static const WaveStore waves;
    RandomSources random;
    const KernelContext context{engine, waves, random, &sample};
    state.phase = input.at("phase");
    state.increment = input.at("increment");
    state.loopOn = input.at("LoopMod") == loopModeLoop;
    state.fmDepth = input.value("fmDepth", 0);
    state.fmDepthStep = input.value("fmDepthStep", 0);
    state.synced = input.value("synced", 0) != 0;
    state.frame = state.framePending = 0;
    Samples in = input.contains("input") ? sampleSignal(input["input"]) : Samples();
    Samples out;
    for (const json& call : input.at("calls")) {
        const std::size_t start = out.size(), count = call;
        in.resize(std::max(in.size(), start + count));
        out.resize(start + count);
        kernel(context, out.data() + start, static_cast<int>(count), state, in.data() + start);
    }
    return out;
}

// Every kernel leaves the buffer as it was without a sample.
json playEmpty(const json& input) {
    Sample sample;
    if (const std::int32_t length = input.value("length", 0); length > 0) throw std::runtime_error("there is a sample");
    Samples buffer = input.at("buffer").get<Samples>();
    static const EngineState engine;
    static const WaveStore waves;
    RandomSources random;
    const KernelContext context{engine, waves, random, &sample};
    for (const json& name : input.at("kernels")) {
        OscillatorState state;
        const Samples in(buffer.size(), 100);
        kernelOf(name)(context, buffer.data(), static_cast<int>(buffer.size()), state, in.data());
    }
    return {{"buffer", buffer}};
}

Outcome checkRead(const Case& c) {
    if (c.input.contains("kernels")) return compare(c.expected, playEmpty(c.input), c.tolerance);
    const Sample sample = sampleOf(c.input);
    OscillatorState state;
    const std::uint32_t step = sampleStep(sample.sampleRate, c.input.at("increment"));
    json got{{"step", step}, {"level", sampleLevel(step)}, {"out", play(kernels::sampleRead, c.input, sample, state)}};
    got["phase_after"] = state.phase;
    return compare(c.expected, got, {{"out", c.tolerance}});
}

json playFm(const Case& c) {
    const Kernel kernel = kernelOf(c.input.at("kernel"));
    const Sample sample = sampleOf(c.input);
    OscillatorState state;
    const Samples out = play(kernel, c.input, sample, state);
    json got{{"step", sampleStep(sample.sampleRate, c.input.at("increment"))},
             {"out", out},
             {"phase_after", state.phase},
             {"fmDepth_after", state.fmDepth},
             {"lastSyncInput_after", state.lastSyncInput},
             {"lastFmOffset_after", state.lastFmOffset},
             {"lastTotalPhase_after", state.lastTotalPhase}};
    if (!c.expected.contains("levels_used")) return got;
    // The level that was read is the one that alone gives the same value.
    std::vector<int> used(out.size(), -1);
    for (int level = sampleLevels - 1; level >= 0; --level) {
        OscillatorState again;
        const Samples alone = play(kernel, c.input, sampleOf(c.input, level), again);
        for (std::size_t i = 0; i < out.size(); ++i)
            if (alone[i] == out[i]) used[i] = level;
    }
    got["levels_used"] = used;
    return got;
}

json guardsOf(const json& input) {
    const Sample sample = sampleOf(input);
    json guards = json::array();
    for (const auto& level : sample.levels) guards.push_back(Samples(&level[sample.length], &level[sample.length] + 8));
    return {{"guards", guards}};
}

json steps(const Case& c) {
    const json& input = c.input;
    if (input.contains("LoopMod")) return guardsOf(input);
    json got = json::object();
    if (input.contains("E")) {
        for (const json& effective : input["E"]) got["level"].push_back(sampleFmLevel(effective));
    } else if (input.contains("step")) {
        for (const json& step : input["step"]) got["level"].push_back(sampleLevel(step));
    } else if (input.contains("Start")) {
        for (const json& start : input["Start"]) {
            OscillatorState state;
            LinearCongruence random;
            setupFirstTickPhases(state, asFloat(start), 0.5f, 0, sampleType, input.at("length"), random);
            got["phase"].push_back(state.phase);
        }
    } else {
        for (std::size_t i = 0; i < input.at("increment").size(); ++i) {
            const std::uint32_t step = sampleStep(input.at("sampleRate")[i], input["increment"][i]);
            got["step"].push_back(step);
            got["level"].push_back(sampleLevel(step));
        }
    }
    return got;
}

// An impulse through a row shows its integers: 8192 passes each tap unchanged.
json integersOfHalf(const FirRow& row) {
    Samples impulse(firTaps), out(firTaps);
    impulse[firCentre] = 8192;
    firFilter(impulse.data(), firTaps, out.data(), false, row);
    return Samples(out.begin() + firCentre, out.end());
}

json filter(const Case& c) {
    FirRow row{};
    if (c.input.contains("row_taps"))
        for (const auto& [tap, value] : c.input["row_taps"].items()) row.at(static_cast<std::size_t>(std::stoi(tap))) = value;
    else
        row = rowOfHalf(c.input.at("row_half"));
    if (!c.input.contains("source")) return {{"integers_half", integersOfHalf(row)}};
    const std::int32_t count = c.input.at("count");
    const Samples source = firstSamples(c.input["source"], count);
    Samples out(source.size());
    firFilter(source.data(), count, out.data(), c.input.at("wrap"), row);
    json got{{"destination", out}};
    for (const auto& [key, value] : c.expected.items())
        if (key.rfind("destination_", 0) == 0) got[key] = out.at(static_cast<std::size_t>(std::stoi(key.substr(12))));
    return got;
}

// The rows of a case, or, where it only refers to them, those of the filter vectors in the same folder.
LevelRows rowsOf(const json& given, const std::string& folder) {
    if (given.is_array()) {
        LevelRows rows;
        for (std::size_t level = 1; level < sampleLevels; ++level) rows[level - 1] = rowOfHalf(given.at(level - 1));
        return rows;
    }
    std::ifstream stream(folder + "/fir_filter.json");
    LevelRows rows;
    for (const json& entry : json::parse(stream))
        for (std::size_t level = 1; level < sampleLevels; ++level)
            if (entry.at("case") == "row " + std::to_string(level) + " integers")
                rows[level - 1] = rowOfHalf(entry.at("input").at("row_half"));
    return rows;
}

json levels(const Case& c) {
    Sample sample;
    sample.allocate(c.input.at("length"));
    sample.length = c.input.at("length");
    const Samples level0 = firstSamples(c.input.at("level0"), sample.length);
    std::copy_n(level0.begin(), sample.length, sample.levels[0].get());
    buildLevels(sample, c.input.at("wrap"), nullptr, rowsOf(c.input.value("rows_half", json()), c.folder));
    json got = json::object();
    for (std::size_t level = 1; level < sampleLevels; ++level)
        for (int i = 0; i < sample.length; i += c.input.at("stride").get<int>())
            got["level" + std::to_string(level)].push_back(sample.levels[level][static_cast<std::size_t>(i)]);
    return got;
}

double deviation(const Samples& x) {
    double sum = 0.0, squares = 0.0;
    const double n = 3600.0;
    for (std::size_t i = 200; i < 3800; ++i) {
        sum += x[i];
        squares += static_cast<double>(x[i]) * x[i];
    }
    return std::sqrt(squares / n - sum / n * (sum / n));
}

Outcome checkSines(const Case& c, const FirRow& row) {
    Outcome outcome;
    for (std::size_t k = 0; k < c.input.at("sines").size(); ++k) {
        const json signal{{"kind", "sine"},
                          {"amp", 30000.5},
                          {"period", 1.0 / c.input["sines"][k]["frequency"].get<double>()},
                          {"phase", 0.2},
                          {"n", 4000}};
        const Samples source = sampleSignal(signal);
        Samples out(source.size());
        firFilter(source.data(), static_cast<std::int32_t>(source.size()), out.data(), false, row);
        const double ratio = deviation(out) / deviation(source);
        if (!(ratio >= c.expected.at("ratio_at_least")[k] && ratio <= c.expected.at("ratio_at_most")[k]))
            outcome.fail("sine " + std::to_string(k) + ": ratio " + std::to_string(ratio));
    }
    return outcome;
}

// First frequency at which a row falls to an amplitude.
double firstFall(const FirRow& row, double amplitude) {
    int i = 0;
    while (i < 50000 && std::fabs(firAmplitude(row, i * 1e-5)) > amplitude) ++i;
    return i * 1e-5;
}

Outcome checkRow(const Case& c) {
    const FirRow& row = levelRows().at(c.input.at("level").get<std::size_t>() - 1);
    if (c.input.contains("sines")) return checkSines(c, row);
    double sum = 0.0, highest = 0.0;
    bool symmetric = true;
    for (std::size_t k = 0; k < row.size(); ++k) {
        sum += row[k];
        symmetric = symmetric && row[k] == row[row.size() - 1 - k];
    }
    for (double f = c.expected.at("stop_band_from"); f <= 0.5; f += 1e-5)
        highest = std::max(highest, std::fabs(firAmplitude(row, f)));
    json expected = c.expected;
    const double stopBand = 20.0 * std::log10(highest);
    const json got{{"taps", row.size()},
                   {"symmetric", symmetric},
                   {"sum", sum},
                   {"centre_tap", row[firCentre]},
                   {"minus_6_dB", firstFall(row, std::pow(10.0, -6.0 / 20.0))},
                   {"minus_60_dB", firstFall(row, 0.001)},
                   {"stop_band_from", expected["stop_band_from"]}};
    const double limit = expected["stop_band_below_dB"];
    expected.erase("stop_band_below_dB");
    json tolerance = json::object();
    for (const auto& [field, abs] : c.tolerance.items()) tolerance[field] = {{"abs", abs}, {"rel", 0.0}};
    Outcome outcome = compare(expected, got, tolerance);
    if (!(stopBand <= limit)) outcome.fail("stop band " + std::to_string(stopBand) + " dB");
    return outcome;
}

Outcome checkAutotune(const Case& c) {
    const std::int32_t length = c.input.at("length");
    const Samples x = firstSamples(c.input.at("sample"), length);
    const int lag = bestLag(x.data(), length);
    json expected = c.expected;
    expected.erase("margin");
    return compare(expected, {{"L", lag}, {"sampleRate", rateOfLag(lag)}}, json::object());
}

const Binding bindings[] = {
    {"samples", "sample_step", checkValues<steps>},   {"samples", "sample_read", checkRead},
    {"samples", "sample_fm", checkValues<playFm>},    {"samples", "fir_filter", checkValues<filter>},
    {"samples", "build_levels", checkValues<levels>}, {"samples", "row_check", checkRow},
    {"samples", "autotune", checkAutotune},
};

}  // namespace

}  // namespace golden
