#include "sound/oscillator_control.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/numbers.h"

namespace vantoric {

namespace {

std::int32_t truncated32(double value) {
    return truncateTo(value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
}

constexpr float mixScale = 2097152000.0f;

std::uint32_t product(std::int32_t a, std::int32_t b) { return static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b); }

}  // namespace

std::uint32_t increment24(double d) { return static_cast<std::uint32_t>(truncated32(d * 16777216.0)); }

int toneCoefficient(double d) { return truncateTo((std::fabs(d) - std::fabs(d - 0.1)) * 134312.0 + 13431.2, -32768, 32767); }

std::uint32_t scanIncrement(double d, float pw) {
    const double p = pw;
    return static_cast<std::uint32_t>(truncated32(p * d * p * 262144.0));
}

WavePosition wavePosition(int frameCount, float pw) {
    const double position = frameCount * (2.0 * clampUnit(static_cast<double>(pw))) * 0.499995;
    const auto frame = static_cast<std::int32_t>(position);
    return {frame, static_cast<std::uint16_t>((position - frame) * 65535.0)};
}

void setPosition(OscillatorState& state, float pw) {
    const WavePosition position = wavePosition(state.frameCount, pw);
    state.framePending = position.frame;
    state.blendPending = position.blend;
    if (state.frame < 0) {
        state.frame = position.frame;
        state.blend = position.blend;
    }
}

std::int32_t fmDepthTarget(float fm) {
    const float v = doubledUnit(fm);
    return static_cast<std::int32_t>(v * v * 32767.5f);
}

std::int32_t fmDepthStep(std::int32_t target, std::int32_t present, int tickSamples) { return (target - present) / tickSamples; }

ToneGains toneGains(float timbre) {
    const float x = 2.0f * doubledUnit(timbre) - 2.0f;
    const int wet = static_cast<int>(x * -511.5f);
    return {static_cast<std::int16_t>(wet), static_cast<std::int16_t>(x <= 0.0f ? 1023 - wet : 1023)};
}

void toneStage(std::int16_t* buffer, int count, std::int32_t& toneState, int coefficient, const ToneGains& gains) {
    if (!gains.isHeard()) return;
    std::int32_t s = toneState;
    const std::int64_t pole = coefficient;
    const std::int32_t wet = gains.wet, dry = gains.dry;
    for (int i = 0; i < count; ++i) {
        const std::int32_t x = buffer[i];
        s += static_cast<std::int32_t>(((x - s) * pole) >> 14);
        buffer[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(product(dry, x) + product(wet, s)) >> 10);
    }
    toneState = s;
}

MixGains mixGains(bool active, float vol, float filtMix) {
    if (!active) return {};
    const float g = doubledUnit(vol);
    return {truncated32((1.0f - filtMix) * g * 16383.5f), truncated32(filtMix * g * 16383.5f)};
}

void mixToLanes(const std::int16_t* b1, const std::int16_t* b2, const std::int16_t* b3, const MixGains (&gains)[oscillatorCount],
                int count, float* f1, float* f2) {
    const auto mixed = [&](int i, std::int32_t MixGains::*side) {
        const std::uint32_t sum =
            product(b1[i], gains[0].*side) + product(b2[i], gains[1].*side) + product(b3[i], gains[2].*side);
        return static_cast<float>(static_cast<std::int32_t>(sum)) / mixScale;
    };
    for (int i = 0; i < count; ++i) {
        f1[i * voiceCount] = mixed(i, &MixGains::toFilter1);
        f2[i * voiceCount] = mixed(i, &MixGains::toFilter2);
    }
}

bool oscillatorModulated(int oscillatorIndex, float previousOn, float fm, float sync, bool fmIsDestination) {
    if (oscillatorIndex == 0 || previousOn < 0.5f) return false;
    return fm > 0.005f || sync > 0.5f || fmIsDestination;
}

}  // namespace vantoric
