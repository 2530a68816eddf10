#include "sound/filters/filter_types.h"

#include "sound/filter_labels.h"
#include "sound/filters/filter_menu.h"
#include "sound/filters/wide_loops.h"

namespace vantoric::filters {

namespace {

bool processorHasWideRegisters() {
#if defined(VANTORIC_WIDE_LOOPS)
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi2") != 0;
#else
    return false;
#endif
}

const bool widePossible = processorHasWideRegisters();
bool wideWanted = true;

}  // namespace

bool wideLoopsInUse() { return widePossible && wideWanted; }
void useWideLoops(bool wide) { wideWanted = wide; }

namespace {

template <int Voices, template <class> class... Topologies>
const FilterType<Voices>* findAmong(LoopList<Topologies...>, int index) {
    for (const auto& types : {TypesOf<Topologies>::template all<Voices>()...})
        for (const FilterType<Voices>& type : types)
            if (type.index == index) return &type;
    return nullptr;
}

}  // namespace

template <int Voices>
const FilterType<Voices>* findFilterType(int index) {
    return findAmong<Voices>(AllLoops{}, index);
}

template const FilterType<1>* findFilterType<1>(int);
template const FilterType<voiceCount>* findFilterType<voiceCount>(int);

bool mayDraw(int index) {
    static constexpr auto drawing = drawingTypes(AllLoops{});
    return index >= 0 && index < menuSize && drawing[static_cast<std::size_t>(index)];
}

}  // namespace vantoric::filters

namespace vantoric {

constinit const std::array<const char*, filters::menuSize> filterLabels = filters::menuLabels();

}  // namespace vantoric
