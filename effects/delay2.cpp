#include "effects/delay2.h"

namespace vantoric {

Delay2::Delay2() = default;

void Delay2::reset() {}

void Delay2::setSampleRate(float rate) { sampleRate_ = rate; }

void Delay2::setTempo(float beatsPerMinute) { tempo_ = beatsPerMinute; }

void Delay2::setVariant(int variant) { variant_ = variant; }

void Delay2::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void Delay2::process(float*, float*, int) {}

}  // namespace vantoric
