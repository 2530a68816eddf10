#include "apps/patch/compare.h"

#include <algorithm>

#include "apps/patch/patch_text.h"
#include "apps/patch/value_text.h"
#include "base/numbers.h"
#include "parameters/parameter_table.h"

namespace vantoric::patch {

namespace {

std::string label(int index) {
    const int n = numberOfParameter(index);
    std::string name = parameterInfo(n).name;
    if (name == "-") name = std::string("#").append(std::to_string(n));
    const int layer = ParameterModel::parameterLayer(index);
    return layer == 0 ? name : "layer " + std::to_string(layer) + " " + name;
}

std::string valueText(const Patch& patch, int index) {
    const int n = numberOfParameter(index);
    int mode = 0;
    if (n >= parameter::LfoSpd1 && n < parameter::LfoSpd1 + 3)
        mode = patch.parameters.getListIndex(index - parameter::LfoSpd1 + parameter::LfoMode1);
    return writeValue(n, patch.parameters.getParameter(index), mode);
}

bool sameSample(const Sample& a, const Sample& b) {
    if (a.length != b.length || a.loopStart != b.loopStart || a.loopEnd != b.loopEnd || a.sampleRate != b.sampleRate)
        return false;
    return a.length == 0 || std::equal(a.levels[0].get(), a.levels[0].get() + a.length, b.levels[0].get());
}

void compareWaves(const Patch& a, const Patch& b, std::vector<std::string>& lines) {
    for (int wave = 0; wave < chunk::waveCount; ++wave) {
        const auto at = static_cast<std::size_t>(wave);
        if (const Cycle &one = a.customWaves[at], &two = b.customWaves[at]; one != two) {
            int count = 0;
            for (std::size_t i = 0; i < one.size(); ++i) count += one[i] != two[i];
            lines.push_back(placeText(wave) + " custom wave: " + std::to_string(count) + " of 2048 samples differ");
        }
        const Sample &one = a.samples[at], &two = b.samples[at];
        if (sameSample(one, two)) continue;
        const std::string first = sampleText(one), second = sampleText(two);
        lines.push_back(placeText(wave) +
                        " sample: " + (first == second ? "other recordings, both " + first : first + " | " + second));
    }
}

std::string list(int n, int layer, const Patch& patch) {
    return writeValue(n, patch.parameters.getParameter(n < globalParameterCount ? n : hostIndex(n, layer)));
}

// What an oscillator plays: its wave's name, or the type where that says it all.
std::string source(const Patch& patch, int layer, int oscillator) {
    constexpr int waves[] = {parameter::WTWave1, parameter::SSWave1, parameter::NoiWave1, 0, 0, parameter::AnaWave1};
    const int number = parameter::SynType1 + oscillator;
    const int type = patch.parameters.getListIndex(hostIndex(number, layer));
    const std::string name = list(number, layer, patch);
    if (type >= static_cast<int>(std::size(waves)) || waves[type] == 0) return name;
    return name + " " + list(waves[type] + oscillator, layer, patch);
}

std::string layerText(const Patch& patch, int layer) {
    std::string text;
    for (int oscillator = 0; oscillator < oscillatorCount; ++oscillator) {
        if (!switchOn(patch.parameters.getParameter(hostIndex(parameter::On1 + oscillator, layer)))) continue;
        text += (text.empty() ? "" : " + ") + source(patch, layer, oscillator);
    }
    if (text.empty()) text = "no oscillator";
    text += "; " + list(parameter::PlayMode, layer, patch);
    if (patch.parameters.getListIndex(hostIndex(parameter::ArpType, layer)) != 0)
        text += ", arpeggiator " + list(parameter::ArpType, layer, patch);
    for (const SlotKeys& slot : insertSlots)
        if (patch.parameters.getListIndex(hostIndex(slot.type, layer)) != 0) text += ", " + list(slot.type, layer, patch);
    return text;
}

}  // namespace

std::string placeText(int wave) {
    return "layer " + std::to_string(wave / oscillatorCount + 1) + " oscillator " + std::to_string(wave % oscillatorCount + 1);
}

std::string sampleText(const Sample& sample) {
    if (sample.length == 0) return "none";
    return std::to_string(sample.length) + " samples at " + std::to_string(sample.sampleRate) + " Hz, loop " +
           std::to_string(sample.loopStart) + " to " + std::to_string(sample.loopEnd);
}

std::vector<std::string> differences(const Patch& a, const Patch& b) {
    std::vector<std::string> lines;
    if (a.name != b.name) lines.push_back("name: " + a.name + " | " + b.name);
    for (int index = 0; index < parameterCount; ++index)
        if (a.parameters.getParameter(index) != b.parameters.getParameter(index))
            lines.push_back(label(index) + ": " + valueText(a, index) + " | " + valueText(b, index));
    compareWaves(a, b, lines);
    return lines;
}

std::string describe(const Patch& patch, std::size_t bytes) {
    std::string text = patch.name + "\n";
    for (int layer = 0; layer < layerCount; ++layer)
        if (switchOn(patch.parameters.getParameter(parameter::Layer1On + layer)))
            text += "  layer " + std::to_string(layer + 1) + "   " + layerText(patch, layer) + "\n";
    if (patch.parameters.getListIndex(parameter::FxMaType) != 0)
        text += "  master    " + list(parameter::FxMaType, 0, patch) + "\n";
    for (int wave = 0; wave < chunk::waveCount; ++wave)
        if (const Sample& sample = patch.samples[static_cast<std::size_t>(wave)]; sample.length > 0)
            text += "  sample    " + placeText(wave) + ": " + sampleText(sample) + "\n";
    return text + "  size      " + std::to_string(bytes) + " bytes\n";
}

}  // namespace vantoric::patch
