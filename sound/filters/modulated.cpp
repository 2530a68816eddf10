// The setups of the modulated filters.
#include "sound/filters/modulated.h"

#include <algorithm>
#include <cmath>

#include "base/math.h"
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

void setupLpFm(const FilterInputs& in, LpFm<float>& filter) {
    filter.cutoff = static_cast<float>(in.c);
    filter.r = static_cast<float>(in.r);
    filter.amount = static_cast<float>(in.a * in.a * 5.0);
    filter.angle = static_cast<float>(51330.598 * 0.45 / in.sampleRate);
}

void setupVocalAm(const FilterInputs& in, VocalAm<float>& filter) {
    const double e = fastExp((1.0 - (0.1 * in.r + in.c)) * -6.0);
    const double t = std::min(e * 0.45 / in.sampleRate * 17860.5, 0.125);
    const double root = std::sqrt(in.r);
    filter.f = static_cast<float>(2.0 * math::sin(math::pi * t));
    filter.q = static_cast<float>(1.0 - 0.95 * root);
    filter.gain = static_cast<float>(1.0 - 0.514425 * in.r * root);
    filter.rate = static_cast<float>(4.0 * t);
}

void setupRingmod(const FilterInputs& in, Ringmod<float>& filter) {
    const float e = math::exp(static_cast<float>((1.0 - in.c) * -6.0));
    filter.rate = stepOfPhase(e * 0.45 / in.sampleRate * 22050.0);
    filter.depth = static_cast<float>(in.r);
}

void setupAliaser(const FilterInputs& in, Aliaser<float>& filter) {
    const double f = std::min(in.openness() * 59535.0, in.sampleRate);
    filter.N = static_cast<float>(static_cast<int>(in.sampleRate / f));
}

template struct TypesOf<LpFm>;
template struct TypesOf<VocalAm>;
template struct TypesOf<Ringmod>;
template struct TypesOf<Aliaser>;

}  // namespace vantoric::filters
