// Patches as files, whichever form: what all commands of the program share.
#pragma once

#include <cstddef>
#include <filesystem>

#include "apps/patch/patch.h"

namespace vantoric::patch {

enum Exit { done = 0, different = 1, wrongUse = 2, fileTrouble = 3, incomplete = 4 };
inline constexpr char exitCodes[] =
    "Exit codes: 0 done or equal, 1 different, 2 wrong use, 3 a file that cannot be read, understood or written, "
    "4 done, but for what a message tells.";

// Whether a file is a text, by its name.
bool isText(const std::filesystem::path& path);

// Reads a patch file or a text, by its name; samples that do not stand beside a text are looked for in `samples`, if that is
// given. Returns the size of the file. Throws PatchError.
std::size_t load(const std::filesystem::path& path, Patch& patch, const std::string& samples = "");

// Writes a patch file and returns its size; makes its folder. Throws PatchError.
std::size_t savePatchFile(const std::filesystem::path& path, Patch& patch);

// Keeps what the text of a patch says of author, contents and tags for the browser: in CATEGORY.tags beside the folder that
// `path`, its patch file, stands in. What that file says of other patches stays. A text that says nothing changes nothing.
// Throws PatchError.
void saveNotes(const std::filesystem::path& path, const Patch& patch);

// Writes a text, with the samples as wave files beside it or without them; makes the folder. Throws PatchError.
void saveText(const std::filesystem::path& path, const Patch& patch, bool withSamples);

// Writes a text to standard output, without its samples; says so if they are wanted.
void printText(const Patch& patch, bool withSamples);

// A patch file or a text, by the name. Throws PatchError.
void save(const std::filesystem::path& path, Patch& patch);

// Tells on standard error what is wrong with a file; `fileTrouble`.
int complain(const std::filesystem::path& path, const PatchError& error);

}  // namespace vantoric::patch
