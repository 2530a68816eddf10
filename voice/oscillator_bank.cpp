#include "voice/oscillator_bank.h"

#include <algorithm>

namespace vantoric {

void OscillatorBank::reset(int voice) {
    for (Buffer& buffer : buffers_[voice]) buffer.fill(0);
    for (Tone& tone : tones_[voice]) tone.state = 0;
    mix_[voice].fill(MixGains());
}

void OscillatorBank::mix(int count, LaneMask mask, float* input1, float* input2) const {
    const LaneSpan span = spanOf(mask);
    for (int first = span.first; first < span.first + span.count; first += laneGroup) {
        MixSource sources[mixVoices];
        for (int k = 0; k < mixVoices; ++k) {
            if (((mask >> (first + k)) & 1) == 0) continue;
            for (int i = 0; i < oscillatorCount; ++i) {
                sources[k].buffers[i] = buffers_[first + k][i].data();
                sources[k].gains[i] = mix_[first + k][i];
            }
        }
        mixToLanes(sources, count, input1 + first, input2 + first);
    }
}

}  // namespace vantoric
