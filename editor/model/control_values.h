// What the controls of the table show at present: their values and texts, read from the instrument.
#pragma once

#include <string>

#include "editor/model/control_table.h"
#include "library/on_show.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// On the thread of the window. Both must outlive it.
class ControlValues {
public:
    ControlValues(const ParameterModel& parameters, const OnShow& onShow) : parameters_(parameters), onShow_(onShow) {}

    // The parameter of a control on the layer on show, 0 to 1; 0 for one without a parameter.
    float value(const ControlEntry& entry) const;

    // What is written on a list or a field, or in the hole of a large knob; empty for all others and for an effect's
    // parameter that its type does not have.
    std::string text(const ControlEntry& entry) const;

    // The value in the parameter's own words and unit, as the hint line tells it: "Cutoff 783 Hz", "62 %".
    std::string spoken(const ControlEntry& entry) const;
    // Its unit: "", "cent", "Hz", "BPM" or "sec".
    std::string unit(const ControlEntry& entry) const;

    // The list index of the mode of the LFO that a number belongs to; 0 for other numbers.
    int lfoModeOf(int number) const;
    // Whether the oscillator, layer or effect that a control belongs to is switched off.
    bool isOff(const ControlEntry& entry) const;

private:
    float at(int number) const { return parameters_.getParameter(indexOf(number)); }
    int listIndex(int number) const { return parameters_.getListIndex(indexOf(number)); }
    int indexOf(int number) const;
    std::string effectText(int number) const;
    std::string holeText(const ControlEntry& entry) const;

    const ParameterModel& parameters_;
    const OnShow& onShow_;
};

}  // namespace vantoric
