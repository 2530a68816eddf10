// Kernel calls of many voices gathered and made together: those of one kernel side by side.
#pragma once

#include <array>
#include <cstdint>

#include "sound/kernels.h"
#include "sound/side_by_side.h"

namespace vantoric {

// How many draws a kernel takes.
enum class KernelDraws : std::uint8_t { none, oneHash, oneCongruence, oneASubStep, knownAfterwards };

// A kernel and how a batch runs it, to be looked up once for many calls.
struct BatchedKernel {
    Kernel kernel = kernels::silent;
    SideBySideFunction* sideBySide = nullptr;  // null: one by one
    KernelDraws draws = KernelDraws::none;     // per sample
    int noiWave = 0;                           // of an attractor

    bool mayDraw() const { return draws != KernelDraws::none; }
};
// Kernels that are not those of kernels.h must not draw.
BatchedKernel batchedKernel(Kernel kernel);

// Gathers calls and makes them at render(), with the bits that calling one kernel after the other would give. The draws of
// each are set aside when it is added, so calls are added in the order in which they would be made one by one, though they
// may go into several batches: one for oscillators that nothing modulates, then one for those that read the buffers of the
// first. On the audio thread; allocates nothing, cannot fail.
class KernelBatch {
public:
    static constexpr int capacity = layerCount * voiceCount * oscillatorCount;

    // count: samples of every call, 1 to 256. The arguments must outlive the batch.
    KernelBatch(const EngineState& engine, const WaveStore& waves, RandomSources& random, int count)
        : engine_(engine), waves_(waves), random_(random), count_(count) {}

    // Adds a call with the arguments as the kernel takes them, to be made as runKernel() does. All is read at render() but
    // the custom wave, and the increment, which decides how much a kernel draws. Kernels whose number of draws is known only
    // after them are called at once; none of these reads an input. At most `capacity` calls from one render() to the next.
    void add(const BatchedKernel& kernel, std::int16_t* out, OscillatorState& state, const std::int16_t* in,
             const Sample* sample = nullptr);

    // Makes the calls that were added since the last time.
    void render();

private:
    struct Entry {
        Kernel kernel;  // null: made
        SideBySideFunction* sideBySide;
        std::int16_t* out;
        OscillatorState* state;
        const std::int16_t* in;
        const Sample* sample;
        std::uint32_t congruence, hashCounter;  // where its draws begin
        std::uint16_t fadeIn;
    };

    bool lacksAnalogWave(Kernel kernel, const OscillatorState& state) const;
    RandomSources drawsOf(const Entry& entry) const;
    void skipCongruence(int subSteps);
    void renderSideBySide(int first);

    const EngineState& engine_;
    const WaveStore& waves_;
    RandomSources& random_;
    int count_;
    int size_ = 0;
    std::uint32_t stride_ = 0, strideAddend_ = 0;  // of the congruence over count_ draws; 0: not yet known
    std::array<Entry, capacity> entries_;
};

}  // namespace vantoric
