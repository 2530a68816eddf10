#include "patch/patch_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "base/parameters.h"
#include "platform/files.h"
#include "platform/module_folder.h"

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
    std::memcpy(&header[nameOffset], name.data(), std::min(name.size(), nameBytes));
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
    return name.substr(0, name.size() - std::min(name.size(), extensionLength));
}

std::string folderOfPath(const std::string& path) { return path.substr(0, startOfLastComponent(path)); }

std::string patchPath(const std::string& category, const std::string& name) {
    return platform::soundsFolder() + category + platform::pathSeparator + name + extension;
}

std::string favouritePath(const std::string& name) { return platform::favouritesFolder() + "Fav" + name + extension; }

std::string welcomePatchPath() { return patchPath("ArpMultilayer", "0Welcome"); }

PatchFiles::PatchFiles(PatchChunk& chunk, ProgramSlot& program, PatchHost& host, platform::Dialogs& dialogs)
    : chunk_(chunk), program_(program), host_(host), dialogs_(dialogs) {}

bool PatchFiles::loadPatchFile(const std::string& path) {
    host_.setBusy(true);
    std::vector<std::uint8_t> file;
    if (!platform::readFile(path, file)) {
        host_.setBusy(false);
        return false;
    }
    if (!isPatchFile(file)) {
        dialogs_.message(path, "This file is not compatible with this product.");
        return false;
    }
    const std::span<const std::uint8_t> bytes = chunkOfFile(file);
    chunk_.setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    program_.setProgramName(patchNameOfPath(path));
    host_.setBusy(false);
    return true;
}

bool PatchFiles::savePatchFile(const std::string& path) {
    const ChunkBytes chunk = chunk_.getChunk();
    if (!chunk.data) return false;
    const std::size_t size = patchHeaderBytes + static_cast<std::size_t>(chunk.size);
    const std::unique_ptr<std::uint8_t[]> file(new (std::nothrow) std::uint8_t[size]);
    if (!file) {
        dialogs_.message("Error", "Memory allocation error on saving");
        return false;
    }
    const PatchHeader header = makePatchHeader(program_.getProgramName(), chunk.size);
    std::copy(header.begin(), header.end(), file.get());
    std::copy_n(chunk.data.get(), chunk.size, file.get() + patchHeaderBytes);
    if (platform::writeFile(path, file.get(), size)) return true;
    dialogs_.message(path,
                     "File write error. File is write protected, opened by another application or the path does not exist.");
    return false;
}

bool PatchFiles::loadPatch() {
    std::string path;
    const std::string start = loadedBefore_ ? std::string() : platform::soundsFolder();
    if (!platform::askFilePath(dialogs_, path, start, false, platform::FileKind::Patch)) return false;
    loadedBefore_ = true;
    loadPatchFile(path);
    return true;
}

bool PatchFiles::savePatchAs() {
    std::string path;
    const std::string start = saveFolder_.empty() ? platform::userFolder() : saveFolder_;
    if (!platform::askFilePath(dialogs_, path, start, true, platform::FileKind::Patch)) return false;
    saveFolder_ = folderOfPath(path);
    program_.setProgramName(patchNameOfPath(path));
    return savePatchFile(path);
}

bool PatchFiles::quickSavePatch(const std::string& category, const std::string& name) {
    if (category == "Custom") {
        dialogs_.message("Error", "Your patch still has no name. Use 'Save patch as...' to store it.");
        return false;
    }
    return savePatchFile(patchPath(category, name));
}

bool PatchFiles::deletePatch(const std::string& category, const std::string& name) {
    const std::string path = patchPath(category, name);
    if (!dialogs_.question("Warning", "Are you sure that you want to delete the file '" + path + "'?")) return false;
    if (platform::removeFile(path)) return true;
    dialogs_.message("Error", "Could not delete this file. Please check if it is write protected.");
    return false;
}

bool PatchFiles::addToFavourites() { return savePatchFile(favouritePath(program_.getProgramName())); }

}  // namespace vantoric
