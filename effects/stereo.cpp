#include "effects/stereo.h"

namespace vantoric {

Stereo::Stereo() = default;

void Stereo::reset() {}

void Stereo::setSampleRate(float rate) { sampleRate_ = rate; }

void Stereo::setTempo(double songPosition, double beatsPerMinute) {
    songPosition_ = songPosition;
    tempo_ = beatsPerMinute;
}

void Stereo::setVariant(int variant) { variant_ = variant; }

void Stereo::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void Stereo::process(float*, float*, int) {}

}  // namespace vantoric
