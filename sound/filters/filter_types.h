// What a filter type is to those who run it: a setup, a way to clear it, and loops by variant.
#pragma once

#include <span>

#include "sound/filters/filter_memory.h"

namespace vantoric::filters {

// What one filter place gives a loop to do: samples of the voices in `mask`, in place. With 16 voices, sample i of
// voice v stands at i * 16 + v, and the other lanes of the groups touched are overwritten with finite values.
template <int Voices>
struct LoopRun {
    FilterMemory<Voices>* memory = nullptr;
    const DrawStarts* starts = nullptr;
    float* buffer = nullptr;
    LaneMask mask = 0;
    LaneMask broken = 0;  // set by the loop: voices whose memory is no longer finite, or about to be
};

// Most voices of all runs that a loop takes at once.
inline constexpr int maxLoopVoices = 8 * voiceCount;
// Registers of voices that a loop steps in turn: as many as hide the processor's delays.
inline constexpr int maxChains = 4;

// A sample loop. Several runs of the same loop go side by side: each step of a filter waits for the one before it,
// so four filters at once take little longer than one.
template <int Voices>
struct Loop {
    void (*run)(std::span<LoopRun<Voices>> runs, int count);
    DrawCounts draws;
    int variant;  // the value of the loop's enumeration
    int width;    // voices that are stepped as one; 1 where they go one by one
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

// Whether the type at an index of the list (any number) may draw random numbers. Any thread.
bool mayDraw(int index);

// The types of a loop; the source of its family makes them.
template <template <class> class Topology>
struct TypesOf {
    static std::span<const FilterType<1>> single();
    static std::span<const FilterType<voiceCount>> ofLayer();
    template <int Voices>
    static std::span<const FilterType<Voices>> all() {
        if constexpr (Voices == 1)
            return single();
        else
            return ofLayer();
    }
};

}  // namespace vantoric::filters
