// The loops of a layer once more, for processors with registers of eight lanes (AVX2): same bits, in half the steps.
// wide_loops.cpp alone is compiled for these processors; which loops a filter takes is decided at its setup.
#pragma once

#include "sound/filters/filter_types.h"

namespace vantoric::filters {

// Whether setups choose the loops of eight lanes: from the start, where the processor has them.
bool wideLoopsInUse();
// Chooses for the setups of new types and changed settings from now on, for tests and measurements. Without such a
// processor, or in a build without these loops, nothing changes. Not while another thread sets up filters.
void useWideLoops(bool wide);

// The loops of a topology, by variant; none where its voices go one by one.
template <template <class> class Topology>
struct WideLoopsOf {
    std::array<Loop<voiceCount>, runsByVoice<Topology> ? 0 : variantCount<Topology>> byVariant;
};

// Those of all topologies.
template <class List>
struct WideLoops;
template <template <class> class... Topologies>
struct WideLoops<LoopList<Topologies...>> : WideLoopsOf<Topologies>... {};

extern const WideLoops<AllLoops> wideLoops;

}  // namespace vantoric::filters
