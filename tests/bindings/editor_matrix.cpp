// The matrix as knobs show and change it: tables, entries by menu and by drop, what knobs draw.
#include "editor_bench.h"
#include "voice/matrix.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EditorBench;

json runDestinations(const Case& c) {
    json rows = json::array();
    if (c.input.contains("indices")) {
        for (const json& index : c.input.at("indices")) rows.push_back({index, destinationNumber(index)});
    } else {
        for (const json& number : c.input.at("parameters")) rows.push_back({number, destinationOf(number)});
    }
    return {{"rows", rows}};
}

json runSources(const Case& c) {
    json rows = json::array();
    for (const json& index : c.input.at("indices")) rows.push_back({index, isBipolarSource(index) ? 1 : 0});
    return {{"rows", rows}};
}

json runTags(const Case& c) {
    json rows = json::array();
    for (const json& tag : c.input.at("tags")) {
        const SubmenuSource row = submenuSource(tag);
        rows.push_back({tag, row.source, row.hasBipolarAmount ? 1 : 0});
    }
    return {{"rows", rows}};
}

json runDragSource(const Case& c) {
    json rows = json::array();
    for (const json& row : c.input.at("rows")) {
        const DragSection section = row[0] == "envelope" ? DragSection::envelope : DragSection::lfo;
        rows.push_back({row[0], row[1], dragSource(section, row[1])});
    }
    return {{"rows", rows}};
}

EditorBench benchOf(const Case& c) { return EditorBench(c.input.at("layer"), c.input.at("multilayer")); }

json runAdd(const Case& c) {
    EditorBench bench = benchOf(c);
    bench.setSlots(c.input.at("slots"));
    bench.setValues(c.input.at("values"));
    const int number = c.input.at("parameter");
    const auto page = c.input.at("how") == "menu" ? bench.matrix.addModulation(number, c.input.at("tag"))
                                                  : bench.matrix.addDroppedModulation(number, c.input.at("source"));
    return {{"slots", bench.slots()}, {"page", test::orNull(page)}, {"boxes", bench.boxes()}};
}

json runRemove(const Case& c) {
    EditorBench bench = benchOf(c);
    bench.setSlots(c.input.at("slots"));
    bench.matrix.removeModulation(c.input.at("parameter"));
    return {{"slots", bench.slots()}};
}

json runClean(const Case& c) {
    EditorBench bench;
    bench.setSlots(c.input.at("slots"));
    bench.matrix.cleanMatrix();
    return {{"slots", bench.slots()}};
}

json runKnobs(const Case& c) {
    EditorBench bench(c.input.at("layer"));
    bench.setSlots(c.input.at("slots"));
    const KnobModulations modulations = bench.matrix.updateKnobModulation();
    json knobs = json::array();
    for (std::size_t number = 0; number < modulations.size(); ++number) {
        const KnobModulation& knob = modulations[number];
        if (knob.modCount > 0) knobs.push_back({number, knob.modDepth, knob.modNames, knob.modCount, knob.modBipolar ? 1 : 0});
    }
    return {{"knobs", knobs}};
}

json runChoice(const Case& c) {
    EditorBench bench(c.input.at("layer"));
    const int number = c.input.at("parameter"), index = bench.commands.hostIndexOf(number);
    bench.setSlots(c.input.at("slots"));
    bench.setMap(c.input.at("ccMap"));
    bench.rig.set(index, asFloat(c.input.at("value")));
    const json& row = c.input.at("row");
    const json& tag = c.input.at("tag");
    const KnobCommandResult result =
        row.is_null() ? bench.commands.chooseSource(number, tag) : bench.commands.chooseRow(number, row);
    return {{"slots", bench.slots()},
            {"value", bench.value(index)},
            {"ccMap", bench.map()},
            {"learnPending", bench.rig.audio.midi().learnPending()},
            {"page", test::orNull(result.matrixPage)}};
}

json runDrop(const Case& c) {
    const json& pages = c.input.at("pages");
    std::vector<DropTarget> controls;
    for (const json& row : c.input.at("table")) {
        const bool isVisible = std::find(pages.begin(), pages.end(), row[4]) != pages.end();
        controls.push_back({row[0], asFloat(row[2]), asFloat(row[3]), isVisible});
    }
    json rows = json::array();
    for (const json& point : c.input.at("points"))
        rows.push_back(
            {point[0], point[1], dropHit(controls, asFloat(point[0]), asFloat(point[1]), asFloat(c.input.at("factor")))});
    return {{"rows", rows}};
}

const golden::Binding b1("editor", "matrix_destinations", golden::checkValues<runDestinations>);
const golden::Binding b2("editor", "matrix_sources", golden::checkValues<runSources>);
const golden::Binding b3("editor", "submenu_tags", golden::checkValues<runTags>);
const golden::Binding b4("editor", "drag_source", golden::checkValues<runDragSource>);
const golden::Binding b5("editor", "add_modulation", golden::checkValues<runAdd>);
const golden::Binding b6("editor", "remove_modulation", golden::checkValues<runRemove>);
const golden::Binding b7("editor", "clean_matrix", golden::checkValues<runClean>);
const golden::Binding b8("editor", "knob_modulation", golden::checkValues<runKnobs>);
const golden::Binding b9("editor", "menu_choice", golden::checkValues<runChoice>);
const golden::Binding b10("editor", "drop_hit", golden::checkValues<runDrop>);

}  // namespace
