// The parameters of the slots of effects, by number.
#pragma once

#include "base/parameters.h"
#include "effects/type_table.h"

namespace vantoric {

inline constexpr int effectValues = 4;  // parameters of an effect beside its mix

struct EffectSlot {
    const char* name;
    int type, mix, first;  // numbers; the four parameters follow the first
    int (*typeOf)(float value);
};

inline constexpr EffectSlot effectSlots[] = {
    {"Master effect", parameter::FxMaType, parameter::FxMaMix, parameter::FxMaPar1, masterTypeFromValue},
    {"Insert effect 1", parameter::FxInType, parameter::FxInMix, parameter::FxInPar1, typeFromValue},
    {"Insert effect 2", parameter::FxIn2Type, parameter::FxIn2Mix, parameter::FxIn2Par1, typeFromValue},
};

// The slot whose type that number is, or one of whose four parameters; null for all others.
constexpr const EffectSlot* slotOfType(int number) {
    for (const EffectSlot& slot : effectSlots)
        if (slot.type == number) return &slot;
    return nullptr;
}
constexpr const EffectSlot* slotOfField(int number) {
    for (const EffectSlot& slot : effectSlots)
        if (number >= slot.first && number < slot.first + effectValues) return &slot;
    return nullptr;
}

}  // namespace vantoric
