#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "base/numbers.h"
#include "golden_runner/golden.h"
#include "voice/matrix.h"

namespace {

using golden::json;
using namespace vantoric;
namespace par = parameter;

using Block = std::array<float, layerParameterEnd>;

// A layer and a voice as the cases describe them.
struct Bench {
    Block layer{}, smoothed{}, mod{};
    ModBase base;
    std::uint64_t seen = 0;
    EngineState engine;
    std::array<Envelope, 4> envelopes;
    DecayGenerators decays;
    RandomSources random;
    std::array<double, 3> lfo{};
    float step = 0, impulse = 0, randomValue = 0, flipFlop = 0, voiceNumber = 0;
    int note = 60, velocity = 0, limit = 1;

    Bench() {
        for (int i = 0; i < 16; ++i) layer[par::MatVal1 + i] = 0.5f;
    }

    // The numbers that the cases take the unlisted parameters from.
    void fillParameters() {
        for (int n = globalParameterCount; n < par::MatSrc1; ++n) {
            layer[n] = static_cast<float>((37 * n) % 101) / 101.0f;
            smoothed[n] = static_cast<float>((53 * n) % 97) / 97.0f;
        }
    }

    void override(const json& input) {
        for (const auto& [name, block] : {std::pair{"layer", &layer}, std::pair{"smoothed", &smoothed}})
            if (input.contains(name))
                for (const json& entry : input[name]) (*block)[entry[0].get<std::size_t>()] = golden::asFloat(entry[1]);
    }

    void setSlot(int slot, int source, int destination, float amount) {
        layer[par::MatSrc1 + slot - 1] = listValue(source);
        layer[par::MatDst1 + slot - 1] = listValue(destination);
        layer[par::MatVal1 + slot - 1] = amount;
    }

    void setSources(const json& s) {
        for (std::size_t i = 0; i < 3; ++i) lfo[i] = s["lfo"][i];
        for (std::size_t i = 0; i < 4; ++i) envelopes[i].level = golden::asFloat(s["env"][i]);
        step = golden::asFloat(s["step"]);
        impulse = golden::asFloat(s["impulse"]);
        randomValue = golden::asFloat(s["randomValue"]);
        flipFlop = golden::asFloat(s["flipFlop"]);
        voiceNumber = golden::asFloat(s["voiceNumber"]);
        note = s["note"];
        velocity = s["velocity"];
        decays = {golden::asFloat(s["decayA"]), golden::asFloat(s["decayB"]), golden::asFloat(s["decayC"]),
                  golden::asFloat(s["decayD"])};
        engine.modwheelSmoothed = golden::asFloat(s["modwheel"]);
        engine.pitchWheelSmoothed = golden::asFloat(s["pitchWheel"]);
        engine.channelPressureSmoothed = golden::asFloat(s["channelPressure"]);
        for (const json& cc : s["cc"]) engine.ccValue[cc[0].get<std::size_t>()] = golden::asFloat(cc[1]);
        engine.songPosition = s["songPosition"];
        engine.tempoBpm = s["tempoBpm"];
        random.congruence.state = s["globalRandomState"];
        holdKeys(s["numKeys"]);
    }

    // Presses keys under a limit so that their quotient is the given one.
    void holdKeys(double quotient) {
        for (limit = 1; limit <= 128; ++limit) {
            const int keys = static_cast<int>(std::lround(quotient * limit));
            if (keys > 128 || std::fabs(static_cast<double>(keys) / limit - quotient) > 1e-6) continue;
            std::fill_n(engine.heldNote.begin(), keys, std::uint8_t{1});
            return;
        }
        throw std::runtime_error("no whole keys give this quotient");
    }

    const Block& run() {
        MatrixSlots slots;
        slots.compile(layer.data(), engine);
        base.prepare(layer.data(), smoothed.data());
        auto stepValue = [this] { return step; };
        const MatrixInputs inputs{lfo,      stepValue, envelopes, decays,      impulse, randomValue,
                                  flipFlop, note,      velocity,  voiceNumber, limit,   random};
        runMatrix(slots, base, inputs, mod.data(), seen);
        return mod;
    }

    // What stands in `mod` without any slot.
    float resting(int n) const { return base.values()[static_cast<std::size_t>(n)]; }
};

golden::Outcome matrix(const golden::Case& c) {
    Bench bench;
    bench.fillParameters();
    bench.override(c.input);
    for (const json& slot : c.input["slots"]) bench.setSlot(slot[0], slot[1], slot[2], golden::asFloat(slot[3]));
    bench.setSources(c.input["sources"]);
    const Block& mod = bench.run();

    json got = {{"mod", json::array()}, {"envAfter", json::array()}};
    std::vector<bool> listed(layerParameterEnd);
    for (const json& number : c.input.value("show", json::array()))
        if (std::none_of(c.expected["mod"].begin(), c.expected["mod"].end(), [&](const json& row) { return row[0] == number; }))
            throw std::runtime_error("number " + number.dump() + " is not shown");
    for (const json& entry : c.expected["mod"]) {
        const auto n = entry[0].get<std::size_t>();
        got["mod"].push_back({n, mod[n]});
        listed[n] = true;
    }
    for (const Envelope& envelope : bench.envelopes) got["envAfter"].push_back(envelope.level);
    golden::Outcome outcome = golden::compare(c.expected, got, c.tolerance);
    for (int n = globalParameterCount; n < layerParameterEnd - 1; ++n)
        if (!listed[static_cast<std::size_t>(n)] && mod[static_cast<std::size_t>(n)] != bench.resting(n))
            outcome.fail("number " + std::to_string(n) + " moved");
    return outcome;
}

json matrixSources(const golden::Case& c) {
    json values = json::array();
    for (const json& source : c.input["sourceIndex"]) {
        Bench bench;
        bench.fillParameters();
        bench.override(c.input);
        bench.setSlot(c.input["slot"], source, c.input["dst"], golden::asFloat(c.input["val"]));
        bench.setSources(c.input["sources"]);
        values.push_back(bench.run()[c.input["read"].get<std::size_t>()]);
    }
    return {{"mod", values}};
}

json matrixDestinations(const golden::Case& c) {
    constexpr int sourceStatic = 12;
    json numbers = json::array(), values = json::array();
    for (const json& destination : c.input["destinationIndex"]) {
        Bench bench;
        bench.fillParameters();
        bench.override(c.input);
        bench.setSlot(c.input["slot"], sourceStatic, destination, golden::asFloat(c.input["val"]));
        const Block& mod = bench.run();
        int number = 0;
        for (int n = globalParameterCount; n < layerParameterEnd; ++n)
            if (mod[static_cast<std::size_t>(n)] != bench.resting(n)) number = number == 0 ? n : -1;
        numbers.push_back(number);
        values.push_back(number > 0 ? mod[static_cast<std::size_t>(number)] : 0.0f);
    }
    return {{"number", numbers}, {"mod", values}};
}

// Reads sources one by one through slot 1 at full amount into a parameter that rests at 0.
float readSource(Bench& bench, int index) {
    constexpr int destinationCutoff2 = 33;
    bench.setSlot(1, index, destinationCutoff2, 1.0f);
    return bench.run()[par::Cutoff1 + 1];
}

json keySat(const golden::Case& c) {
    json values = json::array();
    Bench bench;
    for (const json& note : c.input["note"]) {
        bench.note = note;
        values.push_back(readSource(bench, 22));
    }
    return {{"value", values}};
}

json sineSources(const golden::Case& c) {
    json rows = json::array();
    for (const json& row : c.input["rows"]) {
        Bench bench;
        bench.engine.songPosition = row[0];
        bench.engine.tempoBpm = row[1];
        json values = json::array();
        for (int index = 54; index <= 70; ++index) values.push_back(readSource(bench, index));
        rows.push_back(values);
    }
    return {{"value", rows}};
}

json decay(const golden::Case& c) {
    json rows = json::array();
    Bench bench;
    bench.decays.restart();
    int tick = 0;
    for (const json& at : c.input["at"]) {
        for (; tick < at.get<int>(); ++tick) bench.decays.step();
        json values = json::array();
        for (int index = 37; index <= 48; ++index) values.push_back(readSource(bench, index));
        rows.push_back(values);
    }
    return {{"value", rows}};
}

golden::Outcome byKind(const golden::Case& c) {
    const std::string kind = c.name.substr(0, c.name.find('/'));
    if (kind == "matrix") return matrix(c);
    if (kind == "matrixDestinations") return golden::checkValues<matrixDestinations>(c);
    if (kind == "matrixSources") return golden::checkValues<matrixSources>(c);
    if (kind == "keySat") return golden::checkValues<keySat>(c);
    if (kind == "sineSources") return golden::checkValues<sineSources>(c);
    if (kind == "decay") return golden::checkValues<decay>(c);
    golden::Outcome outcome;
    outcome.fail("unknown kind " + kind);
    return outcome;
}

const golden::Binding binding("modulation", "matrix*", byKind);

}  // namespace
