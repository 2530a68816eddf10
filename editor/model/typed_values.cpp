#include "editor/model/typed_values.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "base/number_text.h"
#include "parameters/parameter_table.h"
#include "parameters/parameter_text.h"

namespace vantoric {
namespace {

// A text as a number and what follows it.
struct Amount {
    double number;
    std::string unit;
};

std::string lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string trimmed(const std::string& text) {
    const auto isBlank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isBlank).base();
    return first < last ? std::string(first, last) : std::string();
}

std::optional<Amount> amountOf(std::string text) {
    std::replace(text.begin(), text.end(), ',', '.');
    const std::size_t begin = std::min(text.find_first_of("0123456789-+."), text.size());
    const auto found = numberAtStart(std::string_view(text).substr(begin));
    if (!found || !std::isfinite(found->number)) return std::nullopt;
    return Amount{found->number, lower(trimmed(text.substr(begin + found->bytes)))};
}

// In the units of the displays, hertz and seconds.
double inBaseUnit(const Amount& amount) {
    const std::string& unit = amount.unit;
    if (unit == "khz" || unit == "k") return amount.number * 1000;
    if (unit == "ms") return amount.number / 1000;
    return amount.number;
}

// What a display tells, as a number in its base unit; nothing for a word.
std::optional<double> shownAmount(int n, float value, int lfoMode) {
    const std::string shown = parameterText(n, value, lfoMode);
    if (shown.find('/') != std::string::npos) return std::nullopt;
    const auto amount = amountOf(shown);
    if (!amount) return std::nullopt;
    return inBaseUnit(*amount);
}

bool isLabelled(int n) { return !parameterInfo(n).labels.empty() || parameterInfo(n).kind == ControlKind::Switch; }

}  // namespace

std::optional<float> typedValue(int n, const std::string& text, int lfoMode) {
    const std::string typed = trimmed(text);
    if (typed.empty()) return std::nullopt;
    const bool isFraction = typed.find('/') != std::string::npos;  // of a beat
    if (isLabelled(n) || isFraction) return parseParameterValue(n, typed);
    const auto amount = amountOf(typed);
    const bool hasLetters =
        std::any_of(typed.begin(), typed.end(), [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; });
    if (!amount || (hasLetters && !amount->unit.empty() && lower(typed).find(amount->unit) != 0 &&
                    !std::isdigit(static_cast<unsigned char>(typed[0])) && typed[0] != '-' && typed[0] != '+'))
        return parseParameterValue(n, typed);  // a word such as "Free" or "Keyfol."
    // Of all that the display can show the nearest; of those that show the same the middle one.
    const double wanted = inBaseUnit(*amount);
    constexpr int steps = 4096;
    double nearest = -1;
    int first = 0, last = -1;
    for (int i = 0; i <= steps; ++i) {
        const auto shown = shownAmount(n, static_cast<float>(i) / steps, lfoMode);
        if (!shown) continue;
        const double distance = std::abs(*shown - wanted);
        if (last < 0 || distance < nearest - 1e-9) {
            nearest = distance;
            first = last = i;
        } else if (distance < nearest + 1e-9) {
            last = i;
        }
    }
    if (last < 0) return std::nullopt;
    if (first == 0) return 0.0f;
    if (last == steps) return 1.0f;
    return static_cast<float>(first + last) / (2.0f * steps);
}

std::string typedRange(int n, int lfoMode) {
    const LabelList labels = parameterInfo(n).labels;
    if (!labels.empty()) return std::string(labels.front()) + " to " + labels.back();
    if (parameterInfo(n).kind == ControlKind::Switch) return "On or Off";
    const std::string unit = parameterUnit(n, lfoMode), tail = unit.empty() ? "" : " " + unit;
    return parameterText(n, 0, lfoMode) + " to " + parameterText(n, 1, lfoMode) + tail;
}

}  // namespace vantoric
