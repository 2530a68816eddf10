// The output stage once more, compiled for processors with AVX2: only what is known to run on one may come here, and
// nothing that another source has as well may be left as a function of its own.
#include "voice/output_lanes.h"

namespace vantoric {

void renderOutputWide(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first);

namespace {
struct Wide;
}

void renderOutputWide(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first) {
    OutputLanes<Wide>::render(memory, f1, f2, count, mask, first);
}

}  // namespace vantoric
