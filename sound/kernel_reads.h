// The reads of a cycle that the table kernels are made of: mip selection, nearest, linear and box reads.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "sound/oscillator_state.h"

namespace vantoric {

// Mip level by read step in table samples: with the harmonic limit 1024 >> level the top harmonic stays
// below half the sample rate up to level 7.
inline constexpr std::array<std::uint8_t, cycleSamples> mipMap = [] {
    std::array<std::uint8_t, cycleSamples> map{};
    for (unsigned step = 0; step < map.size(); ++step)
        map[step] = static_cast<std::uint8_t>(step >= 64 ? 7 : std::bit_width(step));
    return map;
}();

// Level of the plain kernels, taken once per call.
inline int levelOf(std::uint32_t increment) { return mipMap[(increment >> 13) & 2047]; }

// Where sample 0 of a frame stands in a wave of `frames` frames: level-major.
constexpr std::size_t cycleOffset(int frames, int frame, int level) {
    return (static_cast<std::size_t>(level) * static_cast<std::size_t>(frames) + static_cast<std::size_t>(frame)) * cycleSamples;
}

// The wave of a note.
struct WaveView {
    const std::int16_t* table;
    int frames;

    explicit WaveView(const OscillatorState& state) : table(state.table), frames(state.frameCount) {}
    const std::int16_t* cycle(int level, int frame) const { return table + cycleOffset(frames, frame, level); }
};

// From this phase on the right neighbour of a sample is sample 0.
inline constexpr std::uint32_t lastPair = 2047u << 13;

// Reads at a 24-bit phase. The shifts leave 6 dB of headroom, on which the mix relies.
inline int nearestRead(const std::int16_t* cycle, std::uint32_t phase) { return cycle[phase >> 13] >> 1; }
inline int linearSum(int left, int right, std::uint32_t phase) {
    const int frac = static_cast<int>(phase & 0x1fff);
    return left * (8192 - frac) + right * frac;
}
inline int linearRead(const std::int16_t* cycle, std::uint32_t phase) {
    const std::uint32_t i = phase >> 13;
    return linearSum(cycle[i], cycle[(i + 1) & 2047], phase) >> 14;
}

// Mean of 2 to 16 samples of a level 7 cycle, 128 apart, around the phase: the read of steps from 128 on.
inline int boxRead(const std::int16_t* cycle, std::uint32_t phase, std::uint32_t step) {
    if (step > 2048) return 0;
    const int reads = step <= 256 ? 2 : step <= 512 ? 4 : step <= 1024 ? 8 : 16;
    const int i = static_cast<int>(phase >> 13);
    int sum = 0;
    for (int m = 0; m < reads; ++m) sum += cycle[(i + (2 * m - reads + 1) * 64) & 2047];
    return (sum / reads) >> 1;
}

// From this effective step on the modulated kernels take box reads.
inline constexpr int boxStep = 128;

// The read of the modulated kernels: `step` is the effective step of this sample, cycleOf(level) the cycle.
template <class CycleOf>
inline int modulatedRead(CycleOf cycleOf, std::uint32_t phase, std::uint32_t step) {
    return step < boxStep ? linearRead(cycleOf(mipMap[(step * 3) >> 2]), phase) : boxRead(cycleOf(7), phase, step);
}

// Truncation to 16 bits that wraps beyond them; what passes 32 bits is held there first. NaN gives 0.
inline std::int16_t truncateToSample(float x) {
    const float bounded = x > -2147483648.0f ? (x < 2147483520.0f ? x : 2147483520.0f) : -2147483648.0f;
    return static_cast<std::int16_t>(static_cast<std::uint32_t>(static_cast<std::int32_t>(bounded)));
}

}  // namespace vantoric
