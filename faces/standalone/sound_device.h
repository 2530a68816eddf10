// The seam between the program and what plays.
#pragma once

#include <string>
#include <vector>

#include "faces/standalone/player.h"

namespace vantoric::standalone {

// Something that sends MIDI, as the system offers it.
struct MidiInput {
    std::string id, name;
    bool isConnected = false;
};

// What keyboards and the like can be connected to. On the program's main thread.
class MidiPort {
public:
    // No two ports of a run of the program have the same.
    const unsigned portNumber = nextNumber();

    // The hardware that is there now.
    virtual std::vector<MidiInput> inputs() = 0;
    // Connects one of them or lets go of it; one that has gone meanwhile is passed over.
    virtual void connect(const std::string& id, bool wanted) = 0;

protected:
    ~MidiPort() = default;

private:
    static unsigned nextNumber() {
        static unsigned last = 0;
        return ++last;
    }
};

// MIDI of the system itself, beside that of a sound device.
class SystemMidi : public MidiPort {
public:
    virtual ~SystemMidi() = default;
    // For the user: "ALSA sequencer, port 128:0".
    virtual std::string description() const = 0;
};

// A device that calls Player::play from the moment when it is made until it is destroyed. Made, asked and destroyed on the
// program's main thread; the player outlives it.
class SoundDevice {
public:
    virtual ~SoundDevice() = default;

    // The system that it belongs to, "JACK".
    virtual std::string system() const = 0;
    // Frames a block.
    virtual int period() const = 0;
    // How its thread is served: "real-time priority", or empty where there is nothing to tell.
    virtual std::string priority() const { return {}; }
    // Whether it has ended by itself: unplugged, its server gone, another rate. It plays no more.
    virtual bool isLost() const { return false; }
    // Its own MIDI; null for none.
    virtual MidiPort* midi() { return nullptr; }
};

}  // namespace vantoric::standalone
