// What stands around the kernels: tables, choices, derived values, start phases, custom waves.
#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>

#include "bindings/oscillators.h"
#include "sound/custom_wave.h"
#include "sound/oscillator_control.h"

namespace {

using namespace golden;
using namespace vantoric;

template <class F>
json each(const json& list, F f) {
    json result = json::array();
    for (const json& value : list) result.push_back(f(value));
    return result;
}

json basics(const Case& c) {
    const json& in = c.input;
    if (in.contains("index")) return {{"level", each(in["index"], [](int i) { return mipMap[static_cast<std::size_t>(i)]; })}};
    if (in.contains("internalRate")) return {{"c", each(in["internalRate"], [](float rate) { return analogCoefficient(rate); })}};
    if (in.contains("increment"))
        return {{"k", each(in["frame"], [](int frame) { return chamberlin(frame, 1000).k; })},
                {"f", each(in["increment"], [](std::uint32_t d) { return chamberlin(0, d).f; })}};
    if (in.contains("frame")) {
        const auto parameters = [&](int noiWave) {
            return each(in["frame"], [&](int frame) { return chaosParameter(noiWave, frame); });
        };
        return {{"b", parameters(8)}, {"a2", parameters(9)}, {"g", parameters(10)}, {"a4", parameters(11)}};
    }
    json states = json::array(), floats = json::array();
    if (in.contains("seed")) {
        HashNoise whole{in["counter"], in["seed"]}, unit = whole;
        for (int i = 0; i < in["count"]; ++i) {
            states.push_back(whole.next());
            floats.push_back(unit.unit());
        }
        return {{"int", states}, {"float", floats}};
    }
    LinearCongruence whole{in.at("state")}, unit = whole;
    for (int i = 0; i < in["count"]; ++i) {
        states.push_back(whole.next());
        floats.push_back(unit.unit());
    }
    return {{"state", states}, {"float", floats}};
}

json derivedRow(const std::string& kind, const json& row) {
    if (kind == "fmDepth") {
        const auto target = fmDepthTarget(asFloat(row[0]));
        return {target, fmDepthStep(target, row[1], row[2])};
    }
    const auto gains = mixGains(row[0] != 0, asFloat(row[1]), asFloat(row[2]));
    return {gains.toFilter1, gains.toFilter2};
}

json derived(const Case& c) {
    const json& in = c.input;
    const std::string kind = c.name.substr(0, c.name.find('-'));
    if (kind == "increment") return {{"rows", each(in["d"], [](double d) { return json{increment24(d), toneCoefficient(d)}; })}};
    if (kind == "toneCoefficientTop") return {{"toneCoefficient", each(in["d"], [](double d) { return toneCoefficient(d); })}};
    if (kind == "scanIncrement")
        return {{"scanIncrement", each(in["rows"], [](const json& r) { return scanIncrement(r[0], asFloat(r[1])); })}};
    if (kind == "position")
        return {{"framePending", each(in["rows"], [](const json& r) { return wavePosition(r[0], asFloat(r[1])).frame; })},
                {"blendPending", each(in["rows"], [](const json& r) { return wavePosition(r[0], asFloat(r[1])).blend; })}};
    if (kind == "tone")
        return {{"rows", each(in["Timbre"], [](float t) {
                     const auto gains = toneGains(t);
                     return json{gains.wet, gains.dry};
                 })}};
    return {{"rows", each(in.at("rows"), [&](const json& row) { return derivedRow(kind, row); })}};
}

json tone(const Case& c) {
    auto buffer = c.input.at("buffer").get<std::vector<std::int16_t>>();
    std::int32_t state = c.input.at("toneState");
    const ToneGains gains{c.input.at("toneWet"), c.input.at("toneDry")};
    const int half = static_cast<int>(buffer.size()) / 2;
    toneStage(buffer.data(), half, state, c.input.at("toneCoefficient"), gains);
    toneStage(buffer.data() + half, static_cast<int>(buffer.size()) - half, state, c.input.at("toneCoefficient"), gains);
    return {{"buffer", buffer}, {"toneState", state}};
}

json bankHeader(const std::string& hex) {
    std::array<unsigned char, bankHeaderBytes> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
    const auto header = parseBankHeader(bytes);
    if (!header) return {{"accepted", false}, {"frames", 0}, {"dataOffset", nullptr}};
    return {{"accepted", true}, {"frames", header->frames}, {"dataOffset", header->dataOffset}};
}

json waveRows(const json& in) {
    WaveStore waves;
    fillStore(waves, in.at("store"));
    json rows = json::array();
    for (int row = 0; row < analogRowCount; ++row)
        rows.push_back(each(in.at("levels"), [&](int level) {
            return each(in.at("positions"), [&](int position) { return waves.rowCycle(row, level)[position]; });
        }));
    return {{"rows", rows}};
}

json waveStore(const Case& c) {
    if (c.input.contains("header")) return {{"rows", each(c.input["header"], bankHeader)}};
    if (c.input.contains("store")) return waveRows(c.input);
    return {{"index",
             each(c.input.at("rows"), [](const json& r) { return cycleOffset(r[0], r[1], r[2]) + r[3].get<std::size_t>(); })}};
}

json testTables(const Case& c) {
    const auto table = makeTable(c.input.at("table"));
    const int frames = c.input.at("table").at("frames");
    return {{"value", each(c.input.at("rows"),
                           [&](const json& r) { return table[cycleOffset(frames, r[0], r[1]) + r[2].get<std::size_t>()]; })}};
}

void sampleRead(const KernelContext&, std::int16_t*, int, OscillatorState&, const std::int16_t*) {}
void sampleFmPlain(const KernelContext&, std::int16_t*, int, OscillatorState&, const std::int16_t*) {}
void sampleFmLevels(const KernelContext&, std::int16_t*, int, OscillatorState&, const std::int16_t*) {}

// The sample kernels live elsewhere; three of their signature stand in for them.
std::string chosen(const KernelChoice& choice) {
    const Kernel kernel = chooseKernel(choice, {sampleRead, sampleFmPlain, sampleFmLevels});
    if (kernel == sampleRead) return "sampleRead";
    if (kernel == sampleFmPlain) return "sampleFmPlain";
    if (kernel == sampleFmLevels) return "sampleFmLevels";
    return nameOf(kernel);
}

json selectKernels(const json& in) {
    return {{"kernel", each(in.at("rows"), [&](const json& row) {
                 KernelChoice choice;
                 choice.synType = in.at("SynType");
                 choice.quality = row[0];
                 choice.modulated = row[1] != 0;
                 if (row.size() > 2) choice.internalRate = row[2];
                 if (row.size() > 3) choice.ssWave = choice.noiWave = choice.anaWave = row[3];
                 choice.hasSample = in.value("sampleLength", 1) != 0;
                 return chosen(choice);
             })}};
}

json prepareAnalog(int anaWave) {
    const WaveStore waves;
    OscillatorState state;
    OscillatorSetup setup;
    setup.synType = analogType;
    setup.anaWave = anaWave;
    prepareOscillator(state, setup, waves);
    const AnalogRow& row = analogRows[state.analogRow];
    return {{"analogRow", state.analogRow},
            {"file", wtWaveFiles[static_cast<std::size_t>(row.wave)].stem},
            {"frame", row.frame},
            {"hiss", state.hiss},
            {"polarity", state.polarity},
            {"frameCount", state.frameCount},
            {"phaseDirection", state.phaseDirection}};
}

int preparedFrames(int synType, int frames) {
    WaveStore waves;
    const std::vector<std::int16_t> samples(static_cast<std::size_t>(frames) * bankFrameBytes / 2);
    if (frames > 0) waves.setWave(0, synType == hypersawType, samples.data(), frames);
    OscillatorState state;
    OscillatorSetup setup;
    setup.synType = synType;
    prepareOscillator(state, setup, waves);
    return state.frameCount;
}

template <class Files>
json fileRows(const json& list, const Files& files) {
    return {{"rows", each(list, [&](std::size_t i) { return json{files[i].label, files[i].stem}; })}};
}

json kernelSelection(const Case& c) {
    const json& in = c.input;
    const std::string kind = c.name.substr(0, c.name.find('-'));
    if (kind == "select") return selectKernels(in);
    if (kind == "oscillatorModulated")
        return {{"modulated", each(in["rows"], [](const json& r) {
                     return oscillatorModulated(r[0], asFloat(r[1]), asFloat(r[2]), asFloat(r[3]), r[4] != 0);
                 })}};
    if (kind == "synced") return {{"synced", each(in["Sync"], [](float sync) { return syncedBy(sync) ? 1 : 0; })}};
    if (kind == "prepareAnalog") return {{"rows", each(in["AnaWave"], prepareAnalog)}};
    if (kind == "waveFiles") return fileRows(in["WTWave"], wtWaveFiles);
    if (kind == "superFiles") return fileRows(in["SSWave"], ssWaveFiles);
    return {{"frameCount", each(in.at("rows"), [](const json& r) { return preparedFrames(r[0], r[1]); })}};
}

json analogTuning(const Case& c) {
    const bool afterOther = c.name.find("afterOtherType") == 0;
    json rows = json::array();
    for (const json& start : c.input.at("congruence")) {
        LinearCongruence random{start};
        json tunings = json::array(), draws = json::array();
        double previous = 1.0;
        for (int oscillator = afterOther ? 1 : 0; oscillator < (afterOther ? 2 : 3); ++oscillator) {
            LinearCongruence before = random;
            previous = drawAnalogTuning(oscillator, previous, random);
            int count = 0;
            for (; before.state != random.state; before.next()) ++count;
            tunings.push_back(previous);
            draws.push_back(count);
        }
        json row = {{"tuning", tunings}, {"draws", draws}, {"congruence", random.state}};
        if (afterOther) {
            row["tuning"] = tunings[0];
            row["draws"] = draws[0];
        }
        rows.push_back(row);
    }
    return {{"rows", rows}};
}

Outcome tuningOutcome(const Case& c) {
    json expected = c.expected;
    for (json& row : expected["rows"]) row.erase("kind");
    Outcome outcome;
    const json got = analogTuning(c);
    for (std::size_t i = 0; i < expected["rows"].size(); ++i)
        compareInto(outcome, expected["rows"][i], got["rows"][i], c.tolerance, "row");
    return outcome;
}

// Brings numbers to the turn of the circle that lies nearest to what is expected.
json unwrapped(const json& expected, json got, const json& tolerance) {
    if (!tolerance.is_object() || !tolerance.contains("modulo")) return got;
    if (expected.is_array()) {
        for (std::size_t i = 0; i < expected.size(); ++i) got[i] = unwrapped(expected[i], got[i], tolerance);
        return got;
    }
    const double circle = tolerance["modulo"], value = got.get<double>();
    return value + circle * std::round((expected.get<double>() - value) / circle);
}

Outcome startPhases(const Case& c) {
    LinearCongruence random{c.input.at("congruence")};
    OscillatorState state;
    if (c.input.contains("Start")) {
        setFields(state, {{"subPhase", c.input.at("subPhase")}});
        setupFirstTickPhases(state, asFloat(c.input["Start"]), asFloat(c.input["Pw"]), c.input.at("SSWave"),
                             c.input.value("SynType", 1), c.input.value("sampleLength", 0u), random);
    } else {
        drawStartPhases(state, random);
    }
    json got = fieldsOf(state);
    got["congruence"] = random.state;
    for (const auto& [key, value] : c.expected.items()) got[key] = unwrapped(value, got.at(key), c.tolerance.value(key, json()));
    return compare(c.expected, got, c.tolerance);
}

int waveSample(const json& recipe, LinearCongruence& random, int i) {
    const std::string kind = recipe.at("kind");
    if (kind == "noise") return static_cast<std::int32_t>(random.next()) >> recipe.at("shift").get<int>();
    const int k = recipe.at("k");
    if (kind == "saw") return (2 * i - 2047) * k;
    if (kind == "sawDc") return (2 * i - 2047) * k + recipe.at("dc").get<int>();
    if (kind == "constant") return k;
    if (kind == "square") return i < 1024 ? k : -k;
    if (kind == "pulse") return i < recipe.at("width").get<int>() ? k : -(k >> 2);
    if (kind == "impulse") return i == recipe.at("at").get<int>() ? k : 0;
    if (kind == "parabola") {
        const int j = i & 1023, h = (j * (1024 - j)) >> 3;
        return ((i >= 1024 ? -h : h) * k) >> 8;
    }
    throw std::runtime_error("no wave kind " + kind);
}

std::unique_ptr<CustomWave> firstCycle(const json& recipe) {
    auto wave = std::make_unique<CustomWave>();
    LinearCongruence random{recipe.value("seed", 0u)};
    for (int i = 0; i < cycleSamples; ++i) wave->frame(0, 0)[i] = static_cast<std::int16_t>(waveSample(recipe, random, i));
    return wave;
}

json comparedWaves(const json& in) {
    return {{"copied", each(in.at("rows"), [&](const json& row) {
                 const auto a = firstCycle(in.at("wave")), b = firstCycle(in.at("wave"));
                 b->frame(0, 0)[row[0].get<int>()] += row[1].get<std::int16_t>();
                 return sameCycle(a->frame(0, 0), b->frame(0, 0));
             })}};
}

json meanAbs(const CustomWave& wave, int frame) {
    json means = json::array();
    for (int level = 1; level < mipLevels; ++level) {
        double sum = 0;
        for (int i = 0; i < cycleSamples; ++i) sum += std::abs(static_cast<int>(wave.frame(level, frame)[i]));
        means.push_back(sum / cycleSamples);
    }
    return means;
}

json customMips(const Case& c) {
    if (c.input.contains("rows")) return comparedWaves(c.input);
    const auto wave = firstCycle(c.input.at("wave"));
    const Flag cancel;
    makeCustomMips(*wave, cancel);
    json got = {{"all", 0}, {"meanAbs", json::object()}};
    for (const std::int16_t sample : wave->samples)
        if (sample != 0) got["all"] = sample;
    for (const auto& [key, value] : c.expected.items()) {
        if (key.find("frame") != 0) continue;
        const int frame = std::stoi(key.substr(5));
        const json& positions = c.input.at("positions");
        json levels = json::array();
        for (int level = 0; level < mipLevels; ++level) {
            json samples = json::array();
            for (int k = 0; k < positions.at("count"); ++k)
                samples.push_back(
                    wave->frame(level, frame)[(positions["from"].get<int>() + k * positions["stride"].get<int>()) & 2047]);
            levels.push_back(samples);
        }
        got[key] = levels;
        got["meanAbs"][key] = meanAbs(*wave, frame);
    }
    return got;
}

const Binding bindings[] = {
    {"oscillators", "basics", checkValues<basics>},          {"oscillators", "derived", checkValues<derived>},
    {"oscillators", "tone_stage", checkValues<tone>},        {"oscillators", "wave_store", checkValues<waveStore>},
    {"oscillators", "test_tables", checkValues<testTables>}, {"oscillators", "kernel_selection", checkValues<kernelSelection>},
    {"oscillators", "analog_tuning", tuningOutcome},         {"oscillators", "start_phases", startPhases},
    {"oscillators", "custom_mips", checkValues<customMips>},
};

}  // namespace
