// The voices' distortions.
#include <algorithm>
#include <memory>
#include <stdexcept>

#include "bindings/drive_master_signals.h"
#include "effects/distortion_bank.h"
#include "parameters/label_lists.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using golden::listed;
using golden::signalOf;
using namespace vantoric;

// One voice of a bank, fed in stretches of a tick.
struct OneVoice {
    static constexpr int voice = 5;
    static constexpr int longest = 88;
    RandomSources random;
    DistortionBank bank{random};
    LaneBuffer buffer{};

    void run(float* samples, int count) {
        for (int at = 0; at < count; at += longest) {
            const int part = std::min(longest, count - at);
            for (int i = 0; i < part; ++i) buffer[i * voiceCount + voice] = samples[at + i];
            bank.run(buffer, part, 1 << voice);
            for (int i = 0; i < part; ++i) samples[at + i] = buffer[i * voiceCount + voice];
        }
    }
};

json statistics(const std::vector<float>& out) {
    double sum = 0.0, squares = 0.0;
    for (const float y : out) sum += y;
    const double mean = sum / static_cast<double>(out.size());
    for (const float y : out) squares += (y - mean) * (y - mean);
    return {{"mean", mean}, {"rms", std::sqrt(squares / static_cast<double>(out.size()))}};
}

json holdLengths(const json& pairs) {
    json lengths = json::array();
    for (const json& pair : pairs)
        lengths.push_back(static_cast<int>(distortion::holdLength(asFloat(pair[1]), asFloat(pair[0]))));
    return {{"N", lengths}};
}

json variants(const json& input) {
    json out = json::array();
    for (const json& index : input["index"]) out.push_back(distortionVariant(index));
    if (input.contains("label"))
        for (std::size_t i = 0; i < input["label"].size(); ++i)
            if (input["label"][i] != distortionTypeLabels[input["index"][i].get<std::size_t>()])
                throw std::runtime_error("another label at " + std::to_string(i));
    return {{"variant", out}};
}

// The variant of the type, or those of the two types, that a case names.
void requireVariant(const json& input) {
    if (!input.contains("variant")) return;
    const json types = input["DisType"].is_array() ? input["DisType"] : json::array({input["DisType"]});
    const json given = input["variant"].is_array() ? input["variant"] : json::array({input["variant"]});
    for (std::size_t i = 0; i < given.size(); ++i)
        if (given[i] != distortionVariant(types.at(i))) throw std::runtime_error("another variant");
}

// [type, drive, samples] of each stretch of a case.
json stretches(const json& input) {
    const int count = input.at("n");
    const json& type = input.at("DisType");
    json out = json::array();
    if (input.contains("blocks_drive_length")) {
        for (const json& block : input["blocks_drive_length"]) out.push_back({type, block[0], block[1]});
    } else if (type.is_array()) {
        out.push_back({type[0], input.at("Drive"), 64});
        out.push_back({type[1], input.at("Drive"), count - 64});
    } else {
        out.push_back({type, input.at("Drive"), count});
    }
    return out;
}

json distort(const Case& c) {
    if (c.input.contains("sampleRate_Drive")) return holdLengths(c.input["sampleRate_Drive"]);
    if (c.input.contains("index")) return variants(c.input);
    requireVariant(c.input);
    const int count = c.input.at("n");
    const double rate = c.input.at("sampleRate");
    std::vector<float> samples = signalOf(c.input, "signal", count, rate);
    auto one = std::make_unique<OneVoice>();
    one->random.congruence.state = c.input.value("random_state", 1u);
    one->bank.setSampleRate(static_cast<float>(rate));
    int at = 0;
    for (const json& stretch : stretches(c.input)) {
        one->bank.setType(OneVoice::voice, stretch[0]);
        one->bank.setDrive(OneVoice::voice, asFloat(stretch[1]));
        const int length = std::min(stretch[2].get<int>(), count - at);
        one->run(samples.data() + at, length);
        at += length;
    }
    if (c.expected.contains("mean")) return statistics(samples);
    json out = {{"out", listed(c.input, "out_at", samples)}};
    if (c.expected.contains("N"))
        out["N"] = static_cast<int>(distortion::holdLength(asFloat(c.input.at("Drive")), static_cast<float>(rate)));
    return out;
}

const golden::Binding binding("drive_master", "voice_distortion*", golden::checkValues<distort>);

}  // namespace
