#include "editor/model/control_texts.h"

#include <cctype>

#include "base/parameters.h"
#include "parameters/parameter_table.h"

namespace vantoric {

namespace {

constexpr const char* lfoLabels[] = {
    "Lfo1 +", "Lfo1 +-", "Lfo2 +", "Lfo2 +-", "Lfo3 +", "Lfo3 +-", "Step Lfo/Envelope +", "Step Lfo/Envelope +-",
};
constexpr const char* freeLfoLabels[] = {
    "1/64Hz", "1/32Hz", "1/16Hz", "1/8Hz", "1/4Hz", "1/2Hz", "1Hz",  "1.4Hz", "2Hz",
    "2.8Hz",  "4Hz",    "5.6Hz",  "8Hz",   "11Hz",  "16Hz",  "32Hz", "64Hz",
};
constexpr const char* envelopeLabels[] = {
    "Volume Env", "Filter Env", "Aux1 Env",   "Aux2 Env", "Decay 8ms", "Decay 16ms", "Decay 32ms", "Decay 64ms",
    "Decay 0.1s", "Decay 0.2s", "Decay 0.5s", "Decay 1s", "Decay 2s",  "Decay 4s",   "Decay 8s",   "Decay 16s",
};

// Fifteen sources of the matrix under the names that they have there.
constexpr int firstMidiSource = 17, midiSources = 15;
constexpr int firstRandomSource = 13, randomSources = 3;

std::string controllerText(int ccNumber) { return "CC" + std::to_string(ccNumber); }

bool hasController(int ccNumber) { return ccNumber >= 0; }

}  // namespace

std::vector<std::string> hintLines(const KnobState& knob) {
    if (knob.ccNumber == MidiLearn::learning) return {"Midi learn: Assign CC ", "Move your controler!"};
    std::vector<std::string> lines{knob.valueText.empty() ? knob.name
                                                          : knob.name + ": " + knob.valueText + " " + knob.unit + " "};
    const bool isMapped = hasController(knob.ccNumber);
    if (knob.modCount == 1 && !isMapped)
        lines.push_back("Modulator: " + knob.modNames);
    else if (knob.modCount > 0 || isMapped)
        lines.push_back("Modulators: " + knob.modNames + " " + (isMapped ? controllerText(knob.ccNumber) : "") + "...");
    return lines;
}

ColourWord hintOutlineOf(int ccNumber) { return ccNumber == MidiLearn::noController ? hintOutline : mappedOutline; }

std::string lfoSpeedText(int tab, int mode, float value) {
    const int n = tab == 3 ? static_cast<int>(parameter::StepSped) : parameter::LfoSpd1 + tab;
    return parameterText(n, value, mode) + " " + parameterUnit(n, mode);
}

// At the first blank before a digit or sign, or where the digits follow the first word without one.
NameAndValue parted(const std::string& text) {
    const auto isIn = [&text](std::size_t at, auto kind) {
        return at < text.size() && kind(static_cast<unsigned char>(text[at])) != 0;
    };
    std::size_t word = 0;
    while (isIn(word, [](int c) { return std::isalpha(c); })) ++word;
    if (word > 0 && isIn(word, [](int c) { return std::isdigit(c); })) return {text.substr(0, word), text.substr(word)};
    for (std::size_t i = text.find(' '); i != std::string::npos; i = text.find(' ', i + 1)) {
        const bool isNumber = isIn(i + 1, [](int c) { return std::isdigit(c) != 0 || c == '+' || c == '-'; });
        if (isNumber || text.compare(i + 1, std::string::npos, "off") == 0) return {text.substr(0, i), text.substr(i + 1)};
    }
    return {"", text};
}

std::span<const KnobSubmenu> knobSubmenus() {
    static const KnobSubmenu submenus[knobSubmenuCount] = {
        {"Modulate with Lfo", lfoLabels, lfoRows},
        {"Modulate with free running Lfo", freeLfoLabels, freeLfoRows},
        {"Modulate with Envelope", envelopeLabels, envelopeRows},
        {"Modulate with Midi", matrixSourceLabels.subspan(firstMidiSource, midiSources), midiRows},
        {"Modulate with Random", matrixSourceLabels.subspan(firstRandomSource, randomSources), randomRows},
    };
    return submenus;
}

std::vector<std::string> knobMenuRows(int number, int ccNumber) {
    std::vector<std::string> rows{"Reset to default value"};
    if (number == parameter::Modwheel) return rows;
    rows.insert(rows.end(), {"Reset all (value, modulation, midi)", "-"});
    rows.push_back(hasController(ccNumber) ? "Midi learn-> remove " + controllerText(ccNumber) : "Midi learn -> assign CC");
    if (destinationOf(number) == 0) return rows;
    rows.push_back("-");
    for (const KnobSubmenu& submenu : knobSubmenus()) rows.push_back(submenu.label);
    rows.emplace_back("Remove modulation");
    return rows;
}

}  // namespace vantoric
