#include "parameters/parameter_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>

#include "base/numbers.h"
#include "parameters/parameter_table.h"

namespace vantoric {

namespace {

using Parsed = std::optional<float>;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool sameText(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

std::optional<int> wholeNumber(std::string_view text) {
    int number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size()) return {};
    return number;
}

Parsed decimalNumber(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    float number = 0.0f;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size()) return {};
    return number;
}

Parsed withinUnit(float value) { return value >= 0.0f && value <= 1.0f ? Parsed(value) : Parsed(); }

// The first index of a label; separators have none. Exact case first, as "C" and "c" could both be labels.
std::optional<int> labelIndex(LabelList labels, std::string_view text) {
    if (text == "-") return {};
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (text == trimmed(labels[i])) return static_cast<int>(i);
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (sameText(text, trimmed(labels[i]))) return static_cast<int>(i);
    return {};
}

// The middle of the values whose text `shows` accepts, on a fine grid, or a plain one among them.
template <class Shows>
Parsed valueShowing(Shows shows) {
    for (const float plain : {0.0f, 0.5f, 1.0f})
        if (shows(plain)) return plain;
    constexpr int grid = 4096;
    int first = -1, last = -1;
    for (int i = 0; i <= grid; ++i) {
        if (!shows(static_cast<float>(i) / grid)) continue;
        if (first < 0) first = i;
        last = i;
    }
    return first < 0 ? Parsed() : Parsed(static_cast<float>(first + last) / (2 * grid));
}

Parsed parseList(int n, const ParameterInfo& info, std::string_view text) {
    std::optional<int> index = labelIndex(info.labels, text);
    const bool marked = text.starts_with('#');
    if (!index) index = wholeNumber(marked ? text.substr(1) : text);
    if (index) return *index >= 0 && *index < 128 ? Parsed(listValue(*index)) : Parsed();
    for (std::size_t i = 0; i < info.labels.size(); ++i) {
        const float value = listValue(static_cast<int>(i));
        if (info.labels[i] != std::string_view("-") && sameText(text, parameterText(n, value, 0))) return value;
    }
    return {};
}

// Knobs in a few steps: the value is the step's place among them.
Parsed parseSteps(LabelList labels, std::string_view text) {
    const std::optional<int> index = labelIndex(labels, text);
    if (!index) return {};
    return static_cast<float>(*index) / static_cast<float>(labels.size() - 1);
}

Parsed parseTempo(std::string_view text) {
    if (text.ends_with("BPM"))
        text = trimmed(text.substr(0, text.size() - 3));
    else if (text.find('/') == text.npos)
        return {};
    const std::optional<int> index = labelIndex(tempoLabels, text);
    if (!index) return {};
    return (static_cast<float>(*index) + 0.5f) / 14.0f;
}

// "37%", "+50", "-20 cent": numbers in the unit of the display.
Parsed parseDisplayUnit(const ParameterInfo& info, std::string_view text) {
    const bool isSigned = text.starts_with('+') || text.starts_with('-');
    bool hasUnit = false;
    for (const std::string_view unit : {"%", "cent"}) {
        if (!text.ends_with(unit)) continue;
        text = trimmed(text.substr(0, text.size() - unit.size()));
        hasUnit = true;
    }
    const bool bipolar = isBipolar(info);
    if (!hasUnit && !(isSigned && bipolar)) return {};
    const Parsed number = decimalNumber(text);
    if (!number) return {};
    return withinUnit(bipolar ? (*number + 100.0f) / 200.0f : *number / 100.0f);
}

Parsed parseText(int n, const ParameterInfo& info, std::string_view text) {
    if (info.kind == ControlKind::Switch) {
        if (sameText(text, "On")) return 1.0f;
        if (sameText(text, "Off")) return 0.0f;
    }
    if (info.kind == ControlKind::Knob) {
        if (info.knobText == KnobText::Octave) return parseSteps(octaveLabels, text);
        if (info.knobText == KnobText::Interval) return parseSteps(intervalLabels, text);
        if (info.knobText == KnobText::LfoSpeed || info.knobText == KnobText::StepSpeed) return parseTempo(text);
    }
    // Texts that begin with a digit or a sign are numbers, and mean something else.
    if (info.kind == ControlKind::Number && std::isalpha(static_cast<unsigned char>(text[0])))
        return valueShowing([&](float value) { return sameText(text, parameterText(n, value, 0)); });
    return {};
}

std::map<std::string, int, std::less<>> numbersByName() {
    std::map<std::string, int, std::less<>> numbers;
    for (int n = 0; n < layerParameterEnd; ++n)
        if (std::string name = parameterInfo(n).name; name != "-") numbers.emplace(std::move(name), n);
    return numbers;
}

}  // namespace

int parameterIndex(std::string_view name, int layer) {
    static const auto numbers = numbersByName();
    if (layer < 0 || layer > 3) return -1;
    int n = -1;
    if (name.starts_with('#'))
        n = wholeNumber(name.substr(1)).value_or(-1);
    else if (const auto found = numbers.find(name); found != numbers.end())
        n = found->second;
    if (n < 0 || n >= layerParameterEnd) return -1;
    return n < globalParameterCount ? n : hostIndex(n, layer);
}

int parameterIndex(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 2 && text[1] == ':' && text[0] >= '1' && text[0] <= '4')
        return parameterIndex(text.substr(2), text[0] - '1');
    if (!text.starts_with('#')) return parameterIndex(text, 0);
    const int index = wholeNumber(text.substr(1)).value_or(-1);
    return index >= 0 && index < parameterCount ? index : -1;
}

std::optional<float> parseParameterValue(int n, std::string_view text) {
    const ParameterInfo& info = parameterInfo(n);
    text = trimmed(text);
    if (text.empty() || n < 0 || n >= layerParameterEnd) return {};
    if (info.kind == ControlKind::List) {
        if (const Parsed value = parseList(n, info, text)) return value;
    } else {
        if (const Parsed value = parseText(n, info, text)) return value;
        if (const Parsed value = parseDisplayUnit(info, text)) return value;
    }
    const Parsed number = decimalNumber(text);
    return number && text[0] != '+' && text[0] != '-' ? withinUnit(*number) : Parsed();
}

std::string parameterValueText(int n, float value) {
    const ParameterInfo& info = parameterInfo(n);
    if (info.kind == ControlKind::Switch && (value == 0.0f || value == 1.0f)) return value == 1.0f ? "On" : "Off";
    if (info.kind == ControlKind::List && value == listValue(listIndex(value))) {
        const int index = listIndex(value);
        const bool listed = index < static_cast<int>(info.labels.size());
        const std::string label = listed ? std::string(trimmed(info.labels[static_cast<std::size_t>(index)])) : "";
        return labelIndex(info.labels, label) == index ? label : std::string("#").append(std::to_string(index));
    }
    char text[400];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    std::string number(text, end.ptr);
    return number.find('.') == number.npos ? number + ".0" : number;
}

}  // namespace vantoric
