// A mouse on a knob: drags of the value and of the modulation's depth, the depth strip, the band of the modulation.
#include "editor/model/knob_drag.h"
#include "editor_bench.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EditorBench;

KnobMouse mouseOf(const json& event) {
    const std::string button = event[3];
    return {asFloat(event[1]), asFloat(event[2]),
            button == "left"    ? MouseButton::left
            : button == "right" ? MouseButton::right
                                : MouseButton::other,
            event[4] == 1, event[0] == "double"};
}

json runDrag(const Case& c) {
    KnobDrag knob({.defaultValue = asFloat(c.input.at("default")),
                   .zoomFactor = asFloat(c.input.at("zoomFactor")),
                   .startAngle = asFloat(c.input.at("startAngle")),
                   .rangeAngle = asFloat(c.input.at("rangeAngle"))});
    float value = asFloat(c.input.at("value"));
    std::vector<float> values;
    for (const json& event : c.input.at("events")) {
        if (event[0] == "move")
            value = knob.move(mouseOf(event));
        else if (event[0] == "up")
            knob.release();
        else if (const auto press = knob.press(mouseOf(event), value); press != KnobDrag::Press::menu)
            value = knob.value();
        values.push_back(value);
    }
    json rows = json::array();
    for (const json& row : c.expected.at("values")) rows.push_back({row[0], values.at(row[0].get<std::size_t>())});
    return {{"values", rows}};
}

json runDepthDrag(const Case& c) {
    EditorBench bench(c.input.at("layer"), c.input.at("multilayer"));
    bench.setSlots(c.input.at("slots"));
    bench.matrix.beginDepth(c.input.at("parameter"));
    bench.matrix.dragDepth(
        depthOfDrag(asFloat(c.input.at("x")), asFloat(c.input.at("y")), asFloat(c.input.at("modDepthAtClick"))));
    bench.matrix.endDepth();
    return {{"slots", bench.slots()}};
}

json runStrip(const Case& c) {
    // The grip stands at the same place of a knob of any size.
    KnobDrag knob({.width = asFloat(c.input.at("width"))});
    (void)c.input.at("radius");
    const float x = asFloat(c.input.at("x")), y = asFloat(c.input.at("y"));
    const json cursor = test::orNull(knob.hoverCursor(x, y, c.input.at("modCount")));
    const auto press = knob.press({.x = x, .y = y}, 0.5f, asFloat(c.input.at("modDepth")));
    return {{"depthDrag", press == KnobDrag::Press::depth}, {"hoverCursor", cursor}};
}

json runArc(const Case& c) {
    const ModulationArc arc =
        modulationArc(asFloat(c.input.at("value")), asFloat(c.input.at("modDepth")), c.input.at("modBipolar") == 1);
    return {{"low", arc.low}, {"high", arc.high}, {"belowRange", arc.belowRange()}, {"aboveRange", arc.aboveRange()}};
}

const golden::Binding b1("editor", "knob_drag", golden::checkValues<runDrag>);
const golden::Binding b2("editor", "depth_drag", golden::checkValues<runDepthDrag>);
const golden::Binding b3("editor", "depth_strip", golden::checkValues<runStrip>);
const golden::Binding b4("editor", "modulation_arc", golden::checkValues<runArc>);

}  // namespace
