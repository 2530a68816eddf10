// Every keyboard is connected as soon as it is there, unless the user said otherwise.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// On the program's main thread. Keyboards come by the sound device's own MIDI where that offers any, as it knows their frames,
// else by the system's, and never by both: a key would sound twice.
class MidiInputs {
public:
    // The player outlives it.
    explicit MidiInputs(Player& player) : player_(player) {}

    // Looks for what was plugged in or unplugged, some times a second. `device` is null for none. What is new is connected;
    // whoever connects or parts it by other means has his way afterwards.
    void poll(MidiPort* device);
    // What is there, as the last `poll` found it.
    const std::vector<MidiInput>& inputs() const { return inputs_; }
    // Lets go of an input by its name, or connects it, from now on.
    void setWanted(const std::string& name, bool wanted);
    bool isWanted(const std::string& name) const { return !unwanted_.contains(name); }
    // Names of what is not to be connected.
    const std::set<std::string>& unwanted() const { return unwanted_; }
    void setUnwanted(std::set<std::string> names) { unwanted_ = std::move(names); }
    // For the user: "ALSA sequencer, port 128:0".
    std::string description() const;
    // Whether anything can be connected at all.
    bool isThere() const { return hasPort_ || system_ != nullptr; }

private:
    static constexpr double retryEvery = 5.0;  // seconds

    // A port's number, whether its kind of port is chosen, an input's id and its name.
    using Settled = std::tuple<unsigned, bool, std::string, std::string>;

    void openSystem();
    void follow(MidiPort& port, bool isChosen, std::set<Settled>& seen);

    Player& player_;
    std::unique_ptr<SystemMidi> system_;
    std::string problem_;
    std::vector<MidiInput> inputs_;
    std::set<std::string> unwanted_;
    std::set<Settled> settled_;  // what was connected or parted already
    bool hasPort_ = false;       // the device takes MIDI
    bool hasOwn_ = false;        // and offers inputs
    double nextTry_ = 0;
};

}  // namespace vantoric::standalone
