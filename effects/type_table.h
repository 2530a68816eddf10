// The 77 effect types as one table, put together from the rows of the families.
#pragma once

#include "effects/effect_row.h"
#include "effects/type_labels.h"

namespace vantoric {

// A type for whoever need not know its family's class.
struct EffectType {
    const char* label;  // the menu's
    const char* name;   // the slot's own
    EffectFamily family;
    int variant;  // the family's number for it
    EffectDefaults defaults;
    ParameterTexts texts;
};

// The type itself for 0 to 76, else 0.
int legalEffectType(int type);

// Whether a slot shows the type by its name. Any thread.
bool hasSlotName(int type);

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
