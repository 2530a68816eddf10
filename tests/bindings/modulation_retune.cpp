#include "golden_runner/golden.h"
#include "voice/tuning.h"

namespace {

using golden::json;
using namespace vantoric;

json retune(const golden::Case& c) {
    std::array<std::int8_t, voiceCount> notes;
    notes.fill(60);
    std::array<Envelope, voiceCount> envelopes;
    std::array<double, voiceCount> offsets{}, factors;
    factors.fill(1.0);
    for (const json& voice : c.input["voices"]) {
        const auto slot = voice[0].get<std::size_t>();
        notes.at(slot) = static_cast<std::int8_t>(voice[1].get<int>());
        envelopes.at(slot).state = voice[2].get<int>();
        envelopes.at(slot).phase = golden::asFloat(voice[3]);
        offsets.at(slot) = voice[4].get<double>();
        factors.at(slot) = voice[5].get<double>();
    }
    std::array<TunedVoice, voiceCount> voices;
    for (std::size_t i = 0; i < voices.size(); ++i) voices[i] = {&notes[i], &envelopes[i], &offsets[i], &factors[i]};
    Retuner retuner;
    retuner.retune(voices, c.input["Microtun"].get<int>(), c.input["PlayMode"].get<int>() < 2);
    json gotOffsets = json::array(), gotFactors = json::array();
    for (const json& voice : c.input["voices"]) {
        gotOffsets.push_back(offsets.at(voice[0].get<std::size_t>()));
        gotFactors.push_back(factors.at(voice[0].get<std::size_t>()));
    }
    return {{"tuneOffset", gotOffsets}, {"tuneFactor", gotFactors}};
}

const golden::Binding retunes("modulation", "retune*", golden::checkValues<retune>);

}  // namespace
