#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "golden_runner/golden.h"
#include "voice/lfo.h"
#include "voice/step_lfo.h"

namespace {

using golden::json;
using namespace vantoric;

bool startsWith(const std::string& text, const char* head) { return text.rfind(head, 0) == 0; }

Lfo::Start lfoStart(const json& j, double tickRate) {
    Lfo::Start start;
    start.wave = j["wave"].get<int>();
    start.speed = static_cast<double>(golden::asFloat(j["speed"]));
    start.startPhase = golden::asFloat(j["startPhase"]);
    start.note = j["note"].get<int>();
    start.fade = golden::asFloat(j["fade"]);
    start.tempo = j["tempo"].get<double>();
    start.songPosition = j["songPosition"].get<double>();
    start.tickRate = tickRate;
    return start;
}

json lfoScript(const golden::Case& c) {
    Lfo lfo;
    json outputs = json::array(), phases = json::array(), triggers = json::array();
    const json& at = c.input["at"];
    std::size_t next = 0;
    int tick = 0;
    for (const json& line : c.input["script"]) {
        const std::string what = line[0].get<std::string>();
        const json& value = line[1];
        if (what == "trigger") {
            lfo.trigger(lfoStart(value, value["tickRate"].get<double>()), value["freeRunning"].get<int>() != 0,
                        value["tempoSynced"].get<int>() != 0, value["keyAmount"].get<double>());
            triggers.push_back({lfo.output, lfo.phase, lfo.rate});
        } else if (what == "setSpeed") {
            lfo.setSpeed(static_cast<double>(golden::asFloat(value)));
        } else if (what == "step") {
            for (int i = 0; i < value.get<int>(); ++i, ++tick) {
                lfo.step();
                if (next == at.size() || at[next].get<int>() != tick) continue;
                outputs.push_back(lfo.output);
                phases.push_back(lfo.phase);
                ++next;
            }
        } else {
            throw std::runtime_error("unknown script line " + what);
        }
    }
    return {{"output", outputs}, {"phase", phases}, {"afterTrigger", triggers}, {"endSeed", lfo.seed.state}};
}

json lfoMono(const golden::Case& c) {
    const double tickRate = c.input["tickRate"].get<double>();
    const json &a = c.input["A"], &b = c.input["B"];
    Lfo first, second;
    first.noteOn(a["mode"].get<int>(), lfoStart(a, tickRate), 1, nullptr);
    for (int i = 0; i < c.input["ticksBefore"].get<int>(); ++i) first.step();
    second.noteOn(b["mode"].get<int>(), lfoStart(b, tickRate), c.input["activeVoices"].get<int>(),
                  c.input["oldestFound"].get<bool>() ? &first : nullptr);
    json firsts = json::array(), seconds = json::array();
    const json& at = c.input["at"];
    std::size_t next = 0;
    for (int tick = 0; tick < c.input["ticks"].get<int>(); ++tick) {
        first.step();
        second.step();
        if (next == at.size() || at[next].get<int>() != tick) continue;
        firsts.push_back(first.output);
        seconds.push_back(second.output);
        ++next;
    }
    return {{"A", firsts}, {"B", seconds}};
}

json lfoRates(const golden::Case& c) {
    json triggered = json::array(), keys = json::array(), changed = json::array();
    for (const json& row : c.input["rows"]) {
        Lfo::Start start;
        start.wave = 2;
        start.note = row[1].get<int>();
        start.speed = static_cast<double>(golden::asFloat(row[2]));
        start.tempo = row[4].get<double>();
        start.tickRate = row[5].get<double>();
        Lfo lfo;
        lfo.noteOn(row[0].get<int>(), start, 1, nullptr);
        triggered.push_back(lfo.rate);
        keys.push_back(lfo.keyRate);
        lfo.setSpeed(static_cast<double>(golden::asFloat(row[3])));
        changed.push_back(lfo.rate);
    }
    return {{"rateAfterTrigger", triggered}, {"keyRate", keys}, {"rateAfterSetSpeed", changed}};
}

json lfoTableEntries(const golden::Case& c) {
    json sine = json::array(), triangle = json::array();
    for (const json& index : c.input["index"]) {
        sine.push_back(lfoTables().sine.at(index.get<std::size_t>()));
        triangle.push_back(lfoTables().triangle.at(index.get<std::size_t>()));
    }
    return {{"sineTable", sine}, {"triangleRow0", triangle}};
}

json lfoCase(const golden::Case& c) {
    if (startsWith(c.name, "lfoMono/")) return lfoMono(c);
    if (startsWith(c.name, "lfoRate/")) return lfoRates(c);
    if (startsWith(c.name, "lfoTables/")) return lfoTableEntries(c);
    return lfoScript(c);
}

// A phase is a place on a circle: one just below 1 may be given as one just above 0.
void turnTowards(json& got, const json& expected) {
    got = got.get<double>() + std::round(expected.get<double>() - got.get<double>());
}

void turnPhases(json& got, const json& expected) {
    if (expected.contains("phase"))
        for (std::size_t i = 0; i < std::min(got["phase"].size(), expected["phase"].size()); ++i)
            turnTowards(got["phase"][i], expected["phase"][i]);
    if (expected.contains("afterTrigger"))
        for (std::size_t i = 0; i < std::min(got["afterTrigger"].size(), expected["afterTrigger"].size()); ++i)
            turnTowards(got["afterTrigger"][i][1], expected["afterTrigger"][i][1]);
}

// The generator's state is exact whatever the tolerance of the outputs.
golden::Outcome checkLfo(const golden::Case& c) {
    const json& expected = c.expected;
    json got = lfoCase(c);
    turnPhases(got, expected);
    golden::Outcome outcome = golden::compare(expected, got, c.tolerance);
    if (expected.contains("endSeed") && expected["endSeed"] != got["endSeed"]) outcome.fail("the generator's state differs");
    return outcome;
}

StepLfo::Start stepStart(const json& j, double tickRate) {
    StepLfo::Start start;
    start.shape = j["shape"].get<int>();
    start.speed = static_cast<double>(golden::asFloat(j["speed"]));
    start.stepCount = golden::asFloat(j["Steps"]);
    start.tempo = j["tempo"].get<double>();
    start.songPosition = j["songPosition"].get<double>();
    start.tickRate = tickRate;
    return start;
}

void readSteps(StepLfo& lfo, const json& steps) {
    for (std::size_t i = 0; i < lfo.steps.size(); ++i) lfo.steps[i] = golden::asFloat(steps[i]);
}

json stepRun(const golden::Case& c) {
    StepLfo lfo;
    readSteps(lfo, c.input["steps"]);
    const json& trigger = c.input["trigger"];
    lfo.noteOn(trigger["mode"].get<int>(), stepStart(trigger, trigger["tickRate"].get<double>()), 1, nullptr);
    LinearCongruence random{c.input.value("globalRandomState", 0u)};
    const double startPosition = lfo.position;
    const json& at = c.input["at"];
    const json changes = c.input.value("setStep", json::array());
    json positions = json::array(), values = json::array();
    std::size_t next = 0;
    for (int tick = 0; tick < c.input["ticks"].get<int>(); ++tick) {
        for (const json& change : changes)
            if (change[0].get<int>() == tick) lfo.steps.at(change[1].get<std::size_t>()) = golden::asFloat(change[2]);
        lfo.advance();
        if (next == at.size() || at[next].get<int>() != tick) continue;
        positions.push_back(lfo.position);
        values.push_back(lfo.value(random));
        ++next;
    }
    return {{"stepCount", lfo.stepCount},
            {"increment", lfo.increment},
            {"startPosition", startPosition},
            {"position", positions},
            {"value", values}};
}

json stepTriggers(const golden::Case& c) {
    json counts = json::array(), increments = json::array(), positions = json::array();
    for (const json& row : c.input["rows"]) {
        StepLfo::Start start;
        start.speed = static_cast<double>(golden::asFloat(row[1]));
        start.stepCount = golden::asFloat(row[2]);
        start.tempo = row[3].get<double>();
        start.songPosition = row[4].get<double>();
        start.tickRate = row[5].get<double>();
        StepLfo lfo;
        lfo.noteOn(row[0].get<int>(), start, 1, nullptr);
        counts.push_back(lfo.stepCount);
        increments.push_back(lfo.increment);
        positions.push_back(lfo.position);
    }
    return {{"stepCount", counts}, {"increment", increments}, {"position", positions}};
}

json stepMono(const golden::Case& c) {
    const json &a = c.input["A"], &b = c.input["B"];
    const double tickRate = a["trigger"]["tickRate"].get<double>();
    StepLfo first, second;
    readSteps(first, a["steps"]);
    readSteps(second, b.contains("steps") ? b["steps"] : a["steps"]);
    first.noteOn(a["trigger"]["mode"].get<int>(), stepStart(a["trigger"], tickRate), 1, nullptr);
    for (int i = 0; i < c.input["ticksBefore"].get<int>(); ++i) first.advance();
    second.noteOn(b["mode"].get<int>(), stepStart(b, b.value("tickRate", tickRate)), c.input["activeVoices"].get<int>(),
                  c.input["oldestFound"].get<bool>() ? &first : nullptr);
    LinearCongruence random;
    const json& at = c.input["at"];
    json positions = json::array(), values = json::array();
    std::size_t next = 0;
    for (int tick = 0; tick < c.input["ticks"].get<int>(); ++tick) {
        second.advance();
        if (next == at.size() || at[next].get<int>() != tick) continue;
        positions.push_back(second.position);
        values.push_back(second.value(random));
        ++next;
    }
    return {{"position", positions}, {"value", values}, {"stepCount", second.stepCount}, {"increment", second.increment}};
}

json stepCase(const golden::Case& c) {
    if (startsWith(c.name, "stepLfoTrigger/")) return stepTriggers(c);
    if (startsWith(c.name, "stepLfoMono/")) return stepMono(c);
    return stepRun(c);
}

const golden::Binding lfos("modulation", "lfo*", checkLfo);
const golden::Binding stepLfos("modulation", "step*", golden::checkValues<stepCase>);

}  // namespace
