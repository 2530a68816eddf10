#include "sound/kernel_loops.h"

#include "sound/filters/wide_loops.h"
#include "sound/lane_loops.h"

namespace vantoric {

#if defined(VANTORIC_WIDE_LOOPS)
extern const KernelLoops wideKernelLoops;
#endif

const KernelLoops& kernelLoops() {
#if defined(VANTORIC_WIDE_LOOPS)
    if (filters::wideLoopsInUse()) return wideKernelLoops;
#endif
    return LaneLoops<laneGroup>::table;
}

}  // namespace vantoric
