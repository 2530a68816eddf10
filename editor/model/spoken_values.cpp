#include "editor/model/spoken_values.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "base/number_text.h"
#include "base/parameters.h"
#include "parameters/parameter_table.h"
#include "voice/step_lfo.h"

namespace vantoric {
namespace {

// 0 to 2; -1 for what belongs to none, or to several.
int oscillatorOf(const ControlEntry& entry) {
    if (entry.section != Section::Oscillators) return -1;
    if (isOneOf(entry.tag, parameter::Oct1, parameter::Sync1 - parameter::Oct1)) return (entry.tag - parameter::Oct1) % 3;
    if (isOneOf(entry.tag, parameter::AnaWave1, 3)) return entry.tag - parameter::AnaWave1;
    if (isOneOf(entry.tag, tag::waveView1, 3)) return entry.tag - tag::waveView1;
    if (isOneOf(entry.tag, tag::sampleLoad1, 6)) return (entry.tag - tag::sampleLoad1) / 2;
    if (isOneOf(entry.tag, tag::waveMenu1, 3)) return entry.tag - tag::waveMenu1;
    return -1;
}

bool isOn(float value) { return value > 0.5f; }

constexpr int shownSteps = 16;  // of the arpeggiator

// The step at which the arpeggio turns back or ends, and which is not played itself. The first one's sign has no effect.
int endOfArpeggio(const Q7Editor& editor) {
    for (int step = 1; step < shownSteps; ++step) {
        const LabelList labels = parameterInfo(parameter::ArpVol1 + step).labels;
        const auto row = static_cast<std::size_t>(listIndex(editor.valueOf(parameter::ArpVol1 + step)));
        const std::string_view sign = row < labels.size() ? labels[row] : "";
        if (sign == "L" || sign == "E") return step;
    }
    return shownSteps;
}

// The sign that ends an arpeggio is still read.
bool isPastTheEnd(const Q7Editor& editor, int tag) {
    if (isOneOf(tag, parameter::Step1, 16))
        return tag - parameter::Step1 >= StepLfo::stepsPlayed(editor.valueOf(parameter::Steps));
    if (isOneOf(tag, parameter::ArpStp1, shownSteps)) return tag - parameter::ArpStp1 >= endOfArpeggio(editor);
    return isOneOf(tag, parameter::ArpVol1, shownSteps) && tag - parameter::ArpVol1 > endOfArpeggio(editor);
}

}  // namespace

std::string holeText(const Q7Editor& editor, const ControlEntry& entry) {
    const std::string full = editor.textOf(entry);
    const std::size_t first = std::min(full.find_first_not_of(' '), full.size());
    const auto found = numberAtStart(std::string_view(full).substr(first));
    if (!found) return full;
    const double amount = found->number;
    if (std::abs(amount) < 999.5) return decimalText(amount, 0);
    constexpr int digits = 6;
    return shortText(std::abs(amount) >= 9950 ? std::round(amount / 1000) : std::round(amount / 100) / 10, digits) + "k";
}

std::string faceText(Q7Editor& editor, const ControlEntry& entry) {
    if (entry.kind == WidgetKind::LargeKnob) return holeText(editor, entry);
    if (entry.kind == WidgetKind::EffectValue && editor.effectField(entry.tag).type == 0) return "";  // the slot is off
    if (entry.kind == WidgetKind::SmallList && isOneOf(entry.tag, tag::sampleEdit1, 6)) return "Edit";
    if (!isWaveMenu(entry)) return editor.textOf(entry);
    const std::string wave = editor.commands().shownWave(entry.tag - tag::waveMenu1);
    return wave.empty() ? "Custom wave" : wave;
}

std::string spokenValue(const Q7Editor& editor, const ControlEntry& entry) {
    if (parameterOfTag(entry.tag) < 0) return "";
    if (entry.kind == WidgetKind::Switch) return isOn(editor.valueOf(entry.tag)) ? "on" : "off";
    const KnobState state = editor.knobState(entry);
    return state.unit.empty() ? state.valueText : state.valueText + " " + state.unit;
}

bool isSilent(const Q7Editor& editor, const ControlEntry& entry) {
    if (entry.page != page::always && !isOn(editor.valueOf(parameter::Layer1On + editor.onShow().layer))) return true;
    if (isPastTheEnd(editor, entry.tag)) return true;
    const int oscillator = oscillatorOf(entry);
    return oscillator >= 0 && entry.kind != WidgetKind::Switch && !isOn(editor.valueOf(parameter::On1 + oscillator));
}

}  // namespace vantoric
