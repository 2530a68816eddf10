#include "library/patch_parts.h"

#include "engine/instrument.h"

namespace vantoric {

PatchParts partsOf(Instrument& instrument) {
    PatchParts parts{instrument.patchChunk().access(), instrument.parameters(), {}, {}};
    for (std::size_t i = 0; i < parts.samples.size(); ++i) {
        Layer& layer = instrument.layer(static_cast<int>(i) / oscillatorCount);
        parts.samples[i] = &layer.sample(static_cast<int>(i) % oscillatorCount);
        parts.waves[i] = &layer.customWave(static_cast<int>(i) % oscillatorCount);
    }
    return parts;
}

}  // namespace vantoric
