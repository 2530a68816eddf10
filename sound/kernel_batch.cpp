#include "sound/kernel_batch.h"

#include <algorithm>

namespace vantoric {

namespace {

// How many draws a sample takes.
enum class Draws { none, oneHash, oneCongruence, oneASubStep, knownAfterwards };

struct KernelRow {
    Kernel kernel;
    SideBySideFunction* sideBySide;  // null: one by one
    Draws draws;
    int noiWave = 0;  // of an attractor
};

// The kernels that run side by side or draw; all others do neither.
constexpr KernelRow kernelRows[] = {
    {kernels::analogPlain, sideBySide::analogPlain, Draws::oneHash},
    {kernels::analogFm, sideBySide::analogFm, Draws::oneCongruence},
    {kernels::analogPulse, sideBySide::analogPulse, Draws::oneCongruence},
    {kernels::hypernoise9, sideBySide::hypernoise9, Draws::none},
    {kernels::supersawJp, sideBySide::supersawJp, Draws::none},
    {kernels::supersawClean, sideBySide::supersawClean, Draws::none},
    {kernels::supernoise, sideBySide::supernoise, Draws::none},
    {kernels::noiseWhite, nullptr, Draws::oneHash},
    {kernels::noiseLowpass, sideBySide::noiseLowpass, Draws::oneCongruence},
    {kernels::noiseBandpass, sideBySide::noiseBandpass, Draws::oneCongruence},
    {kernels::noiseRandom, nullptr, Draws::knownAfterwards},
    {kernels::noiseRandomRamp, nullptr, Draws::knownAfterwards},
    {kernels::noiseDigital, nullptr, Draws::knownAfterwards},
    {kernels::noiseBandlimit, nullptr, Draws::knownAfterwards},
    {kernels::noisePink, sideBySide::noisePink, Draws::oneHash},
    {kernels::fractal1, sideBySide::fractal1, Draws::oneASubStep, 8},
    {kernels::fractal2, sideBySide::fractal2, Draws::oneASubStep, 9},
    {kernels::fractal3, sideBySide::fractal3, Draws::oneASubStep, 10},
};

const KernelRow& rowOf(Kernel kernel) {
    static constexpr KernelRow other{nullptr, nullptr, Draws::none};
    const auto* row =
        std::find_if(std::begin(kernelRows), std::end(kernelRows), [&](const KernelRow& r) { return r.kernel == kernel; });
    return row != std::end(kernelRows) ? *row : other;
}

}  // namespace

void KernelBatch::add(Kernel kernel, std::int16_t* out, OscillatorState& state, const std::int16_t* in, const Sample* sample) {
    const KernelRow& row = rowOf(kernel);
    if (row.draws == Draws::knownAfterwards) {
        kernel(KernelContext{engine_, waves_, random_, sample}, out, count_, state, in);
        return;
    }
    entries_[static_cast<std::size_t>(size_++)] = {
        kernel, row.sideBySide, out, &state, in, sample, random_.congruence.state, random_.hash.counter};
    if (row.draws == Draws::oneHash) random_.hash.counter += static_cast<std::uint32_t>(count_);
    if (row.draws == Draws::oneCongruence) skipCongruence(1);
    if (row.draws == Draws::oneASubStep) skipCongruence(chaosStep(row.noiWave, state.increment).subSteps);
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
