// The patches that the benches play: three High quality wavetable oscillators into two filters, and the same with everything
// in use.
#pragma once

#include <cstdio>

#include "base/numbers.h"
#include "base/parameters.h"
#include "parameters/parameter_model.h"
#include "sound/kernels.h"

namespace bench {

using vantoric::filterCount, vantoric::layerCount, vantoric::oscillatorCount;
using vantoric::hostIndex, vantoric::listValue, vantoric::ParameterModel, vantoric::parameterCount;
namespace parameter = vantoric::parameter;

// Open filters; both "LP 24dB"; these with the tone stages away from the middle, drift, and four rows of the matrix of which
// three move the cutoffs.
enum class Patch { plain, filters, full };

namespace detail {

// Writes the parameters of a layer, by number.
struct LayerWriter {
    ParameterModel& parameters;
    int layer;

    void set(int number, float value) const { parameters.writeRaw(hostIndex(number, layer), value); }
    void setList(int number, int row) const { set(number, listValue(row)); }
};

inline void plainLayer(const LayerWriter& to, bool isOpen) {
    constexpr int openPass = 0, lowPass24 = 4;  // of the filter types
    to.parameters.writeRaw(parameter::Layer1On + to.layer, 1.0f);
    for (int i = 0; i < oscillatorCount; ++i) {
        to.setList(parameter::KeyEnd1 + i, 127);
        for (const int number : {parameter::Oct1, parameter::Detune1, parameter::Pw1}) to.set(number + i, 0.5f);
        to.set(parameter::KeyFol1 + i, 1.0f);
        to.set(parameter::On1 + i, 1.0f);
        to.set(parameter::Vol1 + i, 0.5f);
        to.setList(parameter::SynType1 + i, vantoric::wavetableType);
        to.setList(parameter::WTWave1 + i, i);
        if (i > 0) to.set(parameter::Fm1 + i - 1, 0.0f);
    }
    for (int f = 0; f < filterCount; ++f) {
        to.set(parameter::FilVol1 + f, 1.0f);
        for (const int number : {parameter::FilPan1, parameter::FilKey1}) to.set(number + f, 0.5f);
        to.setList(parameter::FilType1 + f, isOpen ? openPass : lowPass24);
        to.set(parameter::Cutoff1 + f, 0.7f);
        to.set(parameter::Reso1 + f, 0.5f);
    }
    to.set(parameter::LayerVol, 0.4f);
    to.set(parameter::SusVol, 0.99f);
    to.setList(parameter::PlayMode, 8);
}

inline void useEverything(const LayerWriter& to, bool on) {
    struct Row {
        int source, destination;
        float amount;
    };
    constexpr int lfo1 = 2, lfo2 = 3, filterEnvelopeLevel = 8, velocity = 18;
    constexpr int cutoff1 = 32, cutoff2 = 33, filterVolume1 = 38;
    constexpr Row rows[] = {
        {lfo1, cutoff1, 0.6f}, {lfo2, cutoff2, 0.6f}, {filterEnvelopeLevel, cutoff1, 0.55f}, {velocity, filterVolume1, 0.45f}};
    constexpr float timbres[] = {0.3f, 0.7f, 0.2f};
    constexpr int sine = 2, saw = 4, analogMedium = 2;
    to.parameters.writeRaw(parameter::Microtun, listValue(on ? analogMedium : 0));
    for (int i = 0; i < oscillatorCount; ++i) to.set(parameter::Timbre1 + i, on ? timbres[i] : 0.5f);
    for (int f = 0; f < filterCount; ++f) to.set(parameter::FilEnv1 + f, on ? 0.6f : 0.5f);
    to.setList(parameter::LfoWave1, on ? sine : 0);
    to.setList(parameter::LfoWave1 + 1, on ? saw : 0);
    for (int i = 0; i < 2; ++i) to.set(parameter::LfoSpd1 + i, on ? 0.5f : 0.0f);
    for (int i = 0; i < 16; ++i) to.set(parameter::MatVal1 + i, 0.5f);
    for (int i = 0; i < 4; ++i) {
        to.setList(parameter::MatSrc1 + i, on ? rows[i].source : 0);
        to.setList(parameter::MatDst1 + i, on ? rows[i].destination : 0);
        to.set(parameter::MatVal1 + i, on ? rows[i].amount : 0.5f);
    }
}

}  // namespace detail

// Gives a layer (0 to 3) the patch; no block runs.
inline void takePatch(ParameterModel& parameters, int layer, Patch patch) {
    const detail::LayerWriter to{parameters, layer};
    detail::plainLayer(to, patch == Patch::plain);
    detail::useEverything(to, patch == Patch::full);
}

// The same to all four, with everything else of the instrument at rest.
inline void takePatchAlone(ParameterModel& parameters, Patch patch) {
    for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.0f);
    parameters.writeRaw(parameter::Volume, 0.5f);
    for (const int n : {parameter::EqLow, parameter::EqMid, parameter::EqHigh}) parameters.writeRaw(n, 0.5f);
    parameters.writeRaw(parameter::Quality, listValue(vantoric::highQuality));
    for (int layer = 0; layer < layerCount; ++layer) takePatch(parameters, layer, patch);
}

// Ends a line: what was aimed at, and whether that is missed.
inline void printAim(double value, double most, const char* unit) {
    std::printf("   aim %g%s%s\n", most, unit, value <= most ? "" : ", missed");
}

}  // namespace bench
