// Which device plays, and what happens when it goes.
#pragma once

#include <memory>
#include <string>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// JACK and ALSA are there on Linux, WASAPI is on Windows.
enum class SoundKind { automatic, jack, alsa, wasapi, none };

// The names of the kinds on the command line and in the kept settings: "auto", "jack", "alsa", "wasapi", "none".
std::string nameOf(SoundKind kind);
// False, with `kind` as it was, for a text that names none of this system.
bool readSoundKind(const std::string& name, SoundKind& kind);

// A rate in Hz as a user knows it: "44.1 kHz".
std::string kilohertzText(double hertz);

// What the user wants. JACK plays at its server's rate and period.
struct SoundChoice {
    SoundKind kind = SoundKind::automatic;  // JACK where a server runs, else ALSA; WASAPI on Windows
    std::string device = "default";         // of ALSA or WASAPI
    int rate = 48000;                       // Hz
    int period = 256;                       // frames
    bool operator==(const SoundChoice&) const = default;
};

// On the program's main thread.
class SoundSystem {
public:
    // The player outlives it. Nothing plays yet.
    explicit SoundSystem(Player& player) : player_(player) {}

    // Plays on what is wanted from now on, and counts dropouts anew. False where that can't be had: `problem` says why, time
    // passes without sound, and `poll` tries again. No sound, where that is wanted, is no problem unless memory is too short for
    // it.
    bool open(const SoundChoice& choice);
    // Ends it; the player is called no more.
    void close() { device_.reset(); }
    // Looks after the device, some times a second: one that has gone gives way to silence until it is back.
    void poll();

    const SoundChoice& choice() const { return choice_; }
    // Whether a device plays that can be heard.
    bool isHeard() const { return isHeard_; }
    const std::string& problem() const { return problem_; }
    // What plays, for the user: "JACK, 48000 Hz, 256 frames".
    std::string description() const;
    // The system that plays, "none" without; frames a block; how its thread is served.
    std::string system() const { return device_ ? device_->system() : "none"; }
    int period() const { return device_ ? device_->period() : choice_.period; }
    std::string priority() const { return device_ ? device_->priority() : ""; }
    // Null for none.
    MidiPort* midi() { return device_ ? device_->midi() : nullptr; }
    // What has happened since the last call; empty for nothing.
    std::string takeNews();

private:
    static constexpr double retryEvery = 1.0;  // seconds

    bool tryOpen();
    void fallSilent();
    bool fallSilent(double rate);

    Player& player_;
    SoundChoice choice_;
    std::unique_ptr<SoundDevice> device_;
    bool isHeard_ = false;
    std::string problem_, news_;
    double nextTry_ = 0;
};

}  // namespace vantoric::standalone
