// Parameters and all their texts.
#include <map>
#include <string>

#include "base/numbers.h"
#include "faces/vst2/q7audio.h"
#include "golden_runner/golden.h"
#include "parameters/parameter_model.h"

namespace {

using golden::Case;
using golden::json;
using vantoric::ParameterModel;

// A text getter of the model as a string.
template <void (ParameterModel::*get)(int, char*) const>
std::string hostText(const ParameterModel& model, int index) {
    char text[64] = "";
    (model.*get)(index, text);
    return text;
}
const auto nameOf = hostText<&ParameterModel::getParameterName>;
const auto displayOf = hostText<&ParameterModel::getParameterDisplay>;
const auto labelOf = hostText<&ParameterModel::getParameterLabel>;

json runNames(const Case& c) {
    const ParameterModel model;
    json names = json::array();
    for (const json& row : c.expected.at("names")) names.push_back({row[0], nameOf(model, row[0])});
    return {{"names", names}};
}

json runAutomation(const Case& c) {
    const std::string product = c.input.value("product", "");
    if (c.expected.contains("all")) {
        bool all = true;
        for (const json& index : c.input.at("indices")) all = all && vantoric::canParameterBeAutomated(index, product.c_str());
        return {{"all", all}};
    }
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        const int can = vantoric::canParameterBeAutomated(row[0], product.c_str()) ? 1 : 0;
        rows.push_back({row[0], can, ParameterModel::parameterLayer(row[0])});
    }
    return {{"rows", rows}};
}

json runLimit(const Case& c) {
    json result = json::object();
    for (const json& row : c.expected.value("limits", json::array()))
        result["limits"].push_back({row[0], ParameterModel::parameterLimit(row[0]) * 128.0f});
    for (const json& row : c.expected.value("noGuard", json::array())) {
        const int index = row[1];
        const bool free = ParameterModel::parameterLimit(index) == 1.0f;
        result["noGuard"].push_back({vantoric::parameterInfo(vantoric::numberOfParameter(index)).name, free ? index : -1});
    }
    return result;
}

// The text of one row: [index, value, LFO mode or null, display] or [index, LFO mode or null, label].
json runRow(ParameterModel& model, const json& row) {
    const bool isDisplay = row.size() == 4;
    const int index = row[0];
    const json& mode = row[isDisplay ? 2 : 1];
    if (mode.is_number()) {
        const int modeIndex = index - vantoric::parameter::LfoSpd1 + vantoric::parameter::LfoMode1;
        model.writeRaw(modeIndex, vantoric::listValue(mode));
    }
    if (!isDisplay) return {index, mode, labelOf(model, index)};
    model.writeRaw(index, golden::asFloat(row[1]));
    return {index, row[1], mode, displayOf(model, index)};
}

json runDisplay(const Case& c) {
    ParameterModel model;
    if (c.expected.contains("text")) {
        model.setControlsPresent(false);
        json texts = json::array();
        for (const json& index : c.input.at("indices")) texts.push_back(displayOf(model, index));
        return {{"text", texts}};
    }
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) rows.push_back(runRow(model, row));
    return {{"rows", rows}};
}

json runListTexts(const Case& c) {
    ParameterModel model;
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        model.writeRaw(row[0], vantoric::listValue(row[1]));
        rows.push_back({row[0], row[1], displayOf(model, row[0])});
    }
    return {{"rows", rows}};
}

json runFormatters(const Case& c) {
    static const std::map<std::string, vantoric::ValueFormatter> formatters = {
        {"Start", vantoric::formatStart},     {"Swing", vantoric::formatSwing},     {"Steps", vantoric::formatSteps},
        {"Glide", vantoric::formatGlide},     {"Shape", vantoric::formatShape},     {"Hold", vantoric::formatHold},
        {"Key", vantoric::formatKey},         {"Fade", vantoric::formatFade},       {"Semi", vantoric::formatSemi},
        {"Percent", vantoric::formatPercent}, {"Bipolar", vantoric::formatBipolar}, {"Empty", vantoric::formatEmpty},
    };
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) rows.push_back({row[0], formatters.at(c.name)(golden::asFloat(row[0]))});
    return {{"rows", rows}};
}

json runListIndex(const Case& c) {
    json rows = json::array();
    for (const json& row : c.expected.at("rows")) {
        const float value = c.name == "grid" ? vantoric::listValue(row[0]) : golden::asFloat(row[0]);
        rows.push_back({row[0], vantoric::listIndex(value)});
    }
    return {{"rows", rows}};
}

json runSetParameter(const Case& c) {
    ParameterModel model;
    json got = json::array();
    for (const json& pair : c.input.at("set")) {
        model.setParameter(pair[0], golden::asFloat(pair[1]));
        got.push_back({pair[0], model.getParameter(pair[0])});
    }
    return {{"get", got}};
}

const golden::Binding names("events", "parameter_names", golden::checkValues<runNames>);
const golden::Binding automation("events", "parameter_automation", golden::checkValues<runAutomation>);
const golden::Binding limit("events", "parameter_limit", golden::checkValues<runLimit>);
const golden::Binding display("events", "parameter_display", golden::checkValues<runDisplay>);
const golden::Binding listTexts("events", "list_texts", golden::checkValues<runListTexts>);
const golden::Binding formatters("events", "formatters", golden::checkValues<runFormatters>);
const golden::Binding listIndexes("events", "list_index", golden::checkValues<runListIndex>);
const golden::Binding setParameter("events", "set_parameter", golden::checkValues<runSetParameter>);

}  // namespace
