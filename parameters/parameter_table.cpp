#include "parameters/parameter_table.h"

#include <array>
#include <cstring>

#include "base/fixed_text.h"
#include "base/numbers.h"

namespace vantoric {

namespace {

// Members that follow each other and share all but their names. In the name '#' stands for the member's
// digit or digits, from `digit` on, and '@' for an envelope.
struct Family {
    int first, count;
    const char* name;
    int digit;
    ControlKind kind = ControlKind::None;
    float defaultValue = 0.0f;
    KnobText knobText = KnobText::ByDefault;
    const LabelList* labels = nullptr;
    ValueFormatter formatter = nullptr;
    const char* unit = "";
};

constexpr Family knob(int first, int count, const char* name, float value, KnobText text = KnobText::ByDefault,
                      const char* unit = "") {
    return {first, count, name, 1, ControlKind::Knob, value, text, nullptr, nullptr, unit};
}
constexpr Family toggle(int first, int count, const char* name) { return {first, count, name, 1, ControlKind::Switch}; }
constexpr Family list(int first, int count, const char* name, const LabelList& labels, float value = 0.0f, int digit = 1) {
    return {first, count, name, digit, ControlKind::List, value, KnobText::ByDefault, &labels};
}
constexpr Family number(int first, int count, const char* name, ValueFormatter formatter, float value = 0.0f) {
    return {first, count, name, 1, ControlKind::Number, value, KnobText::ByDefault, nullptr, formatter};
}
constexpr Family effect(int first, const char* name, int digit = 1) {
    return {first, 4, name, digit, ControlKind::EffectParameter, 0.5f, KnobText::ByDefault, nullptr, formatEmpty};
}
constexpr Family hidden(int first, int count, const char* name, int digit = 1, float value = 0.0f) {
    return {first, count, name, digit, ControlKind::None, value};
}

using enum KnobText;
namespace p = parameter;

constexpr Family families[] = {
    knob(p::Volume, 1, "Volume", 0.5f, Percent),
    knob(p::Modwheel, 1, "Modwheel", 0.0f),
    knob(p::EqLow, 1, "EqLow", 0.5f),
    knob(p::EqMid, 1, "EqMid", 0.5f),
    knob(p::EqHigh, 1, "EqHigh", 0.5f),
    list(p::FxMaType, 1, "FxMaType", masterTypeMenuLabels),
    knob(p::FxMaMix, 1, "FxMaMix", 0.5f, Percent),
    effect(p::FxMaPar1, "FxMaPar#"),
    toggle(p::Layer1On, 4, "Layer#On"),
    list(p::SoundMod, 1, "SoundMod", soundModeLabels),
    list(p::Microtun, 1, "Microtun", microtuneLabels),
    list(p::Quality, 1, "Quality", qualityLabels),
    list(p::PitchWhl, 1, "PitchWhl", pitchRangeLabels),
    knob(p::Oct1, 3, "Oct#", 0.5f, Octave),
    knob(p::Interv1, 3, "Interv#", 0.0f, Interval),
    knob(p::Detune1, 3, "Detune#", 0.5f, ByDefault, "cent"),
    knob(p::Timbre1, 3, "Timbre#", 0.5f),
    knob(p::Pw1, 3, "Pw#", 0.0f),
    knob(p::Vol1, 3, "Vol#", 0.5f, Percent),
    toggle(p::On1, 3, "On#"),
    knob(p::FiltMix1, 3, "FiltMix#", 0.0f),
    number(p::Start1, 3, "Start#", formatStart),
    number(p::KeyFol1, 3, "KeyFol#", formatKey, 1.0f),
    list(p::KeyStar1, 3, "KeyStar#", keyNameLabels),
    list(p::KeyEnd1, 3, "KeyEnd#", keyNameLabels, 127.0f / 128.0f),
    list(p::SynType1, 3, "SynType#", synthesisTypeLabels),
    list(p::WTWave1, 3, "WTWave#", wavetableWaveLabels),
    list(p::SSWave1, 3, "SSWave#", superWaveLabels),
    list(p::NoiWave1, 3, "NoiWave#", noiseTypeLabels),
    number(p::Semi1, 3, "Semi#", formatSemi),
    hidden(p::Pitch1, 3, "Pitch#"),
    hidden(p::OscAnal1, 3, "OscAnal#"),
    hidden(p::LoopSta1, 3, "LoopSta#"),
    hidden(p::LoopEnd1, 3, "LoopEnd#"),
    list(p::LoopMod1, 3, "LoopMod#", loopModeLabels),
    toggle(p::Sync1, 2, "Sync#"),
    knob(p::Fm1, 2, "Fm#", 0.0f),
    knob(p::Cutoff1, 2, "Cutoff#", 0.5f, Hertz, "Hz"),
    knob(p::Reso1, 2, "Reso#", 0.5f, Percent),
    knob(p::FilVol1, 2, "FilVol#", 0.5f, Percent),
    knob(p::FilPan1, 2, "FilPan#", 0.5f),
    knob(p::Drive1, 2, "Drive#", 0.0f),
    knob(p::FilKey1, 2, "FilKey#", 0.5f),
    knob(p::FilEnv1, 2, "FilEnv#", 0.5f),
    list(p::FilType1, 2, "FilType#", filterTypeLabels),
    list(p::DisType1, 2, "DisType#", distortionTypeLabels),
    knob(p::FilAnalo, 1, "FilAnalo", 0.0f),
    knob(p::Ringmod, 1, "Ringmod", 0.0f),
    toggle(p::FilSerial, 1, "FilSerial"),
    hidden(p::FilLink, 1, "FilLink"),
    hidden(p::FilBypas, 1, "FilBypas"),
    knob(p::LayerVol, 1, "LayerVol", 0.5f, Percent),
    list(p::FxInType, 1, "FxInType", insertTypeMenuLabels),
    knob(p::FxInMix, 1, "FxInMix", 0.5f, Percent),
    effect(p::FxInPar1, "FxInPar#"),
    list(p::MidiSpli, 1, "MidiSpli", midiChannelLabels),
    list(p::PlayMode, 1, "PlayMode", playModeLabels),
    number(p::GlideSpd, 1, "GlideSpd", formatGlide),
    list(p::VelRange, 1, "VelRange", velocityRangeLabels),
    list(p::Split, 1, "Split", keySplitLabels),
    hidden(p::Pitch, 1, "Pitch"),
    hidden(p::Fine, 1, "Fine"),
    list(p::AnaWave1, 3, "AnaWave#", analogWaveLabels),
    knob(p::LfoSpd1, 3, "LfoSpd#", 0.5f, LfoSpeed, "Hz"),
    list(p::LfoWave1, 3, "LfoWave#", lfoWaveLabels),
    number(p::LfoPhas1, 3, "LfoPhas#", formatStart),
    list(p::LfoMode1, 3, "LfoMode#", lfoModeLabels),
    number(p::LfoFade1, 3, "LfoFade#", formatFade),
    knob(p::StepSped, 1, "StepSped", 0.5f, StepSpeed, "BPM"),
    hidden(p::StepSmoo, 1, "StepSmoo"),
    list(p::StepShap, 1, "StepShap", stepShapeLabels),
    list(p::StepMode, 1, "StepMode", stepModeLabels),
    hidden(p::StepLoop, 1, "StepLoop"),
    number(p::Steps, 1, "Steps", formatSteps),
    {p::Step1, 16, "Step#", 1, ControlKind::Step},
    knob(p::AttVol, 4, "Att@", 0.5f, StageTime, "sec"),
    number(p::HoldVol, 4, "Hold@", formatHold),
    knob(p::DecVol, 4, "Dec@", 0.695f, StageTime, "sec"),
    knob(p::SusVol, 4, "Sus@", 0.5f, Percent),
    knob(p::RelVol, 4, "Rel@", 0.695f, StageTime, "sec"),
    number(p::ShapVol, 4, "Shap@", formatShape, 0.5f),
    hidden(p::VelVol, 4, "Vel@"),
    list(p::ArpSpeed, 1, "ArpSpeed", arpSpeedLabels),
    list(p::ArpType, 1, "ArpType", arpTypeLabels),
    hidden(p::ArpMode, 1, "ArpMode"),
    hidden(p::ArpLoop, 1, "ArpLoop"),
    list(p::ArpRetri, 1, "ArpRetri", arpRetriggerLabels),
    hidden(p::ArpRange, 1, "ArpRange"),
    list(p::ArpChord, 1, "ArpChord", arpChordLabels),
    number(p::ArpSwing, 1, "ArpSwing", formatSwing),
    list(p::ArpStp1, 16, "ArpStp#", arpStepNoteLabels),
    hidden(p::ArpStp1 + 16, 16, "ArpStp#", 17),
    list(p::ArpVol1, 16, "ArpVol#", arpStepVolumeLabels),
    hidden(p::ArpVol1 + 16, 10, "ArpVol#", 17),
    // The second insert took over six numbers whose names were already given.
    list(p::FxIn2Type, 1, "ArpVol#", insertTypeMenuLabels, 0.0f, 27),
    knob(p::FxIn2Mix, 1, "ArpVol28", 0.5f),
    effect(p::FxIn2Par1, "ArpVol#", 29),
    // The last slot of the matrix is stored but has no control.
    list(p::MatSrc1, 15, "MatSrc#", matrixSourceLabels),
    hidden(p::MatSrc1 + 15, 1, "MatSrc16"),
    list(p::MatDst1, 15, "MatDst#", matrixDestinationLabels),
    hidden(p::MatDst1 + 15, 1, "MatDst16"),
    number(p::MatVal1, 15, "MatVal#", formatBipolar, 0.5f),
    hidden(p::MatVal1 + 15, 1, "MatVal16", 1, 0.5f),
};

struct Range {
    int first, last;
};

constexpr Range automatableNumbers[] = {
    {0, 4},     {6, 10},    {11, 14},   {24, 47},   {72, 74},   {93, 106},  {109, 110},
    {115, 117}, {120, 120}, {122, 126}, {137, 139}, {175, 178}, {183, 194},
};

// Lists that keep an index beyond their end and show it as "empty"; stored patches rely on which.
constexpr Range unguardedLists[] = {
    {p::FilType1, p::FilType1 + 1},     {p::LoopMod1 + 2, p::LoopMod1 + 2}, {p::ArpRetri, p::ArpRetri},
    {p::ArpStp1 + 10, p::ArpStp1 + 11}, {p::ArpVol1 + 15, p::ArpVol1 + 15}, {p::MatSrc1, p::MatSrc1 + 4},
    {p::MatSrc1 + 6, p::MatSrc1 + 7},   {p::MatDst1, p::MatDst1 + 3},       {p::MatDst1 + 6, p::MatDst1 + 6},
};

template <std::size_t N>
bool contains(const Range (&ranges)[N], int n) {
    for (const Range& range : ranges)
        if (n >= range.first && n <= range.last) return true;
    return false;
}

std::string memberName(const Family& family, int member) {
    static constexpr const char* envelopes[] = {"Vol", "Fil", "Aux1", "Aux2"};
    std::string name = family.name;
    if (const auto at = name.find('#'); at != std::string::npos) name.replace(at, 1, std::to_string(family.digit + member));
    if (const auto at = name.find('@'); at != std::string::npos) name.replace(at, 1, envelopes[member]);
    return name;
}

using Table = std::array<ParameterInfo, layerParameterEnd>;

Table buildTable() {
    Table table{};
    for (const Family& family : families) {
        for (int member = 0; member < family.count; ++member) {
            const int n = family.first + member;
            ParameterInfo& info = table[static_cast<std::size_t>(n)];
            const std::string name = memberName(family, member);
            std::memcpy(info.name, name.c_str(), name.size() + 1);
            info.kind = family.kind;
            info.knobText = family.knobText;
            info.defaultValue = family.defaultValue;
            if (family.labels != nullptr) info.labels = *family.labels;
            info.formatter = family.formatter;
            info.unit = family.unit;
            info.automatable = contains(automatableNumbers, n);
            info.guarded = family.kind == ControlKind::List && !contains(unguardedLists, n);
        }
    }
    table[p::ShapVol].defaultValue = 0.75f;
    return table;
}

std::string labelAt(LabelList labels, int index) {
    return index < static_cast<int>(labels.size()) ? labels[static_cast<std::size_t>(index)] : "empty";
}

std::string tempoText(float value) { return labelAt(tempoLabels, truncateTo(value * 13.99f, 0, 13)); }

std::string stageTimeText(float value) {
    if (value < 0.01f) return "0";
    const double seconds = stageSeconds(value);
    int decimals = value > 0.1f ? 2 : 3;
    if (seconds > 1.0) decimals = 1;
    if (seconds > 10.0) decimals = 0;
    return fixedText(seconds, decimals);
}

std::string plainNumber(const ParameterInfo& info, float value) {
    const float scaled = info.defaultValue == 0.5f ? value * 200.0f - 100.0f : value * 100.0f;
    return std::to_string(truncateTo(scaled, -100, 100));
}

std::string percentText(float value) { return std::to_string(truncateTo(value * 100.0f, 0, 100)); }

std::string knobText(const ParameterInfo& info, float value, int lfoMode) {
    switch (info.knobText) {
        case Percent: return percentText(value);
        case Octave: return labelAt(octaveLabels, truncateTo(value * 8.99f, 0, 8));
        case Interval: return labelAt(intervalLabels, truncateTo(value * 6.99f, 0, 6));
        case Hertz: return std::to_string(truncateTo(fastExp(-6.0f * (1.0f - value)) * 20000.0, 0, 20000));
        case LfoSpeed: return isTempoLocked(lfoMode) ? tempoText(value) : fixedText(fastExp(value * 8.85936f) * 0.0625, 2);
        case StepSpeed: return tempoText(value);
        case StageTime: return stageTimeText(value);
        case ByDefault: break;
    }
    return plainNumber(info, value);
}

// The steps of an arpeggiator that are commands have a word for the host.
std::string listText(int n, const ParameterInfo& info, float value) {
    const std::string label = labelAt(info.labels, listIndex(value));
    if (n < p::ArpVol1 || n >= p::ArpVol1 + 16) return label;
    if (label == "L") return "Loop";
    if (label == "R") return "Release";
    if (label == "E") return "End";
    return label;
}

}  // namespace

const ParameterInfo& parameterInfo(int n) {
    static const Table table = buildTable();
    static const ParameterInfo unused;
    return n >= 0 && n < layerParameterEnd ? table[static_cast<std::size_t>(n)] : unused;
}

float limitOfParameter(int n) {
    const ParameterInfo& info = parameterInfo(n);
    return info.guarded ? static_cast<float>(info.labels.size()) * 0.0078125f : 1.0f;
}

bool isBipolar(const ParameterInfo& info) {
    if (info.kind == ControlKind::Number) return info.formatter == formatBipolar;
    return info.kind == ControlKind::Knob && info.knobText == ByDefault && info.defaultValue == 0.5f;
}

bool isTempoLocked(int lfoMode) { return lfoMode == 1 || lfoMode == 2 || lfoMode == 9; }

std::string parameterText(int n, float value, int lfoMode) {
    const ParameterInfo& info = parameterInfo(n);
    if (!(value >= 0.0f && value <= 1.0f)) return {};
    switch (info.kind) {
        case ControlKind::Knob: return knobText(info, value, lfoMode);
        case ControlKind::Switch: return switchOn(value) ? "On" : "Off";
        case ControlKind::List: return listText(n, info, value);
        case ControlKind::Number: return info.formatter(value);
        case ControlKind::Step:
        case ControlKind::EffectParameter: return percentText(value);
        case ControlKind::None: break;
    }
    return {};
}

const char* parameterUnit(int n, int lfoMode) {
    const ParameterInfo& info = parameterInfo(n);
    return info.knobText == LfoSpeed && isTempoLocked(lfoMode) ? "BPM" : info.unit;
}

}  // namespace vantoric
