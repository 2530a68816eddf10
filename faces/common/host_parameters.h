// The parameters as hosts of today see them: in plain values, where a parameter with a few states counts these from 0, with
// names and texts of any length. All of it follows from the one table; VST 2.4 has stored values and short texts instead.
#pragma once

#include <optional>
#include <string>

#include "engine/instrument.h"

namespace vantoric::host_parameter {

// For all: `index` is a host index, 0 to 1223. Any thread but the audio thread, unless said otherwise.

// As the table has it, with the layer in front: "Volume", "3:Cutoff1". "-" for a number without a function.
std::string name(int index);
// "Global" or "Layer 1" to "Layer 4".
const char* group(int index);
// Whether hosts may automate it.
bool isAutomatable(int index);
// Whether hosts may modulate it: one that they may automate, without states. Also on the audio thread.
bool isModulatable(int index);
// Whether the number has a function, and whether it has a control in the window.
bool exists(int index);
bool isShown(int index);

// How many steps lie above the lowest state: 1 for a switch; 0 for a parameter without states. Also on the audio thread.
int steps(int index);
// The largest plain value: `steps`, or 1 without. The smallest is 0. Also on the audio thread.
double largest(int index);
// The plain value of a stored one, and back; any number, NaN counts as 0. Also on the audio thread.
double plain(int index, float stored);
float stored(int index, double plain);
// What the parameter is to store when its host sets it: the value in force where that is of the same state already, as a host
// that sends back what it has read must change nothing. Also on the audio thread.
float storedFor(const Instrument& instrument, int index, double plain);
// The default, plain.
double defaultValue(int index);

// The unit, "" for none. An LFO's speed has that of the patch in force.
std::string unit(const Instrument& instrument, int index);
// What the instrument shows for a plain value, without the unit.
std::string text(const Instrument& instrument, int index, double plain);
// The plain value that a user's text means, with or without a unit; nothing if it means none.
std::optional<double> valueOfText(const Instrument& instrument, int index, const std::string& text);
// The text of step `step`, 0 to `steps`.
std::string stepText(int index, int step);

}  // namespace vantoric::host_parameter
