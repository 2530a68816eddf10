#include "effects/vocoder_core.h"

namespace vantoric {

VocoderCore::VocoderCore() = default;

void VocoderCore::reset() {}

void VocoderCore::setSampleRate(float rate) { sampleRate_ = rate; }

void VocoderCore::setVariant(int variant) { variant_ = variant; }

void VocoderCore::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void VocoderCore::process(float*, float*, int) {}

}  // namespace vantoric
