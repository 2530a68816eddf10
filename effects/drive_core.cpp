#include "effects/drive_core.h"

namespace vantoric {

DriveCore::DriveCore(RandomSources& random) : random_(random) {}

void DriveCore::reset() {}

void DriveCore::setSampleRate(float rate) { sampleRate_ = rate; }

void DriveCore::setVariant(int variant) { variant_ = variant; }

void DriveCore::setParameter(int index, float value) { parameters_.set(index, value); }

// Audio passes through unchanged.
void DriveCore::process(float*, float*, int) {}

}  // namespace vantoric
