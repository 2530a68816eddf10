// The 77 effect types: what each is called in its slot, which family and variant make its sound, and the
// settings it opens with.
#pragma once

#include <array>

#include "effects/type_labels.h"

namespace vantoric {

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

struct EffectType {
    const char* name;  // the slot's own name; the menu's label differs in some rows
    EffectFamily family;
    int variant;
    std::array<float, 5> defaults;  // mix, parameters 1 to 4, each 0 to 1
};

// The type itself for 0 to 76, else 0.
int legalEffectType(int type);

// The row of a type; that of type 0 outside 0 to 76. Any thread.
const EffectType& effectType(int type);

// The type that a stored parameter value (index / 128) selects in an insert slot, 0 to 76. NaN reads as 0.
int typeFromValue(float value);

// The same for the master slot, which is never a Trancegate: 17 is taken as 0.
int masterTypeFromValue(float value);

// What the first insert gets for one parameter: of the lowest and the highest of the sounding voices'
// modulated values (both start out as the layer's base value) the one further from the base, the lowest
// on a tie, held to 0 to 1. NaN reads as 0.
float extremeValue(float base, float lowest, float highest);

}  // namespace vantoric
