#include "effects/multieffect.h"

#include <algorithm>
#include <cstdio>

#include "base/thread_check.h"
#include "effects/effect_tools.h"

namespace vantoric {

Multieffect::Multieffect(RandomSources& random) : delay_(random), modulation_(random), drive_(random) {
    for (auto& parameter : parameters_) parameter.store(0.5f, std::memory_order_relaxed);
    modulation_.setSweepStep(sweepStep);
    ready_ = true;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wswitch"
template <class Action>
void Multieffect::withFamily(EffectFamily family, Action action) {
    switch (family) {
        case EffectFamily::reverb: return action(reverb_);
        case EffectFamily::delay: return action(delay_);
        case EffectFamily::modulation: return action(modulation_);
        case EffectFamily::degrade: return action(degrade_);
        case EffectFamily::dynamics: return action(dynamics_);
        case EffectFamily::drive: return action(drive_);
        case EffectFamily::equalizer: return action(equalizer_);
        case EffectFamily::vocoder: return action(vocoder_);
        case EffectFamily::off:
        case EffectFamily::separator: return;
    }
}
#pragma GCC diagnostic pop

void Multieffect::clearState() { wanted_.fetch_add(firstCount, std::memory_order_relaxed); }

bool Multieffect::setType(int type) {
    type = legalEffectType(type);
    Start before = wanted_.load(std::memory_order_relaxed);
    Start after;
    do {
        if ((before & 255) == static_cast<Start>(type)) return false;
        after = ((before & ~Start(255)) + firstCount) | static_cast<Start>(type);
    } while (!wanted_.compare_exchange_weak(before, after, std::memory_order_relaxed));
    return true;
}

void Multieffect::setParameter(int index, float value) {
    if (index >= 0 && index < static_cast<int>(parameters_.size())) parameters_[index].store(value, std::memory_order_relaxed);
}

float Multieffect::getParameter(int index) const {
    const bool kept = index >= 0 && index < static_cast<int>(parameters_.size());
    return kept ? parameters_[index].load(std::memory_order_relaxed) : 0.0f;
}

void Multieffect::setTempo(float beatsPerMinute, double songPosition) {
    tempo_.store(beatsPerMinute, std::memory_order_relaxed);
    songPosition_.store(songPosition, std::memory_order_relaxed);
}

void Multieffect::touchMemory(int type) {
    notInsideAnyBlock();
    const EffectType& row = effectType(type);
    withFamily(row.family, [&](auto& family) {
        if constexpr (requires { family.touchMemory(row.variant); }) family.touchMemory(row.variant);
    });
}

void Multieffect::clearFamily(const EffectType& row) {
    withFamily(row.family, [](auto& family) { family.reset(); });
}

// Hands on what was set since the last block.
void Multieffect::feed(const EffectType& row) {
    withFamily(row.family, [&](auto& family) {
        for (int index = 0; index < 5; ++index) family.setParameter(index, parameters_[index].load(std::memory_order_relaxed));
    });
    const float rate = sampleRate_.load(std::memory_order_relaxed);
    if (rate != familiesRate_) {
        familiesRate_ = rate;
        for (int family = static_cast<int>(EffectFamily::off); family <= static_cast<int>(lastEffectFamily); ++family)
            withFamily(EffectFamily{family}, [&](auto& each) { each.setSampleRate(rate); });
    }
    const float tempo = tempo_.load(std::memory_order_relaxed);
    delay_.setTempo(tempo);
    dynamics_.setTempo(songPosition_.load(std::memory_order_relaxed), tempo);
}

void Multieffect::process(float* left, float* right, int count) {
    if (!ready_ || count <= 0) return;
    const Start wanted = wanted_.load(std::memory_order_relaxed);
    const EffectType& row = effectType(typeOf(wanted));
    if (static_cast<int>(row.family) <= 0) return;
    if (wanted != current_) {
        current_ = wanted;
        withFamily(row.family, [&](auto& family) { family.setVariant(row.variant); });
        clearFamily(row);
    }
    feed(row);
    withFamily(row.family, [&](auto& family) { family.process(left, right, count); });
    if (!allFinite(left, right, count)) {
        ++silenced_;
        clearFamily(row);
        std::fill_n(left, count, 0.0f);
        std::fill_n(right, count, 0.0f);
    }
}

void Multieffect::getTypeName(char* text) const {
    std::snprintf(text, effectTextSize, "%s", hasSlotName(type()) ? effectType(type()).name : "Illegal type");
}

void Multieffect::getParameterName(int index, char* text) const { effectParameterName(index, text); }

void Multieffect::getParameterDisplay(int index, char* text) const {
    effectParameterText(type(), index, getParameter(index), text);
}

}  // namespace vantoric
