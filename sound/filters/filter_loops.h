// The sample loops of a topology and the types that they sound for, made from its rows; for the families' sources.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>
#include <type_traits>
#include <utility>

#include "sound/filters/filter_chains.h"
#include "sound/filters/wide_loops.h"

namespace vantoric::filters {

// The loops are flattened, as the compiler would otherwise call steps and operators through memory. With the
// sanitizers' checks in each of them that takes minutes to compile, and speed does not matter.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VANTORIC_FLATTEN
#else
#define VANTORIC_FLATTEN [[gnu::flatten]]
#endif

// Steps K chains in turn: while one waits for its last result, the others go on.
template <template <class> class Topology, VariantOf<Topology> Variant, class Chain, int K>
VANTORIC_FLATTEN void runChains(const Chain* chains, int count) {
    using T = typename Chain::T;
    using Samples = typename Chain::Samples;
    [&]<std::size_t... k>(std::index_sequence<k...>) {
        std::array<Topology<T>, K> loops{chains[k].load()...};
        const std::array<typename Chain::At, K> at{chains[k].samples()...};
        std::array<Draws<T>, K> random{chains[k].draws()...};
        for (int i = 0; i < count * voiceCount; i += voiceCount) {
            const std::array<Samples, K> x{Chain::read(at[k], i)...};
            const std::array<Samples, K> y{lanesTo<Samples>(loops[k].template step<Variant>(lanesTo<T>(x[k]), random[k]))...};
            (Chain::write(at[k], i, y[k]), ...);
        }
        (chains[k].store(loops[k]), ...);
    }(std::make_index_sequence<K>{});
}

// One voice; its samples stand `stride` apart. Returns whether its memory is in range.
template <template <class> class Topology, VariantOf<Topology> Variant, int Voices>
bool runVoice(LoopRun<Voices>& run, int voice, int stride, int count) {
    using T = TopologyScalar<Topology>;
    auto& cells = run.memory->template cells<Topology>();
    float* at = run.buffer + voice;
    Topology<T> loop = cells.get(voice);
    float last = 0.0f;  // of a delay line, whose memory is long and its gain high where it runs away
    if constexpr (runsByVoice<Topology>) {
        DelayLine& line = run.memory->line(voice);
        for (int i = 0; i < count; ++i, at += stride) *at = last = loop.step(*at, line);
    } else {
        Draws<T> random(*run.starts, voice);
        for (int i = 0; i < count; ++i, at += stride)
            *at = static_cast<float>(loop.template step<Variant>(static_cast<T>(*at), random));
    }
    cells.put(voice, loop);
    return !lanesOutOfRange(loop) && std::fabs(last) < largestMemory;
}

template <template <class> class Topology, VariantOf<Topology> Variant>
void runByVoice(std::span<LoopRun<voiceCount>> runs, int count) {
    for (LoopRun<voiceCount>& run : runs)
        for (int v = 0; v < voiceCount; ++v)
            if ((run.mask >> v & 1) != 0 && !runVoice<Topology, Variant>(run, v, voiceCount, count))
                run.broken |= static_cast<LaneMask>(1u << v);
}

// How many of the chains that are left go next: of four lanes in rounds of the same size; of eight never three, which
// are rare (the places of one layer make one, two or four) and would cost their time at build.
template <int width>
constexpr int chainsOfRound(int left) {
    if (width > laneGroup) return left >= maxChains ? maxChains : left >= 2 ? 2 : left;
    const int rounds = (left + maxChains - 1) / maxChains;
    return (left + rounds - 1) / rounds;
}

// The registers to step, one for each group in which voices sound. Returns how many.
template <template <class> class Topology>
int chainsOf(std::span<LoopRun<voiceCount>> runs, GroupChain<Topology>* chains) {
    int made = 0;
    for (LoopRun<voiceCount>& run : runs)
        for (int first = 0; first < voiceCount; first += laneGroup)
            if (const Group group{&run, first}; group.sounds()) chains[made++] = {group};
    return made;
}

// A half-empty register takes as long as a full one, so two groups share one, whatever runs they are of; neighbours where
// both sound. The last may keep an idle half.
template <template <class> class Topology>
int chainsOf(std::span<LoopRun<voiceCount>> runs, PairChain<Topology>* chains) {
    int made = 0;
    PairChain<Topology>* waiting = nullptr;  // for its second half
    for (LoopRun<voiceCount>& run : runs)
        for (int first = 0; first < voiceCount; first += 2 * laneGroup) {
            const Group low{&run, first}, high{&run, first + laneGroup};
            if (!low.sounds() && !high.sounds()) continue;
            if (low.sounds() && high.sounds()) {
                chains[made++] = {{low, high}};
            } else if (waiting != nullptr) {
                waiting->groups[1] = low.sounds() ? low : high;
                waiting = nullptr;
            } else {
                waiting = &chains[made++];
                *waiting = low.sounds() ? PairChain<Topology>{{low, high}} : PairChain<Topology>{{high, low}};
            }
        }
    return made;
}

// All voices as one register, if no more sound than it holds.
template <template <class> class Topology>
bool gather(std::span<LoopRun<voiceCount>> runs, ScatteredChain<Topology>& chain) {
    std::size_t found = 0;
    for (LoopRun<voiceCount>& run : runs)
        for (unsigned rest = run.mask; rest != 0; rest &= rest - 1) {
            if (found == chain.places.size()) return false;
            chain.places[found++] = {&run, std::countr_zero(rest)};
        }
    std::fill(chain.places.begin() + static_cast<std::ptrdiff_t>(found), chain.places.end(), chain.places[0]);
    return true;
}

template <template <class> class Topology, VariantOf<Topology> Variant, class Chain>
void runInLanes(std::span<LoopRun<voiceCount>> runs, int count) {
    Chain chains[maxLoopVoices / Chain::width];
    int left = chainsOf(runs, chains);
    if constexpr (Chain::width > laneGroup)
        if (ScatteredChain<Topology> few; left > 2 && gather(runs, few)) {
            runChains<Topology, Variant, ScatteredChain<Topology>, 1>(&few, count);
            return;
        }
    for (const Chain* next = chains; left > 0;) {
        const int taken = chainsOfRound<Chain::width>(left);
        switch (taken) {
            case 1: runChains<Topology, Variant, Chain, 1>(next, count); break;
            case 2: runChains<Topology, Variant, Chain, 2>(next, count); break;
            case 3:
                if constexpr (Chain::width == laneGroup) runChains<Topology, Variant, Chain, 3>(next, count);
                break;
            default: runChains<Topology, Variant, Chain, 4>(next, count); break;
        }
        next += taken;
        left -= taken;
    }
}

// A loop of one voice, or of the voices of a layer in registers of `width` lanes.
template <template <class> class Topology, VariantOf<Topology> Variant, int Voices, int width>
void runLoop(std::span<LoopRun<Voices>> runs, int count) {
    if constexpr (Voices == 1)
        runs[0].broken = runVoice<Topology, Variant>(runs[0], 0, 1, count) ? 0 : 1;
    else if constexpr (runsByVoice<Topology>)
        runByVoice<Topology, Variant>(runs, count);
    else
        runInLanes<Topology, Variant, std::conditional_t<width == laneGroup, GroupChain<Topology>, PairChain<Topology>>>(runs,
                                                                                                                         count);
}

template <template <class> class Topology, int Voices, int width>
constexpr std::array<Loop<Voices>, variantCount<Topology>> loopsByVariant() {
    return []<int... Value>(std::integer_sequence<int, Value...>) {
        return std::array{Loop<Voices>{&runLoop<Topology, VariantOf<Topology>(Value), Voices, width>,
                                       Topology<float>::draws(VariantOf<Topology>(Value)), Value,
                                       Voices == 1 || runsByVoice<Topology> ? 1 : width}...};
    }(std::make_integer_sequence<int, variantCount<Topology>>{});
}

template <template <class> class Topology, int Voices>
const Loop<Voices>* loopOf(VariantOf<Topology> variant) {
    static constexpr auto loops = loopsByVariant<Topology, Voices, laneGroup>();
    const auto place = static_cast<std::size_t>(variant);
#if defined(VANTORIC_WIDE_LOOPS)
    if constexpr (Voices == voiceCount && !runsByVoice<Topology>)
        if (wideLoopsInUse()) return &static_cast<const WideLoopsOf<Topology>&>(wideLoops).byVariant[place];
#endif
    return &loops[place];
}

// Flattened for the same reason: a setup that is called finds its loop in memory.
template <int Voices, template <class> class Topology, std::size_t Row>
VANTORIC_FLATTEN const Loop<Voices>* setupVoice(const FilterInputs& in, FilterMemory<Voices>& memory, int voice) {
    auto loop = memory.template cells<Topology>().get(voice);
    const VariantOf<Topology> variant = filterRows<Topology>[Row].setup(in, loop);
    memory.template cells<Topology>().put(voice, loop);
    return loopOf<Topology, Voices>(variant);
}

template <int Voices, template <class> class Topology>
void clearVoice(FilterMemory<Voices>& memory, int voice) {
    auto loop = memory.template cells<Topology>().get(voice);
    loop.clear();
    memory.template cells<Topology>().put(voice, loop);
    if constexpr (runsByVoice<Topology>) memory.line(voice).clear();
}

template <int Voices, template <class> class Topology>
std::span<const FilterType<Voices>> typesOfRows() {
    static_assert(std::is_array_v<decltype(filterRows<Topology>)>, "a loop without rows");
    static constexpr auto types = []<std::size_t... Row>(std::index_sequence<Row...>) {
        return std::array{FilterType<Voices>{filterRows<Topology>[Row].index, filterRows<Topology>[Row].number,
                                             filterRows<Topology>[Row].recompute == Recompute::everySetup,
                                             &setupVoice<Voices, Topology, Row>, &clearVoice<Voices, Topology>}...};
    }(std::make_index_sequence<std::size(filterRows<Topology>)>{});
    return types;
}

template <template <class> class Topology>
std::span<const FilterType<1>> TypesOf<Topology>::single() {
    return typesOfRows<1, Topology>();
}
template <template <class> class Topology>
std::span<const FilterType<voiceCount>> TypesOf<Topology>::ofLayer() {
    return typesOfRows<voiceCount, Topology>();
}

}  // namespace vantoric::filters
