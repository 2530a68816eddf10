// What a control tick derives for an oscillator, its tone stage, and the mix of three oscillators.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "base/numbers.h"
#include "sound/oscillator_state.h"

namespace vantoric {

inline constexpr int mixVoices = 4;  // that are mixed at once

// Below, d is a frequency in cycles per sample of the internal rate; control values are as the matrix left
// them and may leave 0 to 1. Results that would pass 32 bits are held there; NaN reads as the lowest value.

inline std::int32_t truncated32(double value) {
    return truncateTo(value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
}

// The 24-bit phase increment: d x 16777216.
inline std::uint32_t increment24(double d) { return static_cast<std::uint32_t>(truncated32(d * 16777216.0)); }

// Coefficient of the tone stage: 268624 d up to d = 0.1, 26862 above.
inline int toneCoefficient(double d) {
    return truncateTo((std::fabs(d) - std::fabs(d - 0.1)) * 134312.0 + 13431.2, -32768, 32767);
}

// Increment of the frame scan, growing with the square of Pw.
inline std::uint32_t scanIncrement(double d, float pw) {
    const double p = pw;
    return static_cast<std::uint32_t>(truncated32(p * d * p * 262144.0));
}

// Pw as a position in `frameCount` frames; frame is below frameCount, blend the 16-bit fraction towards the next.
struct WavePosition {
    std::int32_t frame;
    std::uint16_t blend;
};
inline WavePosition wavePosition(int frameCount, float pw) {
    const double position = frameCount * (2.0 * clampUnit(static_cast<double>(pw))) * 0.499995;
    const auto frame = static_cast<std::int32_t>(position);
    return {frame, static_cast<std::uint16_t>((position - frame) * 65535.0)};
}
// Hands the position to the state; on the first tick of a note (frame not yet set) the kernel starts on it.
inline void setPosition(OscillatorState& state, float pw) {
    const WavePosition position = wavePosition(state.frameCount, pw);
    state.framePending = position.frame;
    state.blendPending = position.blend;
    if (state.frame < 0) {
        state.frame = position.frame;
        state.blend = position.blend;
    }
}

// FM depth for Fm1 or Fm2, 0 to 131070, and the step per sample that reaches it in `tickSamples` (above 0).
inline std::int32_t fmDepthTarget(float fm) {
    const float v = doubledUnit(fm);
    return static_cast<std::int32_t>(v * v * 32767.5f);
}
inline std::int32_t fmDepthStep(std::int32_t target, std::int32_t present, int tickSamples) {
    return (target - present) / tickSamples;
}

// Weights of the tone stage from Timbre: below the middle it crossfades to its low-pass, above it subtracts it.
struct ToneGains {
    std::int16_t wet, dry;

    // Around the middle the stage is skipped.
    bool isHeard() const { return wet >= 20 || wet <= -20; }
};
inline ToneGains toneGains(float timbre) {
    const float x = 2.0f * doubledUnit(timbre) - 2.0f;
    const int wet = static_cast<int>(x * -511.5f);
    return {static_cast<std::int16_t>(wet), static_cast<std::int16_t>(x <= 0.0f ? 1023 - wet : 1023)};
}

// Runs the tone stage over `count` samples in place, unless its gains skip it; toneState is its memory.
// Results wrap at 16 bits.
void toneStage(std::int16_t* buffer, int count, std::int32_t& toneState, int coefficient, const ToneGains& gains);

// Gains of an oscillator into the two filters from Vol and FiltMix, up to 32767; 0 and 0 if inactive.
struct MixGains {
    std::int32_t toFilter1 = 0, toFilter2 = 0;
};
inline MixGains mixGains(bool active, float vol, float filtMix) {
    if (!active) return {};
    const float g = doubledUnit(vol);
    return {truncated32((1.0f - filtMix) * g * 16383.5f), truncated32(filtMix * g * 16383.5f)};
}

// One voice of a mix: the buffers of its oscillators and their gains. Without buffers it is silent.
struct MixSource {
    const std::int16_t* buffers[oscillatorCount] = {};
    MixGains gains[oscillatorCount];
};

// Mixes `count` samples of four neighbouring voices into the inputs of the two filters: sample i of voice k goes to
// f1[i * 16 + k] and f2[i * 16 + k]. Sums wrap at 32 bits, as a full mix may.
void mixToLanes(const MixSource (&voices)[mixVoices], int count, float* f1, float* f2);

// Whether FM or sync is heard on an oscillator (index 0 to 2), so that it takes its modulated kernel.
// previousOn: `On` of the oscillator before; fmIsDestination: a matrix slot aims at this Fm.
bool oscillatorModulated(int oscillatorIndex, float previousOn, float fm, float sync, bool fmIsDestination);

// `synced` of oscillators 2 and 3: any value of Sync but 0.
inline bool syncedBy(float sync) { return sync != 0.0f; }

}  // namespace vantoric
