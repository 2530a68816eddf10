// A single filter of any type: the same loops as a layer's bank, for one voice.
#pragma once

#include "base/random.h"
#include "sound/filter_settings.h"
#include "sound/filters/filter_slot.h"

namespace vantoric {

// One thread at a time. Nothing here allocates after construction.
class VoiceFilter {
public:
    // `random` must outlive the filter. Throws std::bad_alloc if memory is short.
    explicit VoiceFilter(RandomSources& random) : random_(random) {}

    // Takes the settings for the samples up to the next setup. A new type clears the memories.
    void setup(const FilterSettings& settings) { slot_.setup(memory_, 0, settings); }
    // Clears the memories; coefficients stay.
    void reset() { slot_.reset(memory_, 0); }
    // Filters `count` samples in place. If the memory is no longer finite, it is cleared and all are silent.
    void run(float* samples, int count);

    // The type's own number; -1 where audio passes through.
    int number() const { return slot_.number(); }
    // Which of its topology's variants the last setup chose; for a topology that the present type is one of.
    template <template <class> class Topology>
    auto variant() const {
        return static_cast<filters::VariantOf<Topology>>(slot_.loop() != nullptr ? slot_.loop()->variant : 0);
    }
    // What the setups have left for one another.
    const filters::SetupMemory& kept() const { return slot_.kept(); }
    // Coefficients and memories of a topology; those of the present type are the ones in use.
    template <template <class> class Topology>
    const auto& loop() const {
        return memory_.template cells<Topology>().get(0);
    }

private:
    RandomSources& random_;
    filters::FilterMemory<1> memory_;
    filters::FilterSlot<1> slot_;
};

// The type's own number by index into the list of filter types; -1 for "Bypass", separators and indices beyond.
int filterNumber(int index);

}  // namespace vantoric
