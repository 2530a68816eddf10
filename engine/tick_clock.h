// Divides a block into stretches between control ticks.
#pragma once

#include "base/engine_state.h"

namespace vantoric {

class TickClock {
public:
    // Walks through a block of `count` internal samples. Calls renderSubBlock(count, pos) for each stretch
    // of at least one sample, never longer than a tick, and tick(eventPos) where a tick falls due: eventPos
    // is the position in host frames up to which events are to be taken. A block of no samples runs no
    // tick. Returns at once while the engine's tick is 0. Audio thread only.
    template <class RenderSubBlock, class Tick>
    void run(int count, const EngineState& state, RenderSubBlock&& renderSubBlock, Tick&& tick) {
        if (state.tickSamples <= 0) return;
        int pos = 0;
        for (int left = count; left > 0;) {
            const int k = static_cast<int>(samplesToTick_);
            if (k > left) {
                samplesToTick_ -= static_cast<float>(left);
                renderSubBlock(left, pos);
                return;
            }
            left -= k;
            if (k != 0) {
                renderSubBlock(k, pos);
                pos += k;
            }
            const int ahead = pos + state.tickSamples;
            samplesToTick_ = static_cast<float>(state.tickSamples) + (samplesToTick_ - static_cast<float>(k));
            tick(state.oversampled ? ahead / 2 : ahead);
        }
    }

    // Internal samples until the next tick; 0 before the first block.
    float samplesToTick() const { return samplesToTick_; }

private:
    float samplesToTick_ = 0.0f;
};

}  // namespace vantoric
