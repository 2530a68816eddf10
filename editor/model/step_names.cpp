#include "editor/model/step_names.h"

#include <algorithm>

#include "editor/model/control_table.h"
#include "editor/model/effect_slots.h"
#include "effects/effect_texts.h"
#include "library/history.h"

namespace vantoric {

namespace {

// Empty for what belongs to no effect.
std::string effectName(const ParameterModel& parameters, int index) {
    const int number = numberOfParameter(index);
    for (const EffectSlot& slot : effectSlots) {
        const std::string before = std::string(slot.name) + ": ";
        if (number == slot.type) return before + "Type";
        if (number == slot.mix) return before + "Mix";
        const int field = number - slot.first + 1;
        if (field < 1 || field > effectValues) continue;
        const int type = slot.typeOf(parameters.getParameter(index - number + slot.type));
        const std::string name = effectParameterWords(type, field);
        return before + (name.empty() ? "Parameter " + std::to_string(field) : name);
    }
    return "";
}

// Of the matrix all that belongs to a slot, which is not the control alone that was touched first.
std::string plainName(int index) {
    const int number = numberOfParameter(index), control = controlIndexForTag(number);
    const bool isMatrix = isOneOf(number, parameter::MatSrc1, 3 * storedMatrixSlots);
    return isMatrix || control < 0 ? nameOfParameter(index) : controlEntry(control).name;
}

int layerOf(int index) { return (index - numberOfParameter(index)) / layerParameterStride; }

std::string layersOf(const std::vector<int>& indices) {
    if (numberOfParameter(indices.front()) < globalParameterCount) return "";
    if (indices.size() == layerCount) return ", all layers";
    std::string text = indices.size() == 1 ? ", layer" : ", layers";
    for (const int index : indices) text += (index == indices.front() ? " " : ", ") + std::to_string(layerOf(index) + 1);
    return text;
}

}  // namespace

std::string stepName(const ParameterModel& parameters, const std::vector<int>& indices) {
    if (indices.empty()) return "";
    std::string name = effectName(parameters, indices.front());
    if (name.empty()) name = plainName(indices.front());
    return name + layersOf(indices);
}

}  // namespace vantoric
