#include "library/spare_patch.h"

namespace vantoric {

namespace {

// No other thread is ever waited for.
void noSleep(int) {}

}  // namespace

SparePatch::SparePatch(Messages& messages)
    : access_(flags_, noSleep),
      program_(messages),
      chunk_(access_, parameters_, program_, waves(), *this, messages),
      files_(chunk_, program_, *this, messages) {}

PatchWaves SparePatch::waves() {
    PatchWaves waves;
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        waves.samples[i] = &samples_[i];
        waves.customWaves[i] = waves_[i].cycle.data();
        waves.slots[i] = &waves_[i];
    }
    return waves;
}

PatchParts SparePatch::parts() {
    PatchParts parts{access_, parameters_, {}, {}};
    for (std::size_t i = 0; i < samples_.size(); ++i) {
        parts.samples[i] = &samples_[i];
        parts.waves[i] = &waves_[i];
    }
    return parts;
}

}  // namespace vantoric
