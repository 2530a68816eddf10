// Kernel calls of many voices gathered and made together: those of one kernel side by side.
#pragma once

#include <array>
#include <cstdint>

#include "sound/kernels.h"
#include "sound/side_by_side.h"

namespace vantoric {

// Gathers calls and makes them at render(), with the bits that calling one kernel after the other would give. The draws of
// each are set aside when it is added, so calls are added in the order in which they would be made one by one, though they
// may go into several batches: one for oscillators that nothing modulates, then one for those that read the buffers of the
// first. On the audio thread; allocates nothing, cannot fail.
class KernelBatch {
public:
    static constexpr int capacity = voiceCount * oscillatorCount;

    // count: samples of every call, 1 to 256. The arguments must outlive the batch.
    KernelBatch(const EngineState& engine, const WaveStore& waves, RandomSources& random, int count)
        : engine_(engine), waves_(waves), random_(random), count_(count) {}

    // Adds a call with the arguments as the kernel takes them. All is read at render() but the increment, which decides how
    // much a kernel draws. Kernels whose number of draws is known only after them are called at once; none of these reads an
    // input. Kernels that are not those of kernels.h must not draw. At most `capacity` calls from one render() to the next.
    void add(Kernel kernel, std::int16_t* out, OscillatorState& state, const std::int16_t* in, const Sample* sample = nullptr);

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
    };

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
