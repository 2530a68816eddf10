// The patch in force, put aside while a command takes it apart.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/instrument.h"
#include "library/layer_clipboard.h"

namespace vantoric {

// Any thread but the audio thread, with the turn at the engine while it stands.
class PatchBackup {
public:
    // Saves the patch to a file of the user's folder, as a crash would leave it, and keeps it in memory besides. A file that
    // cannot be written is told; memory serves then.
    PatchBackup(Instrument& instrument, const std::string& fileName);
    PatchBackup(const PatchBackup&) = delete;
    PatchBackup& operator=(const PatchBackup&) = delete;

    // Whether there is a backup at all; the user has been told if memory is short.
    bool isKept() const { return chunk_.data != nullptr; }
    // Loads the backup, under the name that the patch had, and removes the file. A file that another has written since is
    // not loaded. Samples that patches do not hold, of oscillators that play none, stay.
    void takeBack();
    // The patch was not touched: the file goes.
    void drop();

private:
    bool isOwnFile() const;

    Instrument& instrument_;
    std::string path_, name_;
    ChunkBytes chunk_;
    bool isSaved_ = false;
};

}  // namespace vantoric
