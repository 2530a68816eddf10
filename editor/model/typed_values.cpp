#include "editor/model/typed_values.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>

#include "base/number_text.h"
#include "editor/model/spoken_values.h"
#include "effects/effect_texts.h"
#include "parameters/parameter_table.h"
#include "parameters/parameter_text.h"

namespace vantoric {
namespace {

constexpr int steps = 4096;  // at which a display is looked at

float middleOf(float first, float last) {
    if (first <= 0) return 0.0f;
    return last >= 1 ? 1.0f : 0.5f * (first + last);
}

constexpr double largestAmount = 1e7;  // far beyond every display, where a display's last digit still counts

// A text as a number and the words before and behind it.
struct Amount {
    double number;
    std::string before, unit;
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
    return Amount{std::clamp(found->number, -largestAmount, largestAmount), lower(trimmed(text.substr(0, begin))),
                  lower(trimmed(text.substr(begin + found->bytes)))};
}

// In the units of the displays, hertz and seconds.
double inBaseUnit(const Amount& amount) {
    const std::string& unit = amount.unit;
    if (unit == "khz" || unit == "k") return amount.number * 1000;
    if (unit == "ms") return amount.number / 1000;
    return amount.number;
}

enum class Quantity { plain, frequency, time, level, tempo };

// What a unit measures; plain for none and for words that only name the parameter.
Quantity quantityOf(const std::string& unit) {
    static const std::map<std::string, Quantity> quantities = {
        {"hz", Quantity::frequency}, {"khz", Quantity::frequency}, {"k", Quantity::frequency}, {"ms", Quantity::time},
        {"s", Quantity::time},       {"sec", Quantity::time},      {"db", Quantity::level},    {"bpm", Quantity::tempo}};
    const auto found = quantities.find(unit);
    return found == quantities.end() ? Quantity::plain : found->second;
}

// Whether an amount is none for this display: decibels for a percentage, milliseconds for a part of a beat. A display may
// begin or end with a word ("off"), so it is looked at in several places.
template <class UnitAt>
bool isForeign(const Amount& amount, UnitAt&& unitAt) {
    const Quantity wanted = quantityOf(amount.unit);
    if (wanted == Quantity::plain) return false;
    constexpr float places[] = {0.0f, 0.25f, 0.5f, 0.75f, 1.0f};
    return std::ranges::none_of(places, [&](float value) { return quantityOf(unitAt(value)) == wanted; });
}

// Whether all of a text is understood, not its number alone: behind it stands a unit that people write or what the display
// shows there, before it nothing or the end of what the display shows there ("Semi +7", "Ratio 1:4").
template <class ShownAt>
bool isUnderstood(const Amount& amount, ShownAt&& shownAt) {
    bool isUnitKnown = amount.unit.empty() || quantityOf(amount.unit) != Quantity::plain, isNameKnown = amount.before.empty();
    for (int i = 0; i <= steps && !(isUnitKnown && isNameKnown); ++i) {
        const std::optional<Amount> shown = shownAt(static_cast<float>(i) / steps);
        if (!shown) continue;
        isUnitKnown = isUnitKnown || amount.unit == shown->unit || (amount.unit == "%" && shown->unit.empty());
        isNameKnown = isNameKnown || shown->before.ends_with(amount.before);
    }
    return isUnitKnown && isNameKnown;
}

// What a display tells, as a number in its base unit; nothing for a word.
std::optional<double> shownAmount(int n, float value, int lfoMode) {
    const std::string shown = parameterText(n, value, lfoMode);
    if (shown.find('/') != std::string::npos) return std::nullopt;
    const auto amount = amountOf(shown);
    if (!amount) return std::nullopt;
    return inBaseUnit(*amount);
}

// The values between `from` and `to` whose display comes nearest to the wanted amount.
struct Nearest {
    double distance = -1;  // below 0: none
    float first = 0, last = 0;
};

template <class Shown>
Nearest searched(double wanted, float from, float to, Shown&& shownAt) {
    Nearest nearest;
    for (int i = 0; i <= steps; ++i) {
        const float value = from + (to - from) * (static_cast<float>(i) / steps);
        const std::optional<double> shown = shownAt(value);
        if (!shown) continue;
        const double distance = std::abs(*shown - wanted);
        if (nearest.distance < 0 || distance < nearest.distance - 1e-9) {
            nearest = {distance, value, value};
        } else if (distance < nearest.distance + 1e-9) {
            nearest.last = value;
        }
    }
    return nearest;
}

// Of all that a display can show the value nearest to the wanted one; of those that show the same the middle one. A display
// that tells more than the steps hold is looked at again between them.
template <class Shown>
std::optional<float> nearestShown(double wanted, Shown&& shownAt) {
    constexpr float step = 1.0f / steps;
    Nearest nearest = searched(wanted, 0.0f, 1.0f, shownAt);
    if (nearest.distance < 0) return std::nullopt;
    if (nearest.distance > 1e-9) {
        const Nearest fine = searched(wanted, std::max(0.0f, nearest.first - step), std::min(1.0f, nearest.last + step), shownAt);
        if (fine.distance < nearest.distance) nearest = fine;
    }
    return middleOf(nearest.first, nearest.last);
}

// ---- the fields of an effect

std::string effectText(Q7Editor::EffectField field, float value) {
    char text[effectTextSize];
    effectParameterText(field.type, field.parameter, value, text);
    return text;
}

// "Ratio 1:4" tells a 4: what is told stands behind the last word or sign.
std::string withoutName(const std::string& shown) {
    const std::size_t digit = std::min(shown.find_last_of("0123456789"), shown.size());
    const std::size_t before = shown.find_last_not_of("0123456789.+-", digit);
    return before == std::string::npos ? shown : shown.substr(before + 1);
}

// The name stands before it.
std::optional<Amount> namedAmount(std::string text) {
    std::replace(text.begin(), text.end(), ',', '.');
    const std::string plain = withoutName(text);
    auto amount = amountOf(plain);
    if (amount) amount->before = trimmed(text.substr(0, text.size() - plain.size()) + amount->before);
    return amount;
}

// The middle of the values whose text is as wanted.
template <class IsWanted>
std::optional<float> valueShowing(IsWanted&& isWanted) {
    int first = -1, last = -1;
    for (int i = 0; i <= steps; ++i) {
        if (!isWanted(static_cast<float>(i) / steps)) continue;
        if (first < 0) first = i;
        last = i;
    }
    if (first < 0) return std::nullopt;
    return middleOf(static_cast<float>(first) / steps, static_cast<float>(last) / steps);
}

std::optional<float> typedEffectValue(Q7Editor::EffectField field, float now, const std::string& text) {
    const std::string typed = lower(trimmed(text));
    if (typed.empty()) return std::nullopt;
    // With the name before it or without.
    const auto isShown = [&](float value) {
        const std::string shown = lower(trimmed(effectText(field, value)));
        return shown == typed || shown.ends_with(" " + typed) || shown.ends_with(":" + typed);
    };
    if (const auto value = valueShowing(isShown)) return value;
    auto amount = namedAmount(typed);
    const auto shownNow = amountOf(withoutName(effectText(field, now)));
    if (!amount || !shownNow || typed.find('/') != std::string::npos) return std::nullopt;
    if (!isUnderstood(*amount, [&](float value) { return namedAmount(lower(effectText(field, value))); })) return std::nullopt;
    if (amount->unit.empty()) amount->unit = shownNow->unit;
    const auto unitAt = [&](float value) {
        const auto shown = amountOf(withoutName(effectText(field, value)));
        return shown ? shown->unit : std::string();
    };
    if (isForeign(*amount, unitAt)) return std::nullopt;
    return nearestShown(inBaseUnit(*amount), [&](float value) -> std::optional<double> {
        const auto shown = amountOf(withoutName(effectText(field, value)));
        if (!shown) return std::nullopt;
        return inBaseUnit(*shown);
    });
}

bool isLabelled(int n) { return !parameterInfo(n).labels.empty() || parameterInfo(n).kind == ControlKind::Switch; }

}  // namespace

std::optional<float> typedValue(int n, const std::string& text, int lfoMode) {
    const std::string typed = trimmed(text);
    if (typed.empty()) return std::nullopt;
    const bool isFraction = typed.find('/') != std::string::npos;  // of a beat
    if (isLabelled(n) || isFraction) return parseParameterValue(n, typed);
    const auto amount = amountOf(typed);
    const std::string unit = lower(parameterUnit(n, lfoMode));
    const auto shownAt = [&](float value) {
        auto shown = amountOf(parameterText(n, value, lfoMode));
        if (shown && !unit.empty()) shown->unit = unit;
        return shown;
    };
    if (!amount || !isUnderstood(*amount, shownAt)) return parseParameterValue(n, typed);  // a word such as "Free" or "Keyfol."
    const auto unitAt = [&](float value) {
        const auto shown = shownAt(value);
        return shown ? shown->unit : unit;
    };
    if (isForeign(*amount, unitAt)) return std::nullopt;
    const auto nearest = nearestShown(inBaseUnit(*amount), [&](float value) { return shownAmount(n, value, lfoMode); });
    // One number may have two texts: a time of "0", and one that is less than "0.01".
    const std::string plain = lower(typed).ends_with(unit) ? trimmed(typed.substr(0, typed.size() - unit.size())) : typed;
    const auto isShown = [&](float value) { return parameterText(n, value, lfoMode) == plain; };
    const auto exact = nearest && !isShown(*nearest) ? valueShowing(isShown) : std::nullopt;
    return exact ? exact : nearest;
}

std::string typedRange(int n, int lfoMode) {
    const LabelList labels = parameterInfo(n).labels;
    if (!labels.empty()) return std::string(labels.front()) + " to " + labels.back();
    if (parameterInfo(n).kind == ControlKind::Switch) return "On or Off";
    const std::string unit = parameterUnit(n, lfoMode), tail = unit.empty() ? "" : " " + unit;
    return parameterText(n, 0, lfoMode) + " to " + parameterText(n, 1, lfoMode) + tail;
}

std::optional<float> typedValue(const Q7Editor& editor, const ControlEntry& entry, const std::string& text) {
    if (lower(trimmed(text)) == lower(trimmed(spokenValue(editor, entry)))) return editor.valueOf(entry.tag);
    if (entry.kind == WidgetKind::EffectValue)
        return typedEffectValue(editor.effectField(entry.tag), editor.valueOf(entry.tag), text);
    const int number = parameterOfTag(entry.tag);
    return typedValue(number, text, editor.lfoModeOf(number));
}

std::string typedRange(const Q7Editor& editor, const ControlEntry& entry) {
    const int number = parameterOfTag(entry.tag);
    if (entry.kind != WidgetKind::EffectValue) return typedRange(number, editor.lfoModeOf(number));
    const Q7Editor::EffectField field = editor.effectField(entry.tag);
    return effectText(field, 0) + " to " + effectText(field, 1);
}

}  // namespace vantoric
