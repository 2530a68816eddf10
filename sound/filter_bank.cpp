#include "sound/filter_bank.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace vantoric {

namespace {

// Copies the samples of some voices from one interleaved buffer to another.
void copyVoices(const float* from, float* to, int count, LaneMask mask) {
    for (LaneMask rest = mask; rest != 0; rest &= static_cast<LaneMask>(rest - 1)) {
        const int voice = std::countr_zero(rest);
        for (int i = voice; i < count * voiceCount; i += voiceCount) to[i] = from[i];
    }
}

// Whether a type runs through a delay line: its loop goes voice by voice.
template <template <class> class... Topologies>
bool readsLine(int type, filters::LoopList<Topologies...>) {
    const auto isRowOf = [type](const auto& rows) {
        return std::any_of(std::begin(rows), std::end(rows), [type](const auto& row) { return row.index == type; });
    };
    return ((filters::runsByVoice<Topologies> && isRowOf(filters::filterRows<Topologies>)) || ...);
}

}  // namespace

void FilterBank::touchMemory(int type) {
    if (readsLine(type, filters::AllLoops{})) memory_.touchLines();
}

LaneMask FilterBank::sharing(const filters::Loop<voiceCount>* loop, LaneMask mask) const {
    LaneMask group = 0;
    for (int v = 0; v < voiceCount; ++v)
        if ((mask >> v & 1) != 0 && slots_[v].loop() == loop) group |= static_cast<LaneMask>(1u << v);
    return group;
}

const filters::Loop<voiceCount>* FilterBank::commonLoop(LaneMask mask) const {
    const filters::Loop<voiceCount>* loop = mask != 0 ? slots_[std::countr_zero(mask)].loop() : nullptr;
    return sharing(loop, mask) == mask ? loop : nullptr;
}

void FilterBank::run(float* buffer, int count, LaneMask mask) { run(takeDraws(count, mask), buffer, count, mask); }

void FilterBank::run(const filters::DrawStarts& starts, float* buffer, int count, LaneMask mask) {
    LaneMask rest = mask;
    while (rest != 0) {
        const filters::Loop<voiceCount>* loop = slots_[std::countr_zero(rest)].loop();
        const LaneMask group = sharing(loop, rest);
        rest &= static_cast<LaneMask>(~group);
        if (loop != nullptr) silence(buffer, count, runGroup(*loop, starts, buffer, count, group, mask));
    }
}

void FilterBank::silence(float* buffer, int count, LaneMask broken) {
    for (; broken != 0; broken &= static_cast<LaneMask>(broken - 1)) {
        const int voice = std::countr_zero(broken);
        reset(voice);
        for (int i = voice; i < count * voiceCount; i += voiceCount) buffer[i] = 0.0f;
    }
}

// A loop overwrites all lanes of its groups: where voices of another loop sound among them, it works on a copy.
LaneMask FilterBank::runGroup(const filters::Loop<voiceCount>& loop, const filters::DrawStarts& starts, float* buffer, int count,
                              LaneMask group, LaneMask mask) {
    const bool alone = group == mask;
    filters::LoopRun<voiceCount> run{&memory_, &starts, alone ? buffer : scratch_, group};
    if (!alone) copyVoices(buffer, scratch_, count, group);
    loop.run({&run, 1}, count);
    if (!alone) copyVoices(scratch_, buffer, count, group);
    return run.broken;
}

// Deals out the random numbers of a run as if the voices ran one after the other.
filters::DrawStarts FilterBank::takeDraws(int count, LaneMask mask) {
    filters::DrawStarts starts;
    starts.hashSeed = random_.hash.seed;
    for (LaneMask rest = mask; rest != 0; rest &= static_cast<LaneMask>(rest - 1)) {
        const int voice = std::countr_zero(rest);
        const filters::Loop<voiceCount>* loop = slots_[voice].loop();
        if (loop == nullptr) continue;
        starts.congruence[voice] = random_.congruence.state;
        starts.hash[voice] = random_.hash.counter;
        random_.congruence.skip(static_cast<std::uint32_t>(loop->draws.congruence * count));
        random_.hash.counter += static_cast<std::uint32_t>(loop->draws.hash * count);
    }
    return starts;
}

}  // namespace vantoric
