// Compiled for processors with AVX2, under the same rules as filters/wide_loops.cpp: nothing here may run before it is
// known that this is one, and no function may be left to the linker that another source could have made too.
#include "sound/lane_loops.h"

namespace vantoric {

extern constinit const KernelLoops wideKernelLoops;
constinit const KernelLoops wideKernelLoops = LaneLoops<widestLanes>::table;

}  // namespace vantoric
