#include "parameters/parameter_model.h"

#include <cmath>

#include "base/numbers.h"
#include "base/text.h"
#include "base/thread_check.h"

namespace vantoric {

namespace {

constexpr bool isParameter(int index) { return index >= 0 && index < parameterCount; }

// Limits by host index, as the setters read them on the audio thread.
struct Limits {
    std::array<float, parameterCount> values;
    Limits() {
        for (int i = 0; i < parameterCount; ++i) values[static_cast<std::size_t>(i)] = limitOfParameter(numberOfParameter(i));
    }
};

const Limits& allLimits() {
    static const Limits limits;
    return limits;
}

void writeCut(const std::string& full, char* text) {
    const std::string_view cut = cutText(full, hostTextLength);
    cut.copy(text, cut.size());
    text[cut.size()] = 0;
}

}  // namespace

ParameterModel::ParameterModel() {
    allLimits();  // made here, so that no setter ever does
    for (auto& value : values_) value.store(0.0f, std::memory_order_relaxed);
    for (auto& amount : modulation_) amount.store(0.0f, std::memory_order_relaxed);
}

float ParameterModel::getParameter(int index) const {
    return isParameter(index) ? clampUnit(values_[static_cast<std::size_t>(index)].load(std::memory_order_relaxed)) : 0.0f;
}

int ParameterModel::getListIndex(int index) const { return listIndex(getParameter(index)); }

void ParameterModel::setParameter(int index, float value, ChangeSource source) {
    setParameterQuiet(index, value);
    changes_.note(index, source);
}

void ParameterModel::setParameterQuiet(int index, float value) {
    const float clamped = clampUnit(value);
    writeRaw(index, clamped > parameterLimit(index) ? 0.0f : clamped);
}

void ParameterModel::writeRaw(int index, float value) {
    if (!isParameter(index)) return;
    values_[static_cast<std::size_t>(index)].store(value, std::memory_order_relaxed);
    writes_.fetch_add(1, std::memory_order_release);
}

void ParameterModel::setDefaults() {
    for (int i = 0; i < parameterCount; ++i) setParameterQuiet(i, parameterInfo(numberOfParameter(i)).defaultValue);
}

void ParameterModel::snapshotLayer(int layer, float* block) const {
    for (int n = 0; n < globalParameterCount; ++n) block[n] = 0.0f;
    for (int n = globalParameterCount; n < layerParameterEnd; ++n)
        block[n] = values_[static_cast<std::size_t>(hostIndex(n, layer))].load(std::memory_order_relaxed);
    if (!isModulated_.load(std::memory_order_relaxed)) return;
    for (int n = globalParameterCount; n < layerParameterEnd; ++n) {
        const float amount = modulation_[static_cast<std::size_t>(hostIndex(n, layer))].load(std::memory_order_relaxed);
        if (amount != 0.0f) block[n] = clampUnit(block[n] + amount);
    }
}

void ParameterModel::setModulation(int index, float amount) {
    if (!isParameter(index) || !std::isfinite(amount)) return;
    modulation_[static_cast<std::size_t>(index)].store(amount, std::memory_order_relaxed);
    if (amount != 0.0f) isModulated_.store(true, std::memory_order_relaxed);
    writes_.fetch_add(1, std::memory_order_release);
}

void ParameterModel::clearModulation() {
    for (auto& amount : modulation_) amount.store(0.0f, std::memory_order_relaxed);
    isModulated_.store(false, std::memory_order_relaxed);
    writes_.fetch_add(1, std::memory_order_release);
}

float ParameterModel::played(int index) const {
    if (!isParameter(index)) return 0.0f;
    return clampUnit(getParameter(index) + modulation_[static_cast<std::size_t>(index)].load(std::memory_order_relaxed));
}

void ParameterModel::getParameterName(int index, char* text) const {
    notInsideAnyBlock();
    writeCut(isParameter(index) ? parameterInfo(numberOfParameter(index)).name : "", text);
}

void ParameterModel::getParameterDisplay(int index, char* text) const {
    notInsideAnyBlock();
    writeCut(controlsPresent_.load(std::memory_order_relaxed) ? displayText(index) : std::string(), text);
}

void ParameterModel::getParameterLabel(int index, char* text) const {
    notInsideAnyBlock();
    writeCut(isParameter(index) ? parameterUnit(numberOfParameter(index), lfoModeOf(index)) : "", text);
}

std::string ParameterModel::displayText(int index) const {
    if (!isParameter(index)) return {};
    const float value = values_[static_cast<std::size_t>(index)].load(std::memory_order_relaxed);
    return parameterText(numberOfParameter(index), value, lfoModeOf(index));
}

// The mode of the LFO whose speed an index is; 0 for all others.
int ParameterModel::lfoModeOf(int index) const {
    const int lfo = numberOfParameter(index) - parameter::LfoSpd1;
    return lfo >= 0 && lfo < 3 ? getListIndex(index + parameter::LfoMode1 - parameter::LfoSpd1) : 0;
}

float ParameterModel::parameterLimit(int index) {
    return isParameter(index) ? allLimits().values[static_cast<std::size_t>(index)] : 1.0f;
}

bool ParameterModel::isAutomatable(int index) {
    return isParameter(index) && parameterInfo(numberOfParameter(index)).automatable;
}

int ParameterModel::parameterLayer(int index) {
    if (index < globalParameterCount) return 0;
    return index < parameterCount ? (index - globalParameterCount) / layerParameterStride + 1 : -1;
}

}  // namespace vantoric
