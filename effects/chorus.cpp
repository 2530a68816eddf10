#include "effects/chorus.h"

namespace vantoric {

Chorus::Chorus(RandomSources& random) : random_(random) {}

void Chorus::reset() {}

void Chorus::setSampleRate(float rate) { sampleRate_ = rate; }

void Chorus::setVariant(int variant) { variant_ = variant; }

void Chorus::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void Chorus::process(float*, float*, int) {}

}  // namespace vantoric
