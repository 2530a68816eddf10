// What the editor does with a control, and in idle time.
#include "editor/editor_rig.h"
#include "editor/model/control_texts.h"
#include "golden_runner/golden.h"
#include "samples/wave_maker.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using namespace vantoric;
using test::EditorRig;

// ---- controls

void prepare(EditorRig& rig, const Case& c) {
    for (const json& row : c.input.at("values")) rig.rig.set(row[0].get<int>(), asFloat(row[1]));
    rig.editor.showLayer(c.input.at("layer"));
}

json changesSince(const std::vector<float>& before, const EditorRig& rig) {
    json rows = json::array();
    for (int i = 0; i < parameterCount; ++i)
        if (rig.value(i) != before[static_cast<std::size_t>(i)]) rows.push_back({i, rig.value(i)});
    return rows;
}

json runValueChanged(const Case& c) {
    EditorRig rig;
    prepare(rig, c);
    if (c.input.at("multilayer")) rig.editor.toggleMultilayer();
    const auto before = rig.values();
    rig.editor.valueChanged(c.input.at("tag"), asFloat(c.input.at("value")), c.input.at("leftButton"));
    return {{"changed", changesSince(before, rig)}};
}

json runEffectChoice(const Case& c) {
    EditorRig rig;
    prepare(rig, c);
    const auto before = rig.values();
    rig.editor.rowChosen(c.input.at("tag"), c.input.at("row"));
    return {{"changed", changesSince(before, rig)}};
}

json runScreenWheel(const Case& c) {
    EditorRig rig;
    json rows = json::array();
    for (const json& value : c.input.at("values")) {
        rig.editor.valueChanged(tag::pitchWheel, asFloat(value), true);
        rig.rig.tick();
        rows.push_back({value, rig.audio.midi().pitchWheel()});
    }
    return {{"rows", rows}};
}

json flagsSet(const DisplayFlags& flags, int tag) {
    json rows = json::array();
    for (std::size_t i = 0; i < flags.wave.size(); ++i)
        if (flags.wave[i]) rows.push_back({tag, "wave", i});
    for (std::size_t i = 0; i < flags.filter.size(); ++i)
        if (flags.filter[i]) rows.push_back({tag, "filter", i});
    if (flags.envelope) rows.push_back({tag, "envelope", 0});
    if (flags.lfo) rows.push_back({tag, "lfo", 0});
    return rows;
}

json runDisplayFlags(const Case& c) {
    EditorRig rig;
    rig.editor.showLayer(c.input.at("layer"));
    json rows = json::array();
    for (const json& tag : c.input.at("tags")) {
        rig.editor.displayFlags() = {};
        rig.editor.valueChanged(tag, 0.25f, false);
        for (const json& row : flagsSet(rig.editor.displayFlags(), tag)) rows.push_back(row);
    }
    return {{"rows", rows}};
}

json boxesOf(const EditorRig& rig, const json& expected) {
    json boxes = json::array();
    for (const auto& box : rig.dialogs.boxes()) {
        const std::size_t at = boxes.size();
        boxes.push_back({box.isQuestion ? "question" : "message", box.title, box.text});
        if (at < expected.size() && expected[at][2].is_null()) boxes[at][2] = nullptr;  // not compared
    }
    return boxes;
}

json runCloseDialogs(const Case& c) {
    EditorRig rig;
    rig.editor.close(c.input.at("open"));
    return {{"boxes", boxesOf(rig, c.expected.at("boxes"))}};
}

json runHelpBox(const Case& c) {
    EditorRig rig;
    rig.dialogs.answerNext(c.input.at("answer"));
    rig.editor.rowChosen(tag::helpMenu, c.input.at("row"));
    return {{"boxes", boxesOf(rig, c.expected.at("boxes"))}};
}

json runSampleEditBox(const Case& c) {
    EditorRig rig;
    const int oscillator = c.input.at("oscillator"), length = c.input.at("length");
    if (length > 0) {
        test::WaveMaker maker;
        const auto file = maker.putFrames(length, [](int i) { return 100 * (i % 50); }).file();
        const platform::ScratchFolder folder;
        platform::writeFile(folder / "tone.wav", file.data(), file.size());
        rig.audio.sampleLoader().loadSample(0, oscillator, folder / "tone.wav");
    }
    rig.editor.rowChosen(tag::sampleEdit1 + 2 * oscillator, c.input.at("row"));
    return {{"boxes", boxesOf(rig, c.expected.at("boxes"))}};
}

json menuRowsOf(const Case& c) {
    if (c.input.at("submenu").is_null()) return knobMenuRows(c.input.at("parameter"), c.input.at("ccNumber"));
    for (const KnobSubmenu& submenu : knobSubmenus())
        if (c.input.at("submenu") == submenu.label) return std::vector<std::string>(submenu.rows.begin(), submenu.rows.end());
    return nullptr;
}

golden::Outcome checkKnobMenu(const Case& c) {
    (void)c.input.at("parameter"), (void)c.input.at("ccNumber");
    const json rows{{"rows", menuRowsOf(c)}};
    golden::Outcome outcome = golden::compare(c.expected, rows, c.tolerance);
    if (outcome.passed || !c.whole.contains("alsoAccepted")) return outcome;
    for (const json& other : c.whole["alsoAccepted"])
        if (const auto accepted = golden::compare(other, rows, c.tolerance); accepted.passed) return accepted;
    return outcome;
}

// ---- program changes, seen by where they lead in a list of patches

class Steps {
public:
    Steps() {
        for (const char* name : {"a", "b", "c"}) {
            const std::string path = patchPath("Steps", name);
            platform::makeFolder(folderOfPath(path));
            platform::writeFile(path, nullptr, 0);
        }
        rig.editor.patches().scanCategories();
        stand();
    }
    // The step of an idle call since the last one; null for none.
    json idle() {
        rig.editor.idle();
        const int to = rig.editor.patches().selection().patch;
        stand();
        return to > middle ? json("NEXT PATCH") : to < middle ? json("PREVIOUS PATCH") : json(nullptr);
    }
    json step(int number) {
        rig.program(number);
        return idle();
    }

    EditorRig rig;

private:
    static constexpr int middle = 1;

    void stand() {
        const auto& names = rig.editor.patches().categoryNames();
        const auto at = std::find(names.begin(), names.end(), "Steps");
        rig.editor.patches().select({static_cast<int>(at - names.begin()), middle});
    }
};

json runProgramChange(const Case& c) {
    if (c.input.contains("numbers")) {
        Steps steps;
        const json& numbers = c.input.at("numbers");
        json seen = json::array();
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const json step = steps.step(numbers[i]);
            if (i > 0) seen.push_back(step);
        }
        return {{"steps", seen}};
    }
    json rows = json::array();
    for (const json& pair : c.input.at("pairs")) {
        Steps steps;
        steps.step(pair[0]);
        const json step = steps.step(pair[1]);
        rows.push_back({pair[0], pair[1], step});
    }
    return {{"rows", rows}};
}

json runIdleGuard(const Case& c) {
    Steps steps;
    steps.step(c.input.at("last"));
    const int number = c.input.at("pending");
    if (number >= 0) steps.rig.program(number);
    EngineFlags& flags = steps.rig.audio.flags();
    if (c.input.at("engineLocked")) flags.engineLocked.set();
    if (c.input.at("editorClosing")) flags.editorClosing.set();
    const json step = steps.idle();
    const int last = steps.rig.editor.lastProgram();
    flags.engineLocked.clear();
    flags.editorClosing.clear();
    // A number that is pending still makes its step now.
    const int pending = steps.idle().is_null() ? -1 : number;
    return {{"step", step}, {"pending", pending}, {"last", last}};
}

const golden::Binding bindings[] = {
    {"editor", "value_changed", golden::checkValues<runValueChanged>},
    {"editor", "effect_choice", golden::checkValues<runEffectChoice>},
    {"editor", "screen_wheel", golden::checkValues<runScreenWheel>},
    {"editor", "display_flags", golden::checkValues<runDisplayFlags>},
    {"editor", "close_dialogs", golden::checkValues<runCloseDialogs>},
    {"editor", "help_box", golden::checkValues<runHelpBox>},
    {"editor", "sample_edit_box", golden::checkValues<runSampleEditBox>},
    {"editor", "knob_menu", checkKnobMenu},
    {"editor", "program_change", golden::checkValues<runProgramChange>},
    {"editor", "idle_guard", golden::checkValues<runIdleGuard>},
};

}  // namespace
