// The window's size, its pages, what its controls say and what its lamps show.
#include <cstdio>
#include <cstdlib>

#include "editor/model/control_table.h"
#include "editor/model/control_texts.h"
#include "editor/model/indicators.h"
#include "editor/model/pages.h"
#include "editor/model/window_files.h"
#include "editor/model/window_size.h"
#include "golden_runner/golden.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"

namespace {

using golden::asFloat;
using golden::Case;
using golden::json;
using vantoric::WindowSize;
using vantoric::platform::RecordedDialogs;

// A data folder of its own, with the configuration's folder in it or, on request, a file in the folder's place.
class DataFolder {
public:
    explicit DataFolder(bool isWritable = true) {
        vantoric::platform::setDataFolder(folder_.path());
        if (isWritable)
            vantoric::platform::makeFolder(vantoric::platform::bankFolder());
        else
            vantoric::platform::writeFile(folder_ / "Vantoric_data", nullptr, 0);
    }
    ~DataFolder() { vantoric::platform::setDataFolder(""); }

private:
    vantoric::platform::ScratchFolder folder_;
};

json boxesOf(const RecordedDialogs& dialogs, const json& expected) {
    json boxes = json::array();
    std::size_t next = 0;
    for (const auto& box : dialogs.boxes()) {
        // A title that is not compared is null.
        const bool isCompared = next >= expected.size() || !expected[next][1].is_null();
        boxes.push_back({box.isQuestion ? "question" : "message", isCompared ? json(box.title) : json(), box.text});
        ++next;
    }
    return boxes;
}

// As the files print numbers: with nine digits.
double asPrinted(double number) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.9g", number);
    return std::atof(digits);
}

json stateOf(const WindowSize& size) {
    return {{"sizeIndex", size.sizeIndex()},
            {"width", size.width()},
            {"height", size.height()},
            {"zoom", asPrinted(size.zoom())},
            {"layoutScale", size.layoutScale()},
            {"bitmapOffset", size.bitmapOffset()},
            {"largeSkin", size.largeSkin() ? 1 : 0}};
}

vantoric::Screen screenOf(const json& screen) { return {screen[0], screen[1]}; }

json runSizeTable(const Case& c) {
    RecordedDialogs dialogs;
    WindowSize size(dialogs, c.input.at("host").get<std::string>());
    const int index = c.input.at("index");
    size.applySize(index);
    json state = stateOf(size);
    state["label"] = c.expected.at("label").is_null() ? json() : json(vantoric::sizeLabels()[static_cast<std::size_t>(index)]);
    return state;
}

json runStart(const Case& c) {
    const DataFolder folder;
    if (!c.input.at("bytes").is_null()) {
        const auto bytes = c.input.at("bytes").get<std::vector<std::uint8_t>>();
        vantoric::platform::writeFile(vantoric::sizeFilePath(), bytes.data(), bytes.size());
    }
    RecordedDialogs dialogs;
    WindowSize size(dialogs, c.input.at("host").get<std::string>());
    size.loadSize(screenOf(c.input.at("screen")));
    return stateOf(size);
}

json runChooseSize(const Case& c) {
    const DataFolder folder(c.input.at("writable"));
    RecordedDialogs dialogs;
    WindowSize size(dialogs, c.input.at("host").get<std::string>());
    size.applySize(c.input.at("before"));
    for (const json& answer : c.input.at("answers")) dialogs.answerNext(answer);
    bool refused = true, zoomChanged = false;
    size.chooseSize(c.input.at("index"), screenOf(c.input.at("screen")), [&](bool isOtherZoom) {
        refused = false;
        zoomChanged = isOtherZoom;
    });
    const auto stored = vantoric::readSizeIndex();
    return {{"boxes", boxesOf(dialogs, c.expected.at("boxes"))},
            {"refused", refused},
            {"stored", stored ? json(*stored) : json()},
            {"state", refused ? json() : stateOf(size)},
            {"zoomHanded", zoomChanged ? json(asPrinted(size.zoom())) : json()}};
}

json runTooltipsFile(const Case& c) {
    const DataFolder folder(c.input.at("writable"));
    if (c.input.at("present")) vantoric::platform::writeFile(vantoric::tooltipsFilePath(), nullptr, 0);
    RecordedDialogs dialogs;
    vantoric::toggleTooltips(dialogs);
    return {{"present", vantoric::tooltipsHidden()}, {"boxes", boxesOf(dialogs, c.expected.at("boxes"))}};
}

json runDialogTitles(const Case& c) {
    json rows = json::array();
    for (const json& kind : c.input.at("kinds")) {
        const bool isSave = kind[1] != 0;
        const auto request = vantoric::platform::fileRequest(kind[0].get<vantoric::platform::FileKind>(), isSave, "");
        rows.push_back({kind[0], isSave ? 1 : 0, request.title, request.filterText});
    }
    return {{"rows", rows}};
}

json runActivityLamp(const Case& c) {
    return {{"value", vantoric::activityLamp(c.input.at("ticksSinceNote"), asFloat(c.input.at("layerOn")))}};
}

json runLevelMeter(const Case& c) {
    json rows = json::array();
    for (const json& peak : c.input.at("peaks")) rows.push_back({peak, vantoric::levelMeter(asFloat(peak))});
    return {{"rows", rows}};
}

json runPageVisibility(const Case& c) {
    vantoric::ParameterModel parameters;
    for (const json& row : c.input.at("parameters")) parameters.writeRaw(row[0], asFloat(row[1]));
    vantoric::OnShow onShow;
    vantoric::Pages pages(parameters, onShow);
    json steps = json::array();
    for (const json& click : c.input.at("clicks")) {
        pages.select(click);
        json shown = json::array();
        for (int page = 1; page <= vantoric::page::last; ++page)
            if (pages.isShown(page)) shown.push_back(page);
        int controls = 0;
        for (int i = 0; i < vantoric::controlCount(); ++i) controls += pages.isShown(vantoric::controlEntry(i).page) ? 1 : 0;
        steps.push_back({click, onShow.layer, shown, controls});
    }
    return {{"steps", steps}};
}

json runLfoSpeedTexts(const Case& c) {
    json rows = json::array();
    for (const json& value : c.input.at("values"))
        rows.push_back({value, vantoric::lfoSpeedText(c.input.at("tab"), c.input.at("mode"), asFloat(value))});
    return {{"rows", rows}};
}

json withoutEndBlanks(json texts) {
    for (json& text : texts) {
        auto line = text.get<std::string>();
        line.erase(line.find_last_not_of(' ') + 1);
        text = line;
    }
    return texts;
}

golden::Outcome checkHintLines(const Case& c) {
    const vantoric::KnobState knob{c.input.at("name"),     c.input.at("valueText"), c.input.at("unit"),
                                   c.input.at("ccNumber"), c.input.at("modCount"),  c.input.at("modNames")};
    char outline[9];
    std::snprintf(outline, sizeof outline, "%08x", vantoric::hintOutlineOf(knob.ccNumber));
    const json expected{{"lines", withoutEndBlanks(c.expected.at("lines"))}, {"outline", c.expected.at("outline")}};
    return golden::compare(expected, {{"lines", withoutEndBlanks(vantoric::hintLines(knob))}, {"outline", outline}}, c.tolerance);
}

const golden::Binding bindings[] = {
    {"editor", "size_table", golden::checkValues<runSizeTable>},
    {"editor", "size_file", golden::checkValues<runStart>},
    {"editor", "first_size", golden::checkValues<runStart>},
    {"editor", "choose_size", golden::checkValues<runChooseSize>},
    {"editor", "tooltips_file", golden::checkValues<runTooltipsFile>},
    {"editor", "dialog_titles", golden::checkValues<runDialogTitles>},
    {"editor", "activity_lamp", golden::checkValues<runActivityLamp>},
    {"editor", "level_meter", golden::checkValues<runLevelMeter>},
    {"editor", "page_visibility", golden::checkValues<runPageVisibility>},
    {"editor", "lfo_speed_texts", golden::checkValues<runLfoSpeedTexts>},
    {"editor", "hint_lines", checkHintLines},
};

}  // namespace
