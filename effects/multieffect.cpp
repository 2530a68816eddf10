#include "effects/multieffect.h"

#include <algorithm>
#include <cstdio>

#include "effects/effect_tools.h"

namespace vantoric {

namespace {

constexpr int lastNamedType = 73;

}  // namespace

Multieffect::Multieffect(RandomSources& random) : delay_(random), modulation_(random), drive_(random) {
    parameters_.fill(0.5f);
    for (int index = 0; index < 5; ++index) setParameter(index, 0.5f);
    degrade_.setVariant(2);
    drive_.setVariant(2);
    ready_ = true;
    setSampleRate(44100.0f);
    setTempo(120.0f, 0.0);
    clearAll();
}

void Multieffect::clearState() {
    if (!ready_) return;
    switch (effectType(type_).family) {
        case EffectFamily::reverb: return reverb_.reset();
        case EffectFamily::delay: return delay_.reset();
        case EffectFamily::modulation: return modulation_.reset();
        case EffectFamily::degrade: return degrade_.reset();
        case EffectFamily::dynamics: return dynamics_.reset();
        case EffectFamily::drive: return drive_.reset();
        case EffectFamily::equalizer: return equalizer_.reset();
        case EffectFamily::vocoder: return vocoder_.reset();
        default: return;
    }
}

void Multieffect::clearAll() {
    if (!ready_) return;
    reverb_.reset();
    delay_.reset();
    modulation_.reset();
    degrade_.reset();
    dynamics_.reset();
    drive_.reset();
    equalizer_.reset();
    vocoder_.reset();
}

void Multieffect::setSampleRate(float rate) {
    if (!ready_ || rate == lastSampleRate_) return;
    lastSampleRate_ = rate;
    reverb_.setSampleRate(rate);
    delay_.setSampleRate(rate);
    modulation_.setSampleRate(rate);
    degrade_.setSampleRate(rate);
    dynamics_.setSampleRate(rate);
    drive_.setSampleRate(rate);
    vocoder_.setSampleRate(rate);
    equalizer_.setSampleRate(rate);
}

bool Multieffect::setType(int type) {
    if (!ready_) return false;
    type = legalEffectType(type);
    const bool changed = type != lastType_;
    lastType_ = type;
    if (!changed) return false;
    type_ = type;
    setVariant(effectType(type));
    clearState();
    return true;
}

void Multieffect::setVariant(const EffectType& row) {
    switch (row.family) {
        case EffectFamily::reverb: return reverb_.setVariant(row.variant);
        case EffectFamily::delay: return delay_.setVariant(row.variant);
        case EffectFamily::modulation: return modulation_.setVariant(row.variant);
        case EffectFamily::degrade: return degrade_.setVariant(row.variant);
        case EffectFamily::dynamics: return dynamics_.setVariant(row.variant);
        case EffectFamily::drive: return drive_.setVariant(row.variant);
        case EffectFamily::vocoder: return vocoder_.setVariant(row.variant);
        default: return;
    }
}

void Multieffect::setParameter(int index, float value) {
    if (index < 0 || index >= static_cast<int>(parameters_.size())) return;
    parameters_[index] = value;
    reverb_.setParameter(index, value);
    drive_.setParameter(index, value);
    vocoder_.setParameter(index, value);
    equalizer_.setParameter(index, value);
    dynamics_.setParameter(index, value);
    degrade_.setParameter(index, value);
    delay_.setParameter(index, value);
    modulation_.setParameter(index, value);
}

float Multieffect::getParameter(int index) const {
    return index >= 0 && index < static_cast<int>(parameters_.size()) ? parameters_[index] : 0.0f;
}

void Multieffect::setTempo(float beatsPerMinute, double songPosition) {
    delay_.setTempo(beatsPerMinute);
    dynamics_.setTempo(songPosition, beatsPerMinute);
}

void Multieffect::runFamily(float* left, float* right, int count) {
    switch (effectType(type_).family) {
        case EffectFamily::reverb: return reverb_.process(left, right, count);
        case EffectFamily::delay: return delay_.process(left, right, count);
        case EffectFamily::modulation: return modulation_.process(left, right, count);
        case EffectFamily::degrade: return degrade_.process(left, right, count);
        case EffectFamily::dynamics: return dynamics_.process(left, right, count);
        case EffectFamily::drive: return drive_.process(left, right, count);
        case EffectFamily::equalizer: return equalizer_.process(left, right, count);
        case EffectFamily::vocoder: return vocoder_.process(left, right, count);
        default: return;
    }
}

void Multieffect::process(float* left, float* right, int count) {
    if (!ready_ || count <= 0 || static_cast<int>(effectType(type_).family) <= 0) return;
    runFamily(left, right, count);
    if (!allFinite(left, right, count)) {
        clearState();
        std::fill_n(left, count, 0.0f);
        std::fill_n(right, count, 0.0f);
    }
}

void Multieffect::getTypeName(char* text) const {
    std::snprintf(text, effectTextSize, "%s", type_ > lastNamedType ? "Illegal type" : effectType(type_).name);
}

void Multieffect::getParameterName(int index, char* text) const { effectParameterName(index, text); }

void Multieffect::getParameterDisplay(int index, char* text) const {
    effectParameterText(type_, index, getParameter(index), text);
}

}  // namespace vantoric
