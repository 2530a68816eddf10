// MIDI learn from the window: the map, what waits, and what controls show.
#include "editor_bench.h"

namespace {

using golden::Case;
using golden::json;
using namespace vantoric;
using test::EditorBench;

json runLearn(const Case& c) {
    EditorBench bench;
    bench.setMap(c.input.at("ccMap"));
    const char* const hint =
        c.input.at("operation") == "assignLearn" ? bench.learn.assignLearn(c.input.at("parameter")) : bench.learn.removeAll();
    (void)c.input.at("parameter");
    return {{"ccMap", bench.map()},
            {"learnPending", bench.rig.audio.midi().learnPending()},
            {"ccMapDirty", bench.rig.audio.midi().ccMapDirty()},
            {"hint", hint}};
}

json runNumbers(const Case& c) {
    EditorBench bench(c.input.at("layer"));
    bench.setMap(c.input.at("ccMap"));
    bench.rig.audio.midi().setLearnPending(c.input.at("learnPending"));
    json rows = json::array();
    for (const json& tag : c.input.at("tags")) rows.push_back({tag, bench.learn.ccNumber(bench.commands.hostIndexOf(tag))});
    return {{"rows", rows}};
}

// Controls that take their numbers when they are built, after a learn, and in idle time where the map has changed.
struct Controls {
    EditorBench& bench;
    std::vector<int> tags;
    json ccNumbers = json::array();

    Controls(EditorBench& b, const json& t) : bench(b), tags(t.get<std::vector<int>>()) { refresh(); }
    void refresh() {
        ccNumbers = json::array();
        for (const int tag : tags) ccNumbers.push_back(bench.learn.ccNumber(bench.commands.hostIndexOf(tag)));
    }
};

// A null is not compared.
void leaveOut(const json& expected, json& got) {
    if (expected.at("ccNumbers").is_null()) got["ccNumbers"] = nullptr;
}

json runFlow(const Case& c) {
    EditorBench bench(c.input.at("layer"));
    bench.setMap(c.input.at("ccMap"));
    Controls controls(bench, c.input.at("tags"));
    json steps = json::array();
    for (const json& step : c.input.at("steps")) {
        if (step[0] == "learn") {
            bench.learn.assignLearn(step[1]);
            controls.refresh();
        } else if (step[0] == "cc") {
            bench.rig.send({{0xb0 | step[1].get<int>(), step[2], step[3]}});
        } else if (bench.learn.takeMapChange()) {
            controls.refresh();
        }
        const json& expected = c.expected.at("steps").at(steps.size());
        json values = json::array();
        for (const json& row : expected.at("values")) values.push_back({row[0], bench.value(row[0])});
        json got = {{"learnPending", bench.rig.audio.midi().learnPending()},
                    {"ccMap", bench.map()},
                    {"ccNumbers", controls.ccNumbers},
                    {"values", values}};
        leaveOut(expected, got);
        steps.push_back(got);
    }
    return {{"steps", steps}};
}

const golden::Binding b1("editor", "midi_learn", golden::checkValues<runLearn>);
const golden::Binding b2("editor", "cc_numbers", golden::checkValues<runNumbers>);
const golden::Binding b3("editor", "learn_flow", golden::checkValues<runFlow>);

}  // namespace
