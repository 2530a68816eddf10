#include "effects/filter_degrader.h"

namespace vantoric {

Filter::Filter() = default;

void Filter::reset() {}

void Filter::setSampleRate(float rate) { sampleRate_ = rate; }

void Filter::setVariant(int variant) { variant_ = variant; }

void Filter::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void Filter::process(float*, float*, int) {}

}  // namespace vantoric
