// The setups of the fractal filters.
#include "sound/filters/fractal.h"

#include "sound/filters/filter_loops.h"

#include <algorithm>

namespace vantoric::filters {

void setupFractal(const FilterInputs& in, Fractal<float>& filter) {
    double f = 1.0 - fastExp(in.fn() * -416176.1);
    if (f < 0.0) f = 1.0;
    filter.f = static_cast<float>(f);
    filter.r = static_cast<float>(in.r);
}

void setupStraightFractal(const FilterInputs& in, Fractal<float>& filter) {
    filter.f = static_cast<float>(std::min(in.fn() * 132300.0, 1.0));
    filter.r = static_cast<float>(in.r);
}

template struct TypesOf<Fractal>;

}  // namespace vantoric::filters
