#include "editor/file_list.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <numeric>
#include <system_error>
#include <utility>

#include "base/number_text.h"
#include "base/text.h"
#include "platform/files.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), text.begin(), [](char a, char b) { return lower(a) == lower(b); });
}

// Names as a person orders them: without letter case, numbers by their value.
int compareNames(std::string_view a, std::string_view b) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto digits = [&](std::string_view text, std::size_t at) {
        std::size_t end = at;
        while (end < text.size() && isDigit(text[end])) ++end;
        while (at + 1 < end && text[at] == '0') ++at;
        return text.substr(at, end - at);
    };
    std::size_t i = 0, k = 0;
    while (i < a.size() && k < b.size()) {
        if (isDigit(a[i]) && isDigit(b[k])) {
            const std::string_view left = digits(a, i), right = digits(b, k);
            if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
            if (const int order = left.compare(right); order != 0) return order;
            i = static_cast<std::size_t>(left.data() - a.data()) + left.size();
            k = static_cast<std::size_t>(right.data() - b.data()) + right.size();
            continue;
        }
        const auto left = static_cast<unsigned char>(lower(a[i++])), right = static_cast<unsigned char>(lower(b[k++]));
        if (left != right) return left < right ? -1 : 1;
    }
    if (a.size() - i != b.size() - k) return a.size() - i < b.size() - k ? -1 : 1;
    return a.compare(b);
}

FolderState stateOf(const std::error_code& error) {
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted) return FolderState::forbidden;
    if (error == std::errc::not_a_directory) return FolderState::noFolder;
    if (error == std::errc::no_such_file_or_directory) return FolderState::missing;
    return FolderState::failed;
}

std::int64_t secondsOf(const fs::file_time_type& time) {
    const auto sinceEpoch = std::chrono::file_clock::to_sys(time).time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch).count();
}

// The topmost folder of its path that is the same one: it differs from it where links go round.
fs::path withoutCircle(const fs::path& folder) {
    std::error_code error;
    fs::path same = folder;
    for (fs::path above = folder.parent_path(), last = folder; above != last; last = above, above = above.parent_path())
        if (fs::equivalent(folder, above, error)) same = above;
    return same;
}

FileEntry entryOf(const std::string& folder, platform::FolderEntry found) {
    std::error_code error;
    const fs::path place = fs::path(folder) / found.name;
    FileEntry entry;
    entry.name = std::move(found.name);
    entry.isFolder = found.isFolder;
    const fs::file_time_type changed = fs::last_write_time(place, error);
    if (!error) entry.changed = secondsOf(changed);
    if (entry.isFolder) return entry;
    const std::uintmax_t size = fs::is_regular_file(place, error) && !error ? fs::file_size(place, error) : 0;
    if (!error) entry.size = size;
    return entry;
}

}  // namespace

FolderListing readFolderListing(const std::string& folder, const std::atomic<bool>& stop) {
    FolderListing listing{withoutCircle(folder).string(), FolderState::read, {}};
    const std::error_code error = platform::readFolder(listing.folder, [&](platform::FolderEntry&& found) {
        if (!stop) listing.entries.push_back(entryOf(listing.folder, std::move(found)));
        return !stop.load();
    });
    if (error && listing.entries.empty()) listing.state = stateOf(error);  // where the rest can't be read, what is there is shown
    return listing;
}

std::string folderAbove(const std::string& folder) {
    const fs::path above = fs::path(folder).parent_path();
    return above.empty() ? folder : above.string();
}

std::string joinedPath(const std::string& folder, const std::string& name) { return (fs::path(folder) / name).string(); }

std::string typedPath(const std::string& typed, const std::string& folder, const std::string& home) {
    std::string text = typed;
    if (!home.empty() && (text == "~" || text.starts_with("~/"))) text.replace(0, 1, home);
    fs::path path = (fs::path(folder) / text).lexically_normal();  // an absolute text takes the folder's place
    if (!path.has_filename() && path.has_relative_path()) path = path.parent_path();
    return path.string();
}

std::string nearestFolder(const std::string& folder) {
    std::error_code error;
    fs::path place(folder);
    while (!fs::is_directory(place, error) && place.has_parent_path() && place.parent_path() != place)
        place = place.parent_path();
    return place.string();
}

// ---- texts

std::string sizeText(std::uint64_t bytes) {
    static constexpr std::array units{"KB", "MB", "GB", "TB"};
    if (bytes < 1000) return std::to_string(bytes) + " B";
    double size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (size >= 999.5 && unit + 1 < units.size()) size /= 1000, ++unit;
    return decimalText(size, size < 9.95 && unit > 0 ? 1 : 0) + " " + units[unit];
}

std::string dateText(std::int64_t seconds) {
    if (seconds == 0) return "";
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
#ifdef _WIN32
    if (localtime_s(&parts, &time) != 0) return "";
#else
    if (localtime_r(&time, &parts) == nullptr) return "";
#endif
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", &parts);
    return {text.data(), length};
}

std::string shownName(const std::string& name) {
    std::string shown(cutText(name, 160));  // far more than any line is wide
    for (char& c : shown)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    if (shown.size() < name.size()) shown += "\u2026";
    return shown;
}

// ---- the reader

FolderReader::~FolderReader() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard(mutex_);
        isEnding_ = true;
        stop_ = true;
    }
    news_.notify_one();
    thread_.join();
}

void FolderReader::request(const std::string& folder) {
    {
        const std::lock_guard guard(mutex_);
        wanted_ = folder;
        read_.reset();
        stop_ = true;  // for the one that is being read
    }
    try {
        if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    } catch (...) {  // no more threads
        const std::lock_guard guard(mutex_);
        read_ = FolderListing{std::move(*wanted_), FolderState::failed, {}};
        wanted_.reset();
    }
    news_.notify_one();
}

std::optional<FolderListing> FolderReader::take() {
    const std::lock_guard guard(mutex_);
    return std::exchange(read_, std::nullopt);
}

bool FolderReader::isReading() const {
    const std::lock_guard guard(mutex_);
    return wanted_ || isBusy_;
}

void FolderReader::finish() {
    std::unique_lock lock(mutex_);
    done_.wait(lock, [this] { return !wanted_ && !isBusy_; });
}

// With short memory a folder can't be read. What is done outside of the guard allocates nothing.
void FolderReader::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        news_.wait(lock, [this] { return wanted_ || isEnding_; });
        if (isEnding_ || !wanted_) return;
        std::string folder = std::move(*wanted_);
        wanted_.reset();
        isBusy_ = true;
        stop_ = false;
        lock.unlock();
        FolderListing listing;
        try {
            listing = readFolderListing(folder, stop_);
        } catch (...) {  // no memory, or a path that the library refuses
            listing = {std::move(folder), FolderState::failed, {}};
        }
        lock.lock();
        isBusy_ = false;
        if (!wanted_) read_ = std::move(listing);
        done_.notify_all();
    }
}

// ---- the list

void FileList::setListing(FolderListing listing) {
    listing_ = std::move(listing);
    arrange();
}

void FileList::setExtension(const std::string& extension) {
    extension_ = lowered(extension);
    arrange();
}

void FileList::setShowsHidden(bool shows) {
    showsHidden_ = shows;
    arrange();
}

void FileList::orderBy(FileOrder order) {
    isReversed_ = order == order_ ? !isReversed_ : order != FileOrder::name;  // the newest and the largest first
    order_ = order;
    arrange();
}

void FileList::arrange() {
    rows_.clear();
    for (int index = 0; index < static_cast<int>(listing_.entries.size()); ++index) {
        const FileEntry& entry = listing_.entries[static_cast<std::size_t>(index)];
        if (entry.isHidden() && !showsHidden_) continue;
        if (entry.isFolder || lowered(entry.name).ends_with(extension_)) rows_.push_back(index);
    }
    const auto byOrder = [this](const FileEntry& a, const FileEntry& b) {
        if (order_ == FileOrder::size && a.size != b.size) return a.size < b.size ? -1 : 1;
        if (order_ == FileOrder::date && a.changed != b.changed) return a.changed < b.changed ? -1 : 1;
        return compareNames(a.name, b.name);
    };
    std::ranges::sort(rows_, [&](int left, int right) {
        const FileEntry& a = listing_.entries[static_cast<std::size_t>(left)];
        const FileEntry& b = listing_.entries[static_cast<std::size_t>(right)];
        if (a.isFolder != b.isFolder) return a.isFolder;
        return isReversed_ ? byOrder(b, a) < 0 : byOrder(a, b) < 0;
    });
}

int FileList::rowOf(const std::string& name) const {
    for (int row = 0; row < count(); ++row)
        if (at(row).name == name) return row;
    return -1;
}

int FileList::rowWith(std::string_view beginning, int from) const {
    for (int tried = 0; tried < count(); ++tried) {
        const int row = (std::max(from, 0) + tried) % count();
        if (beginsWith(at(row).name, beginning)) return row;
    }
    return -1;
}

std::string completionOf(const std::string& beginning, const std::vector<FileEntry>& entries) {
    if (beginning.empty()) return "";
    std::vector<const FileEntry*> fitting;
    for (const FileEntry& entry : entries)
        if (entry.name.starts_with(beginning)) fitting.push_back(&entry);
    if (fitting.empty())
        for (const FileEntry& entry : entries)
            if (beginsWith(entry.name, beginning)) fitting.push_back(&entry);
    if (fitting.empty()) return "";
    std::string_view common = fitting.front()->name;
    for (const FileEntry* entry : fitting) {
        const auto [end, other] = std::ranges::mismatch(common, entry->name);
        common = common.substr(0, static_cast<std::size_t>(end - common.begin()));
    }
    if (common.size() < beginning.size()) return "";
    common = cutText(fitting.front()->name, common.size());  // no half character
    if (common.size() < beginning.size()) return "";
    std::string added(common.substr(beginning.size()));
    if (fitting.size() == 1 && fitting.front()->isFolder) added += '/';
    return added;
}

}  // namespace vantoric
