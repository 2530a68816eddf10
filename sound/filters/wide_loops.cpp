// Compiled for processors with AVX2, so nothing here may run before it is known that this is one: no code but the
// loops, no objects that need code to begin their lives. The loops' names carry their width; no other source may
// make one of eight lanes, or the linker could choose the wrong one of two.
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

template <template <class> class Topology>
consteval WideLoopsOf<Topology> wideLoopsOf() {
    if constexpr (runsByVoice<Topology>)
        return {};
    else
        return {loopsByVariant<Topology, voiceCount, 8>()};
}

template <template <class> class... Topologies>
consteval WideLoops<LoopList<Topologies...>> wideLoopsOfAll(LoopList<Topologies...>) {
    return {wideLoopsOf<Topologies>()...};
}

constinit const WideLoops<AllLoops> wideLoops = wideLoopsOfAll(AllLoops{});

}  // namespace vantoric::filters
