#include "voice/voice_bank.h"

#include <algorithm>

#include "sound/analog_clip.h"

namespace vantoric {

namespace {

constexpr float analogMakeDown = 0.333f;  // level behind the filters of an analog voice

// Applies `function` to every sample of the lanes in `mask`, four voices at a time.
template <class Function>
void onLanes(float* buffer, int count, LaneMask mask, Function&& function) {
    using Quad = Lanes<float, laneGroup>;
    for (int first = 0; first < voiceCount; first += laneGroup) {
        if (((mask >> first) & 15) == 0) continue;
        const auto wanted = maskOf<Quad>(mask, first);
        for (int i = 0; i < count; ++i) {
            float* at = buffer + i * voiceCount + first;
            const Quad x(at, stdx::element_aligned);
            select(wanted, function(x, i * voiceCount + first), x).copy_to(at, stdx::element_aligned);
        }
    }
}

}  // namespace

void VoiceBank::reset(int voice) {
    oscillators.reset(voice);
    for (FilterBank& filter : filters) filter.clear(voice);
    for (DistortionBank& distortion : distortions) distortion.reset(voice);
    output.reset(voice);
    setAnalog(voice, false);
    setSerial(voice, false);
    for (int i = voice; i < maxTickSamples * voiceCount; i += voiceCount) f1_[i] = f2_[i] = 0.0f;
}

void VoiceBank::render(int count, LaneMask mask, float* left, float* right) {
    const auto analog = static_cast<LaneMask>(analog_ & mask);
    const auto serial = static_cast<LaneMask>(serial_ & mask);
    const auto clip = [](auto x, int) { return analogSoftClip(x); };
    const auto scale = [](auto x, int) { return x * decltype(x)(analogMakeDown); };
    if (analog != 0) {
        onLanes(f1_, count, analog, clip);
        onLanes(f2_, count, analog, clip);
    }
    const bool together = serial == 0 && FilterBank::runTogether(filters[0], f1_, filters[1], f2_, count, mask);
    if (!together) filters[0].run(f1_, count, mask);
    distortions[0].run(f1_, count, mask);
    if (serial != 0)
        onLanes(f2_, count, serial, [this](auto x, int at) { return x + decltype(x)(f1_ + at, stdx::element_aligned); });
    if (!together) filters[1].run(f2_, count, mask);
    distortions[1].run(f2_, count, mask);
    if (analog != 0) {
        onLanes(f1_, count, analog, scale);
        onLanes(f2_, count, analog, scale);
    }
    output.render(f1_, f2_, count, mask, left, right);
}

}  // namespace vantoric
