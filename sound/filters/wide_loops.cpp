// Compiled for processors with AVX2, so nothing here may run before it is known that this is one: no code but the
// loops, no objects that need code to begin their lives. The loops' names carry their width; no other source may
// make one of eight lanes, or the linker could choose the wrong one of two.
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

template <template <class> class Topology>
constinit const std::array<Loop<voiceCount>, Topology<float>::variants> WideLoops<Topology>::byVariant =
    []<int... Variant>(std::integer_sequence<int, Variant...>) {
        return std::array{Loop<voiceCount>{&runInLanes<Topology, Variant, 8>, Topology<float>::draws(Variant), Variant}...};
    }(std::make_integer_sequence<int, Topology<float>::variants>{});

template struct WideLoops<Svf12>;
template struct WideLoops<Svf18>;
template struct WideLoops<Svf24>;
template struct WideLoops<SvfShaped>;
template struct WideLoops<BiquadOne>;
template struct WideLoops<BiquadTwo>;
template struct WideLoops<BiquadAm>;
template struct WideLoops<Ladder>;
template struct WideLoops<Orvix>;
template struct WideLoops<Butter>;
template struct WideLoops<Ms20>;
template struct WideLoops<Fractal>;
template struct WideLoops<Phaser>;
template struct WideLoops<FeedbackPhaser>;
template struct WideLoops<LpFm>;
template struct WideLoops<VocalAm>;
template struct WideLoops<Ringmod>;
template struct WideLoops<Aliaser>;

}  // namespace vantoric::filters
