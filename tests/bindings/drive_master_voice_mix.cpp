// The tone stage and the mix of a voice.
#include "base/random.h"
#include "golden_runner/golden.h"
#include "sound/analog_clip.h"
#include "sound/oscillator_control.h"

namespace {

using namespace golden;
using namespace vantoric;
using Samples = std::vector<std::int16_t>;

Samples congruenceSamples(std::uint32_t seed, int count, double amplitude) {
    LinearCongruence random{seed};
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(static_cast<std::int16_t>(amplitude * static_cast<std::int16_t>(random.next() >> 16)));
    return samples;
}

json toneRun(const json& in) {
    Samples out = congruenceSamples(in.at("seed"), in.at("n"), in.at("amp"));
    std::int32_t state = in.at("toneState");
    toneStage(out.data(), static_cast<int>(out.size()), state, in.at("toneCoefficient"), {in.at("toneWet"), in.at("toneDry")});
    return {{"out", out}, {"toneState", state}};
}

json tone(const Case& c) {
    if (c.input.contains("seed")) return toneRun(c.input);
    json got = {{"toneCoefficient", json::array()},
                {"toneWet", json::array()},
                {"toneDry", json::array()},
                {"stage_runs", json::array()}};
    for (const json& d : c.input.value("d", json::array())) got["toneCoefficient"].push_back(toneCoefficient(d));
    for (const json& t : c.input.value("Timbre", json::array())) {
        const ToneGains gains = toneGains(asFloat(t));
        got["toneWet"].push_back(gains.wet);
        got["toneDry"].push_back(gains.dry);
        got["stage_runs"].push_back(gains.isHeard());
    }
    return got;
}

json mixed(const Samples (&b)[3], const json& toFilter) {
    const int n = static_cast<int>(b[0].size());
    MixSource voices[mixVoices];
    for (int k = 0; k < 3; ++k) {
        voices[0].buffers[k] = b[k].data();
        voices[0].gains[k] = {toFilter[k], toFilter[k]};
    }
    std::vector<float> f1(n * voiceCount), f2(n * voiceCount);
    mixToLanes(voices, n, f1.data(), f2.data());
    json f = json::array();
    for (int i = 0; i < n; ++i) f.push_back(f1[i * voiceCount]);
    return {{"f", f}, {"second", f2[0]}};
}

json mix(const Case& c) {
    const json& in = c.input;
    if (in.contains("Vol_FiltMix")) {
        json got = {{"toFilter1", json::array()}, {"toFilter2", json::array()}};
        for (const json& row : in["Vol_FiltMix"]) {
            const MixGains gains = mixGains(true, asFloat(row[0]), asFloat(row[1]));
            got["toFilter1"].push_back(gains.toFilter1);
            got["toFilter2"].push_back(gains.toFilter2);
        }
        return got;
    }
    if (in.contains("x")) {
        json y = json::array();
        for (const json& x : in["x"]) y.push_back(analogSoftClip(asFloat(x)));
        return {{"y", y}};
    }
    Samples b[3];
    for (int k = 0; k < 3; ++k) {
        if (in.contains("seeds"))
            b[k] = congruenceSamples(in["seeds"][k], in.at("n"), 1.0);
        else
            for (const json& row : in.at("samples")) b[k].push_back(row[k]);
    }
    return mixed(b, in.at("toFilter"));
}

const Binding bindings[] = {
    {"drive_master", "voice_tone", checkValues<tone>},
    {"drive_master", "voice_mix", checkValues<mix>},
};

}  // namespace
