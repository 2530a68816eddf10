// The table of filter types and what a type is: a setup, a way to clear it, and loops by variant.
#pragma once

#include <span>

#include "sound/filters/filter_memory.h"

namespace vantoric::filters {

// A sample loop. Filters `count` samples of the voices in `mask` in place; with 16 voices, sample i of voice v
// stands at i * 16 + v, and the other lanes of the groups touched are overwritten with finite values. Returns
// the voices whose memory is no longer finite, or about to be.
template <int Voices>
struct Loop {
    LaneMask (*run)(FilterMemory<Voices>& memory, const DrawStarts& starts, float* buffer, int count, LaneMask mask);
    DrawCounts draws;
    int variant;
};

template <int Voices>
struct FilterType {
    int index;       // in the list of types
    int number;      // the type's own number
    bool everyCall;  // recomputes at every setup, also with unchanged inputs
    const Loop<Voices>* (*setup)(const FilterInputs& in, FilterMemory<Voices>& memory, int voice);
    void (*clear)(FilterMemory<Voices>& memory, int voice);
};

// The type at an index of the list; null for "Bypass", separators and indices beyond. Voices: 1 or 16.
template <int Voices>
const FilterType<Voices>* findFilterType(int index);

// The rows of each family.
template <int Voices>
std::span<const FilterType<Voices>> svfTypes();
template <int Voices>
std::span<const FilterType<Voices>> biquadTypes();
template <int Voices>
std::span<const FilterType<Voices>> ladderTypes();
template <int Voices>
std::span<const FilterType<Voices>> fractalTypes();
template <int Voices>
std::span<const FilterType<Voices>> phaserTypes();
template <int Voices>
std::span<const FilterType<Voices>> modulatedTypes();
template <int Voices>
std::span<const FilterType<Voices>> delayTypes();

}  // namespace vantoric::filters
