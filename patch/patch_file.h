// Patch files: a chunk behind a header of 60 bytes, and what the file menu does with them.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "base/messages.h"
#include "patch/patch_chunk.h"
#include "patch/program_slot.h"

namespace vantoric {

inline constexpr int patchHeaderBytes = 60;
using PatchHeader = std::array<std::uint8_t, patchHeaderBytes>;

// The header of a patch of that name (stored up to 26 bytes, its last character whole) with a chunk of `chunkSize` bytes.
PatchHeader makePatchHeader(const std::string& name, std::int32_t chunkSize);

// Whether a file begins like a patch of this instrument. Other fields of the header may hold anything.
bool isPatchFile(std::span<const std::uint8_t> file);

// The chunk within a file: as long as the header says, but never beyond the file's end. Empty for a header
// that is cut or that names no size that a chunk can have (above 2^31 - 1).
std::span<const std::uint8_t> chunkOfFile(std::span<const std::uint8_t> file);

// The name that a file gives its patch: the last component of the path without its last 4 characters,
// whatever they are (and without what they leave of a longer character). Both slash and backslash separate.
std::string patchNameOfPath(const std::string& path);

// The folder of a path with its separator; empty if it has none.
std::string folderOfPath(const std::string& path);

// Where the commands put a patch. category: a folder's name; name: without extension.
std::string patchPath(const std::string& category, const std::string& name);
std::string favouritePath(const std::string& name);
std::string welcomePatchPath();

// What happens to a patch file.
enum class FileAction { read, write, remove };

// Hears of every patch file that is read, written or removed, before it is tried. On the thread of the call.
class PatchFileListener {
public:
    virtual void patchFile(FileAction action, const std::string& path) = 0;

protected:
    ~PatchFileListener() = default;
};

// Loads, saves and removes patch files. Nothing is asked here; what there is to tell goes to the messages. Any thread but
// the audio thread. Loading and saving to a path throw nothing, the others at most std::bad_alloc.
class PatchFiles {
public:
    PatchFiles(PatchChunk& chunk, ProgramSlot& program, PatchHost& host, Messages& messages);

    // Loads a whole patch; the file's name becomes the patch's name, whatever the chunk says. The file is checked whole
    // before anything is replaced: one that cannot be read is passed over in silence; one of another kind, or too short for
    // a patch, is told under its path and leaves the window's busy state set; a newer format, a bad sample header and
    // missing sample data are told as setChunk would. The patch before plays on then. True if the patch was loaded.
    bool loadPatchFile(const std::string& path);

    // Saves the patch in force under its own name. False, with a message, if the file cannot be written or
    // memory is short.
    bool savePatchFile(const std::string& path);
    // The same with the bytes of a patch that were taken before; there are some.
    bool saveChunk(const std::string& path, const ChunkBytes& chunk);

    // "Save patch as..." to a path that was chosen: names the patch after it, saves.
    bool savePatchAs(const std::string& path);
    // "Quick save patch": replaces the shown patch's file without a question. The category "Custom" has none
    // and gives a message.
    bool quickSavePatch(const std::string& category, const std::string& name);
    // "Delete Patch", once the user has agreed. True if the file is gone; the caller then rebuilds its lists.
    bool deletePatch(const std::string& category, const std::string& name);
    // Saves the patch in force among the favourites.
    bool addToFavourites();
    // Removes a file that a command put down for a while. In silence.
    void removeTemporary(const std::string& path);

    // Null for none. While nobody loads or saves.
    void setListener(PatchFileListener* listener) { listener_ = listener; }
    PatchFileListener* listener() const { return listener_; }

private:
    bool load(const std::string& path);
    bool isLoadable(const std::string& path, std::span<const std::uint8_t> file);
    bool save(const std::string& path);
    bool write(const std::string& path, const ChunkBytes& chunk);
    void tell(FileAction action, const std::string& path) {
        if (listener_ != nullptr) listener_->patchFile(action, path);
    }

    PatchChunk& chunk_;
    ProgramSlot& program_;
    PatchHost& host_;
    Messages& messages_;
    PatchFileListener* listener_ = nullptr;
};

}  // namespace vantoric
