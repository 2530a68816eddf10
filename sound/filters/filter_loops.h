// The sample loops of a topology and the row of a type, for the families' sources.
#pragma once

#include <cstring>
#include <utility>

#include "sound/filters/filter_types.h"

namespace vantoric::filters {

// Which lanes hold a number that is not finite, or so large that what it makes of later samples might not be.
template <template <class> class Topology, class T>
MaskOf<T> lanesOutOfRange(const Topology<T>& loop) {
    constexpr int fields = sizeof(Topology<T>) / sizeof(T);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&loop);
    T sum = T(0);
    for (int k = 0; k < fields; ++k) {
        T field;
        std::memcpy(static_cast<void*>(&field), bytes + k * sizeof(T), sizeof field);
        sum += magnitude(field);
    }
    return !(sum < T(ScalarOf<T>(1e18)));
}

template <template <class> class Topology>
constexpr bool runsByVoice = requires {
    Topology<float>::byVoice;
};

// Wide loops are flattened, as the compiler would otherwise call the operators of wide vectors through memory.
// With the sanitizers' checks in each of them that takes minutes to compile, and speed does not matter.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VANTORIC_FLATTEN
#else
#define VANTORIC_FLATTEN [[gnu::flatten]]
#endif

// Neighbouring voices as lanes.
template <template <class> class Topology, int Variant, int N>
VANTORIC_FLATTEN LaneMask runLanes(FilterMemory<voiceCount>& memory, const DrawStarts& starts, float* buffer, int count,
                                   int first, LaneMask mask) {
    using T = Lanes<TopologyScalar<Topology>, N>;
    using Samples = Lanes<float, N>;
    auto& bank = memory.template cells<Topology>();
    Topology<T> loop = bank.template load<N>(first, mask);
    Draws<T> random(starts, first);
    float* at = buffer + first;
    for (int i = 0; i < count; ++i, at += voiceCount) {
        const Samples x(at, stdx::element_aligned);
        const Samples y = lanesTo<Samples>(loop.template step<Variant>(lanesTo<T>(x), random));
        y.copy_to(at, stdx::element_aligned);
    }
    bank.template store<N>(first, loop, mask);
    const auto bad = lanesOutOfRange(loop);
    LaneMask broken = 0;
    if (anyOf(bad))
        for (int lane = 0; lane < N; ++lane) broken |= static_cast<LaneMask>(bad[lane] ? 1u << (first + lane) : 0u);
    return broken & mask;
}

// One voice; its samples stand `stride` apart. Returns whether its memory is in range.
template <template <class> class Topology, int Variant, int Voices>
bool runVoice(FilterMemory<Voices>& memory, const DrawStarts& starts, float* at, int stride, int count, int voice) {
    using T = TopologyScalar<Topology>;
    auto& cells = memory.template cells<Topology>();
    Topology<T> loop = cells.get(voice);
    if constexpr (runsByVoice<Topology>) {
        DelayLine& line = memory.line(voice);
        for (int i = 0; i < count; ++i, at += stride) *at = loop.step(*at, line);
    } else {
        Draws<T> random(starts, voice);
        for (int i = 0; i < count; ++i, at += stride)
            *at = static_cast<float>(loop.template step<Variant>(static_cast<T>(*at), random));
    }
    cells.put(voice, loop);
    return !lanesOutOfRange(loop);
}

template <template <class> class Topology, int Variant, int Voices>
LaneMask runLoop(FilterMemory<Voices>& memory, const DrawStarts& starts, float* buffer, int count, LaneMask mask) {
    if constexpr (Voices == 1) {
        return runVoice<Topology, Variant>(memory, starts, buffer, 1, count, 0) ? 0 : 1;
    } else if constexpr (runsByVoice<Topology>) {
        LaneMask broken = 0;
        for (int v = 0; v < Voices; ++v)
            if ((mask >> v & 1) != 0 && !runVoice<Topology, Variant>(memory, starts, buffer + v, Voices, count, v))
                broken |= static_cast<LaneMask>(1u << v);
        return broken;
    } else {
        const LaneSpan span = spanOf(mask);
        if (span.count == 0) return 0;
        if (span.count == 4) return runLanes<Topology, Variant, 4>(memory, starts, buffer, count, span.first, mask);
        if (span.count == 8) return runLanes<Topology, Variant, 8>(memory, starts, buffer, count, span.first, mask);
        return runLanes<Topology, Variant, 16>(memory, starts, buffer, count, 0, mask);
    }
}

// The loops of a topology, by variant.
template <template <class> class Topology, int Voices>
const Loop<Voices>* loopOf(int variant) {
    static constexpr auto loops = []<int... Variant>(std::integer_sequence<int, Variant...>) {
        return std::array<Loop<Voices>, sizeof...(Variant)>{
            Loop<Voices>{&runLoop<Topology, Variant, Voices>, Topology<float>::draws(Variant), Variant}...};
    }
    (std::make_integer_sequence<int, Topology<float>::variants>{});
    return &loops[variant];
}

// A row of the table. Setup: int (const FilterInputs&, Topology<scalar>&), the variant.
template <int Voices, template <class> class Topology, auto Setup>
constexpr FilterType<Voices> filterType(int index, int number, bool everyCall = false) {
    return {index, number, everyCall,
            [](const FilterInputs& in, FilterMemory<Voices>& memory, int voice) {
                auto loop = memory.template cells<Topology>().get(voice);
                const int variant = Setup(in, loop);
                memory.template cells<Topology>().put(voice, loop);
                return loopOf<Topology, Voices>(variant);
            },
            [](FilterMemory<Voices>& memory, int voice) {
                auto loop = memory.template cells<Topology>().get(voice);
                loop.clear();
                memory.template cells<Topology>().put(voice, loop);
                if constexpr (runsByVoice<Topology>) memory.line(voice).clear();
            }};
}

}  // namespace vantoric::filters
