// The dynamics and placing effects, and the vocoders.
#include <algorithm>

#include "bindings/drive_master_signals.h"
#include "effects/stereo.h"
#include "effects/vocoder_core.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::listedPair;
using golden::signalOf;
using namespace vantoric;

constexpr int defaultBlock = 100;

template <class Effect>
void feed(Effect& effect, const json& input) {
    effect.setSampleRate(input.value("sr", 88200.0f));
    effect.setVariant(input.at("variant"));
    if (input.contains("m_p1_p2_p3_p4"))
        for (int index = 0; index < 5; ++index)
            effect.setParameter(index, asFloat(input["m_p1_p2_p3_p4"][static_cast<std::size_t>(index)]));
    constexpr const char* names[] = {"m", "p1", "p2", "p3", "p4"};
    for (int index = 0; index < 5; ++index)
        if (input.contains(names[index])) effect.setParameter(index, asFloat(input[names[index]]));
    effect.reset();
}

struct Sound {
    std::vector<float> left, right;

    Sound(const json& input, int count, double rate)
        : left(signalOf(input, "left", count, rate)), right(signalOf(input, "right", count, rate)) {}
    int size() const { return static_cast<int>(left.size()); }
    template <class Effect>
    void pass(Effect& effect, int from, int to) {
        effect.process(left.data() + from, right.data() + from, to - from);
    }
};

// Blocks that end at the samples after which the case looks at the envelopes, and every hundred.
json compressed(const Case& c) {
    const json& input = c.input;
    Stereo stereo;
    feed(stereo, input);
    Sound sound(input, input.at("n"), input.at("sr"));
    const std::vector<int> looks = input.value("envelope_after", std::vector<int>{});
    json envelopeLeft = json::array(), envelopeRight = json::array();
    std::size_t next = 0;
    for (int at = 0, end; at < sound.size(); at = end) {
        end = std::min(at + defaultBlock, sound.size());
        if (next < looks.size()) end = std::min(end, looks[next]);
        sound.pass(stereo, at, end);
        if (next < looks.size() && end == looks[next]) {
            envelopeLeft.push_back(stereo.envelopeLeft());
            envelopeRight.push_back(stereo.envelopeRight());
            ++next;
        }
    }
    json out = listedPair(input, sound.left, sound.right);
    out["envelopeLeft"] = envelopeLeft;
    out["envelopeRight"] = envelopeRight;
    return out;
}

// Rows of mix and parameter 1, a single sample each.
json placedRows(const json& input) {
    Stereo stereo;
    feed(stereo, input);
    json lefts = json::array(), rights = json::array();
    for (const json& row : input.at("m_p1")) {
        stereo.setParameter(0, asFloat(row[0]));
        stereo.setParameter(1, asFloat(row[1]));
        float left = asFloat(input.at("left")), right = asFloat(input.at("right"));
        stereo.process(&left, &right, 1);
        lefts.push_back(left);
        rights.push_back(right);
    }
    return {{"left", lefts}, {"right", rights}};
}

json placed(const Case& c) {
    if (c.input.contains("m_p1")) return placedRows(c.input);
    Stereo stereo;
    feed(stereo, c.input);
    Sound sound(c.input, c.input.at("n"), c.input.at("sr"));
    for (int at = 0; at < sound.size(); at += defaultBlock) sound.pass(stereo, at, std::min(at + defaultBlock, sound.size()));
    return listedPair(c.input, sound.left, sound.right);
}

// The gate settled at song positions that stand still.
json settledGate(const Case& c) {
    Stereo stereo;
    feed(stereo, c.input);
    json steps = json::array(), lefts = json::array(), rights = json::array();
    for (const json& position : c.input.at("songPosition")) {
        stereo.reset();
        stereo.setTempo(position.get<double>(), 120.0);
        std::vector<float> left(c.input.at("n").get<std::size_t>(), 1.0f), right = left;
        stereo.process(left.data(), right.data(), static_cast<int>(left.size()));
        steps.push_back(stereo.gateStep());
        lefts.push_back(left.back());
        rights.push_back(right.back());
    }
    return {{"step", steps}, {"left", lefts}, {"right", rights}};
}

// Calls of a tick's length while the song moves; the steps belong to the calls that out_at falls into.
json runningGate(const Case& c) {
    const json& input = c.input;
    Stereo stereo;
    feed(stereo, input);
    const int length = input.at("tickSamples"), calls = input.at("calls");
    std::vector<float> left(static_cast<std::size_t>(length * calls), 0.5f), right(left.size(), -0.25f);
    std::vector<int> steps;
    for (int call = 0; call < calls; ++call) {
        const double position = input.at("start").get<double>() + call * input.at("increment").get<double>();
        stereo.setTempo(position, input.at("tempo"));
        steps.push_back(stereo.gateStep());
        stereo.process(left.data() + call * length, right.data() + call * length, length);
    }
    json out = listedPair(input, left, right);
    out["step_of_calls"] = json::array();
    for (const json& at : input.at("out_at"))
        out["step_of_calls"].push_back(steps.at(at.get<std::size_t>() / static_cast<std::size_t>(length)));
    return out;
}

json row(const VocoderCore::Coefficients& c) { return {c.b0, c.b1, c.b2, c.a1, c.a2}; }

json vocoderCoefficients(const Case& c) {
    VocoderCore vocoder;
    feed(vocoder, c.input);
    json analysis = json::array(), synthesis = json::array(), gains = json::array();
    for (int band = 0; band < vocoder.bands(); ++band) {
        analysis.push_back(row(vocoder.analysis(band)));
        synthesis.push_back(row(vocoder.synthesis(band)));
        gains.push_back(vocoder.bandGain(band));
    }
    return {{"analysis_b0_b1_b2_a1_a2", analysis}, {"synthesis_b0_b1_b2_a1_a2", synthesis}, {"band_gain", gains}};
}

golden::Outcome vocoded(const Case& c) {
    VocoderCore vocoder;
    feed(vocoder, c.input);
    Sound sound(c.input, c.input.at("n"), c.input.at("sr"));
    const int block = c.input.value("block", defaultBlock);
    for (int at = 0; at < sound.size(); at += block) sound.pass(vocoder, at, std::min(at + block, sound.size()));
    json expected = c.expected;
    golden::Outcome outcome;
    if (expected.contains("e3")) {
        json followers = json::array();
        for (int band = 0; band < vocoder.bands(); ++band) followers.push_back(vocoder.follower(band));
        const json allowed = {{"abs", c.tolerance.at("e3_abs")}, {"rel", c.tolerance.value("rel", 0.0)}};
        golden::compareInto(outcome, expected["e3"], followers, allowed, "e3");
        expected.erase("e3");
    }
    golden::compareInto(outcome, expected, listedPair(c.input, sound.left, sound.right), c.tolerance, "");
    return outcome;
}

const golden::Binding bindings[] = {
    {"drive_master", "stereo_compressor", golden::checkValues<compressed>},
    {"drive_master", "stereo_surround_width", golden::checkValues<placed>},
    {"drive_master", "stereo_trancegate", golden::checkValues<runningGate>},
    {"drive_master", "stereo_trancegate_patterns", golden::checkValues<settledGate>},
    {"drive_master", "vocoder_coefficients", golden::checkValues<vocoderCoefficients>},
    {"drive_master", "vocoder_output", vocoded},
    {"drive_master", "vocoder_edges", vocoded},
};

}  // namespace
