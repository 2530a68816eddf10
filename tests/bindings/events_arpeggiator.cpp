#include <cstring>
#include <stdexcept>

#include "base/numbers.h"
#include "base/parameters.h"
#include "golden_runner/golden.h"
#include "parameters/label_lists.h"
#include "voice/arpeggiator.h"

namespace {

using golden::json;
using namespace vantoric;
namespace par = parameter;

constexpr int firstComparedTick = 3;

// Logs what the arpeggiator asks of its layer, from the first compared tick on.
struct Recorder final : ArpeggiatorTarget {
    void startNote(int note, int velocity) override { log({tick, "start", note, velocity}); }
    void releaseAllEnvelopes() override { log({tick, "release"}); }
    void stopNote(int note) override {
        stopRun = note == stopRun ? stopRun + 1 : note == 0 ? 1 : 0;
        log({tick, "stop", note}, true);
        if (stopRun == 128) mergeStops();
    }

    void log(json event, bool stop = false) {
        if (!stop) stopRun = 0;
        if (tick >= firstComparedTick) events.push_back(std::move(event));
    }
    // All keys stopped in order are one event.
    void mergeStops() {
        stopRun = 0;
        if (tick < firstComparedTick) return;
        events.erase(events.end() - 128, events.end());
        events.push_back({tick, "stopAll"});
    }

    int tick = 0;
    int stopRun = 0;  // the key that would continue a run of stops from key 0
    json events = json::array();
};

float labelValue(const LabelList& labels, const std::string& label) {
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (label == labels[i]) return listValue(static_cast<int>(i));
    throw std::runtime_error("unknown label " + label);
}

void setColumn(std::vector<float>& block, int first, const LabelList& labels, const json& column) {
    for (std::size_t i = 0; i < column.size(); ++i) block[static_cast<std::size_t>(first) + i] = labelValue(labels, column[i]);
}

void setParameters(std::vector<float>& block, const json& values) {
    const std::pair<const char*, int> lists[] = {
        {"ArpType", par::ArpType}, {"ArpSpeed", par::ArpSpeed}, {"ArpRetri", par::ArpRetri}, {"ArpChord", par::ArpChord}};
    for (const auto& [name, number] : lists)
        if (values.contains(name)) block[static_cast<std::size_t>(number)] = listValue(values[name].get<int>());
    if (values.contains("ArpSwing")) block[par::ArpSwing] = golden::asFloat(values["ArpSwing"]);
    if (values.contains("events")) setColumn(block, par::ArpVol1, arpStepVolumeLabels, values["events"]);
    if (values.contains("notes")) setColumn(block, par::ArpStp1, arpStepNoteLabels, values["notes"]);
}

// Entries of a script at a tick.
template <class Function>
void at(const json& input, const char* script, int tick, Function function) {
    if (!input.contains(script)) return;
    for (const json& entry : input[script])
        if (entry["tick"].get<int>() == tick) function(entry);
}

void sendMidi(Arpeggiator& arpeggiator, const json& message, const std::vector<float>& block, Recorder& target) {
    const int kind = message[0].get<int>() & 0xf0, key = message[1], velocity = message[2];
    if (kind == 0x90 && velocity > 0)
        arpeggiator.noteOn(key, velocity, block.data(), target);
    else
        arpeggiator.noteOff(key, block.data(), target);
}

double positionAt(const json& positions, int tick) {
    double position = 0;
    for (const json& entry : positions)
        if (entry[0].get<int>() <= tick)
            position = entry[1].get<double>() + (tick - entry[0].get<int>()) * entry[2].get<double>();
    return position;
}

json run(const golden::Case& c) {
    std::vector<float> block(layerParameterEnd);
    setParameters(block, c.input);
    setParameters(block, c.input["arpeggiator"]);
    EngineState engine;
    engine.ticksPerSecond = c.input["ticksPerSecond"];
    engine.tempoBpm = c.input["tempoBpm"];
    Recorder target;
    Arpeggiator arpeggiator;
    arpeggiator.reset(block.data());
    const int ticks = c.input["ticks"];
    const int stride = c.input.value("slideStride", 0);
    json slides = json::array();
    for (int tick = 0; tick < ticks; ++tick) {
        target.tick = tick;
        at(c.input, "changes", tick, [&](const json& entry) { setParameters(block, entry["set"]); });
        at(c.input, "keys", tick, [&](const json& entry) {
            for (const json& message : entry["midi"]) sendMidi(arpeggiator, message, block, target);
        });
        engine.songPosition = positionAt(c.input["songPosition"], tick);
        arpeggiator.tick(block.data(), engine, target);
        if (stride > 0 && tick >= firstComparedTick && tick % stride == 0) slides.push_back({tick, arpeggiator.slideFactor()});
    }
    return {{"events", target.events}, {"slideFactor", slides}};
}

// A case may list other outcomes that count as right.
golden::Outcome check(const golden::Case& c) {
    const json got = run(c);
    golden::Outcome outcome = golden::compare(c.expected, got, c.tolerance);
    if (outcome.passed || !c.whole.contains("alsoAccepted")) return outcome;
    for (const json& other : c.whole["alsoAccepted"]) {
        const golden::Outcome second = golden::compare(other, got, c.tolerance);
        if (second.passed) return second;
    }
    return outcome;
}

json chordRoots(const golden::Case& c) {
    json roots = json::array();
    for (const json& set : c.input["sets"]) {
        KeySet keys;
        for (const json& key : set) keys.add(key.get<int>());
        roots.push_back(chordRoot(keys));
    }
    return {{"roots", roots}};
}

const golden::Binding arpeggiators("events", "arp_*", check);
const golden::Binding roots("events", "chord_root*", golden::checkValues<chordRoots>);

}  // namespace
