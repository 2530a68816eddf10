#include "parameters/value_formatters.h"

#include "base/fixed_text.h"
#include "base/numbers.h"

namespace vantoric {

double stageSeconds(float value) { return 0.001 / fastExp(value * -10.0f); }

std::string formatStart(float value) { return value > 0.99f ? "Free" : "Start " + fixedText(value * 100.0f, 0); }

std::string formatSwing(float value) { return "Swing " + std::to_string(truncateTo(value * 99.9999f, 0, 99)); }

std::string formatSteps(float value) { return "Steps " + std::to_string(2 + truncateTo(value * 14.9999f, 0, 14)); }

std::string formatGlide(float value) { return "Glide " + std::to_string(truncateTo(value * 99.9999f, 0, 99)); }

std::string formatShape(float value) { return "Shape " + fixedText(value * 9.0f, 0); }

std::string formatHold(float value) {
    const double seconds = stageSeconds(value);
    if (seconds < 0.01) return "Hold 0s";
    return "Hold " + fixedText(seconds, seconds < 0.5 ? 2 : seconds < 10.0 ? 1 : 0) + "s";
}

std::string formatKey(float value) {
    if (value > 0.98f) return "Keyfol.";
    if (value > 0.4583f && value < 0.546f) return "Fixed";
    return "Key " + fixedText(value * 24.0f - 12.0f, 0);
}

std::string formatFade(float value) {
    if (value < 0.01f) return "Fade off";
    const double seconds = stageSeconds(value);
    if (seconds >= 10.0) return "Fade " + std::to_string(static_cast<int>(seconds)) + "s";
    if (seconds >= 0.1) return "Fade " + fixedText(seconds, 1) + "s";
    return "Fade" + std::to_string(static_cast<int>(1.0 / fastExp(value * -10.0f))) + "ms";
}

std::string formatSemi(float value) {
    const int semitones = truncateTo(value * 12.9999f, 0, 12);
    return semitones < 1 ? "Semi 0" : "Semi +" + std::to_string(semitones);
}

std::string formatPercent(float value) { return fixedText(value * 100.0f, 0); }

std::string formatBipolar(float value) { return fixedText(value * 200.0f - 100.0f, 0); }

std::string formatEmpty(float) { return {}; }

}  // namespace vantoric
