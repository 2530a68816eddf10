// Patches by MIDI program changes while no window is open to load them.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "engine/instrument.h"
#include "library/patch_library.h"
#include "library/patch_on_show.h"
#include "platform/dialogs.h"

namespace vantoric {

// A thread of its own that looks ten times a second for a program change, which the audio thread leaves behind without knowing
// who takes it, and steps to the next or the previous patch of the lists from the one in force. The lists are scanned for each
// step. Several changes between two looks are one, of the last number. It also writes the controller map after a learn.
class ProgramLoader final : private ListedPatchLoader {
public:
    // Both outlive it, and so does the instrument's host port, which stays the same; the dialogs are used from its thread, and
    // only while no window is open. Throws what the system throws for a thread that cannot be made.
    ProgramLoader(Instrument& instrument, platform::Dialogs& dialogs);
    // Waits for a patch that is being loaded.
    ~ProgramLoader();
    ProgramLoader(const ProgramLoader&) = delete;
    ProgramLoader& operator=(const ProgramLoader&) = delete;

    // While a window is open, it is the window that follows the program changes. Returns once no patch is being loaded
    // here any more. Any thread but the audio thread.
    void setWindowOpen(bool open);
    // The number that the next change is compared with: that of the last change, whoever followed it. 0 before the first.
    // Any thread but the audio thread.
    int lastNumber() const;

private:
    static constexpr int lookEvery = 100;  // milliseconds
    static constexpr int looksAfterAFailure = 10;

    bool loadListed(const std::string& category, const std::string& name) override;
    void run();
    bool look();
    bool step(int direction);
    void tellHost();
    void saveLearned();

    Instrument& instrument_;
    platform::Dialogs& dialogs_;
    PatchLibrary library_;
    PatchOnShow patch_;
    ProgramChanges::Reader changes_;

    mutable std::mutex mutex_;
    std::condition_variable ending_;
    bool isEnding_ = false, isWindowOpen_ = false;
    int last_ = 0;
    int looksToSkip_ = 0;  // of its own thread
    std::thread thread_;
};

}  // namespace vantoric
