// Equalizer, sound modes, decimator and the choice of effects.
#include <algorithm>

#include "base/numbers.h"
#include "bindings/drive_master_signals.h"
#include "effects/equalizer.h"
#include "effects/multieffect.h"
#include "effects/sound_mode_stage.h"
#include "engine/decimator.h"
#include "engine/rates.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::listedPair;
using golden::signalOf;
using namespace vantoric;

json numbersOf(const BiquadCoefficients& c) { return {c.b0, c.b1, c.b2, c.feedback1, c.feedback2}; }

json equalizerCoefficients(const Case& c) {
    Equalizer equalizer;
    equalizer.setSampleRate(c.input.at("sr"));
    json out = {{"low", json::array()}, {"high", json::array()}, {"mid", json::array()}};
    if (c.input.contains("midGain")) {
        equalizer.setMidGain(asFloat(c.input["midGain"]));
        for (const json& f : c.input.at("midFrequency")) {
            equalizer.setMidFrequency(asFloat(f));
            out["mid"].push_back(numbersOf(equalizer.coefficients(Equalizer::mid)));
        }
        return out;
    }
    equalizer.setMidFrequency(asFloat(c.input.at("midFrequency")));
    for (const json& v : c.input.at("value")) {
        equalizer.setLowGain(asFloat(v));
        equalizer.setMidGain(asFloat(v));
        equalizer.setHighGain(asFloat(v));
        out["low"].push_back(numbersOf(equalizer.coefficients(Equalizer::low)));
        out["high"].push_back(numbersOf(equalizer.coefficients(Equalizer::high)));
        out["mid"].push_back(numbersOf(equalizer.coefficients(Equalizer::mid)));
    }
    return out;
}

// The low band has a tolerance of its own.
golden::Outcome checkEqualizerCoefficients(const Case& c) {
    json low = c.tolerance;
    if (c.tolerance.contains("low_abs")) low["abs"] = c.tolerance["low_abs"];
    return golden::compare(c.expected, equalizerCoefficients(c), {{"low", low}, {"mid", c.tolerance}, {"high", c.tolerance}});
}

json equalizerOutput(const Case& c) {
    const int count = c.input.at("n");
    const double rate = c.input.at("sr");
    auto left = signalOf(c.input, "left", count, rate), right = signalOf(c.input, "right", count, rate);
    Equalizer equalizer;
    equalizer.setSampleRate(rate);
    equalizer.setMidGain(asFloat(c.input.at("midGain")));
    equalizer.setMidFrequency(asFloat(c.input.at("midFrequency")));
    equalizer.setHighGain(asFloat(c.input.at("highGain")));
    json blocks = {{c.input.value("lowGain", 0.5), std::min(500, count)},
                   {c.input.value("lowGain", 0.5), std::max(0, count - 500)}};
    if (c.input.contains("blocks_lowGain_length")) blocks = c.input["blocks_lowGain_length"];
    int at = 0;
    for (const json& block : blocks) {
        const int length = block[1];
        equalizer.setLowGain(asFloat(block[0]));
        equalizer.process(left.data() + at, right.data() + at, length);
        at += length;
    }
    return listedPair(c.input, left, right);
}

json stageCoefficients(const Case& c) {
    SoundModeStage stage;
    stage.setSampleRate(c.input.at("sampleRate"));
    json rows = json::array();
    for (const json& index : c.input.at("index")) {
        const auto& f = stage.coefficients(index.get<int>() % SoundModeStage::designCount);
        rows.push_back({f.b0, f.b1, f.b2, f.a1, f.a2});
    }
    return {{"b0_b1_b2_a1_a2", rows}, {"hpCoefficient", stage.hpCoefficient()}};
}

json stageReset(const Case& c) {
    const double rate = c.input.at("sampleRate");
    const int before = c.input.at("n_before"), after = c.input.at("n_after");
    SoundModeStage stage;
    stage.setSampleRate(rate);
    stage.setMode(c.input.at("mode"));
    stage.setTargetGain(asFloat(c.input.at("gain")));
    stage.reset();
    stage.setTargetGain(asFloat(c.input.at("targetGain")));
    auto left = signalOf(c.input, "left", before, rate), right = signalOf(c.input, "right", before, rate);
    stage.process(left.data(), right.data(), before);
    stage.reset();
    left = signalOf(c.input, "left", after, rate);
    right = signalOf(c.input, "right", after, rate);
    stage.process(left.data(), right.data(), after);
    return listedPair(c.input, left, right);
}

json stageOutput(const Case& c) {
    if (c.input.contains("Volume")) {
        json gains = json::array();
        for (const json& volume : c.input["Volume"]) gains.push_back(SoundModeStage::gainOfVolume(asFloat(volume)));
        return {{"targetGain", gains}};
    }
    if (c.input.contains("n_before")) return stageReset(c);
    const double rate = c.input.at("sampleRate");
    const int count = c.input.at("n");
    auto left = signalOf(c.input, "left", count, rate), right = signalOf(c.input, "right", count, rate);
    SoundModeStage stage;
    stage.setSampleRate(rate);
    stage.setTargetGain(asFloat(c.input.at("gain")));
    stage.reset();
    const bool ownMode = c.input.contains("blocks_mode_targetGain_length");
    json after = json::array();
    int at = 0;
    for (const json& block : ownMode ? c.input["blocks_mode_targetGain_length"] : c.input.at("blocks_targetGain_length")) {
        const std::size_t k = ownMode ? 1 : 0;
        const int length = block[k + 1];
        stage.setMode(ownMode ? block[0].get<int>() : c.input.at("mode").get<int>());
        stage.setTargetGain(asFloat(block[k]));
        stage.process(left.data() + at, right.data() + at, length);
        after.push_back(stage.gain());
        at += length;
    }
    json out = listedPair(c.input, left, right);
    out["gain_after"] = after;
    return out;
}

json rates(const Case& c) {
    json out = {{"internalRate", json::array()}, {"oversampled", json::array()}, {"tickSamples", json::array()}};
    for (const json& host : c.input["hostRate"]) {
        const Rates r = ratesOf(asFloat(host));
        out["internalRate"].push_back(r.internalRate);
        out["oversampled"].push_back(r.oversampled);
        out["tickSamples"].push_back(r.tickSamples);
    }
    return out;
}

// Runs `left` and `right` in blocks; returns the host samples and the ring index after each block.
json decimate(Decimator& decimator, const json& input, std::vector<float> left, std::vector<float> right, const json& blocks) {
    std::vector<float> outLeft(left.size() / 2), outRight(left.size() / 2);
    json index = json::array();
    int at = 0;
    for (const json& block : blocks) {
        const int length = block;
        decimator.process(left.data() + at, right.data() + at, length, outLeft.data() + at / 2, outRight.data() + at / 2);
        index.push_back(decimator.ringIndex());
        at += length;
    }
    json out = listedPair(input, outLeft, outRight);
    out["index_low_bits"] = index;
    return out;
}

json decimatorOutput(const Case& c) {
    if (c.input.contains("hostRate")) return rates(c);
    const double rate = c.input.at("internal_rate");
    Decimator decimator;
    if (!c.input.contains("n_before")) {
        const int count = c.input.at("n");
        return decimate(decimator, c.input, signalOf(c.input, "left", count, rate), signalOf(c.input, "right", count, rate),
                        c.input.value("internal_blocks", json::array({count})));
    }
    const int before = c.input["n_before"], after = c.input.at("n_after");
    decimate(decimator, json::object(), signalOf(c.input, "left", before, rate), signalOf(c.input, "right", before, rate),
             json::array({before}));
    if (c.name.find("reset") != std::string::npos) decimator.reset();  // the other case, a suspend, leaves the rings
    const std::vector<float> silence(static_cast<std::size_t>(after), 0.0f);
    return decimate(decimator, c.input, silence, silence, json::array({after}));
}

json masterChain(const Case& c) {
    const int count = c.input.at("n_internal");
    const Rates r = ratesOf(asFloat(c.input.at("hostRate")));
    if (c.input.value("internalRate", r.internalRate) != r.internalRate) throw std::runtime_error("another internal rate");
    auto left = signalOf(c.input, "left", count, r.internalRate), right = signalOf(c.input, "right", count, r.internalRate);
    Equalizer equalizer;
    equalizer.setSampleRate(r.internalRate);
    equalizer.setLowGain(asFloat(c.input.at("EqLow")));
    equalizer.setMidGain(asFloat(c.input.at("EqMid")));
    equalizer.setHighGain(asFloat(c.input.at("EqHigh")));
    equalizer.process(left.data(), right.data(), count);
    RandomSources random;
    Multieffect master(random);
    master.setSampleRate(r.internalRate);
    master.setType(0);
    master.process(left.data(), right.data(), count);
    SoundModeStage stage;
    stage.setSampleRate(r.internalRate);
    stage.setMode(c.input.at("SoundMod_index"));
    stage.setTargetGain(SoundModeStage::gainOfVolume(asFloat(c.input.at("Volume"))));
    stage.reset();
    stage.process(left.data(), right.data(), count);
    if (r.oversampled) {
        Decimator decimator;
        decimator.process(left.data(), right.data(), count, left.data(), right.data());
    }
    return {{"left", golden::listed(c.input, "host_samples_at", left)},
            {"right", golden::listed(c.input, "host_samples_at", right)}};
}

json typesFromValues(const json& values) {
    json out = {{"list_index", json::array()}, {"insert_type", json::array()}, {"master_type", json::array()}};
    for (const json& value : values) {
        out["list_index"].push_back(listIndex(asFloat(value)));
        out["insert_type"].push_back(typeFromValue(asFloat(value)));
        out["master_type"].push_back(masterTypeFromValue(asFloat(value)));
    }
    return out;
}

json familiesOf(const Case& c) {
    json out = {{"family", json::array()}, {"variant", json::array()}};
    for (const json& type : c.input.at("type")) {
        const EffectType& row = effectType(type);
        out["family"].push_back(static_cast<int>(row.family));
        out["variant"].push_back(row.variant);
    }
    return out;
}

json insertValues(const Case& c) {
    json values = json::array();
    for (const json& row : c.input.at("base_and_voices")) {
        const float base = asFloat(row[0]);
        float lowest = base, highest = base;
        for (const json& voice : row[1]) {
            lowest = std::min(lowest, asFloat(voice));
            highest = std::max(highest, asFloat(voice));
        }
        values.push_back(extremeValue(base, lowest, highest));
    }
    return {{"value", values}};
}

json typeSequence(const Case& c) {
    RandomSources random;
    Multieffect slot(random);
    json types = json::array(), cleared = json::array();
    for (const json& type : c.input.at("setType")) {
        cleared.push_back(slot.setType(type));
        types.push_back(slot.type());
    }
    return {{"type", types}, {"clearState_ran", cleared}};
}

json slotTexts(const Case& c) {
    RandomSources random;
    Multieffect slot(random);
    json texts = json::array();
    char text[effectTextSize];
    if (c.input.contains("type")) {
        for (const json& type : c.input["type"]) {
            slot.setType(type);
            slot.getTypeName(text);
            texts.push_back(text);
        }
        return {{"name", texts}};
    }
    slot.setType(c.input.at("setType"));
    for (const json& row : c.input.at("index_value")) {
        slot.setParameter(row[0], asFloat(row[1]));
        slot.getParameterDisplay(row[0], text);
        texts.push_back(text);
    }
    return {{"text", texts}};
}

json passedAudio(const Case& c) {
    const int count = c.input.at("n");
    const double rate = c.input.at("sr");
    auto left = signalOf(c.input, "left", count, rate), right = signalOf(c.input, "right", count, rate);
    RandomSources random;
    Multieffect slot(random);
    slot.setSampleRate(static_cast<float>(rate));
    slot.setType(c.input.at("setType"));
    for (int index = 0; index < 5; ++index)
        slot.setParameter(index, asFloat(c.input.at("mix_and_parameters")[static_cast<std::size_t>(index)]));
    slot.process(left.data(), right.data(), count);
    return listedPair(c.input, left, right);
}

json heldToUnit(const Case& c) {
    json y = json::array();
    for (const json& x : c.input.at("x")) y.push_back(extremeValue(asFloat(x), asFloat(x), asFloat(x)));
    return {{"y", y}};
}

json slotFeed(const Case& c) {
    if (c.input.contains("value")) return typesFromValues(c.input["value"]);
    if (c.input.contains("base_and_voices")) return insertValues(c);
    if (c.input.contains("x")) return heldToUnit(c);
    if (c.expected.contains("family")) return familiesOf(c);
    if (c.expected.contains("clearState_ran")) return typeSequence(c);
    if (c.expected.contains("left")) return passedAudio(c);
    return slotTexts(c);
}

const golden::Binding bindings[] = {
    {"drive_master", "equalizer_coefficients", checkEqualizerCoefficients},
    {"drive_master", "equalizer_output", golden::checkValues<equalizerOutput>},
    {"drive_master", "stage_coefficients", golden::checkValues<stageCoefficients>},
    {"drive_master", "stage_output", golden::checkValues<stageOutput>},
    {"drive_master", "decimator", golden::checkValues<decimatorOutput>},
    {"drive_master", "master_chain", golden::checkValues<masterChain>},
    {"drive_master", "slot_feed", golden::checkValues<slotFeed>},
};

}  // namespace
