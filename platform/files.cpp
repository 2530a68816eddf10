#include "platform/files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "platform/native_path.h"

#ifdef _WIN32
#include <io.h>
#include <process.h>
#include <share.h>
#include <windows.h>

#include "platform/wide_text.h"
#else
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vantoric::platform {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

FileRead readAll(std::FILE* file, std::vector<std::uint8_t>& bytes, std::size_t limit, std::size_t expected,
                 const GoesOn& goesOn) {
    constexpr std::size_t chunk = 65536;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + chunk);
        const std::size_t got = std::fread(bytes.data() + before, 1, chunk, file);
        bytes.resize(before + got);
        if (bytes.size() > limit) return FileRead::tooLarge;
        if (std::ferror(file)) return FileRead::unreadable;
        if (goesOn && !goesOn(bytes.size(), expected)) return FileRead::stopped;
        if (got < chunk) return FileRead::done;
    }
}

#ifdef _WIN32
std::FILE* openToRead(const fs::path& path) { return _wfopen(path.c_str(), L"rb"); }
#else
std::FILE* openToRead(const fs::path& path) { return std::fopen(path.c_str(), "rbe"); }
#endif

// What becomes of writing the bytes of a new file.
enum class Written { done, failed, nameTaken };

#ifdef _WIN32

bool mayWrite(const fs::path& path) { return _waccess(path.c_str(), 2) == 0; }
long processNumber() { return _getpid(); }

bool writeToDisk(HANDLE file, const std::uint8_t* bytes, std::size_t size) {
    while (size > 0) {
        DWORD count = 0;
        if (!WriteFile(file, bytes, static_cast<DWORD>(std::min(size, std::size_t{1} << 30)), &count, nullptr)) return false;
        bytes += count;
        size -= count;
    }
    return FlushFileBuffers(file) != 0;
}

Written writeNew(const fs::path& path, const void* bytes, std::size_t size) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_EXISTS ? Written::nameTaken : Written::failed;
    const bool isOnDisk = writeToDisk(file, static_cast<const std::uint8_t*>(bytes), size);
    return CloseHandle(file) && isOnDisk ? Written::done : Written::failed;
}

// The first keeps who may do what with a file that is there; it fails where there is none.
bool replaceFile(const fs::path& from, const fs::path& to) {
    return ReplaceFileW(to.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0 ||
           MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

void syncFolder(const fs::path&) {}  // the system keeps a journal of names

#else

bool mayWrite(const fs::path& path) { return access(path.c_str(), W_OK) == 0; }
long processNumber() { return getpid(); }

bool writeToDisk(int file, const std::uint8_t* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = write(file, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return fsync(file) == 0;
}

Written writeNew(const fs::path& path, const void* bytes, std::size_t size) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return errno == EEXIST ? Written::nameTaken : Written::failed;
    const bool isOnDisk = writeToDisk(file, static_cast<const std::uint8_t*>(bytes), size);
    return close(file) == 0 && isOnDisk ? Written::done : Written::failed;
}

bool replaceFile(const fs::path& from, const fs::path& to) { return std::rename(from.c_str(), to.c_str()) == 0; }

// Some file systems cannot: there the name is on disk a little later, and names one whole file or the other.
void syncFolder(const fs::path& folder) {
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    fsync(handle);
    close(handle);
}

#endif

// A name that nobody else uses, of a length of its own: the target's may be as long as a name can be.
fs::path nameInside(const fs::path& folder) {
    static std::atomic<unsigned> counter{0};
    const std::string name = "vantoric-" + std::to_string(processNumber()) + "-" + std::to_string(counter.fetch_add(1)) + ".tmp";
    return folder / name;
}

// Files that a crash has left may have names that are made again.
Written writeBeside(const fs::path& folder, const void* bytes, std::size_t size, fs::path& beside) {
    constexpr int tries = 1000;
    Written written = Written::nameTaken;
    for (int i = 0; i < tries && written == Written::nameTaken; ++i) {
        beside = nameInside(folder);
        written = writeNew(beside, bytes, size);
    }
    return written;
}

}  // namespace

std::string withSeparator(std::string folder) {
    if (!folder.empty() && folder.back() != pathSeparator) folder += pathSeparator;
    return folder;
}

FileRead tryReadFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit, const GoesOn& goesOn) {
    bytes.clear();
    std::error_code error;
    // Asked before opening: opening a pipe would wait for its writer.
    const fs::path named = nativePath(path);
    const fs::file_status status = fs::status(named, error);
    if (status.type() == fs::file_type::not_found) return FileRead::missing;
    if (!fs::is_regular_file(status)) return FileRead::unreadable;
    const OpenFile file(openToRead(named));
    if (!file) return FileRead::unreadable;
    const std::uintmax_t size = fs::file_size(named, error);
    if (!error && size > limit) return FileRead::tooLarge;
    if (!error) bytes.reserve(static_cast<std::size_t>(size) + 65536);
    const FileRead read = readAll(file.get(), bytes, limit, error ? 0 : static_cast<std::size_t>(size), goesOn);
    if (read != FileRead::done) bytes.clear();
    return read;
}

bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit) {
    return tryReadFile(path, bytes, limit) == FileRead::done;
}

bool writeFile(const std::string& path, const void* bytes, std::size_t size) {
    std::error_code error;
    fs::path target = nativePath(path);
    if (fs::is_symlink(target, error)) {
        target = fs::canonical(target, error);
        if (error) return false;
    }
    const fs::file_status status = fs::status(target, error);
    const bool replaces = fs::exists(status);
    if (!target.has_filename() || (replaces && (!fs::is_regular_file(status) || !mayWrite(target)))) return false;
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    fs::path beside;
    const Written written = writeBeside(folder, bytes, size, beside);
    if (written == Written::nameTaken) return false;
    bool done = written == Written::done;
    if (done && replaces) fs::permissions(beside, status.permissions(), error);
    done = done && replaceFile(beside, target);
    if (!done) {
        fs::remove(beside, error);
        return false;
    }
    syncFolder(folder);
    return true;
}

#ifdef _WIN32

std::FILE* makeFile(const std::string& path) { return _wfsopen(nativePath(path).c_str(), L"wb", _SH_DENYWR); }

#else

// The lock goes with the file's end. A device cannot be cut, and needs not be; a file system without locks does without.
std::FILE* makeFile(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return nullptr;
    const bool isTaken = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (isTaken) errno = EBUSY;
    const bool isEmpty = !isTaken && (ftruncate(file, 0) == 0 || errno == EINVAL);
    std::FILE* const stream = isEmpty ? fdopen(file, "wb") : nullptr;
    if (stream == nullptr) {
        const int why = errno;
        close(file);
        errno = why;
    }
    return stream;
}

#endif

#ifdef _WIN32

namespace {

struct CloseSearch {
    using pointer = HANDLE;
    void operator()(HANDLE search) const { FindClose(search); }
};
using Search = std::unique_ptr<HANDLE, CloseSearch>;

std::error_code systemError(DWORD number) { return {static_cast<int>(number), std::system_category()}; }

// `folder` ends with a separator. Of the entries that stand for others only links lead to something else.
bool isFolderIn(const std::wstring& folder, const WIN32_FIND_DATAW& entry) {
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        (entry.dwReserved0 == IO_REPARSE_TAG_SYMLINK || entry.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
    if (!isLink) return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    std::error_code error;
    return fs::is_directory(folder + entry.cFileName, error);
}

}  // namespace

// By the system's own calls, as below.
std::error_code readFolder(const std::string& folder, const std::function<bool(FolderEntry&&)>& visit) {
    std::wstring within = nativePath(folder).native();
    if (within.empty()) return systemError(ERROR_PATH_NOT_FOUND);  // it would be the root
    if (const wchar_t last = within.back(); last != L'\\' && last != L'/' && last != L':') within += L'\\';
    WIN32_FIND_DATAW entry;
    const HANDLE found = FindFirstFileW((within + L'*').c_str(), &entry);
    if (found == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND ? std::error_code() : systemError(error);  // the root of a disk may hold nothing
    }
    const Search search(found);
    do {
        const std::wstring_view name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        if (!visit({utf8(name), isFolderIn(within, entry)})) return {};
    } while (FindNextFileW(found, &entry));
    const DWORD error = GetLastError();
    return error == ERROR_NO_MORE_FILES ? std::error_code() : systemError(error);
}

#else

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

bool isFolderIn(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat about{};
    const int number = dirfd(folder);
    return number >= 0 && fstatat(number, entry.d_name, &about, 0) == 0 && S_ISDIR(about.st_mode);
}

}  // namespace

// By the system's own calls: those of the standard library end the process where there is no memory for an entry's path.
std::error_code readFolder(const std::string& folder, const std::function<bool(FolderEntry&&)>& visit) {
    const std::unique_ptr<DIR, CloseFolder> open(opendir(folder.c_str()));
    if (!open) return {errno, std::generic_category()};
    for (;;) {
        errno = 0;  // the end of the folder leaves it
        const dirent* const entry = readdir(open.get());
        if (entry == nullptr) return {errno, std::generic_category()};
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (!visit({std::string(name), isFolderIn(open.get(), *entry)})) return {};
    }
}

#endif

bool visitFolder(const std::string& folder, const std::function<bool(FolderEntry&&)>& visit) {
    return !readFolder(folder, visit);
}

bool listFolder(const std::string& folder, std::vector<FolderEntry>& entries) {
    entries.clear();
    const bool isListed = visitFolder(folder, [&](FolderEntry&& entry) {
        entries.push_back(std::move(entry));
        return true;
    });
    if (!isListed) entries.clear();
    return isListed;
}

bool exists(const std::string& path) {
    std::error_code error;
    return fs::exists(nativePath(path), error);
}

bool isFolder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(nativePath(path), error);
}

bool removeFile(const std::string& path) {
    std::error_code error;
    const fs::path named = nativePath(path);
    return !fs::is_directory(fs::symlink_status(named, error)) && fs::remove(named, error);
}

bool renameFile(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::rename(nativePath(from), nativePath(to), error);
    return !error;
}

bool makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(nativePath(path), error);
    return isFolder(path);
}

}  // namespace vantoric::platform
