// Four voices of the output stage side by side. The source that includes this says by a type of its own which processors
// it is compiled for, so that each has its own functions.
#pragma once

#include "voice/output_stage.h"

namespace vantoric {

inline constexpr double outputAntiDenormal = 1e-6;

template <class Processor>
class OutputLanes {
public:
    // Adds `count` samples of the voices in `mask` from `first` on, of four, to the sums.
    static void render(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first) {
        if (memory.bassOn && memory.transientOn)
            renderGroup<true, true>(memory, f1, f2, count, mask, first);
        else if (memory.bassOn)
            renderGroup<true, false>(memory, f1, f2, count, mask, first);
        else if (memory.transientOn)
            renderGroup<false, true>(memory, f1, f2, count, mask, first);
        else
            renderGroup<false, false>(memory, f1, f2, count, mask, first);
    }

private:
    using Quad = Lanes<double, laneGroup>;
    using M = OutputMemory;

    template <bool withBass, bool withTransient>
    static void renderGroup(OutputMemory& memory, const float* f1, const float* f2, int count, LaneMask mask, int first) {
        const auto at = [first](auto& rows, int k) { return rows[static_cast<std::size_t>(k)].data() + first; };
        const auto quadAt = [](const auto* from) { return Quad(from, stdx::element_aligned); };
        const auto active = maskOf<Quad>(mask, first);
        const Quad zero(0.0);
        Quad gain[M::gainCount], step[M::gainCount], filter[M::filterMemories];
        for (int k = 0; k < M::gainCount; ++k) {
            gain[k] = select(active, quadAt(at(memory.gain, k)), zero);
            step[k] = select(active, quadAt(at(memory.step, k)), zero);
        }
        for (int k = 0; k < M::filterMemories; ++k) filter[k] = quadAt(at(memory.filter, k));
        const Quad kb(memory.bassCoefficient), keepBass(1.0 - memory.bassCoefficient);
        const Quad kt(memory.transientCoefficient), takeTransient(1.0 - memory.transientCoefficient);

        for (int i = 0; i < count; ++i) {
            for (int k = 0; k <= M::ring; ++k) gain[k] += step[k];
            if constexpr (withBass) gain[M::bass] += step[M::bass];
            if constexpr (withTransient) gain[M::transient] += step[M::transient];
            const Quad a = quadAt(f1 + i * voiceCount + first) + Quad(outputAntiDenormal);
            const Quad b = quadAt(f2 + i * voiceCount + first) + Quad(outputAntiDenormal);
            const Quad product = gain[M::ring] * a * b;
            Quad left = gain[M::left1] * a + gain[M::left2] * b + product;
            Quad right = gain[M::right1] * a + gain[M::right2] * b + product;
            const Quad dryLeft = left, dryRight = right;  // NOLINT(performance-unnecessary-copy-initialization)
            if constexpr (withBass) {
                filter[M::bassLeft] = keepBass * filter[M::bassLeft] + dryLeft * kb;
                filter[M::bassRight] = keepBass * filter[M::bassRight] + dryRight * kb;
                left += filter[M::bassLeft] * gain[M::bass];
                right += filter[M::bassRight] * gain[M::bass];
            }
            if constexpr (withTransient) {
                filter[M::fastLeft] = kt * filter[M::fastLeft] + dryLeft * takeTransient;
                filter[M::slowLeft] = kt * filter[M::slowLeft] + filter[M::fastLeft] * takeTransient;
                filter[M::fastRight] = kt * filter[M::fastRight] + dryRight * takeTransient;
                filter[M::slowRight] = kt * filter[M::slowRight] + filter[M::fastRight] * takeTransient;
                left += (dryLeft - filter[M::slowLeft]) * gain[M::transient];
                right += (dryRight - filter[M::slowRight]) * gain[M::transient];
            }
            double* sumLeft = memory.sumLeft.data() + i * laneGroup;
            double* sumRight = memory.sumRight.data() + i * laneGroup;
            (quadAt(sumLeft) + left).copy_to(sumLeft, stdx::element_aligned);
            (quadAt(sumRight) + right).copy_to(sumRight, stdx::element_aligned);
        }

        // A ramp that nobody reads goes its way in one stride.
        if constexpr (!withBass) gain[M::bass] += step[M::bass] * Quad(count);
        if constexpr (!withTransient) gain[M::transient] += step[M::transient] * Quad(count);
        const auto keep = [&](auto& rows, int k, const Quad& value) {
            double* to = at(rows, k);
            select(active, value, quadAt(to)).copy_to(to, stdx::element_aligned);
        };
        for (int k = 0; k < M::gainCount; ++k) keep(memory.gain, k, gain[k]);
        for (int k = 0; k < M::filterMemories; ++k) keep(memory.filter, k, filter[k]);
    }
};

}  // namespace vantoric
