// Parameters and values as people write them, for tools and readable patch files. Any thread but the
// audio thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantoric {

// The host index of a name as the table has it, letter case included ("Cutoff1", "FilSerial"): in layer 0
// to 3, or global whatever the layer. A text of digits after '#' is the parameter number itself ("#90").
// -1 if there is none.
int parameterIndex(std::string_view name, int layer);

// The same with an optional layer in front, "1:" to "4:", the first if there is none ("3:Cutoff1"). '#' and
// digits without a layer are the host index ("#697").
int parameterIndex(std::string_view text);

// The stored value, 0 to 1, that a person's text means for number `n`, or nothing. In this order:
// - a label of the number's list, octave or interval ("LP 24dB", "-2", "3/2"), or "#" and a list index;
// - "On" and "Off" for a switch;
// - a text that the value shows ("Semi +7", "Fixed", "Free", "Steps 8"), or a tempo ("1/4", "1 BPM");
// - for lists a bare list index ("30");
// - a number with '%', "cent" or a sign in the unit of the display ("37%", "+50", "-20 cent");
// - a bare number from 0 to 1, the value itself.
// Of several values that show a text it is 0, 0.5 or 1 if among them, else the middle one.
std::optional<float> parseParameterValue(int n, std::string_view text);

// A text for `value`, 0 to 1, that `parseParameterValue` reads back to exactly the same float: a label, "On"
// or "Off" where the value stands for one exactly, else a number with a decimal point.
std::string parameterValueText(int n, float value);

}  // namespace vantoric
