// The coefficients and memories of a filter of any type, for one voice or for the sixteen of a layer.
#pragma once

#include <array>
#include <atomic>
#include <tuple>

#include "base/heard_while_written.h"
#include "base/lane_bank.h"
#include "sound/filters/loop_list.h"

namespace vantoric::filters {

// The loop of a single voice, with the interface of a LaneBank.
template <template <class> class Topology, class Scalar>
class SingleCell {
public:
    const Topology<Scalar>& get(int) const { return loop_; }
    void put(int, const Topology<Scalar>& loop) { loop_ = loop; }

private:
    Topology<Scalar> loop_{};
};

template <int Voices, template <class> class Topology>
struct CellsOf {
    using Type = LaneBank<Topology, TopologyScalar<Topology>>;
};
template <template <class> class Topology>
struct CellsOf<1, Topology> {
    using Type = SingleCell<Topology, TopologyScalar<Topology>>;
};

// Voices: 1 or 16.
template <int Voices>
class FilterMemory {
public:
    FilterMemory() : lineMemory_(allocateLines(Voices)) {
        for (int v = 0; v < Voices; ++v) lines_[v] = DelayLine(lineMemory_.get() + v * DelayLine::size);
    }

    template <template <class> class Topology>
    auto& cells() {
        return std::get<typename CellsOf<Voices, Topology>::Type>(cells_);
    }
    template <template <class> class Topology>
    const auto& cells() const {
        return std::get<typename CellsOf<Voices, Topology>::Type>(cells_);
    }
    DelayLine& line(int voice) { return lines_[voice]; }

    // Has the system map the delay lines, so that the audio thread does not find them missing. Any thread, also while audio
    // runs: in every page a 0 is exchanged for a 0, and other numbers stay.
    void touchLines() {
        constexpr int page = 4096 / sizeof(float);
        const HeardWhileWritten audioRunsOn;
        for (int i = 0; i < Voices * DelayLine::size; i += page) {
            float zero = 0.0f;
            std::atomic_ref<float>(lineMemory_[static_cast<std::size_t>(i)])
                .compare_exchange_strong(zero, 0.0f, std::memory_order_relaxed);
        }
    }

private:
    template <template <class> class... Topologies>
    static std::tuple<typename CellsOf<Voices, Topologies>::Type...> cellsOf(LoopList<Topologies...>);

    decltype(cellsOf(AllLoops{})) cells_;
    LineMemory lineMemory_;
    std::array<DelayLine, Voices> lines_;
};

}  // namespace vantoric::filters
