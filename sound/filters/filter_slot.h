// What one voice's filter keeps between setups beside coefficients and memories.
#pragma once

#include "sound/filter_settings.h"
#include "sound/filters/filter_types.h"

namespace vantoric::filters {

template <int Voices>
class FilterSlot {
public:
    // Takes the settings of the voice: recomputes what has changed; a new type clears all its memories.
    void setup(FilterMemory<Voices>& memory, int voice, const FilterSettings& settings) {
        const bool renewed = settings.type != index_;
        if (renewed) {
            index_ = settings.type;
            type_ = findFilterType<Voices>(index_);
            loop_ = nullptr;
            reset(memory, voice);
        }
        if (type_ == nullptr) return;
        const float cutoff = clampUnit(settings.cutoff), resonance = clampTo(settings.resonance, 1e-5f, 1.0f);
        const bool same = cutoff == cutoff_ && resonance == resonance_ && settings.analog == analog_;
        if (same && !renewed && !type_->everyCall) return;
        cutoff_ = cutoff;
        resonance_ = resonance;
        analog_ = settings.analog;
        loop_ = type_->setup({.sampleRate = settings.sampleRate,
                              .tickSamples = settings.tickSamples,
                              .c = cutoff,
                              .r = resonance,
                              .a = settings.analog,
                              .memory = kept_},
                             memory, voice);
    }
    // Clears the memories; coefficients stay.
    void reset(FilterMemory<Voices>& memory, int voice) const {
        if (type_ != nullptr) type_->clear(memory, voice);
    }
    // The loop of the last setup; null to pass audio through.
    const Loop<Voices>* loop() const { return loop_; }
    // The type of the last setup; null to pass audio through.
    const FilterType<Voices>* type() const { return type_; }
    // The type's own number; -1 for none.
    int number() const { return type_ != nullptr ? type_->number : -1; }
    const SetupMemory& kept() const { return kept_; }

private:
    const FilterType<Voices>* type_ = nullptr;
    const Loop<Voices>* loop_ = nullptr;
    int index_ = 0;
    float cutoff_ = 0.0f, resonance_ = 0.0f, analog_ = 0.0f;  // of the last setup, the first two clamped
    SetupMemory kept_;
};

}  // namespace vantoric::filters
