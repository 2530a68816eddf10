// Patch files: a chunk behind a header of 60 bytes, and the commands of the file menu that need no window.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "patch/patch_chunk.h"
#include "patch/program_slot.h"
#include "platform/dialogs.h"

namespace vantoric {

inline constexpr int patchHeaderBytes = 60;
using PatchHeader = std::array<std::uint8_t, patchHeaderBytes>;

// The header of a patch of that name (stored up to 26 characters) with a chunk of `chunkSize` bytes.
PatchHeader makePatchHeader(const std::string& name, std::int32_t chunkSize);

// Whether a file begins like a patch of this instrument. Other fields of the header may hold anything.
bool isPatchFile(std::span<const std::uint8_t> file);

// The chunk within a file: as long as the header says, but never beyond the file's end. Empty for a header
// that is cut or that names no size that a chunk can have (above 2^31 - 1).
std::span<const std::uint8_t> chunkOfFile(std::span<const std::uint8_t> file);

// The name that a file gives its patch: the last component of the path without its last 4 characters,
// whatever they are. Both slash and backslash separate.
std::string patchNameOfPath(const std::string& path);

// The folder of a path with its separator; empty if it has none.
std::string folderOfPath(const std::string& path);

// Where the commands put a patch. category: a folder's name; name: without extension.
std::string patchPath(const std::string& category, const std::string& name);
std::string favouritePath(const std::string& name);
std::string welcomePatchPath();

// File commands. All on the editor's thread or before there is one, never on the audio thread.
class PatchFiles {
public:
    PatchFiles(PatchChunk& chunk, ProgramSlot& program, PatchHost& host, platform::Dialogs& dialogs);

    // Loads a whole patch; the file's name becomes the patch's name, whatever the chunk says. A file that
    // cannot be read is passed over in silence; one of another kind gives a box and leaves the window's
    // busy state set. True if a chunk was handed to the engine.
    bool loadPatchFile(const std::string& path);

    // Saves the patch in force under its own name. False, with a box, if the file cannot be written or
    // memory is short.
    bool savePatchFile(const std::string& path);

    // "Load patch": asks for a file and loads it. True if one was chosen; the caller then lets the browser
    // follow the patch name.
    bool loadPatch();
    // "Save patch as...": asks for a path, names the patch after it, saves.
    bool savePatchAs();
    // "Quick save patch": replaces the shown patch's file without a question. The category "Custom" has none
    // and gives a box.
    bool quickSavePatch(const std::string& category, const std::string& name);
    // "Delete Patch": asks, then removes the file. True if it is gone; the caller then rebuilds its lists.
    bool deletePatch(const std::string& category, const std::string& name);
    // Saves the patch in force among the favourites.
    bool addToFavourites();

private:
    PatchChunk& chunk_;
    ProgramSlot& program_;
    PatchHost& host_;
    platform::Dialogs& dialogs_;
    bool loadedBefore_ = false;
    std::string saveFolder_;  // of the last "Save patch as..."
};

}  // namespace vantoric
