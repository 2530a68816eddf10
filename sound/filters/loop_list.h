// The one list of the voice filters' loops. Memories, setups, the loops for wide registers, the menu and its labels
// are made from it.
//
// To add a filter:
// - A type that an existing loop can sound for: a row in `filterRows` below that loop, in the header of its family, and
//   its setup in the family's source. The row's index takes a place in the menu: a wrong, missing or double one does not
//   compile (filter_menu.h; a new separator is told there).
// - A new variant of a loop: a name in the loop's enumeration of variants before `count`, and what step() does for it.
// - A new loop: in a family's header a struct of nothing but its numbers (coefficients first) with
//       using Variant             its enumeration of variants, or OneForm
//       draws(Variant)            how many random numbers a sample takes
//       clear()                   forgets what it has heard
//       step<Variant>(x, random)  one sample
//   and its rows; in the family's source its setups and `template struct TypesOf<...>`; here its name. A loop that reads
//   at places of its own, as delay lines do, says `byVoice` and takes step(x, line) instead.
// - A new family: two files as the others have, the header among the includes here, the source in CMakeLists.txt.
#pragma once

#include "sound/filters/biquad.h"
#include "sound/filters/delays.h"
#include "sound/filters/fractal.h"
#include "sound/filters/ladders.h"
#include "sound/filters/modulated.h"
#include "sound/filters/phasers.h"
#include "sound/filters/svf.h"

namespace vantoric::filters {

template <template <class> class... Topologies>
struct LoopList {};

// clang-format off
using AllLoops = LoopList<
    Svf12, Svf18, Svf24, SvfShaped,
    BiquadOne, BiquadTwo, BiquadAm,
    Ladder, Orvix, Butter, Ms20,
    Fractal,
    Phaser, FeedbackPhaser,
    LpFm, VocalAm, Ringmod, Aliaser,
    Comb, Phys>;
// clang-format on

}  // namespace vantoric::filters
