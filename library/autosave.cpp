#include "library/autosave.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <ctime>
#include <optional>
#include <set>

#include "base/text.h"
#include "library/beside.h"
#include "library/text_sections.h"
#include "patch/patch_file.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/thread.h"
#include "platform/user_state.h"

namespace vantoric {

namespace {

constexpr char patchExtension[] = ".fxp", noteExtension[] = ".txt";
constexpr std::uint64_t notYetKnown = ~std::uint64_t{0};  // of a state that no history has numbered

std::string autosaveFolder() {
    const std::string folder = platform::stateFolder();
    return folder.empty() ? folder : folder + "autosave" + platform::pathSeparator;
}

// Numbers that the instruments of this process use for their files.
struct Numbers {
    std::mutex mutex;
    std::set<int> taken;
};
Numbers& numbers() {
    static Numbers all;
    return all;
}

int takeNumber() {
    const std::string own = autosaveFolder() + std::to_string(platform::processNumber()) + "-";
    const std::lock_guard guard(numbers().mutex);
    int number = 1;
    // Another copy of the module in this process keeps its own numbers.
    while (numbers().taken.contains(number) || platform::exists(own + std::to_string(number) + noteExtension)) ++number;
    numbers().taken.insert(number);
    return number;
}

std::string ownPath(int number) {
    const std::string folder = autosaveFolder();
    return folder.empty() ? folder : folder + std::to_string(platform::processNumber()) + "-" + std::to_string(number);
}

std::string withoutExtension(const std::string& path) { return path.substr(0, path.size() - sizeof patchExtension + 1); }

std::optional<long> wholeNumber(std::string_view text) {
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0) return {};
    return value;
}

// The process of a file of the form <process>-<number>.fxp.
std::optional<long> processOf(const std::string& fileName) {
    if (!fileName.ends_with(patchExtension)) return {};
    const std::string_view stem = std::string_view(fileName).substr(0, fileName.size() - sizeof patchExtension + 1);
    const std::size_t dash = stem.find('-');
    if (dash == std::string_view::npos || !wholeNumber(stem.substr(dash + 1))) return {};
    return wholeNumber(stem.substr(0, dash));
}

// What a process was writing when it ended.
void removeRest(const std::string& folder, const std::string& fileName) {
    constexpr std::string_view start = "vantoric-", end = ".tmp";
    if (!fileName.starts_with(start) || !fileName.ends_with(end)) return;
    const std::string_view rest = std::string_view(fileName).substr(start.size());
    const auto process = wholeNumber(rest.substr(0, rest.find('-')));
    if (process && platform::processStart(*process).empty()) platform::removeFile(folder + fileName);
}

// A number that was given out again belongs to another process now.
bool isStillThere(long process, const std::string& start) {
    const std::string present = platform::processStart(process);
    return !present.empty() && (start.empty() || present == "unknown" || present == start);
}

TextSection noteOf(const WorkingState& working) {
    TextSection note;
    note.set("name", working.name);
    note.set("category", working.category);
    note.set("time", std::to_string(static_cast<long long>(std::time(nullptr))));
    note.set("process", platform::processStart(platform::processNumber()));
    return note;
}

}  // namespace

Autosave::Autosave(Instrument& instrument, std::chrono::milliseconds interval)
    : instrument_(instrument), interval_(interval), number_(takeNumber()), path_(ownPath(number_)) {
    thread_ = std::thread([this] { run(); });
}

Autosave::~Autosave() {
    {
        const std::lock_guard guard(mutex_);
        stops_ = true;
    }
    stopping_.notify_one();
    thread_.join();
    removeOwn();
    const std::lock_guard guard(numbers().mutex);
    numbers().taken.erase(number_);
}

void Autosave::run() {
    platform::setLowPriority();
    std::unique_lock lock(mutex_);
    while (!stopping_.wait_for(lock, interval_, [this] { return stops_; })) {
        lock.unlock();
        saveIfDue();
        lock.lock();
    }
}

void Autosave::follow(const WorkingState& working) {
    const std::lock_guard guard(mutex_);
    if (working_ != working) working_ = working;
}

bool Autosave::saveNow() { return saveIfDue(); }

// Short memory counts as a disk that can't be written: the next minute comes.
bool Autosave::saveIfDue() try {
    const std::lock_guard saving(saving_);
    WorkingState working;
    {
        const std::lock_guard guard(mutex_);
        working = working_;
    }
    if (path_.empty()) return false;
    if (!working.isChanged) {
        removeOwn();
        return true;
    }
    if (isOnDisk_ && saved_ == working) return true;
    if (!write(working)) return false;
    saved_ = working;
    return true;
} catch (...) {
    return false;
}

// The note first: a patch is never found without one that tells its process.
bool Autosave::write(const WorkingState& working) {
    const ChunkBytes chunk = instrument_.patchChunk().getChunk();
    if (chunk.size == 0 || !platform::makeFolder(autosaveFolder())) return false;
    const PatchHeader header = makePatchHeader(working.name, chunk.size);
    std::vector<std::uint8_t> file(header.begin(), header.end());
    file.insert(file.end(), chunk.data.get(), chunk.data.get() + chunk.size);
    isOnDisk_ = true;
    return saveSections(path_ + noteExtension, {noteOf(working)}) &&
           platform::writeFile(path_ + patchExtension, file.data(), file.size());
}

// Without memory for the names it stays, and is offered at the next start.
void Autosave::removeOwn() noexcept try {
    if (!isOnDisk_) return;
    platform::removeFile(path_ + patchExtension);
    platform::removeFile(path_ + noteExtension);
    isOnDisk_ = false;
} catch (...) {
    return;
}

// ---- after a crash ----------------------------------------------------------------------------------------------

std::vector<RecoverablePatch> Autosave::recoverable() {
    const std::string folder = autosaveFolder();
    std::vector<platform::FolderEntry> entries;
    std::vector<RecoverablePatch> left;
    if (folder.empty() || !platform::listFolder(folder, entries)) return left;
    for (const platform::FolderEntry& entry : entries) {
        removeRest(folder, entry.name);
        const auto process = entry.isFolder ? std::nullopt : processOf(entry.name);
        if (!process) continue;
        RecoverablePatch patch{folder + entry.name, {}, {}};
        const TextSections note = loadSections(withoutExtension(patch.path) + noteExtension, 65536);
        const TextSection fields = note.empty() ? TextSection{} : note.front();
        if (isStillThere(*process, fields.valueOf("process"))) continue;
        patch.name = fields.valueOf("name");
        patch.category = fields.valueOf("category");
        patch.savedAt = wholeNumber(fields.valueOf("time")).value_or(0);
        left.push_back(std::move(patch));
    }
    std::sort(left.begin(), left.end(), [](const RecoverablePatch& a, const RecoverablePatch& b) {
        return a.savedAt != b.savedAt ? a.savedAt > b.savedAt : a.path < b.path;
    });
    return left;
}

bool Autosave::discard(const RecoverablePatch& patch) {
    const bool isGone = platform::removeFile(patch.path) || !platform::exists(patch.path);
    if (isGone) platform::removeFile(withoutExtension(patch.path) + noteExtension);
    return isGone;
}

bool Autosave::putAside(const RecoverablePatch& patch) {
    constexpr std::size_t mostKept = 16;
    const std::string folder = autosaveFolder() + "declined" + platform::pathSeparator;
    std::vector<std::uint8_t> file;
    if (!platform::makeFolder(folder) || !platform::readFile(patch.path, file)) return false;
    const std::int64_t now =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    if (!platform::writeFile(folder + std::to_string(now) + " " + fileNameOf(patch.path), file.data(), file.size())) return false;
    std::vector<platform::FolderEntry> kept;
    platform::listFolder(folder, kept);
    std::sort(kept.begin(), kept.end(), [](const auto& a, const auto& b) { return a.name > b.name; });
    for (std::size_t i = mostKept; i < kept.size(); ++i) platform::removeFile(folder + kept[i].name);
    return discard(patch);
}

// Checked before anything is replaced: a crash may have been that of a disk.
bool Autosave::recover(const RecoverablePatch& patch) {
    std::vector<std::uint8_t> file;
    if (!platform::readFile(patch.path, file)) return false;
    const auto bytes = isPatchFile(file) ? chunkOfFile(file) : std::span<const std::uint8_t>();
    if (bytes.size() < chunk::fixedSize) {
        instrument_.messages().post(patch.path, "This file is not compatible with this product.");
        return false;
    }
    if (!instrument_.messages().post(chunk::check(bytes))) return false;
    if (instrument_.patchChunk().setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size())) == 0) return false;
    if (!patch.name.empty()) instrument_.program().setProgramName(std::string(cutText(patch.name, ProgramSlot::longestName)));
    follow({true, notYetKnown, patch.category, patch.name});
    if (saveNow()) discard(patch);
    return true;
}

}  // namespace vantoric
