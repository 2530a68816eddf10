// The patch that is being worked on, kept on disk for the day on which the host crashes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "engine/instrument.h"

namespace vantoric {

// What there is to save, as the window sees it.
struct WorkingState {
    bool isChanged = false;      // see History
    std::uint64_t stateId = 0;   // likewise
    std::string category, name;  // as shown to the user
    bool operator==(const WorkingState&) const = default;
};

// A patch that a process has left behind.
struct RecoverablePatch {
    std::string path;            // of the patch file; its note lies beside it
    std::string category, name;  // empty if the note is gone
    std::int64_t savedAt = 0;    // seconds since 1970; 0 if the note is gone
};

// Saves a changed patch every minute into autosave/ of the user's state folder, as <process>-<number>.fxp and a readable note
// beside it, and removes both once the patch has no changes any more or the instrument goes. It works on a thread of its own,
// of low priority: neither the window nor the audio thread ever waits for the disk. Without a state folder, or with one that
// cannot be written, nothing is saved and nothing said. The functions belong on one thread, that of the window.
class Autosave {
public:
    static constexpr std::chrono::milliseconds everyMinute = std::chrono::minutes(1);

    // The instrument outlives it.
    explicit Autosave(Instrument& instrument, std::chrono::milliseconds interval = everyMinute);
    // A clean end: the files go.
    ~Autosave();
    Autosave(const Autosave&) = delete;
    Autosave& operator=(const Autosave&) = delete;

    // Tells what there is to save, as often as one likes. Waits for nothing.
    void follow(const WorkingState& working);
    // Saves what was told last, if it is changed and not saved yet, without waiting for the minute to end. Waits for the
    // disk. False if it could not be written.
    bool saveNow();

    // Loads what another process left, under its name, and keeps it safe as this process's own, changed patch before the
    // other's files go. False, with the patch and the files as they were, if the file is no whole patch (the messages tell)
    // or is gone.
    bool recover(const RecoverablePatch& patch);
    // Removes a patch for good. True if it is gone.
    static bool discard(const RecoverablePatch& patch);
    // Keeps a patch that is not wanted now as a patch file in the folder "declined" beside the others, where it is not offered
    // again: whoever said No by a slip can load it by hand. The newest sixteen stay. True if it is offered no more.
    static bool putAside(const RecoverablePatch& patch);

    // What processes have left that no longer run, the newest first. Any thread but the audio thread; waits for the disk.
    static std::vector<RecoverablePatch> recoverable();

private:
    void run();
    bool saveIfDue();
    bool write(const WorkingState& working);
    void removeOwn() noexcept;

    Instrument& instrument_;
    const std::chrono::milliseconds interval_;
    const int number_;
    const std::string path_;  // without extension; empty: nowhere

    std::mutex saving_;  // guards what is on disk
    bool isOnDisk_ = false;
    WorkingState saved_;

    std::mutex mutex_;  // guards what follows
    WorkingState working_;
    bool stops_ = false;
    std::condition_variable stopping_;
    std::thread thread_;
};

}  // namespace vantoric
