// Sixteen copies of one recursive loop, stored member by member so that any run of neighbouring lanes
// can be loaded into a vector of any width.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/lanes.h"

namespace vantoric {

// Which of the sixteen voices of a layer sound, one bit each.
using LaneMask = std::uint16_t;

// A contiguous run of lane groups that covers a mask.
struct LaneSpan {
    int first = 0;  // lane, a multiple of laneGroup
    int count = 0;  // 0, 4, 8, 12 or 16
};

// The smallest span of whole groups that holds every lane of `mask`.
constexpr LaneSpan spanOf(LaneMask mask) {
    if (mask == 0) return {};
    const int first = std::countr_zero(mask) / laneGroup * laneGroup;
    const int last = (15 - std::countl_zero(mask)) / laneGroup * laneGroup;
    return {first, last - first + laneGroup};
}

// The lanes of `mask` from lane `first` on, as a mask of the vector type.
template <class Vector>
inline typename Vector::mask_type maskOf(LaneMask mask, int first) {
    bool wanted[Vector::size()];
    for (std::size_t lane = 0; lane < Vector::size(); ++lane)
        wanted[lane] = ((mask >> (first + static_cast<int>(lane))) & 1) != 0;
    return typename Vector::mask_type(wanted, stdx::element_aligned);
}

// Calls function(std::integral_constant<int, width>) for the width of a span, 4 to 16.
template <class Function>
inline void withLaneWidth(int width, Function&& function) {
    switch (width) {
        case 4: function(std::integral_constant<int, 4>{}); break;
        case 8: function(std::integral_constant<int, 8>{}); break;
        case 12: function(std::integral_constant<int, 12>{}); break;
        case 16: function(std::integral_constant<int, 16>{}); break;
        default: break;
    }
}

// `Topology<T>` holds nothing but members of type T (coefficients and memories alike).
template <template <class> class Topology, class Scalar = float>
class LaneBank {
public:
    static constexpr int fieldCount = sizeof(Topology<Scalar>) / sizeof(Scalar);
    static_assert(sizeof(Topology<Scalar>) == fieldCount * sizeof(Scalar));
    static_assert(std::is_trivially_copyable_v<Topology<Scalar>>);

    LaneBank() { clear(); }

    // The loop of one voice, by value. lane: 0 to 15.
    Topology<Scalar> get(int lane) const {
        Topology<Scalar> topology;
        auto* bytes = reinterpret_cast<unsigned char*>(&topology);
        for (int k = 0; k < fieldCount; ++k) std::memcpy(bytes + k * sizeof(Scalar), &rows_[k][lane], sizeof(Scalar));
        return topology;
    }
    void put(int lane, const Topology<Scalar>& topology) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&topology);
        for (int k = 0; k < fieldCount; ++k) std::memcpy(&rows_[k][lane], bytes + k * sizeof(Scalar), sizeof(Scalar));
    }

    // The loops of `N` neighbouring voices as one; `first` is a multiple of laneGroup.
    template <int N>
    Topology<Lanes<Scalar, N>> load(int first) const {
        using Vector = Lanes<Scalar, N>;
        static_assert(sizeof(Topology<Vector>) == fieldCount * sizeof(Vector));
        Topology<Vector> topology;
        auto* bytes = reinterpret_cast<unsigned char*>(&topology);
        for (int k = 0; k < fieldCount; ++k) {
            const Vector value(&rows_[k][first], stdx::element_aligned);
            std::memcpy(bytes + k * sizeof(Vector), &value, sizeof value);
        }
        return topology;
    }
    // The same with the voices outside `mask` all zero, whatever they hold: their lanes stay harmless.
    template <int N>
    Topology<Lanes<Scalar, N>> load(int first, LaneMask mask) const {
        using Vector = Lanes<Scalar, N>;
        Topology<Vector> topology;
        auto* bytes = reinterpret_cast<unsigned char*>(&topology);
        const auto idle = !maskOf<Vector>(mask, first);
        for (int k = 0; k < fieldCount; ++k) {
            Vector value(&rows_[k][first], stdx::element_aligned);
            stdx::where(idle, value) = Vector(Scalar(0));
            std::memcpy(bytes + k * sizeof(Vector), &value, sizeof value);
        }
        return topology;
    }
    // Stores back the lanes of `mask` only: a silent voice keeps its memories.
    template <int N>
    void store(int first, const Topology<Lanes<Scalar, N>>& topology, LaneMask mask) {
        using Vector = Lanes<Scalar, N>;
        const auto* bytes = reinterpret_cast<const unsigned char*>(&topology);
        const auto wanted = maskOf<Vector>(mask, first);
        for (int k = 0; k < fieldCount; ++k) {
            Vector value;
            std::memcpy(static_cast<void*>(&value), bytes + k * sizeof(Vector), sizeof value);
            Vector row(&rows_[k][first], stdx::element_aligned);
            stdx::where(wanted, row) = value;
            row.copy_to(&rows_[k][first], stdx::element_aligned);
        }
    }

    void clear() { std::memset(rows_, 0, sizeof rows_); }

private:
    alignas(64) Scalar rows_[fieldCount][voiceCount];
};

// Sixteen voices' samples interleaved by lane: sample i of voice v stands at i * 16 + v.
using LaneBuffer = float[maxTickSamples * voiceCount];

// Runs a bank over an interleaved buffer in place, all voices of `mask` side by side. The topology's
// step(x) takes and returns one sample of type T.
template <template <class> class Topology>
inline void runBank(LaneBank<Topology>& bank, float* buffer, int count, LaneMask mask) {
    const LaneSpan span = spanOf(mask);
    withLaneWidth(span.count, [&](auto width) {
        constexpr int n = width;
        using Vector = Lanes<float, n>;
        Topology<Vector> loop = bank.template load<n>(span.first);
        float* at = buffer + span.first;
        for (int i = 0; i < count; ++i, at += voiceCount) {
            Vector x(at, stdx::element_aligned);
            x = loop.step(x);
            x.copy_to(at, stdx::element_aligned);
        }
        bank.template store<n>(span.first, loop, mask);
    });
}

}  // namespace vantoric
