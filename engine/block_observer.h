// The order of a block's work as it happens, for tests that hold the engine to it. An engine has no observer
// unless it is given one.
#pragma once

namespace vantoric {

enum class BlockStep {
    clearOutputs,    // samples
    drainMidiQueue,  // position in host frames up to which events are taken
    smoothControllers,
    tempoAndPosition,
    layerTick,       // layer
    renderSubBlock,  // samples, position
    equalizer,       // samples
    masterEffect,    // samples
    finalStage,      // samples
    decimator,       // samples before decimation
};

// Called on the audio thread right before each step; sample counts are internal ones.
class BlockObserver {
public:
    virtual void onStep(BlockStep step, int first, int second) = 0;

protected:
    ~BlockObserver() = default;
};

}  // namespace vantoric
