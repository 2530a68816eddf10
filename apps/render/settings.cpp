#include "apps/render/settings.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>

namespace vantoric::render {

namespace {

constexpr std::size_t shownLength = 8;  // what plug-ins leave of a name or a text
constexpr int listRows = 128;

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t"), last = text.find_last_not_of(" \t");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

std::string folded(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return trimmed(text);
}

// The whole text as a number; "nan" and "inf" are none.
std::optional<double> number(const std::string& text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

int findParameter(PluginHost& plugin, const std::string& name, int layer) {
    for (const std::string& wanted : {name, name.substr(0, shownLength)}) {
        int found = 0;
        for (int i = 0; i < plugin.parameters(); ++i)
            if (trimmed(plugin.parameterName(i)) == wanted && ++found == layer) return i;
    }
    return -1;
}

// Tries the values of a list and the two ends of a range until the display shows the text.
bool setByDisplay(PluginHost& plugin, int index, const std::string& text, std::string& problem) {
    const float before = plugin.parameter(index);
    const std::string wanted = folded(text), cut = folded(text.substr(0, shownLength));
    std::optional<float> exact, shortened;
    int shortenedCount = 0;
    for (int row = 0; row <= listRows && !exact; ++row) {
        const float value = static_cast<float>(row) / listRows;
        plugin.setParameter(index, value);
        const std::string shown = folded(plugin.parameterDisplay(index));
        if (shown == wanted) {
            exact = value;
        } else if (wanted.size() > shownLength && shown == cut) {
            if (!shortened) shortened = value;
            ++shortenedCount;
        }
    }
    if (exact || shortenedCount == 1) {
        plugin.setParameter(index, exact ? *exact : *shortened);
        return true;
    }
    plugin.setParameter(index, before);
    problem = shortenedCount > 1 ? "\"" + text + "\" could be several of its values: give the row as #n"
                                 : "no value of it shows as \"" + text + "\"";
    return false;
}

}  // namespace

bool applySetting(PluginHost& plugin, const std::string& setting, std::string& problem) {
    const auto equals = setting.find('=');
    if (equals == std::string::npos) return problem = "it should be [LAYER:]NAME=VALUE", false;
    std::string name = trimmed(setting.substr(0, equals));
    const std::string value = trimmed(setting.substr(equals + 1));
    int layer = 1;
    if (const auto colon = name.find(':'); colon != std::string::npos) {
        const auto given = number(name.substr(0, colon));
        if (!given || *given < 1 || *given > 99) return problem = "the layer should be a number from 1", false;
        layer = static_cast<int>(*given);
        name = name.substr(colon + 1);
    }
    if (name.empty() || name == "-" || value.empty()) return problem = "it should be [LAYER:]NAME=VALUE", false;
    const int index = findParameter(plugin, name, layer);
    if (index < 0)
        return problem = "there is no parameter " + name + (layer > 1 ? " in layer " + std::to_string(layer) : ""), false;

    if (value[0] == '#') {
        const auto row = number(value.substr(1));
        if (!row || *row < 0 || *row >= listRows) return problem = "a row should be #0 to #127", false;
        plugin.setParameter(index, static_cast<float>(*row / listRows));
        return true;
    }
    if (const auto given = number(value); given && *given >= 0.0 && *given <= 1.0) {
        plugin.setParameter(index, static_cast<float>(*given));
        return true;
    }
    return setByDisplay(plugin, index, value[0] == '@' ? value.substr(1) : value, problem);
}

}  // namespace vantoric::render
