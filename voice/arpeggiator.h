// The arpeggiator of a layer: a sixteen-step sequencer over the held keys, between the layer's filter and its
// voices. Two of its types are no sequences: one plays a chord on each key, the other the root of the held keys.
#pragma once

#include <array>
#include <cstdint>

#include "base/engine_state.h"
#include "voice/key_set.h"

namespace vantoric {

// What the arpeggiator plays on: its layer.
class ArpeggiatorTarget {
public:
    // note 0 to 127, velocity 1 to 127.
    virtual void startNote(int note, int velocity) = 0;
    // note 0 to 127.
    virtual void stopNote(int note) = 0;
    // Releases the four envelopes of all sixteen voices.
    virtual void releaseAllEnvelopes() = 0;

protected:
    ~ArpeggiatorTarget() = default;
};

// The root of a set of held keys: of a known interval or triad the lowest key of its root, otherwise the lowest
// key. Key 0 counts as present, but is never the result; -1 if there is no root.
int chordRoot(const KeySet& keys);

// All functions belong to the audio thread. `layerBlock` is the layer's parameters, 324 floats by number; values
// beyond a list count as a separator, or as the last speed. Nothing allocates or fails.
class Arpeggiator {
public:
    // A key past the layer's filter, 0 to 127, velocity 1 to 127. With the arpeggiator off it goes straight on.
    void noteOn(int note, int velocity, const float* layerBlock, ArpeggiatorTarget& target);
    void noteOff(int note, const float* layerBlock, ArpeggiatorTarget& target);
    // One control tick. Reads tempo, song position and ticks per second of the engine.
    void tick(const float* layerBlock, const EngineState& engine, ArpeggiatorTarget& target);
    // Forgets keys and sequence without stopping notes, and takes up the present type and chord.
    void reset(const float* layerBlock);

    // Whether it runs and has keys to play, held or remembered.
    bool hasKeys() const { return active_ && (heldKeys_.any() || sequenceKeys_.any()); }

    // The step that plays, 0 to 15; -1 while nothing does. For displays: read without a guard.
    int playingStep() const { return active_ && !ended_ && sequenceKeys_.any() ? lastStep_ : -1; }

    // Pitch factor of a glide step for all oscillators of the layer's voices.
    float slideFactor() const { return slideFactor_; }

private:
    void clearKeys();
    void readSteps(const float* layerBlock);
    void readMode(int type, int chord);
    void rebuildChord(int root, int chord);
    void beginSequence(int type, bool trigger);
    void placeWalk(int type);
    float sequencePosition(const float* layerBlock, const EngineState& engine, bool trigger) const;
    bool isNewStep(int step, int type);
    void playStep(int step, int type, bool anyKey, ArpeggiatorTarget& target);
    void walk(int type, int offset, ArpeggiatorTarget& target);
    void walkUp(bool wrap);
    void walkDown(bool wrap);
    void walkAlternating(bool wrap, int octaveDirection, int lonelyKey);
    void walkPedal(bool upward, bool wrap);
    void playChord(int type, int offset, ArpeggiatorTarget& target);
    void play(int key, int type, int offset, ArpeggiatorTarget& target) const;
    void stepOctave() { octaveCounter_ = static_cast<std::uint8_t>((octaveCounter_ + 1) % 12); }
    void slide(int step, float fraction);
    void stackOn(int note, int velocity, int chord, ArpeggiatorTarget& target);
    void stackOff(int note, int chord, ArpeggiatorTarget& target);
    void rootOn(int note, int velocity, ArpeggiatorTarget& target);
    void rootOff(int note, ArpeggiatorTarget& target);

    bool active_ = false;  // the last type read was not "Off"
    KeySet sequenceKeys_;  // the keys that the sequence walks on
    KeySet previousKeys_;  // those of the previous step
    KeySet heldKeys_;      // the keys really held
    std::array<std::int32_t, 16> stepCodes_{}, stepPitches_{};
    std::uint32_t ticks_ = 0;  // since the sequence began
    std::int32_t lastStep_ = -1;
    std::int32_t position_ = 0;  // the present key of the walk, -1 for none
    std::uint8_t octaveCounter_ = 0;
    std::int32_t direction_ = 0;
    std::int32_t savedPosition_ = 0;
    std::uint8_t loopLength_ = 16;
    std::uint8_t endStep_ = 33;
    bool ended_ = false;  // past the end step
    std::uint8_t noteVelocity_ = 0;
    bool chordGateFresh_ = false;
    bool stackMode_ = false, rootMode_ = false;
    bool chordExpanded_ = false;
    std::int32_t lastRoot_ = -1;
    std::int32_t typeMemory_ = -1, chordMemory_ = 0;
    float slideFactor_ = 1.0f;
};

}  // namespace vantoric
