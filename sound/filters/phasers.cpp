// The setups of the phasers and formants.
#include "sound/filters/phasers.h"

#include <cmath>

#include "base/math.h"
#include "sound/filters/filter_loops.h"

namespace vantoric::filters {

PhaserStages setupPhaser(const FilterInputs& in, Phaser<float>& filter) {
    const double v = in.openness() / in.sampleRate;
    filter.a = static_cast<float>(1.0 - 132300.0 * v + 1.94481e9 * v * v);
    return static_cast<PhaserStages>(static_cast<int>(5.99 * in.r));
}

void setupPositiveFeedback(const FilterInputs& in, FeedbackPhaser<float>& filter) {
    const double v = in.openness() / in.sampleRate;
    filter.a = static_cast<float>(1.0 - (19845.0 * v <= 0.32 ? 124031.25 * v : 2.0));
    filter.fbk = static_cast<float>(0.97 * std::sqrt(in.r));
    filter.wet = static_cast<float>(2.0 - in.r * 0.5);
    filter.analog = static_cast<float>(in.a);
}

void setupNegativeFeedback(const FilterInputs& in, FeedbackPhaser<float>& filter) {
    const double v = in.openness() / in.sampleRate;
    filter.a = clampUnit(math::exp(static_cast<float>(-124689.71 * v)));
    filter.fbk = static_cast<float>(-0.75 * in.r);
    filter.wet = static_cast<float>((1.25 - 0.3125 * in.r) * 0.5);
    filter.analog = static_cast<float>(in.a);
}

template struct TypesOf<Phaser>;
template struct TypesOf<FeedbackPhaser>;

}  // namespace vantoric::filters
