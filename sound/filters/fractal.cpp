#include "sound/filters/fractal.h"

#include "sound/filters/filter_loops.h"

#include <algorithm>

namespace vantoric::filters {

int setupFractal(const FilterInputs& in, Fractal<float>& filter, FractalForm form) {
    double f;
    if (form == fractalLp4 || form == fractalFo2) {
        f = std::min(in.fn() * 132300.0, 1.0);
    } else {
        f = 1.0 - fastExp(in.fn() * -416176.1);
        if (f < 0.0) f = 1.0;
    }
    filter.f = static_cast<float>(f);
    filter.r = static_cast<float>(in.r);
    return form;
}

template <int Voices>
std::span<const FilterType<Voices>> fractalTypes() {
    static constexpr FilterType<Voices> types[] = {
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalLp1); }>(34, 155),
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalLp2); }>(35, 156),
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalLp3); }>(36, 154),
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalLp4); }>(37, 152),
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalFo1); }>(38, 153),
        filterType<Voices, Fractal, [](const FilterInputs& in, auto& f) { return setupFractal(in, f, fractalFo2); }>(39, 151),
    };
    return types;
}

template std::span<const FilterType<1>> fractalTypes<1>();
template std::span<const FilterType<voiceCount>> fractalTypes<voiceCount>();

}  // namespace vantoric::filters
