// The setups of the combs and strings.
#include "sound/filters/delays.h"

#include <algorithm>

#include "base/math.h"
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

namespace {

constexpr double longest = DelayLine::size - 1;

void setupPhys(const FilterInputs& in, Phys<float>& filter, double length, float sign) {
    const double e = math::exp(static_cast<float>((in.c - 1.0) * 5.9424));
    const double delay = length * (1.0 - 0.02 * (1.0 - in.r) * (1.0 - in.r)) * 1.1337868e-05 / (e * 0.45 / in.sampleRate);
    const double loss = 1.0 - in.a * in.a;
    const double f = fastExp((1.0 - (0.7 * in.r + in.c)) * -6.0) * 0.45 / in.sampleRate * 44100.0;
    filter.glide.set(in, clampTo(delay, 1.0, longest));
    filter.sign = sign;
    filter.fb = static_cast<float>(loss * 0.999);
    filter.damp = static_cast<float>(clampUnit(1.0 - fastExp(f * -6.28)));
    filter.gain = static_cast<float>(fastExp(loss * -2.0) * (1.0 - in.r * 0.5));
}

}  // namespace

void setupComb(const FilterInputs& in, Comb<float>& filter) {
    const double closed = 1.0 - in.c;
    filter.glide.set(in, std::min((closed * closed + 0.002) * in.sampleRate * 0.006666667, longest));
    filter.fb = static_cast<float>((1.0 - (1.0 - in.r) * (1.0 - in.r)) * 0.9);
    filter.gain = static_cast<float>(fastExp(-(in.r * in.r)) * 0.5);
}

void setupString(const FilterInputs& in, Phys<float>& filter) { setupPhys(in, filter, 12.396, 1.0f); }

void setupFlute(const FilterInputs& in, Phys<float>& filter) { setupPhys(in, filter, 6.198, -1.0f); }

template struct TypesOf<Comb>;
template struct TypesOf<Phys>;

}  // namespace vantoric::filters
