#include "editor/model/knob_commands.h"

#include <cmath>

#include "parameters/parameter_table.h"

namespace vantoric {

namespace {

constexpr int smallKnob = 1, knob = 2, valueField = 10;  // kinds of controls

bool hits(const DropTarget& control, float x, float y, float factor) {
    const float right = x - control.x * factor, down = y - control.y * factor;
    if (control.kind == valueField) return right >= 0.0f && right <= 90.0f * factor && down >= 0.0f && down <= 16.0f * factor;
    if (control.kind != smallKnob && control.kind != knob) return false;
    const float reach = (control.kind == knob ? 21.0f : 12.0f) * factor;
    return std::fabs(right) <= reach && std::fabs(down) <= reach;
}

}  // namespace

int dropHit(std::span<const DropTarget> controls, float x, float y, float layoutFactor) {
    for (std::size_t i = 0; i < controls.size(); ++i)
        if (controls[i].isVisible && hits(controls[i], x, y, layoutFactor)) return static_cast<int>(i);
    return -1;
}

int KnobCommands::hostIndexOf(int number) const {
    return number < globalParameterCount ? number : hostIndex(number, onShow_.layer);
}

void KnobCommands::resetToDefault(int number) {
    if (number < 0 || number >= layerParameterEnd) return;
    const float value = parameterInfo(number).defaultValue;
    if (number < globalParameterCount || !onShow_.multilayer) return edits_.change(hostIndexOf(number), value);
    for (int layer = 0; layer < layerCount; ++layer) edits_.change(hostIndex(number, layer), value);
}

KnobCommandResult KnobCommands::chooseRow(int number, int row) {
    if (number < 0 || number >= layerParameterEnd) return {};
    switch (row) {
        case resetValueRow: resetToDefault(number); break;
        case resetAllRow:
            resetToDefault(number);
            learn_.removeAssignment(hostIndexOf(number));
            matrix_.removeModulation(number);
            break;
        case learnRow: return {{}, learn_.assignLearn(hostIndexOf(number))};
        case removeModulationRow: matrix_.removeModulation(number); break;
        default: break;
    }
    return {};
}

KnobCommandResult KnobCommands::chooseSource(int number, int tag) {
    matrix_.removeModulation(number);
    return {matrix_.addModulation(number, tag), ""};
}

}  // namespace vantoric
