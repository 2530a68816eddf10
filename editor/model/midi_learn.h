// Which controller moves which knob, as the window shows and changes it.
#pragma once

#include "engine/instrument.h"

namespace vantoric {

// On the thread of the window. Parameters are host indices; the map has place for 0 to 1224, others do nothing.
class MidiLearn {
public:
    static constexpr int noController = -1, learning = -2;
    // The hint while it waits.
    static constexpr const char* request = "Assign the next Midi CC to this knob. Move your controler!";

    explicit MidiLearn(Instrument& instrument) : instrument_(instrument) {}

    // Lets go of the controllers of a parameter, or without any waits for the next controller that moves. The hint for the
    // user; empty where nothing was done.
    const char* assignLearn(int parameter);
    // Lets go of the controllers of a parameter. True if it had any.
    bool removeAssignment(int parameter);
    // Lets go of all, and waits for none any longer. The hint.
    const char* removeAll();
    // Waits no longer for a controller. False if it did not.
    bool cancel();
    bool isPending() const { return instrument_.midi().learnPending() != ControllerMap::none; }

    // What a control of the parameter shows: its controller (the lowest of several), `noController`, or `learning` while the
    // next controller will be its own.
    int ccNumber(int parameter) const;

    // To be called in idle time. True if the map has changed since the last call, by learning too: controls then take their
    // `ccNumber` anew. The changes are in the file then.
    bool takeMapChange();

private:
    Instrument& instrument_;
};

}  // namespace vantoric
