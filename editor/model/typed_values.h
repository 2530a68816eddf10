// Values as a player types them into the window.
#pragma once

#include <optional>
#include <string>

#include "editor/model/q7editor.h"

namespace vantoric {

// The stored value, 0 to 1, that a typed text means for parameter number `n`, or nothing. Takes what the parameter's display
// shows, and beside it a comma for a point, and amounts with the units that people write: "1.2 kHz", "783Hz", "440ms", "1.5 s",
// "-7" semitones or percent, "+50", "62 %". Of an amount the nearest value that the display can show. `lfoMode`: the list
// index of the LFO's mode, for the three speeds.
std::optional<float> typedValue(int n, const std::string& text, int lfoMode);

// What may be typed for it: "-100 to 100", "20 Hz to 20 kHz" or a few labels.
std::string typedRange(int n, int lfoMode);

// The two for a control of a parameter as the editor shows it now: what it shows means the value that it has, and the
// fields of an effect take and tell what the effect's type shows there: "28.0m", "440ms", "1/4". A bare number is in the
// unit of the field.
std::optional<float> typedValue(const Q7Editor& editor, const ControlEntry& entry, const std::string& text);
std::string typedRange(const Q7Editor& editor, const ControlEntry& entry);

}  // namespace vantoric
