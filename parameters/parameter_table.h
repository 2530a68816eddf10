// What each parameter number is: name, control, default, labels and text. One static table for the host,
// the window and the tools; nothing about a parameter's text is written elsewhere.
#pragma once

#include <string>

#include "base/parameters.h"
#include "parameters/label_lists.h"
#include "parameters/value_formatters.h"

namespace vantoric {

enum class ControlKind { None, Knob, Switch, List, Number, Step, EffectParameter };

// How a knob's text comes about. ByDefault: -100 to 100 if the default is exactly 0.5, else 0 to 100.
enum class KnobText { ByDefault, Percent, Octave, Interval, Hertz, LfoSpeed, StepSpeed, StageTime };

struct ParameterInfo {
    char name[12] = "-";  // "-": the number has no function
    ControlKind kind = ControlKind::None;
    KnobText knobText = KnobText::ByDefault;
    float defaultValue = 0.0f;
    LabelList labels{};                  // of a list; else empty
    ValueFormatter formatter = nullptr;  // of a number or effect parameter; else null
    const char* unit = "";               // label for the host; an LFO's speed may also be in BPM
    bool automatable = false;
    bool guarded = false;  // a stored index past the list falls back to 0
};

// The entry of number 0 to 323; a number outside has the entry of an unused number.
const ParameterInfo& parameterInfo(int n);

// Largest value that a number keeps: labels / 128 for a guarded list of fewer than 128 labels, else 1.
float limitOfParameter(int n);

// Whether the plain number is -100 to 100 instead of 0 to 100.
bool isBipolar(const ParameterInfo& info);

// The text of `value` for number `n`, of any length: empty without a control or outside 0 to 1.
// `lfoMode` is the list index of the mode of that LFO; only its three speeds look at it.
std::string parameterText(int n, float value, int lfoMode);

// The unit for the host: "", "cent", "Hz", "BPM" or "sec".
const char* parameterUnit(int n, int lfoMode);

// Whether an LFO of that mode counts in beats.
bool isTempoLocked(int lfoMode);

}  // namespace vantoric
