// The registers that a sample loop steps: where their lanes come from, and how loops, draws and samples get there and back.
#pragma once

#include <array>
#include <cmath>
#include <cstring>

#include "sound/filters/filter_types.h"

namespace vantoric::filters {

inline constexpr float largestMemory = 1e18f;

// Which lanes hold a number that is not finite, or so large that what it makes of later samples might not be.
template <template <class> class Topology, class T>
MaskOf<T> lanesOutOfRange(const Topology<T>& loop) {
    constexpr int fields = sizeof(Topology<T>) / sizeof(T);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&loop);
    T sum = T(0);
    for (int k = 0; k < fields; ++k) {
        T field;
        std::memcpy(static_cast<void*>(&field), bytes + k * sizeof(T), sizeof field);
        sum += absolute(field);
    }
    return !(sum < T(ScalarOf<T>(largestMemory)));
}

// Four neighbouring voices of a run.
struct Group {
    LoopRun<voiceCount>* run = nullptr;
    int first = 0;

    float* samples() const { return run->buffer + first; }
    bool sounds() const { return (run->mask >> first & ((1 << laneGroup) - 1)) != 0; }
};

template <template <class> class Topology>
Topology<Lanes<TopologyScalar<Topology>, laneGroup>> loadGroup(const Group& group) {
    return group.run->memory->template cells<Topology>().template load<laneGroup>(group.first, group.run->mask);
}
template <template <class> class Topology>
void storeGroup(const Group& group, const Topology<Lanes<TopologyScalar<Topology>, laneGroup>>& loops) {
    LoopRun<voiceCount>& run = *group.run;
    run.memory->template cells<Topology>().template store<laneGroup>(group.first, loops, run.mask);
    const auto bad = lanesOutOfRange(loops);
    if (!anyOf(bad)) return;
    for (int lane = 0; lane < laneGroup; ++lane)
        if (bad[lane]) run.broken |= static_cast<LaneMask>(run.mask & (1u << (group.first + lane)));
}

// The members of two loops joined, and those of one parted again. All are of one type (see LaneBank).
template <template <class> class Topology, class Whole, class Half>
Topology<Whole> joinedLoops(const Topology<Half>& low, const Topology<Half>& high) {
    constexpr int fields = sizeof(Topology<Half>) / sizeof(Half);
    Topology<Whole> loops;
    for (int k = 0; k < fields; ++k) {
        const auto at = [k](const Topology<Half>& from) {
            Half field;
            std::memcpy(static_cast<void*>(&field), reinterpret_cast<const unsigned char*>(&from) + k * sizeof(Half),
                        sizeof(Half));
            return field;
        };
        const Whole field = joined(at(low), at(high));
        std::memcpy(reinterpret_cast<unsigned char*>(&loops) + k * sizeof(Whole), &field, sizeof(Whole));
    }
    return loops;
}
template <template <class> class Topology, class Half, class Whole>
std::array<Topology<Half>, 2> partedLoops(const Topology<Whole>& loops) {
    constexpr int fields = sizeof(Topology<Half>) / sizeof(Half);
    std::array<Topology<Half>, 2> parts;
    for (int k = 0; k < fields; ++k) {
        Whole field;
        std::memcpy(static_cast<void*>(&field), reinterpret_cast<const unsigned char*>(&loops) + k * sizeof(Whole),
                    sizeof(Whole));
        const std::array<Half, 2> both = halves(field);
        for (std::size_t part = 0; part < 2; ++part)
            std::memcpy(reinterpret_cast<unsigned char*>(&parts[part]) + k * sizeof(Half), &both[part], sizeof(Half));
    }
    return parts;
}

// A group.
template <template <class> class Topology>
struct GroupChain {
    static constexpr int width = laneGroup;
    using T = Lanes<TopologyScalar<Topology>, width>;
    using Samples = Lanes<float, width>;
    using At = float*;

    Group group;

    Topology<T> load() const { return loadGroup<Topology>(group); }
    void store(const Topology<T>& loops) const { storeGroup<Topology>(group, loops); }
    Draws<T> draws() const { return {*group.run->starts, group.first}; }
    At samples() const { return group.samples(); }
    static Samples read(At at, int i) { return Samples(at + i, stdx::element_aligned); }
    static void write(At at, int i, const Samples& y) { y.copy_to(at + i, stdx::element_aligned); }
};

// Two groups, which may be of different runs.
template <template <class> class Topology>
struct PairChain {
    static constexpr int width = 2 * laneGroup;
    using T = Lanes<TopologyScalar<Topology>, width>;
    using Half = Lanes<TopologyScalar<Topology>, laneGroup>;
    using Samples = Lanes<float, width>;
    using HalfSamples = Lanes<float, laneGroup>;
    using At = std::array<float*, 2>;

    std::array<Group, 2> groups;

    Topology<T> load() const { return joinedLoops<Topology, T>(loadGroup<Topology>(groups[0]), loadGroup<Topology>(groups[1])); }
    void store(const Topology<T>& loops) const {
        const auto parts = partedLoops<Topology, Half>(loops);
        for (std::size_t part = 0; part < 2; ++part) storeGroup<Topology>(groups[part], parts[part]);
    }
    Draws<T> draws() const {
        const auto of = [](const Group& group) { return Draws<Half>(*group.run->starts, group.first); };
        return {of(groups[0]), of(groups[1])};
    }
    At samples() const { return {groups[0].samples(), groups[1].samples()}; }
    static Samples read(const At& at, int i) {
        return joined(HalfSamples(at[0] + i, stdx::element_aligned), HalfSamples(at[1] + i, stdx::element_aligned));
    }
    static void write(const At& at, int i, const Samples& y) {
        const std::array<HalfSamples, 2> parts = halves(y);
        for (std::size_t part = 0; part < 2; ++part) parts[part].copy_to(at[part] + i, stdx::element_aligned);
    }
};

// The numbers at place `i` of eight rows. Put together in registers: a read of what was just stored one by one would wait.
template <class T>
[[gnu::always_inline]] inline T fromEach(const std::array<float*, 8>& at, int i) {
    const float x[] = {at[0][i], at[1][i], at[2][i], at[3][i], at[4][i], at[5][i], at[6][i], at[7][i]};
    if constexpr (isOneRegister<T>)
        return std::bit_cast<T>(RegisterOf<T>{x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7]});
    else
        return T(x, stdx::element_aligned);
}

// Single voices of any runs. A lane without a voice of its own does what the first does.
template <template <class> class Topology>
struct ScatteredChain {
    static constexpr int width = 2 * laneGroup;
    using S = TopologyScalar<Topology>;
    using T = Lanes<S, width>;
    using Samples = Lanes<float, width>;
    using At = std::array<float*, width>;
    static constexpr int fields = sizeof(Topology<S>) / sizeof(S);

    struct Place {
        LoopRun<voiceCount>* run;
        int voice;
    };
    std::array<Place, width> places;

    Topology<T> load() const {
        S rows[fields][width];
        for (std::size_t lane = 0; lane < width; ++lane) {
            const Topology<S> loop = places[lane].run->memory->template cells<Topology>().get(places[lane].voice);
            const auto* bytes = reinterpret_cast<const unsigned char*>(&loop);
            for (int k = 0; k < fields; ++k) std::memcpy(&rows[k][lane], bytes + k * sizeof(S), sizeof(S));
        }
        Topology<T> loops;
        for (int k = 0; k < fields; ++k) {
            const T field(rows[k], stdx::element_aligned);
            std::memcpy(reinterpret_cast<unsigned char*>(&loops) + k * sizeof(T), &field, sizeof(T));
        }
        return loops;
    }
    void store(const Topology<T>& loops) const {
        S rows[fields][width];
        for (int k = 0; k < fields; ++k) {
            T field;
            std::memcpy(static_cast<void*>(&field), reinterpret_cast<const unsigned char*>(&loops) + k * sizeof(T), sizeof(T));
            field.copy_to(rows[k], stdx::element_aligned);
        }
        const auto bad = lanesOutOfRange(loops);
        for (std::size_t lane = 0; lane < width; ++lane) {
            Topology<S> loop;
            auto* bytes = reinterpret_cast<unsigned char*>(&loop);
            for (int k = 0; k < fields; ++k) std::memcpy(bytes + k * sizeof(S), &rows[k][lane], sizeof(S));
            places[lane].run->memory->template cells<Topology>().put(places[lane].voice, loop);
            if (bad[lane]) places[lane].run->broken |= static_cast<LaneMask>(1u << places[lane].voice);
        }
    }
    Draws<T> draws() const {
        DrawStarts starts{.hashSeed = places[0].run->starts->hashSeed};
        for (std::size_t lane = 0; lane < width; ++lane) {
            const auto voice = static_cast<std::size_t>(places[lane].voice);
            starts.congruence[lane] = places[lane].run->starts->congruence[voice];
            starts.hash[lane] = places[lane].run->starts->hash[voice];
        }
        return {starts, 0};
    }
    At samples() const {
        At at;
        for (std::size_t lane = 0; lane < width; ++lane) at[lane] = places[lane].run->buffer + places[lane].voice;
        return at;
    }
    static Samples read(const At& at, int i) { return fromEach<Samples>(at, i); }
    static void write(const At& at, int i, const Samples& y) {
        for (std::size_t lane = 0; lane < width; ++lane) at[lane][i] = y[lane];
    }
};

}  // namespace vantoric::filters
