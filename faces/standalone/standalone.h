// The program as a whole, but for its window: the instrument, what plays it, and what the user can do with it.
#pragma once

#include <functional>
#include <string>

#include "engine/host_port.h"
#include "faces/common/plugged_instrument.h"
#include "faces/standalone/hands.h"
#include "faces/standalone/kept_state.h"
#include "faces/standalone/midi_inputs.h"
#include "faces/standalone/player.h"
#include "faces/standalone/recorder.h"
#include "faces/standalone/sound_system.h"
#include "platform/dialogs.h"

namespace vantoric::standalone {

enum class PatchLoad { done, missing, refused };

// On the program's main thread. It is the instrument's host.
class Standalone final : private HostPort {
public:
    // Makes the instrument; nothing plays yet. What the instrument has to tell waits for a window, or for `poll` where none shows
    // boxes, which tells it by `dialogs`, as the end does with the rest. They outlive it. See Instrument for what it may throw.
    explicit Standalone(platform::Dialogs& dialogs);
    ~Standalone();

    PluggedInstrument& plugged() { return plugged_; }
    Instrument& instrument() { return instrument_; }
    ProgramLoader& programs() { return plugged_.programs(); }
    Player& player() { return player_; }
    Recorder& recorder() { return recorder_; }
    SoundSystem& sound() { return sound_; }
    MidiInputs& midi() { return midi_; }
    Hands& hands() { return hands_; }

    // A patch by its file or as CATEGORY/NAME of the library, in which a user's own hides the factory's. Why one is refused is
    // among the messages.
    PatchLoad loadPatch(const std::string& name);
    // The patch that was kept at the end of the last time, if any. One that cannot be read is told, and set aside where the
    // patch is kept again at the end of this time.
    void loadLastPatch(bool isKeptAgain);

    // Records into a new file of the user's music folder, or ends the recording that runs. What becomes of it is news.
    void toggleRecording();

    // Looks after sound, MIDI, recording and messages; some twenty times a second.
    void poll();
    // What has happened since the last call, for the user; empty for nothing.
    std::string takeNews();
    // Ends a recording. False if one has failed, at any time.
    bool finish();

    // Who can give the window another size; null for nobody.
    void setSizeWish(std::function<bool(int width, int height)> wish) { sizeWish_ = std::move(wish); }
    // Whether the window shows the instrument's messages in boxes of its own.
    void setBoxesShown(bool shown) { boxesShown_ = shown; }

private:
    static constexpr double lookEvery = 0.5;  // seconds, for what was plugged in

    // What the window and the library tell a host: nobody here keeps values of his own.
    void editBegun(int) override {}
    void parameterEdited(int, float) override {}
    void editEnded(int) override {}
    void patchChanged() override {}
    void latencyChanged(int) override {}
    bool sizeWanted(int width, int height) override { return sizeWish_ && sizeWish_(width, height); }

    void endRecording();

    PluggedInstrument plugged_;
    Instrument& instrument_{plugged_.instrument()};
    Recorder recorder_;
    Player player_;
    Hands hands_;
    MidiInputs midi_;
    SoundSystem sound_;  // ends first: it plays all of these
    std::function<bool(int, int)> sizeWish_;
    std::string news_;
    double nextLook_ = 0;
    bool boxesShown_ = false, hasFailed_ = false;
};

// A file of that moment in the user's folder for music, which is made; empty if there is none.
std::string newRecordingPath();

}  // namespace vantoric::standalone
