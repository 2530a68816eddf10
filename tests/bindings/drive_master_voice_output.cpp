// A voice's output gains, its output stage, and the way from its oscillators to the stereo sum.
#include <algorithm>

#include "base/numbers.h"
#include "base/random.h"
#include "bindings/drive_master_signals.h"
#include "golden_runner/golden.h"
#include "sound/oscillator_control.h"
#include "voice/voice_bank.h"

namespace {

using namespace golden;
using namespace vantoric;

constexpr int voice = 5;  // any will do
constexpr LaneMask voiceMask = 1u << voice;
constexpr float clickAttack = 0.02f;
constexpr int transientAndBass = 10;  // the sound mode that runs every ramp

OutputLevels levelsOf(float e, const json& v) {
    return {.envelope = std::clamp(e, 0.0f, 1.0f),
            .layerVolume = asFloat(v.at("LayerVol")),
            .pan1 = asFloat(v.at("FilPan1")),
            .pan2 = asFloat(v.at("FilPan2")),
            .volume1 = asFloat(v.at("FilVol1")),
            .volume2 = asFloat(v.at("FilVol2")),
            .ringmod = asFloat(v.at("Ringmod"))};
}

void append(json& got, const OutputTargets& t) {
    const std::pair<const char*, double> named[] = {
        {"gainLeft1", t.left1}, {"gainLeft2", t.left2}, {"gainRight1", t.right1},      {"gainRight2", t.right2},
        {"gainRing", t.ring},   {"bassGain", t.bass},   {"transientGain", t.transient}};
    for (const auto& [name, value] : named) got[name].push_back(value);
}

json targets(const json& in) {
    json got;
    for (const json& row : in.at("rows")) {
        json values;
        for (std::size_t i = 0; i < row.size(); ++i) values[in.at("order")[i].get<std::string>()] = row[i];
        append(got, outputTargets(levelsOf(asFloat(values.at("e")), values)));
    }
    return got;
}

// c(x), as the right gain of filter 1 at levels of 1.
json panLaw(const json& in) {
    json c = json::array();
    for (const json& x : in.at("x")) {
        const OutputTargets t = outputTargets({1.0f, 1.0f, asFloat(x), 0.5f, 1.0f, 1.0f, 0.0f});
        c.push_back((t.right1 - 1e-6) / (1e-8 * 2097152000.0));
    }
    return {{"c", c}};
}

json ramps(const json& in) {
    const auto stage = std::make_unique<OutputStage>();
    const int length = in.at("tickLength");
    static LaneBuffer silence = {};
    float left[maxTickSamples], right[maxTickSamples];
    json got;
    stage->clearLevels(voice);
    bool first = true;
    for (const json& tick : in.at("ticks")) {
        stage->setMode(transientAndBass, 88200.0);
        stage->setTargets(voice, outputTargets(levelsOf(asFloat(tick.at("e")), tick)), length,
                          first && asFloat(in.at("AttVol")) < clickAttack);
        first = false;
        int done = 0;
        for (const json& after : in.at("after")) {
            stage->render(silence, silence, after.get<int>() - done, voiceMask, left, right);
            done = after;
            append(got, stage->gains(voice));
        }
        if (done < length) stage->render(silence, silence, length - done, voiceMask, left, right);
    }
    return got;
}

json gains(const Case& c) {
    if (c.input.contains("rows")) return targets(c.input);
    if (c.input.contains("x")) return panLaw(c.input);
    return ramps(c.input);
}

void place(const std::vector<float>& samples, int from, int count, float* lane) {
    for (int i = 0; i < count; ++i) lane[i * voiceCount] = samples[static_cast<std::size_t>(from + i)];
}

json stageRun(const json& in) {
    const double rate = in.at("internalRate");
    const int n = in.at("n"), length = in.at("tickLength");
    const std::vector<float> a = signalOf(in, "f1", n, rate), b = signalOf(in, "f2", n, rate);
    std::vector<float> left(n), right(n);
    const auto stage = std::make_unique<OutputStage>();
    static LaneBuffer f1 = {}, f2 = {};
    stage->clearLevels(voice);
    int done = 0;
    for (const json& e : in.at("e_per_tick")) {
        const int count = std::min(length, n - done);
        stage->setMode(in.at("SoundMod_index"), rate);
        stage->setTargets(voice, outputTargets(levelsOf(asFloat(e), in.at("values"))), length,
                          done == 0 && asFloat(in.at("AttVol")) < clickAttack);
        place(a, done, count, f1 + voice);
        place(b, done, count, f2 + voice);
        stage->render(f1, f2, count, voiceMask, left.data() + done, right.data() + done);
        done += count;
    }
    return listedPair(in, left, right);
}

int flooredThird(int v) { return v >= 0 ? v / 3 : (v - 2) / 3; }

json wholeRender(const json& in) {
    const int n = in.at("n");
    RandomSources random;
    const auto bank = std::make_unique<VoiceBank>(random);
    for (int k = 0; k < oscillatorCount; ++k) {
        LinearCongruence noise{in.at("seeds")[k].get<std::uint32_t>()};
        auto& buffer = bank->oscillators.buffer(voice, k);
        for (int i = 0; i < n; ++i)
            buffer[i] = static_cast<std::int16_t>(flooredThird(static_cast<std::int16_t>(noise.next() >> 16)));
        const json& tone = in.at("Timbre_and_d")[k];
        bank->oscillators.setTone(voice, k, toneCoefficient(tone[1]), toneGains(asFloat(tone[0])));
        const ToneRun run = bank->oscillators.toneRun(voice, k);
        toneStages({&run, 1}, n);
        const json& mix = in.at("Vol_FiltMix")[k];
        bank->oscillators.setMix(voice, k, mixGains(true, asFloat(mix[0]), asFloat(mix[1])));
    }
    bank->setAnalog(voice, in.at("analogMode"));
    bank->setSerial(voice, switchOn(asFloat(in.at("FilSerial"))));
    bank->output.setMode(in.at("SoundMod_index"), in.at("internalRate"));
    const json& values = in.at("values");
    bank->output.setTargets(voice, outputTargets(levelsOf(asFloat(values.at("e")), values)), in.at("tickLength"),
                            asFloat(in.at("AttVol")) < clickAttack);
    bank->mix(n, voiceMask);
    std::vector<float> left(n), right(n);
    bank->render(n, voiceMask, left.data(), right.data());
    return listedPair(in, left, right);
}

json output(const Case& c) { return c.input.contains("seeds") ? wholeRender(c.input) : stageRun(c.input); }

const Binding bindings[] = {
    {"drive_master", "voice_gains", checkValues<gains>},
    {"drive_master", "voice_output", checkValues<output>},
};

}  // namespace
