#include "editor/model/voice_on_show.h"

#include "base/heard_while_written.h"

namespace vantoric {

int voiceOnShow(std::span<const VoiceRank> voices) {
    int youngest = -1;
    for (std::size_t i = 0; i < voices.size(); ++i) {
        if (voices[i].state <= 0) continue;
        if (youngest < 0 || voices[i].age < voices[static_cast<std::size_t>(youngest)].age) youngest = static_cast<int>(i);
    }
    return youngest;
}

std::optional<ShownVoice> shownVoice(const Layer& layer) {
    const HeardWhileWritten unguarded;
    std::array<VoiceRank, voiceCount> ranks;
    for (int i = 0; i < voiceCount; ++i) ranks[static_cast<std::size_t>(i)] = {layer.voice(i).state(), layer.voice(i).age};
    const int index = voiceOnShow(ranks);
    if (index < 0) return {};
    const Voice& voice = layer.voice(index);
    return ShownVoice{index, voice.smoothedNote, voice.envelopes[filterEnvelope].level, voice.mod};
}

}  // namespace vantoric
