#include "effects/reverb_core.h"

namespace vantoric {

ReverbCore::ReverbCore() = default;

void ReverbCore::reset() {}

void ReverbCore::setSampleRate(float rate) { sampleRate_ = rate; }

void ReverbCore::setVariant(int variant) { variant_ = variant; }

void ReverbCore::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void ReverbCore::process(float*, float*, int) {}

}  // namespace vantoric
