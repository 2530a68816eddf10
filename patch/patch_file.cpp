#include "patch/patch_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "base/parameters.h"
#include "base/text.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"

namespace vantoric {

namespace {

constexpr char identifier[] = "Q7DI";
constexpr int identifierOffset = 16;
constexpr int nameOffset = 28;
constexpr std::size_t nameBytes = 26;
constexpr int chunkSizeOffset = 56;
constexpr char extension[] = ".fxp";
constexpr std::size_t extensionLength = 4;

std::size_t startOfLastComponent(const std::string& path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? 0 : separator + 1;
}

}  // namespace

PatchHeader makePatchHeader(const std::string& name, std::int32_t chunkSize) {
    PatchHeader header{};
    std::memcpy(&header[0], "CcnK", 4);
    std::memcpy(&header[8], "FPCh", 4);
    chunk::writeBigLong(&header[12], 1);
    std::memcpy(&header[identifierOffset], identifier, 4);
    chunk::writeBigLong(&header[20], 1);
    chunk::writeBigLong(&header[24], parameterCount);
    const std::string_view stored = cutText(name, nameBytes);
    std::memcpy(&header[nameOffset], stored.data(), stored.size());
    chunk::writeBigLong(&header[chunkSizeOffset], static_cast<std::uint32_t>(chunkSize));
    return header;
}

bool isPatchFile(std::span<const std::uint8_t> file) {
    return file.size() >= identifierOffset + 4 && std::memcmp(file.data(), "Cc", 2) == 0 &&
           std::memcmp(file.data() + identifierOffset, identifier, 4) == 0;
}

std::span<const std::uint8_t> chunkOfFile(std::span<const std::uint8_t> file) {
    if (file.size() < patchHeaderBytes) return {};
    const std::uint32_t size = chunk::readBigLong(file.data() + chunkSizeOffset);
    if (size > 0x7fffffffu) return {};
    return file.subspan(patchHeaderBytes, std::min<std::size_t>(size, file.size() - patchHeaderBytes));
}

std::string patchNameOfPath(const std::string& path) {
    const std::string name = path.substr(startOfLastComponent(path));
    return std::string(cutText(name, name.size() - std::min(name.size(), extensionLength)));
}

std::string folderOfPath(const std::string& path) { return path.substr(0, startOfLastComponent(path)); }

std::string patchPath(const std::string& category, const std::string& name) {
    return platform::dataPath(platform::belowSounds() + category + platform::pathSeparator + name + extension);
}

std::string favouritePath(const std::string& name) { return platform::favouritesFolder() + "Fav" + name + extension; }

std::string welcomePatchPath() { return patchPath("ArpMultilayer", "0Welcome"); }

PatchFiles::PatchFiles(PatchChunk& chunk, ProgramSlot& program, PatchHost& host, Messages& messages)
    : chunk_(chunk), program_(program), host_(host), messages_(messages) {}

bool PatchFiles::loadPatchFile(const std::string& path) try {
    host_.setBusy(true);
    return load(path);
} catch (...) {
    messages_.post("Error", notEnoughMemory);
    host_.setBusy(false);
    return false;
}

// No save comes between the patch and its name.
bool PatchFiles::load(const std::string& path) {
    std::vector<std::uint8_t> file;
    tell(FileAction::read, path);
    if (!platform::readFile(path, file)) {
        host_.setBusy(false);
        return false;
    }
    if (!isLoadable(path, file)) return false;
    const std::span<const std::uint8_t> bytes = chunkOfFile(file);
    const EngineTurn turn(chunk_.access());
    const bool isLoaded = chunk_.setCheckedChunk(bytes.data(), static_cast<std::int32_t>(bytes.size())) != 0;
    if (isLoaded) program_.setProgramName(patchNameOfPath(path));
    host_.setBusy(false);
    return isLoaded;
}

bool PatchFiles::isLoadable(const std::string& path, std::span<const std::uint8_t> file) {
    const std::span<const std::uint8_t> bytes = chunkOfFile(file);
    if (!isPatchFile(file) || bytes.size() < static_cast<std::size_t>(chunk::fixedSize)) {
        messages_.post(path, "This file is not compatible with this product.");
        return false;
    }
    const bool isGood = messages_.post(chunk::check(bytes));
    if (!isGood) host_.setBusy(false);
    return isGood;
}

bool PatchFiles::savePatchFile(const std::string& path) try { return save(path); } catch (...) {
    messages_.post("Error", "Memory allocation error on saving");
    return false;
}

bool PatchFiles::saveChunk(const std::string& path, const ChunkBytes& chunk) try { return write(path, chunk); } catch (...) {
    messages_.post("Error", "Memory allocation error on saving");
    return false;
}

bool PatchFiles::save(const std::string& path) {
    const ChunkBytes chunk = chunk_.getChunk();
    return chunk.data && write(path, chunk);
}

// The header and the chunk hold the same name; the file is written while others may go on.
bool PatchFiles::write(const std::string& path, const ChunkBytes& chunk) {
    const char* const name = reinterpret_cast<const char*>(chunk.data.get()) + chunk::nameOffset;
    const PatchHeader header = makePatchHeader({name, strnlen(name, chunk::nameWritten)}, chunk.size);
    std::vector<std::uint8_t> file;
    file.reserve(header.size() + static_cast<std::size_t>(chunk.size));
    file.assign(header.begin(), header.end());
    file.insert(file.end(), chunk.data.get(), chunk.data.get() + chunk.size);
    tell(FileAction::write, path);
    if (platform::writeFile(path, file.data(), file.size())) return true;
    messages_.post(path, "File write error. File is write protected, opened by another application or the path does not exist.");
    return false;
}

bool PatchFiles::savePatchAs(const std::string& path) try {
    program_.setProgramName(patchNameOfPath(path));
    return save(path);
} catch (...) {
    messages_.post("Error", "Memory allocation error on saving");
    return false;
}

bool PatchFiles::quickSavePatch(const std::string& category, const std::string& name) {
    if (category == "Custom") {
        messages_.post("Error", "Your patch still has no name. Use 'Save patch as...' to store it.");
        return false;
    }
    // In a category of the installation it may be the first of the user's.
    const std::string folder = platform::ownPath(platform::belowSounds() + category);
    platform::makeFolder(folder);
    return savePatchFile(folder + platform::pathSeparator + name + extension);
}

bool PatchFiles::deletePatch(const std::string& category, const std::string& name) {
    const std::string path = patchPath(category, name);
    tell(FileAction::remove, path);
    if (platform::removeFile(path)) return true;
    messages_.post("Error", "Could not delete this file. Please check if it is write protected.");
    return false;
}

void PatchFiles::removeTemporary(const std::string& path) {
    tell(FileAction::remove, path);
    platform::removeFile(path);
}

bool PatchFiles::addToFavourites() { return savePatchFile(favouritePath(program_.getProgramName())); }

}  // namespace vantoric
