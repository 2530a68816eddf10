#include "patch/patch_reset.h"

#include "base/engine_state.h"
#include "base/numbers.h"
#include "base/parameters.h"

namespace vantoric {

namespace {

namespace par = parameter;

constexpr int lastResetNumber = 322;

// A value for a run of numbers, `stride` apart.
struct Setting {
    int number, count, stride;
    float value;
};

constexpr Setting layerSettings[] = {
    {par::On1, 1, 1, 1.0f},
    {par::AttVol, 4, 1, 0.0f},
    {par::Pw1, 3, 1, 1.0f},
    {par::PlayMode, 1, 1, listValue(8)},  // Polyphonic 16
    {par::LfoWave1, 3, 1, listValue(3)},
    {par::LfoMode1, 3, 1, listValue(3)},
    {par::StepMode, 1, 1, listValue(2)},
    {par::FilType1, 1, 1, listValue(51)},
    {par::Cutoff1, 2, 1, 1.0f},
    {par::Reso1, 2, 1, 0.0f},
    {par::Vol1, 3, 1, 1.0f},
    {par::Oct1 + 1, 1, 1, 0.5f},
    {par::Oct1 + 2, 1, 1, 0.7f},
    {par::Step1 + 1, 8, 2, 0.0f},  // the even steps
};

constexpr Setting arpeggiatorSettings[] = {
    {par::ArpVol1, 8, 2, listValue(9)},
    {par::ArpRetri, 1, 1, listValue(1)},
};

constexpr Setting globalSettings[] = {
    {par::Volume, 1, 1, 0.333f},         {par::EqLow, 3, 1, 0.5f},
    {par::Layer1On, 1, 1, 1.0f},         {par::SoundMod, 1, 1, listValue(10)},  // Transient + Bass
    {par::Microtun, 1, 1, listValue(4)},                                        // Fat tune clean
    {par::Quality, 1, 1, listValue(2)},                                         // Crossblend PW
    {par::PitchWhl, 1, 1, listValue(6)},                                        // +-12
};

void apply(ParameterModel& parameters, int layer, const Setting& setting) {
    for (int k = 0; k < setting.count; ++k)
        parameters.setParameterQuiet(hostIndex(setting.number + k * setting.stride, layer), setting.value);
}

void setToDefaults(ParameterModel& parameters, int layer, int first, int last) {
    for (int n = first; n <= last; ++n) parameters.setParameterQuiet(hostIndex(n, layer), parameterInfo(n).defaultValue);
}

}  // namespace

void resetSynthArpeggiator(ParameterModel& parameters, int layer) {
    setToDefaults(parameters, layer, par::ArpSpeed, par::ArpVol1 + 25);
    for (const Setting& setting : arpeggiatorSettings) apply(parameters, layer, setting);
}

void resetSynthMatrix(ParameterModel& parameters, int layer) {
    apply(parameters, layer, {par::MatSrc1, storedMatrixSlots, 1, 0.0f});
    apply(parameters, layer, {par::MatDst1, storedMatrixSlots, 1, 0.0f});
    apply(parameters, layer, {par::MatVal1, storedMatrixSlots, 1, 0.5f});
}

void resetSynthLayer(ParameterModel& parameters, int layer) {
    setToDefaults(parameters, layer, globalParameterCount, lastResetNumber);
    for (const Setting& setting : layerSettings) apply(parameters, layer, setting);
    resetSynthArpeggiator(parameters, layer);
}

void resetAllParameters(ParameterModel& parameters) {
    for (int i = 0; i < parameterCount; ++i) parameters.setParameterQuiet(i, 0.0f);
    for (int layer = 0; layer < layerCount; ++layer) resetSynthLayer(parameters, layer);
    for (const Setting& setting : globalSettings) apply(parameters, 0, setting);
}

}  // namespace vantoric
