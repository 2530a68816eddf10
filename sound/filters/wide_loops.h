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

// The loops of a topology, by variant.
template <template <class> class Topology>
struct WideLoops {
    static const std::array<Loop<voiceCount>, Topology<float>::variants> byVariant;
};

extern template struct WideLoops<Svf12>;
extern template struct WideLoops<Svf18>;
extern template struct WideLoops<Svf24>;
extern template struct WideLoops<SvfShaped>;
extern template struct WideLoops<BiquadOne>;
extern template struct WideLoops<BiquadTwo>;
extern template struct WideLoops<BiquadAm>;
extern template struct WideLoops<Ladder>;
extern template struct WideLoops<Orvix>;
extern template struct WideLoops<Butter>;
extern template struct WideLoops<Ms20>;
extern template struct WideLoops<Fractal>;
extern template struct WideLoops<Phaser>;
extern template struct WideLoops<FeedbackPhaser>;
extern template struct WideLoops<LpFm>;
extern template struct WideLoops<VocalAm>;
extern template struct WideLoops<Ringmod>;
extern template struct WideLoops<Aliaser>;

}  // namespace vantoric::filters
