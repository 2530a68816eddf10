// Values in few words: in the hole of a large knob, and as the hint line tells them.
#pragma once

#include <string>

#include "editor/model/q7editor.h"

namespace vantoric {

// At most four characters: "783", "2.4k".
std::string holeText(const Q7Editor& editor, const ControlEntry& entry);

// What stands on the control itself; empty where it shows no words.
std::string faceText(Q7Editor& editor, const ControlEntry& entry);

// The value with its unit, "783.0 Hz", "on"; empty for a control without a value.
std::string spokenValue(const Q7Editor& editor, const ControlEntry& entry);

// Whether the layer or oscillator that a control belongs to is switched off, or it is a step of a row that ends before it.
bool isSilent(const Q7Editor& editor, const ControlEntry& entry);

}  // namespace vantoric
