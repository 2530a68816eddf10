#include "faces/common/host_parameters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "base/numbers.h"
#include "base/parameters.h"
#include "editor/model/typed_values.h"
#include "parameters/parameter_table.h"
#include "patch/chunk_layout.h"

namespace vantoric::host_parameter {

namespace {

const ParameterInfo& infoOf(int index) { return parameterInfo(numberOfParameter(index)); }

// Knobs of a few states divide their range evenly: state `i` of `n` is from i/n on, by factors that stay just below n.
int knobStates(const ParameterInfo& info) {
    if (info.kind != ControlKind::Knob) return 0;
    if (info.knobText == KnobText::Octave) return static_cast<int>(octaveLabels.size());
    if (info.knobText == KnobText::Interval) return static_cast<int>(intervalLabels.size());
    return 0;
}

int stepsOfInfo(const ParameterInfo& info) {
    if (info.kind == ControlKind::Switch) return 1;
    if (info.kind == ControlKind::List) return std::max(static_cast<int>(info.labels.size()) - 1, 0);
    return std::max(knobStates(info) - 1, 0);
}

// Made once, before a plug-in plays, as the audio thread reads it.
const std::array<int, layerParameterEnd>& allSteps() {
    static const std::array<int, layerParameterEnd> table = [] {
        std::array<int, layerParameterEnd> made{};
        for (int n = 0; n < layerParameterEnd; ++n) made[static_cast<std::size_t>(n)] = stepsOfInfo(parameterInfo(n));
        return made;
    }();
    return table;
}

int lfoModeOf(const Instrument& instrument, int index) {
    const int lfo = numberOfParameter(index) - parameter::LfoSpd1;
    if (lfo < 0 || lfo >= 3) return 0;
    return instrument.parameters().getListIndex(index + parameter::LfoMode1 - parameter::LfoSpd1);
}

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    return first == text.npos ? std::string() : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Hosts hand back the dividing lines of lists too, which nobody types.
std::optional<double> stepShowing(int index, const std::string& text) {
    for (int step = 0; steps(index) > 0 && step <= steps(index); ++step)
        if (stepText(index, step) == text) return step;
    return {};
}

}  // namespace

bool exists(int index) { return std::strcmp(infoOf(index).name, "-") != 0; }

std::string name(int index) {
    if (!exists(index)) return "-";
    const int layer = ParameterModel::parameterLayer(index);
    const std::string plainName = infoOf(index).name;
    return layer == 0 ? plainName : std::to_string(layer) + ":" + plainName;
}

const char* group(int index) {
    static constexpr const char* groups[] = {"Global", "Layer 1", "Layer 2", "Layer 3", "Layer 4"};
    return groups[ParameterModel::parameterLayer(index)];
}

bool isShown(int index) { return infoOf(index).kind != ControlKind::None; }

bool isModulatable(int index) { return isAutomatable(index) && steps(index) == 0; }

bool isAutomatable(int index) { return ParameterModel::isAutomatable(index); }

int steps(int index) { return allSteps()[static_cast<std::size_t>(numberOfParameter(index))]; }

double largest(int index) {
    const int count = steps(index);
    return count > 0 ? count : 1.0;
}

double plain(int index, float value) {
    const ParameterInfo& info = infoOf(index);
    const int count = steps(index);
    if (count == 0) return static_cast<double>(clampUnit(value));
    if (info.kind == ControlKind::Switch) return switchOn(value) ? 1.0 : 0.0;
    if (info.kind == ControlKind::List) return std::min(listIndex(value), count);
    return truncateTo(static_cast<double>(value) * (count + 0.99), 0, count);
}

float stored(int index, double plainValue) {
    const ParameterInfo& info = infoOf(index);
    const int count = steps(index);
    if (count == 0) return static_cast<float>(clampUnit(plainValue));
    const int step = truncateTo(plainValue + 0.5, 0, count);
    if (info.kind == ControlKind::List) return listValue(step);
    return static_cast<float>(step) / static_cast<float>(count);
}

float storedFor(const Instrument& instrument, int index, double plainValue) {
    const float wanted = stored(index, plainValue), current = instrument.parameters().getParameter(index);
    return steps(index) > 0 && plain(index, wanted) == plain(index, current) ? current : wanted;
}

double defaultValue(int index) { return plain(index, infoOf(index).defaultValue); }

std::string unit(const Instrument& instrument, int index) {
    return parameterUnit(numberOfParameter(index), lfoModeOf(instrument, index));
}

std::string text(const Instrument& instrument, int index, double plainValue) {
    return parameterText(numberOfParameter(index), stored(index, plainValue), lfoModeOf(instrument, index));
}

std::optional<double> valueOfText(const Instrument& instrument, int index, const std::string& typed) {
    const int n = numberOfParameter(index), lfoMode = lfoModeOf(instrument, index);
    std::optional<float> value = typedValue(n, typed, lfoMode);
    const std::string_view unitText = parameterUnit(n, lfoMode);
    if (!value && !unitText.empty() && typed.ends_with(unitText))
        value = typedValue(n, trimmed(typed.substr(0, typed.size() - unitText.size())), lfoMode);
    return value ? plain(index, *value) : stepShowing(index, typed);
}

std::string stepText(int index, int step) { return parameterText(numberOfParameter(index), stored(index, step), 0); }

}  // namespace vantoric::host_parameter
