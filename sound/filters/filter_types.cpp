#include "sound/filters/filter_types.h"

namespace vantoric::filters {

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
