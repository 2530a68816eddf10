#include "sound/kernel_batch.h"

#include <algorithm>

namespace vantoric {

namespace {

// The kernels that run side by side or draw; all others do neither.
constexpr BatchedKernel kernelRows[] = {
    {kernels::analogPlain, sideBySide::analogPlain, KernelDraws::oneHash},
    {kernels::analogFm, sideBySide::analogFm, KernelDraws::oneCongruence},
    {kernels::analogPulse, sideBySide::analogPulse, KernelDraws::oneCongruence},
    {kernels::hypernoise9, sideBySide::hypernoise9, KernelDraws::none},
    {kernels::supersawJp, sideBySide::supersawJp, KernelDraws::none},
    {kernels::supersawClean, sideBySide::supersawClean, KernelDraws::none},
    {kernels::supernoise, sideBySide::supernoise, KernelDraws::none},
    {kernels::noiseWhite, nullptr, KernelDraws::oneHash},
    {kernels::noiseLowpass, sideBySide::noiseLowpass, KernelDraws::oneCongruence},
    {kernels::noiseBandpass, sideBySide::noiseBandpass, KernelDraws::oneCongruence},
    {kernels::noiseRandom, nullptr, KernelDraws::knownAfterwards},
    {kernels::noiseRandomRamp, nullptr, KernelDraws::knownAfterwards},
    {kernels::noiseDigital, nullptr, KernelDraws::knownAfterwards},
    {kernels::noiseBandlimit, nullptr, KernelDraws::knownAfterwards},
    {kernels::noisePink, sideBySide::noisePink, KernelDraws::oneHash},
    {kernels::fractal1, sideBySide::fractal1, KernelDraws::oneASubStep, 8},
    {kernels::fractal2, sideBySide::fractal2, KernelDraws::oneASubStep, 9},
    {kernels::fractal3, sideBySide::fractal3, KernelDraws::oneASubStep, 10},
    {kernels::fractal4, sideBySide::fractal4, KernelDraws::none},
};

}  // namespace

BatchedKernel batchedKernel(Kernel kernel) {
    const auto* row =
        std::find_if(std::begin(kernelRows), std::end(kernelRows), [&](const BatchedKernel& r) { return r.kernel == kernel; });
    return row != std::end(kernelRows) ? *row : BatchedKernel{kernel};
}

void KernelBatch::add(const BatchedKernel& kernel, std::int16_t* out, OscillatorState& state, const std::int16_t* in,
                      const Sample* sample) {
    if (kernel.draws == KernelDraws::knownAfterwards || lacksAnalogWave(kernel.kernel, state))
        return runKernel(kernel.kernel, {engine_, waves_, random_, sample}, out, count_, state, in);
    std::uint16_t fadeIn;
    if (!beginKernel(out, count_, state, fadeIn)) return;
    entries_[static_cast<std::size_t>(size_++)] = {
        kernel.kernel, kernel.sideBySide, out, &state, in, sample, random_.congruence.state, random_.hash.counter, fadeIn};
    if (kernel.draws == KernelDraws::oneHash) random_.hash.counter += static_cast<std::uint32_t>(count_);
    if (kernel.draws == KernelDraws::oneCongruence) skipCongruence(1);
    if (kernel.draws == KernelDraws::oneASubStep) skipCongruence(chaosStep(kernel.noiWave, state.increment).subSteps);
}

// An analog kernel without its wave does nothing and draws nothing.
bool KernelBatch::lacksAnalogWave(Kernel kernel, const OscillatorState& state) const {
    if (kernel == kernels::analogPulse) return waves_.rowCycle(pulseWidthRow, 0) == nullptr || state.framePending < 0;
    return (kernel == kernels::analogPlain || kernel == kernels::analogFm) && waves_.rowCycle(state.analogRow, 0) == nullptr;
}

// Passes over the draws of a call; subSteps is a power of two.
void KernelBatch::skipCongruence(int subSteps) {
    if (stride_ == 0) {
        LinearCongruence zero{0}, one{1};
        zero.skip(static_cast<std::uint32_t>(count_));
        one.skip(static_cast<std::uint32_t>(count_));
        strideAddend_ = zero.state;
        stride_ = one.state - zero.state;
    }
    std::uint32_t factor = stride_, addend = strideAddend_;
    for (; subSteps > 1; subSteps /= 2) {
        addend *= factor + 1u;
        factor *= factor;
    }
    random_.congruence.state = random_.congruence.state * factor + addend;
}

RandomSources KernelBatch::drawsOf(const Entry& entry) const {
    RandomSources random = random_;
    random.congruence.state = entry.congruence;
    random.hash.counter = entry.hashCounter;
    return random;
}

void KernelBatch::render() {
    for (int i = 0; i < size_; ++i) {
        Entry& entry = entries_[static_cast<std::size_t>(i)];
        if (entry.kernel == nullptr) continue;
        if (entry.sideBySide != nullptr) {
            renderSideBySide(i);
        } else {
            RandomSources random = drawsOf(entry);
            entry.kernel({engine_, waves_, random, entry.sample}, entry.out, count_, *entry.state, entry.in);
        }
    }
    for (int i = 0; i < size_; ++i) {
        const Entry& entry = entries_[static_cast<std::size_t>(i)];
        endKernel(entry.out, count_, *entry.state, entry.fadeIn);
    }
    size_ = 0;
}

// The entry and those behind it with the same kernel.
void KernelBatch::renderSideBySide(int first) {
    SideBySideFunction* const function = entries_[static_cast<std::size_t>(first)].sideBySide;
    KernelCall calls[rowCount];
    RandomSources random[rowCount];
    std::size_t gathered = 0;
    for (int i = first; i < size_ && gathered < rowCount; ++i) {
        Entry& entry = entries_[static_cast<std::size_t>(i)];
        if (entry.sideBySide != function || entry.kernel == nullptr) continue;
        random[gathered] = drawsOf(entry);
        calls[gathered] = {&engine_, &waves_, &random[gathered], entry.out, entry.state, entry.in};
        ++gathered;
        entry.kernel = nullptr;
    }
    function({calls, gathered}, count_);
}

}  // namespace vantoric
