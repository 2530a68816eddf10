// MIDI on its way in, the pitch wheel and the controller map's file.
#include <algorithm>
#include <set>

#include "base/numbers.h"
#include "engine/controller_map.h"
#include "golden_runner/digest.h"
#include "golden_runner/golden.h"
#include "tests/patch/patch_bench.h"

namespace {

using golden::Case;
using golden::json;
using vantoric::ControllerMap;
using vantoric::PatchBench;

// Runs one operation; what is sent to layers collects in the bench's calls.
void operate(PatchBench& bench, const json& operation) {
    if (operation.contains("drain")) bench.intake.drainMidiQueue(operation["drain"]);
    if (operation.contains("setLearnPending")) bench.intake.setLearnPending(operation["setLearnPending"]);
    if (operation.contains("engineLocked")) {
        if (operation["engineLocked"] == json(true) || operation["engineLocked"] == json(1)) {
            bench.state.flags.engineLocked.set();
        } else {
            bench.state.flags.engineLocked.clear();
        }
    }
    if (!operation.contains("processEvents")) return;
    const json& events = operation["processEvents"];
    if (events.is_array()) {
        for (const json& e : events) bench.receive(e[0], e[1], e[2], e[3]);
        return;
    }
    const int count = events.at("count"), firstKey = events.at("firstKey");
    for (int k = 0; k < count; ++k) {
        const int data2 = events.value("data2", 1 + k % 127);
        bench.receive(events.at("status"), static_cast<std::uint8_t>((firstKey + k) % 128), static_cast<std::uint8_t>(data2),
                      events.at("offset"));
    }
}

json queueOf(const PatchBench& bench, bool onlySome) {
    json rows = json::array();
    for (int place = 0; place < vantoric::MidiIntake::queuePlaces; ++place) {
        if (onlySome && place > 1 && place != 255) continue;
        const vantoric::MidiMessage m = bench.intake.queued(place);
        if (m.status != 0) rows.push_back({place, m.status, m.data1, m.data2, m.offset});
    }
    return rows;
}

json callsOf(const PatchBench& bench) {
    json rows = json::array();
    for (const PatchBench::Call& call : bench.calls) {
        if (call.layer < 0)
            rows.push_back({call.what});
        else
            rows.push_back({call.layer, call.what, call.key, call.velocity});
    }
    return rows;
}

json fieldsOf(const PatchBench& bench, const json& parameterRows, bool someOfQueue) {
    json held = json::array(), sustained = json::array(), values = json::array(), map = json::array(), parameters = json::array();
    for (int k = 0; k < 128; ++k) {
        if (bench.state.heldNote[k] != 0) held.push_back(k);
        if (bench.intake.sustainedOff(k)) sustained.push_back(k);
        if (bench.state.ccValue[k] != 0.0f) values.push_back({k, bench.state.ccValue[k]});
        if (bench.ccMap.get(k) != ControllerMap::none) map.push_back({k, bench.ccMap.get(k)});
    }
    for (const json& row : parameterRows) parameters.push_back({row[0], bench.parameters.getParameter(row[0])});
    return {{"queue", queueOf(bench, someOfQueue)},
            {"heldNote", held},
            {"sustainedOff", sustained},
            {"sustainOn", bench.intake.sustainOn()},
            {"pitchWheel", bench.intake.pitchWheel()},
            {"pitchBendFactor", bench.state.pitchBendFactor},
            {"channelPressure", bench.intake.channelPressure()},
            {"ccValue", values},
            {"ccMap", map},
            {"learnPending", bench.intake.learnPending()},
            {"parameters", parameters},
            {"calls", callsOf(bench)}};
}

// Cases that fill the queue by count list three of its places only.
bool listsSomePlaces(const Case& c) {
    bool counted = false;
    for (const json& operation : c.input.at("operations")) {
        counted = counted || (operation.contains("processEvents") && operation["processEvents"].is_object());
    }
    for (const json& after : c.expected.at("after")) {
        for (const json& row : after.value("queue", json::array())) counted = counted && (row[0] <= 1 || row[0] == 255);
    }
    return counted;
}

// A field that is not given must be as it was.
golden::Outcome checkEvents(const Case& c) {
    PatchBench bench;
    for (const json& row : c.input.value("parameters", json::array()))
        bench.parameters.setParameter(row[0], golden::asFloat(row[1]));
    bench.resetEngine();
    const bool someOfQueue = listsSomePlaces(c);
    json expected = json::array(), got = json::array(), standing = json::object();
    const json& after = c.expected.at("after");
    for (std::size_t k = 0; k < after.size(); ++k) {
        bench.calls.clear();
        operate(bench, c.input.at("operations").at(k));
        standing["calls"] = json::array();
        standing.update(after[k]);
        expected.push_back(standing);
        got.push_back(fieldsOf(bench, standing.value("parameters", json::array()), someOfQueue));
    }
    return golden::compare(expected, got, c.tolerance);
}

// The wheel through the queue, as the instrument gets it.
void turnWheel(PatchBench& bench, int lsb, int msb) {
    bench.play(0xe0, static_cast<std::uint8_t>(lsb), static_cast<std::uint8_t>(msb));
}

json runWheelRows(const Case& c) {
    PatchBench bench;
    bench.parameters.setParameter(vantoric::parameter::PitchWhl, golden::asFloat(c.input.at("PitchWhl")));
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        turnWheel(bench, row[0], row[1]);
        rows.push_back({row[0], row[1], bench.intake.pitchWheel(), bench.state.pitchBendFactor});
    }
    return {{"rows", rows}};
}

json runWheelEvents(const Case& c) {
    json positions = json::array(), factors = json::array();
    for (const json& event : c.input.at("events")) {
        PatchBench bench;
        bench.parameters.writeRaw(vantoric::parameter::PitchWhl, vantoric::listValue(event[2]));
        turnWheel(bench, event[0], event[1]);
        positions.push_back(bench.intake.pitchWheel());
        factors.push_back(bench.state.pitchBendFactor);
    }
    return {{"w", positions}, {"pitchBendFactor", factors}};
}

json runMapFile(const Case& c) {
    ControllerMap map;
    for (const json& row : c.input.at("ccMap")) map.set(row[0], row[1]);
    const auto bytes = map.encode();
    ControllerMap again;
    again.decode(bytes);
    for (int controller = 0; controller < 128; ++controller) {
        if (again.get(controller) != map.get(controller)) return {{"bytes", "do not come back"}};
    }
    const std::span<const std::uint8_t> entries(bytes.data(), 256);
    return {{"bytes", golden::base64(entries)}, {"sha256", golden::sha256(entries)}, {"fileSize", bytes.size()}};
}

const golden::Binding b1("events", "midi_events", checkEvents);
const golden::Binding b2("events", "pitch_wheel", golden::checkValues<runWheelRows>);
const golden::Binding b3("modulation", "pitch_wheel", golden::checkValues<runWheelEvents>);
const golden::Binding b4("events", "controller_map_file", golden::checkValues<runMapFile>);

}  // namespace
