#include "samples/sample_kernels.h"

#include <cstdlib>

#include "base/numbers.h"

namespace vantoric {

namespace {

constexpr int fractionBits = 13;
constexpr std::int32_t reach = 524287;  // the highest whole position
constexpr int guardSamples = 8;

// Position, step and end of a sample for one kernel call.
class Playhead {
public:
    Playhead(const Sample& sample, const OscillatorState& state)
        : phase(state.phase), step(sampleStep(sample.sampleRate, state.increment)) {
        const std::int32_t last = std::min(sample.length + 1, reach);
        const std::int32_t loopEnd = clampTo(sample.loopEnd, 0, last);
        const std::int32_t loop = loopEnd - clampTo(sample.loopStart, 0, last);
        end_ = static_cast<std::uint32_t>(loopEnd) << fractionBits;
        // Without a loop the position stays where it is: back by what it came.
        jump_ = state.loopOn == 0 || loop <= 0 ? step : static_cast<std::uint32_t>(loop) << fractionBits;
    }

    void advance() {
        std::uint64_t next = std::uint64_t{phase} + step;
        if (next > end_) next -= jump_ >= step ? jump_ : roundsBack(next);
        phase = static_cast<std::uint32_t>(next);
    }

    std::uint32_t phase;
    const std::uint32_t step;

private:
    // A loop shorter than the step is gone round several times at once, or the position would run away.
    std::uint64_t roundsBack(std::uint64_t next) const { return (next - end_ + jump_ - 1) / jump_ * jump_; }

    std::uint32_t end_;  // above it the position jumps back
    std::uint32_t jump_;
};

// A little below 1/8192, on purpose: the curve is tuned with it.
constexpr float fractionScale = 0.00012059817f;

// The fifth-order, six-point interpolator around s2, at half scale.
float sixPointRead(float s0, float s1, float s2, float s3, float s4, float s5, float t) {
    const float fifth = 50.0f * (s3 - s2) + 25.0f * (s1 - s4) + 5.0f * (s5 - s0);
    const float fourth = 126.0f * s2 - 124.0f * s3 + 61.0f * s4 - 64.0f * s1 - 12.0f * s5 + 13.0f * s0 + t * fifth;
    const float third = 66.0f * s3 - 70.0f * s2 - 33.0f * s4 + 39.0f * s1 + 7.0f * s5 - 9.0f * s0 + t * fourth;
    const float second = 16.0f * (s1 + s3) - s0 - 30.0f * s2 - s4 + t * third;
    return 0.5f * s2 + t * (1.0f / 48.0f) * (2.0f * (s0 - s4) + 16.0f * (s3 - s1) + t * second);
}

// Reads at `readGroup` positions, side by side: the points first, so that the curve runs as vectors.
constexpr int readGroup = 16;
void sixPointGroup(const std::int16_t* table, const std::uint32_t* phases, std::int16_t* out, int count) {
    float points[6][readGroup], fraction[readGroup];
    std::int32_t values[readGroup];
    for (int k = 0; k < readGroup; ++k) {
        const std::int16_t* const s = table + (phases[k] >> fractionBits);
        for (int point = 0; point < 6; ++point) points[point][k] = static_cast<float>(s[point]);
        fraction[k] = static_cast<float>(static_cast<std::int32_t>(phases[k] & 0x1fff)) * fractionScale;
    }
    // Half of 16 bits and its overshoot: the conversion needs no bound.
    for (int k = 0; k < readGroup; ++k)
        values[k] = static_cast<std::int32_t>(
            sixPointRead(points[0][k], points[1][k], points[2][k], points[3][k], points[4][k], points[5][k], fraction[k]));
    for (int k = 0; k < count; ++k) out[k] = static_cast<std::int16_t>(clampTo(values[k], -32767, 32767));
}

std::int16_t linearSample(const std::int16_t* table, std::uint32_t phase) {
    const std::int16_t* const s = table + (phase >> fractionBits);
    return static_cast<std::int16_t>(linearSum(s[0], s[1], phase) >> 14);
}

bool isPlayable(const Sample& sample) { return sample.length > 0 && sample.levels[0] != nullptr; }

// A modulated read: the whole position modulo the length, so that any offset stays inside.
std::int16_t foldedSample(const std::int16_t* table, std::uint32_t position, std::uint32_t length) {
    const std::uint32_t i = (position >> fractionBits) % length;
    return static_cast<std::int16_t>(linearSum(table[i], table[i + 1], position) >> 14);
}

// The frame that both modulated kernels share. read(position, offset) gives the sample.
template <class Read>
void runModulatedSample(const Sample& sample, OscillatorState& state, std::int16_t* out, int count, const std::int16_t* in,
                        Read read) {
    Playhead head(sample, state);
    for (int i = 0; i < count; ++i) {
        head.advance();
        const std::int16_t x = in[i];
        if (state.synced != 0) {
            if (x > 0 && state.lastSyncInput < 1) head.phase = 0;
            state.lastSyncInput = x;
        }
        const auto offset = static_cast<std::int32_t>((std::int64_t{x} * state.fmDepth) >> 8);
        state.fmDepth =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(state.fmDepth) + static_cast<std::uint32_t>(state.fmDepthStep));
        out[i] = read(head.phase + static_cast<std::uint32_t>(offset), offset);
    }
    state.phase = head.phase;
}

}  // namespace

std::uint32_t sampleStep(std::uint32_t sampleRate, std::uint32_t increment) {
    // 1 / (130.81277 x 2048)
    const double step = static_cast<double>(sampleRate) * static_cast<double>(increment) * 3.7326724e-6;
    return static_cast<std::uint32_t>(truncateTo(step, 0, 0x7fffffff));
}

void writeSampleGuards(Sample& sample, bool loop) {
    if (!isPlayable(sample)) return;
    const std::int32_t start = clampTo(sample.loopStart, 0, sample.length - 1);
    for (const auto& level : sample.levels) {
        if (level == nullptr) continue;
        std::int16_t* const end = level.get() + sample.length;
        for (int i = 0; i < guardSamples; ++i) end[i] = loop ? level[static_cast<std::size_t>(start + i)] : end[-1];
    }
}

namespace kernels {

void sampleRead(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t*) {
    const Sample& sample = *context.sample;
    if (!isPlayable(sample)) return;
    if (sample.levelsPending.isSet()) return keepSilent(out, count, state);
    if ((state.phase >> fractionBits) >= static_cast<std::uint32_t>(sample.length) + 3) state.phase = 0;
    Playhead head(sample, state);
    const int level = sampleLevel(head.step);
    const std::int16_t* const table = sample.levels[level].get();
    std::uint32_t phases[readGroup] = {};
    for (int start = 0; start < count; start += readGroup) {
        const int size = std::min(readGroup, count - start);
        for (int k = 0; k < size; ++k) {
            head.advance();
            phases[k] = head.phase;
        }
        if (level < 3)
            sixPointGroup(table, phases, out + start, size);
        else
            for (int k = 0; k < size; ++k) out[start + k] = linearSample(table, phases[k]);
    }
    state.phase = head.phase;
}

void sampleFmPlain(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    const Sample& sample = *context.sample;
    if (!isPlayable(sample)) return;
    if (sample.levelsPending.isSet()) return keepSilent(out, count, state);
    const int level = sampleLevel(sampleStep(sample.sampleRate, state.increment));
    const std::int16_t* const table = sample.levels[level].get();
    const auto length = static_cast<std::uint32_t>(sample.length);
    runModulatedSample(sample, state, out, count, in,
                       [&](std::uint32_t position, std::int32_t) { return foldedSample(table, position, length); });
}

void sampleFmLevels(const KernelContext& context, std::int16_t* out, int count, OscillatorState& state, const std::int16_t* in) {
    const Sample& sample = *context.sample;
    if (!isPlayable(sample)) return;
    if (sample.levelsPending.isSet()) return keepSilent(out, count, state);
    const auto length = static_cast<std::uint32_t>(sample.length);
    const std::int64_t increment = static_cast<std::int32_t>(state.increment);
    runModulatedSample(sample, state, out, count, in, [&](std::uint32_t position, std::int32_t offset) {
        const auto effective = static_cast<std::uint32_t>(std::llabs(increment - state.lastFmOffset + offset) >> 13);
        const auto total = static_cast<std::int32_t>(position);
        if (total < state.lastTotalPhase) state.frame = state.framePending;
        state.lastFmOffset = offset;
        state.lastTotalPhase = total;
        return foldedSample(sample.levels[sampleFmLevel(effective)].get(), position, length);
    });
}

}  // namespace kernels

}  // namespace vantoric
