#include "apps/patch/value_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <optional>
#include <vector>

#include "apps/patch/patch.h"
#include "base/numbers.h"
#include "parameters/parameter_table.h"
#include "parameters/parameter_text.h"

namespace vantoric::patch {

namespace {

constexpr int humanDigits = 5;  // longer numbers are no friendlier than the value itself

// A law from stored value to a quantity, rising with it.
using Law = double (*)(float value);
double cutoffHertz(float value) { return fastExp(-6.0 * (1.0 - value)) * 20000.0; }
double lfoHertz(float value) { return fastExp(value * 8.85936) * 0.0625; }

struct Unit {
    const char* name;
    double factor;  // of the law's own unit
};
constexpr Unit hertzUnits[] = {{"kHz", 1000.0}, {"Hz", 1.0}};
constexpr Unit timeUnits[] = {{"ms", 0.001}, {"sec", 1.0}, {"s", 1.0}};

struct Quantity {
    Law law = nullptr;
    std::span<const Unit> units;
};

Quantity quantityOf(const ParameterInfo& info) {
    if (info.kind == ControlKind::Knob) {
        if (info.knobText == KnobText::Hertz) return {cutoffHertz, hertzUnits};
        if (info.knobText == KnobText::LfoSpeed) return {lfoHertz, hertzUnits};
        if (info.knobText == KnobText::StageTime) return {stageSeconds, timeUnits};
    }
    if (info.formatter == formatHold || info.formatter == formatFade) return {stageSeconds, timeUnits};
    return {};
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

template <class Number>
std::optional<Number> wholeNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return number;
}

// The value of a law nearest to a quantity; none outside the law's range, but for the rounding of a text.
std::optional<float> invert(Law law, double quantity) {
    constexpr double slack = 0.005;
    if (!(quantity >= law(0.0f) * (1.0 - slack) && quantity <= law(1.0f) * (1.0 + slack))) return {};
    if (quantity <= law(0.0f)) return 0.0f;
    if (quantity >= law(1.0f)) return 1.0f;
    double low = 0.0, high = 1.0;
    for (int round = 0; round < 60; ++round) {
        const double middle = 0.5 * (low + high);
        (law(static_cast<float>(middle)) < quantity ? low : high) = middle;
    }
    const auto above = static_cast<float>(high), below = static_cast<float>(low);
    return quantity - law(below) < law(above) - quantity ? below : above;
}

std::optional<float> readQuantity(const Quantity& quantity, std::string_view text) {
    for (const Unit& unit : quantity.units) {
        if (!text.ends_with(unit.name)) continue;
        const auto number = wholeNumber<double>(trimmed(text.substr(0, text.size() - std::string_view(unit.name).size())));
        return number ? invert(quantity.law, *number * unit.factor) : std::nullopt;
    }
    return {};
}

std::string digits(double number, int count) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::general, count);
    std::string result(text, end.ptr);
    if (result.find('e') == std::string::npos) return result;
    const auto plain = std::to_chars(text, text + sizeof text, *wholeNumber<double>(result), std::chars_format::fixed);
    return std::string(text, plain.ptr);
}

bool meansPercent(const ParameterInfo& info) {
    switch (info.kind) {
        case ControlKind::Knob: return info.knobText == KnobText::ByDefault || info.knobText == KnobText::Percent;
        case ControlKind::Step:
        case ControlKind::EffectParameter: return true;
        case ControlKind::Number: return isBipolar(info) || info.formatter == formatPercent;
        case ControlKind::None:
        case ControlKind::Switch:
        case ControlKind::List: return false;
    }
    return false;
}

bool hasLabels(const ParameterInfo& info) {
    return info.kind == ControlKind::List ||
           (info.kind == ControlKind::Knob && (info.knobText == KnobText::Octave || info.knobText == KnobText::Interval));
}

std::vector<std::string> labelsOf(const ParameterInfo& info) {
    LabelList labels = info.labels;
    if (info.knobText == KnobText::Octave) labels = octaveLabels;
    if (info.knobText == KnobText::Interval) labels = intervalLabels;
    if (info.knobText == KnobText::StepSpeed) labels = tempoLabels;
    std::vector<std::string> texts;
    for (const char* label : labels)
        if (std::string_view(label) != "-") texts.emplace_back(label);
    return texts;
}

std::string listed(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "\"" : ", \"") + text + '"';
    return all;
}

std::string expectation(const ParameterInfo& info, std::string_view text) {
    const std::vector<std::string> labels = labelsOf(info);
    if (labels.size() > 20) return "one of its labels (the nearest is \"" + nearestText(text, labels) + "\")";
    if (!labels.empty()) return "one of " + listed(labels);
    if (info.kind == ControlKind::Switch) return "\"On\" or \"Off\"";
    const Quantity quantity = quantityOf(info);
    if (quantity.law == stageSeconds) return "a time from \"1 ms\" to \"21 sec\"";
    if (quantity.law == cutoffHertz) return "a frequency from \"53 Hz\" to \"20 kHz\"";
    if (quantity.law == lfoHertz) return "a speed such as \"5 Hz\" or \"1/4 BPM\"";
    if (isBipolar(info)) return "a number from -100 to 100";
    if (meansPercent(info)) return "a percentage such as \"37%\"";
    if (info.formatter != nullptr) return "a text such as \"" + info.formatter(0.5f) + "\"";
    return "\"=\" and the value, as in \"=0.25\"";
}

[[noreturn]] void refuse(const ParameterInfo& info, std::string_view text) {
    const bool plain = info.kind == ControlKind::None;
    throw PatchError("", "\"" + std::string(text) + "\" should be " + expectation(info, text) +
                             (plain ? "" : ", or \"=\" and the stored value from 0 to 1"));
}

float withinUnit(const ParameterInfo& info, std::optional<float> value, std::string_view text) {
    if (!value || !(*value >= 0.0f && *value <= 1.0f)) refuse(info, text);
    return *value;
}

// As a number with a unit, if that takes few digits.
std::string quantityText(const Quantity& quantity, float value) {
    for (std::size_t u = 0; u < quantity.units.size(); ++u) {
        const Unit& unit = quantity.units[u];
        const double number = quantity.law(value) / unit.factor;
        const bool last = u + 1 == quantity.units.size();
        const bool fits = unit.factor > 1.0 ? number >= 10.0 : unit.factor < 1.0 ? number < 100.0 : true;
        if (!fits && !last) continue;
        for (int count = 1; count <= humanDigits; ++count) {
            std::string text = digits(number, count) + " " + unit.name;
            if (const auto back = readQuantity(quantity, text); back && *back == value) return text;
        }
        break;
    }
    return {};
}

}  // namespace

float readPercent(double percent, bool bipolar) {
    return static_cast<float>(bipolar ? (percent + 100.0) / 200.0 : percent / 100.0);
}

bool writePercent(float value, bool bipolar, double& percent) {
    const double exact = bipolar ? static_cast<double>(value) * 200.0 - 100.0 : static_cast<double>(value) * 100.0;
    for (int count = 1; count <= humanDigits; ++count) {
        percent = *wholeNumber<double>(digits(exact, count)) + 0.0;
        if (readPercent(percent, bipolar) == value && percent >= -100.0 && percent <= 100.0) return true;
    }
    return false;
}

float readValue(int n, std::string_view given) {
    const ParameterInfo& info = parameterInfo(n);
    const std::string_view text = trimmed(given);
    if (text.starts_with('=')) return withinUnit(info, wholeNumber<float>(trimmed(text.substr(1))), given);
    if (const auto value = readQuantity(quantityOf(info), text)) return *value;
    if (meansPercent(info)) {
        std::string_view number = text;
        for (const std::string_view unit : {"%", "cent"})
            if (number.ends_with(unit)) number = trimmed(number.substr(0, number.size() - unit.size()));
        const bool isSigned = number.starts_with('+') || number.starts_with('-');
        if (number.starts_with('+')) number.remove_prefix(1);
        const auto percent = wholeNumber<double>(number);
        // A bare number could be meant as percent or as the value: one of the two has to be said.
        if (!percent || (number.size() == text.size() && !isSigned)) refuse(info, given);
        return withinUnit(info, readPercent(*percent, isBipolar(info)), given);
    }
    if (!hasLabels(info) && wholeNumber<double>(text)) refuse(info, given);
    return withinUnit(info, parseParameterValue(n, text), given);
}

float readValue(int n, double number) {
    const ParameterInfo& info = parameterInfo(n);
    const std::string text = digits(number, 17);
    if (meansPercent(info)) return withinUnit(info, readPercent(number, isBipolar(info)), text);
    const auto labels = labelsOf(info);
    if (!hasLabels(info) || std::find(labels.begin(), labels.end(), text) == labels.end()) refuse(info, text);
    return withinUnit(info, parseParameterValue(n, text), text);
}

std::string writeValue(int n, float value, int lfoMode) {
    const ParameterInfo& info = parameterInfo(n);
    const auto reads = [n, value](const std::string& text) {
        try {
            return !text.empty() && readValue(n, text) == value;
        } catch (const PatchError&) {
            return false;
        }
    };
    if (double percent; meansPercent(info) && writePercent(value, isBipolar(info), percent)) {
        const std::string number = digits(percent, 17);
        if (!isBipolar(info) || percent == 0) return number + "%";
        return percent > 0 ? std::string("+").append(number) : number;
    }
    const bool counted = info.knobText == KnobText::StepSpeed || (info.knobText == KnobText::LfoSpeed && isTempoLocked(lfoMode));
    std::string shown = parameterText(n, value, lfoMode);
    if (counted) shown += " BPM";
    if (info.knobText != KnobText::StageTime && reads(shown) && !hasLabels(info)) return shown;
    if (const std::string text = quantityText(quantityOf(info), value); reads(text)) return text;
    if (const std::string text = parameterValueText(n, value); text.find('.') == std::string::npos && reads(text)) return text;
    if (reads(shown)) return shown;
    char exact[64];
    const auto end = std::to_chars(exact, exact + sizeof exact, value);
    return std::string("=").append(exact, end.ptr);
}

int editDistance(std::string_view a, std::string_view b) {
    std::vector<int> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = static_cast<int>(j) * 2;
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    for (std::size_t i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = static_cast<int>(i) * 2;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const int change = a[i - 1] == b[j - 1] ? 0 : lower(a[i - 1]) == lower(b[j - 1]) ? 1 : 2;
            const int best = std::min({row[j] + 2, row[j - 1] + 2, diagonal + change});
            diagonal = row[j];
            row[j] = best;
        }
    }
    return row[b.size()];
}

std::string nearestName(std::string_view name, bool global) {
    std::vector<std::string> names;
    for (int n = global ? 0 : globalParameterCount; n < (global ? globalParameterCount : layerParameterEnd); ++n)
        if (std::string candidate = parameterInfo(n).name; candidate != "-") names.push_back(std::move(candidate));
    return nearestText(name, names);
}

}  // namespace vantoric::patch
