#include "sound/filters/filter_types.h"

#include "sound/filters/wide_loops.h"

namespace vantoric::filters {

namespace {

bool processorHasWideRegisters() {
#if defined(VANTORIC_WIDE_LOOPS)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

const bool widePossible = processorHasWideRegisters();
bool wideWanted = true;

}  // namespace

bool wideLoopsInUse() { return widePossible && wideWanted; }
void useWideLoops(bool wide) { wideWanted = wide; }

template <int Voices>
const FilterType<Voices>* findFilterType(int index) {
    for (const auto& family : {svfTypes<Voices>(), biquadTypes<Voices>(), ladderTypes<Voices>(), fractalTypes<Voices>(),
                               phaserTypes<Voices>(), modulatedTypes<Voices>(), delayTypes<Voices>()})
        for (const FilterType<Voices>& type : family)
            if (type.index == index) return &type;
    return nullptr;
}

template const FilterType<1>* findFilterType<1>(int);
template const FilterType<voiceCount>* findFilterType<voiceCount>(int);

}  // namespace vantoric::filters
