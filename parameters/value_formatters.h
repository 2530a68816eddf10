// The texts of value fields: plain functions from a stored value, 0 to 1, to its full text. They do not
// depend on the process's locale. Any thread that may allocate.
#pragma once

#include <string>

namespace vantoric {

using ValueFormatter = std::string (*)(float value);

std::string formatStart(float value);    // "Start 0" to "Start 99", "Free"
std::string formatSwing(float value);    // "Swing 0" to "Swing 99"
std::string formatSteps(float value);    // "Steps 2" to "Steps 16"
std::string formatGlide(float value);    // "Glide 0" to "Glide 99"
std::string formatShape(float value);    // "Shape 0" to "Shape 9"
std::string formatHold(float value);     // "Hold 0s" to "Hold 21s"
std::string formatKey(float value);      // "Key -12" to "Key 12", "Fixed", "Keyfol."
std::string formatFade(float value);     // "Fade off", "Fade53ms", "Fade 0.1s", "Fade 14s"
std::string formatSemi(float value);     // "Semi 0" to "Semi +12"
std::string formatPercent(float value);  // "0" to "100"
std::string formatBipolar(float value);  // "-100" to "100"
std::string formatEmpty(float value);    // no text: the effect writes its own

// The time of an envelope stage or a fade in seconds, 1 ms to about 21 s: 0.001 / E(-10 value).
double stageSeconds(float value);

}  // namespace vantoric
