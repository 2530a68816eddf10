// What becomes of the notes of the layers, for tests that hold the allocation to its rules. A layer has no
// observer unless it is given one.
#pragma once

namespace vantoric {

// Called on the thread that plays the layer, right after the event.
class NoteObserver {
public:
    // A voice (0 to 15) has begun its present note.
    virtual void onVoiceStarted(int layer, int voice) = 0;
    // The voice of a one-voice line has moved to `note`.
    virtual void onVoiceMoved(int layer, int note, bool retrigger) = 0;

protected:
    ~NoteObserver() = default;
};

}  // namespace vantoric
