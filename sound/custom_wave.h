// A user's single cycle and the 32 frames of 8 mip levels that are made from it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "base/fft.h"
#include "base/flag.h"
#include "sound/kernel_reads.h"
#include "sound/oscillator_state.h"

namespace vantoric {

using CustomCycle = std::array<std::int16_t, cycleSamples>;

// A custom wave, 1 MiB: level-major like the waves of the store. Frame 0 of level 0 holds the cycle as the user gave
// it, until the others are made.
struct CustomWave {
    std::array<std::int16_t, mipLevels * customFrames * cycleSamples> samples{};

    std::int16_t* frame(int level, int index) { return samples.data() + cycleOffset(customFrames, index, level); }
    const std::int16_t* frame(int level, int index) const { return samples.data() + cycleOffset(customFrames, index, level); }
};

// Makes the mip levels of a cycle: its spectrum, cut at 1024 >> level harmonics and without DC. Owns its work
// space; one per thread.
class CycleBandlimiter {
public:
    CycleBandlimiter();

    // `cycle`: 2048 samples in -1 to +1. levels[L]: 2048 samples of level L, clamped and scaled by 32767.
    // Checks `cancel` between levels: false as soon as it is set. `cancel` may be null. Not for the audio thread.
    bool run(const double* cycle, std::int16_t* const levels[mipLevels], const Flag* cancel = nullptr);

private:
    RealFft fft_;
    std::array<double, cycleSamples / 2 + 1> real_, imaginary_, cutReal_, cutImaginary_;
    std::array<double, cycleSamples> signal_;
};

// Rebuilds all frames and levels from frame 0 of level 0. Frame j moves the wave's middle by 32 j samples: a
// pulse width for any wave. False when `cancel` was set; the frames done until then stay. Worker thread.
bool makeCustomMips(CustomWave& wave, const Flag& cancel);

// True if the 2048 samples of two cycles all differ by less than 3: then one's mips serve the other.
bool sameCycle(const std::int16_t* a, const std::int16_t* b);

// What an oscillator of a layer has: the cycle that its user gave it and, once the worker has made it, the wave of that
// cycle. Made waves never change, so oscillators of all instances with the same cycle share one.
class CustomWaveSlot {
public:
    // Frame 0 of level 0, as patches keep it: as it was given, then as the worker made it. To be written after forget()
    // and while neither the audio block nor the worker is at work.
    CustomCycle cycle{};

    // All frames and levels; null until the worker has made them of the present cycle: the oscillator is silent then.
    // What it points to stays until the audio block that runs has ended. Any thread.
    const std::int16_t* samples() const { return samples_.load(std::memory_order_acquire); }
    bool isBuilt() const { return samples() != nullptr; }

    // The wave no longer sounds: another cycle comes. Not on the audio thread.
    void forget();

    // Worker thread. The cycle as it was given, also once its wave is made.
    const CustomCycle& given() const { return isBuilt() ? given_ : cycle; }
    // The wave of the present cycle; null until it is made.
    std::shared_ptr<const CustomWave> wave() const { return isBuilt() ? wave_ : nullptr; }
    // Counts the calls of forget(). To be asked for before the cycle is read.
    unsigned generation() const { return generation_.load(std::memory_order_acquire); }
    // Lets a wave sound that was made of the cycle of that generation; of an earlier one it is dropped. Returns the wave
    // that it replaces, or `wave` itself, which a block that still runs may read.
    std::shared_ptr<const CustomWave> publish(std::shared_ptr<const CustomWave> wave, unsigned generation);

private:
    std::mutex publishing_;
    std::atomic<unsigned> generation_{0};
    std::atomic<const std::int16_t*> samples_{nullptr};
    std::shared_ptr<const CustomWave> wave_;
    CustomCycle given_{};
};

// The custom waves that the instances of the process have made and still use, by the cycle they were made of. Workers.
class CustomWaveCache {
public:
    // The wave of exactly this cycle; null if there is none.
    std::shared_ptr<const CustomWave> find(const CustomCycle& cycle);
    // Remembers a wave as long as somebody uses it.
    void add(const CustomCycle& cycle, const std::shared_ptr<const CustomWave>& wave);

private:
    struct Entry {
        CustomCycle cycle;
        std::weak_ptr<const CustomWave> wave;
    };
    std::mutex mutex_;
    std::vector<std::unique_ptr<Entry>> entries_;
};

}  // namespace vantoric
