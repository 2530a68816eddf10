// What a folder holds, read in the background, and the part of it that a file chooser shows. No window library.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vantoric {

struct FileEntry {
    std::string name;  // any bytes
    bool isFolder = false;
    std::uint64_t size = 0;    // bytes; 0 for folders
    std::int64_t changed = 0;  // seconds since 1970; 0 if unknown
    friend bool operator==(const FileEntry&, const FileEntry&) = default;

    bool isHidden() const { return name.starts_with('.'); }
};

enum class FolderState { read, missing, forbidden, noFolder, failed };

struct FolderListing {
    std::string folder;
    FolderState state = FolderState::read;
    std::vector<FileEntry> entries;  // in no certain order
    friend bool operator==(const FolderListing&, const FolderListing&) = default;
};

// Reads a folder until `stop` is set. What vanishes meanwhile is left out; what can't be looked at has no size or date. A
// folder that is one of those above it, by a link, is listed as that: nobody goes round in circles. Any thread.
FolderListing readFolderListing(const std::string& folder, const std::atomic<bool>& stop);

// The folder above; the root's is the root.
std::string folderAbove(const std::string& folder);
std::string joinedPath(const std::string& folder, const std::string& name);
// What a typed path means from a folder on: "~" is `home`, "..", "." and double slashes go. Without a slash at its end.
std::string typedPath(const std::string& typed, const std::string& folder, const std::string& home);
// The nearest folder that is there: itself or one above it.
std::string nearestFolder(const std::string& folder);

// "3 KB", "1.4 MB"
std::string sizeText(std::uint64_t bytes);
// "2026-11-22 14:05", by the clock of the place; empty for 0.
std::string dateText(std::int64_t seconds);
// A file's name as a line can show it: without control characters.
std::string shownName(const std::string& name);

// Reads folders one after the other on a thread of its own, so that a slow disk holds up nobody. Its functions belong to one
// thread. The end waits for at most one look at a file.
class FolderReader {
public:
    FolderReader() = default;
    ~FolderReader();
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;

    // Asks for a folder; what was asked for before and is not read yet is forgotten.
    void request(const std::string& folder);
    // The folder that was asked for last, once it has been read.
    std::optional<FolderListing> take();
    bool isReading() const;
    // Waits until it has been read.
    void finish();

private:
    void run();

    mutable std::mutex mutex_;
    std::condition_variable news_, done_;
    std::optional<std::string> wanted_;
    std::optional<FolderListing> read_;
    bool isBusy_ = false, isEnding_ = false;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

enum class FileOrder { name, size, date };

// The rows of a listing that are shown, in order: folders first.
class FileList {
public:
    void setListing(FolderListing listing);
    const FolderListing& listing() const { return listing_; }

    // Files of other endings are left out; empty: none is. Letter case does not count.
    void setExtension(const std::string& extension);
    void setShowsHidden(bool shows);
    bool showsHidden() const { return showsHidden_; }
    // The same order again turns it round.
    void orderBy(FileOrder order);
    FileOrder order() const { return order_; }
    bool isReversed() const { return isReversed_; }

    int count() const { return static_cast<int>(rows_.size()); }
    const FileEntry& at(int row) const {
        return listing_.entries[static_cast<std::size_t>(rows_[static_cast<std::size_t>(row)])];
    }
    // The row of exactly that name; -1 if it is not shown.
    int rowOf(const std::string& name) const;
    // The first row from `from` on, then from the top, that begins with the text, letter case aside; -1 if none does.
    int rowWith(std::string_view beginning, int from) const;

private:
    void arrange();

    FolderListing listing_;
    std::vector<int> rows_;
    std::string extension_;
    FileOrder order_ = FileOrder::name;
    bool isReversed_ = false, showsHidden_ = false;
};

// What can be added to the beginning of a name so that it goes on as all entries do that begin with it (letter case counts
// if any entry has it so). A folder that is the only one ends with a slash. Empty if nothing is certain.
std::string completionOf(const std::string& beginning, const std::vector<FileEntry>& entries);

}  // namespace vantoric
