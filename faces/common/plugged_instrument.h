// The instrument as every format holds it: with the loader of program changes, and with somebody who shows what there is to
// tell. What is a format's own, its face adds.
#pragma once

#include <memory>

#include "engine/host_port.h"
#include "engine/instrument.h"
#include "library/program_loader.h"
#include "platform/dialogs.h"

namespace vantoric {

class PluggedInstrument {
public:
    // When what there is to tell is shown: within the call that had it to tell, or only by `showMessages` and the window, for
    // a face that is about to open one.
    enum class Telling { atOnce, whenAsked };

    // `port` hears what the window and the library ask of the host; it and `dialogs` outlive the object. See Instrument for
    // what may be thrown.
    explicit PluggedInstrument(HostPort& port, platform::Dialogs& dialogs = platform::desktopDialogs(),
                               Telling telling = Telling::atOnce);
    // A window on the instrument is gone by then.
    ~PluggedInstrument();
    PluggedInstrument(const PluggedInstrument&) = delete;
    PluggedInstrument& operator=(const PluggedInstrument&) = delete;

    Instrument& instrument() { return instrument_; }
    const Instrument& instrument() const { return instrument_; }
    // Loads the patches of program changes while no window is open; a window tells it.
    ProgramLoader& programs() { return *programs_; }

    // Any thread but the audio thread, for all that follows.

    // The patch in force as bytes, the same in every format; size 0 if there are none. Throws nothing.
    ChunkBytes patch();
    // Makes the patch of such bytes the one in force. False if they are no patch, or memory is short; see PatchChunk for what
    // is in force then. `size` may be anything; null stands for no bytes.
    bool setPatch(const void* bytes, std::size_t size);
    // The same for a host's stored state, which may be of any origin: what is no whole patch changes nothing. Returns once
    // what the patch plays is built, or after two seconds.
    bool restore(const void* bytes, std::size_t size);
    // Shows what there is to tell; after each call that may have posted something.
    void showMessages();

private:
    void tell() {
        if (telling_ == Telling::atOnce) showMessages();
    }

    platform::Dialogs& dialogs_;
    const Telling telling_;
    Instrument instrument_;
    std::unique_ptr<ProgramLoader> programs_;  // stands while the host port does
};

}  // namespace vantoric
