// The voice that displays follow: read from the engine while it plays, without a guard. What is read late or half shows for
// one refresh.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "base/parameters.h"
#include "voice/layer.h"

namespace vantoric {

// What decides which voice is on show.
struct VoiceRank {
    std::int32_t state;  // of its volume envelope, 0 for idle
    std::int32_t age;    // ticks
};
// The index of the youngest sounding one, the lowest of several; -1 for none.
int voiceOnShow(std::span<const VoiceRank> voices);

// What a display reads of it.
struct ShownVoice {
    int index;
    double smoothedNote;                       // as glided
    float filterEnvelope;                      // level
    std::array<float, layerParameterEnd> mod;  // the modulated parameters, by number
};
// None while the layer is silent. Any thread.
std::optional<ShownVoice> shownVoice(const Layer& layer);

}  // namespace vantoric
