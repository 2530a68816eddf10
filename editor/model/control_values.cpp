#include "editor/model/control_values.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "base/parameters.h"
#include "effects/effect_texts.h"
#include "editor/model/control_texts.h"
#include "parameters/parameter_table.h"

namespace vantoric {
namespace {

// The type that an effect's parameter belongs to, and its index there: 0 the mix, 1 to 4.
struct EffectPlace {
    int typeNumber = -1, index = 0;
};
EffectPlace effectPlace(int number) {
    for (const int type : {+parameter::FxMaType, +parameter::FxInType, +parameter::FxIn2Type})
        if (number > type && number <= type + 5) return {type, number - type - 1};
    return {};
}

int oscillatorOf(const ControlEntry& entry) {
    if (entry.section != Section::Oscillators) return -1;
    if (entry.tag >= parameter::Oct1 && entry.tag < parameter::Sync1) return (entry.tag - parameter::Oct1) % 3;
    if (entry.tag >= parameter::AnaWave1 && entry.tag < parameter::AnaWave1 + 3) return entry.tag - parameter::AnaWave1;
    if (entry.tag >= tag::waveView1 && entry.tag < tag::waveView1 + 3) return entry.tag - tag::waveView1;
    if (entry.tag >= tag::sampleLoad1 && entry.tag < tag::sampleLoad1 + 6) return (entry.tag - tag::sampleLoad1) / 2;
    if (entry.tag >= tag::waveMenu1 && entry.tag < tag::waveMenu1 + 3) return entry.tag - tag::waveMenu1;
    return -1;
}

bool isOn(float value) { return value > 0.5f; }

}  // namespace

int ControlValues::indexOf(int number) const { return number < globalParameterCount ? number : hostIndex(number, onShow_.layer); }

float ControlValues::value(const ControlEntry& entry) const {
    const int number = parameterOfTag(entry.tag);
    return number >= 0 ? at(number) : 0.0f;
}

int ControlValues::lfoModeOf(int number) const {
    const int lfo = number - parameter::LfoSpd1;
    return lfo >= 0 && lfo < 3 ? listIndex(parameter::LfoMode1 + lfo) : 0;
}

std::string ControlValues::effectText(int number) const {
    const EffectPlace place = effectPlace(number);
    if (place.typeNumber < 0) return "";
    char text[effectTextSize] = {};
    effectParameterText(listIndex(place.typeNumber), place.index, at(number), text);
    return text;
}

std::string ControlValues::text(const ControlEntry& entry) const {
    if (entry.tag >= tag::lfoSpeedText1 && entry.tag < tag::lfoSpeedText1 + 4) {
        const int tab = entry.tag - tag::lfoSpeedText1;
        return lfoSpeedText(tab, tab < 3 ? listIndex(parameter::LfoMode1 + tab) : 0, value(entry));
    }
    switch (entry.kind) {
        case WidgetKind::EffectValue: return effectText(parameterOfTag(entry.tag));
        case WidgetKind::Value: return entry.format != nullptr ? entry.format(value(entry)) : "";
        case WidgetKind::LargeKnob: return holeText(entry);
        case WidgetKind::LargeList:
        case WidgetKind::List:
        case WidgetKind::SmallList: {
            if (entry.labels.empty() || parameterOfTag(entry.tag) < 0) return "";
            const auto index = static_cast<std::size_t>(listIndex(parameterOfTag(entry.tag)));
            return index < entry.labels.size() ? entry.labels[index] : "";
        }
        default: return "";
    }
}

// Short enough for the hole: "783", "2.0k".
std::string ControlValues::holeText(const ControlEntry& entry) const {
    const int number = parameterOfTag(entry.tag);
    const std::string full = parameterText(number, at(number), 0);
    char* end = nullptr;
    const double amount = std::strtod(full.c_str(), &end);
    if (end == full.c_str()) return full;
    char text[16];
    if (std::abs(amount) >= 1000) {
        std::snprintf(text, sizeof text, amount >= 10000 ? "%.0fk" : "%.1fk", amount / 1000);
    } else {
        std::snprintf(text, sizeof text, "%.0f", amount);
    }
    return text;
}

std::string ControlValues::unit(const ControlEntry& entry) const {
    const int number = parameterOfTag(entry.tag);
    return number >= 0 ? parameterUnit(number, lfoModeOf(number)) : "";
}

std::string ControlValues::spoken(const ControlEntry& entry) const {
    const int number = parameterOfTag(entry.tag);
    if (number < 0) return "";
    if (entry.kind == WidgetKind::EffectValue || effectPlace(number).index > 0) return effectText(number);
    if (entry.kind == WidgetKind::Switch) return isOn(at(number)) ? "on" : "off";
    if (const std::string shown = entry.kind == WidgetKind::LargeKnob ? "" : text(entry); !shown.empty()) return shown;
    const std::string plain = parameterText(number, at(number), lfoModeOf(number)), itsUnit = unit(entry);
    return itsUnit.empty() ? plain : plain + " " + itsUnit;
}

bool ControlValues::isOff(const ControlEntry& entry) const {
    if (entry.page != page::always && !isOn(parameters_.getParameter(parameter::Layer1On + onShow_.layer))) return true;
    const int oscillator = oscillatorOf(entry);
    return oscillator >= 0 && entry.kind != WidgetKind::Switch && !isOn(at(parameter::On1 + oscillator));
}

}  // namespace vantoric
