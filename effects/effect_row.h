// The row of an effect type. Each family's class holds the rows of its own types: where the type stands in the
// menu, its labels, the settings it opens with, the function that makes its sound, and what its parameters show.
// effects/type_table.cpp puts the families' rows together; menus, dispatch and texts follow from them.
//
// To add an effect:
// - Its function in the class of its family, a name in the family's `Variant`, and a row in the family's `rows`: place in
//   the menu, label, name, defaults, function, texts, delay lines. The place is its number in patches, so new ones come
//   behind the others, and effectTypeCount counts them: a wrong, missing or double place does not compile.
// - A new family: a class as the others have (family, Variant, Row, rows; setSampleRate, setParameter, setVariant, reset,
//   process; touchMemory where it has lines), its name in EffectFamily as the last of them, its line in type_table.cpp
//   and in Multieffect::withFamily, the source in CMakeLists.txt. What is left out does not compile.
// - Slots name no type behind the menu's last dividing line (type_table.cpp): for a name of its own, put one before it.
#pragma once

#include <array>

namespace vantoric {

inline constexpr int effectTypeCount = 77;  // of the menu, dividing lines among them

enum class EffectFamily : int {
    separator = -1,  // a dividing line of the menu: audio passes untouched
    off = 0,
    reverb = 1,
    delay = 2,
    modulation = 3,
    degrade = 4,
    dynamics = 5,
    drive = 6,
    equalizer = 7,
    vocoder = 8,
};
inline constexpr EffectFamily lastEffectFamily = EffectFamily::vocoder;

// What a parameter shows. `format` holds at most one of %d (the number truncated), %.1f, %.2f and %s (the entry of
// `names` at the number truncated), and %% for a per cent sign. An empty one shows nothing.
struct ParameterText {
    const char* format = "";
    float (*number)(float p) = nullptr;
    const char* const* names = nullptr;
    int nameCount = 0;
};

// Ways to show a parameter p of 0 to 1.
namespace shown {

constexpr float percentOf(float p) { return p * 100.0f; }
constexpr float bipolarOf(float p) { return p * 200.0f - 100.0f; }

constexpr ParameterText number(const char* format, float (*value)(float)) { return {format, value}; }
constexpr ParameterText percent(const char* format) { return {format, percentOf}; }
// -100 to 100.
constexpr ParameterText bipolar(const char* format) { return {format, bipolarOf}; }
// An entry of a list.
template <int N>
constexpr ParameterText oneOf(const char* const (&names)[N], const char* format, float (*number)(float)) {
    return {format, number, names, N};
}

}  // namespace shown

using ParameterTexts = std::array<ParameterText, 4>;  // of parameters 1 to 4
using EffectDefaults = std::array<float, 5>;          // mix, parameters 1 to 4, each 0 to 1

// Which of its delay lines a type writes: the first `lines` of its family in the order in which the class names
// them, and the family's short ones too (predelay, diffuser).
struct LinesInUse {
    int lines = 0;
    bool shortOnes = false;
};

// Variant is the family's own list of its effects, Run its way to make one's sound.
template <class Variant, class Run>
struct EffectRow {
    int index;          // in the menu, and the number of the type: 0 to 76
    const char* label;  // the menu's
    const char* name;   // the slot's own; differs from the label in some rows
    Variant variant;
    EffectDefaults defaults;
    Run run;
    ParameterTexts texts;
    LinesInUse lines = {};
};

// The row of a variant by its number; null if the family has none of that number.
template <class Row, int N>
constexpr const Row* rowOf(const Row (&rows)[N], int variant) {
    for (const Row& row : rows)
        if (static_cast<int>(row.variant) == variant) return &row;
    return nullptr;
}

}  // namespace vantoric
