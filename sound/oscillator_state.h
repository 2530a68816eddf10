// What an oscillator keeps from one call of its kernel to the next, and what a kernel may read.
#pragma once

#include <cstdint>

#include "base/engine_state.h"
#include "base/random.h"

namespace vantoric {

class CustomWaveSlot;
class WaveStore;
struct Sample;

inline constexpr int cycleSamples = 2048;             // one cycle of a wave
inline constexpr int mipLevels = 8;                   // each with half the harmonics of the one before
inline constexpr int customFrames = 32;               // frames of a custom wave
inline constexpr std::uint32_t phaseMask = 0xffffff;  // phases are 24-bit in 32-bit words
inline constexpr int stackVoices = 9;                 // sub-oscillators of the widest unison stack

// Fixed-point fields: bits 13 to 23 of a phase index a cycle, bits 0 to 12 are the fraction.
struct OscillatorState {
    std::uint32_t scanPhase = 0;  // position of the frame scan, 23 bits
    std::uint32_t scanIncrement = 0;
    std::uint32_t subPhase[stackVoices] = {};
    std::uint32_t phase = 0;
    std::int32_t lastTotalPhase = 0;
    std::uint32_t increment = 0;  // cycles per sample x 2^24
    std::int32_t fmDepth = 0;
    std::int32_t fmDepthStep = 0;      // per sample
    std::uint8_t synced = 0;           // restarts with the previous oscillator
    std::uint8_t phaseInit = 1;        // the first tick is to set the start phase
    std::uint8_t oscillatorIndex = 0;  // 0 to 2
    std::uint8_t loopOn = 0;
    std::int32_t frame = -1;  // -1: not yet set
    std::int32_t framePending = -1;
    std::int32_t frameCount = 1;
    std::uint16_t blendPending = 0;  // fraction towards the next frame
    std::uint16_t blend = 0;
    float work[16] = {};                  // filter and chaos memories
    std::uint32_t seed = 0;               // of the repeating noise
    float lowpass = 0.0f;                 // output memory of the analog kernels
    const std::int16_t* table = nullptr;  // the wave of this note, level-major; null: none
    double polarity = 1.0;                // +1 or -1
    std::uint8_t analogRow = 0;
    std::int32_t lastFmOffset = 0;
    std::int16_t lastSyncInput = 0;
    std::int32_t previousRead = 0;
    std::int16_t hiss = 0;  // noise floor of the analog kernels
    std::int8_t phaseDirection = 1;
    const CustomWaveSlot* customWave = nullptr;  // what `table` is taken from at each call; null: it stays
    std::uint16_t fadeIn = 0;                    // samples still to be faded in after a silence without a wave
    std::uint8_t alternate = 0;                  // which group of voices the alternating stack steps next
};

// What a kernel sees of the world. One per voice and oscillator.
struct KernelContext {
    const EngineState& engine;
    const WaveStore& waves;
    RandomSources& random;
    const Sample* sample = nullptr;  // the oscillator's sample
};

// Fills `out` with `count` (1 to 256) samples. `in` is the buffer of the previous oscillator, as long as
// `out`; kernels without FM and sync ignore it. Audio thread only; allocates nothing, cannot fail: without
// a wave it leaves `out` as it stands.
using KernelFunction = void(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state,
                            const std::int16_t* in);
using Kernel = KernelFunction*;

}  // namespace vantoric
