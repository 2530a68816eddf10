#include "platform/files.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#include <process.h>
#else
#include <unistd.h>
#endif

namespace vantoric::platform {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

#ifdef _WIN32
bool mayWrite(const std::string& path) { return _access(path.c_str(), 2) == 0; }
long processNumber() { return _getpid(); }
#else
bool mayWrite(const std::string& path) { return access(path.c_str(), W_OK) == 0; }
long processNumber() { return getpid(); }
#endif

bool readAll(std::FILE* file, std::vector<std::uint8_t>& bytes, std::size_t limit) {
    constexpr std::size_t chunk = 65536;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + chunk);
        const std::size_t got = std::fread(bytes.data() + before, 1, chunk, file);
        bytes.resize(before + got);
        if (bytes.size() > limit || std::ferror(file)) return false;
        if (got < chunk) return true;
    }
}

bool writeAll(const std::string& path, const void* bytes, std::size_t size) {
    OpenFile file(std::fopen(path.c_str(), "wbx"));
    if (!file) return false;
    const bool written = size == 0 || std::fwrite(bytes, 1, size, file.get()) == size;
    return std::fclose(file.release()) == 0 && written;
}

std::string nameBeside(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    return path + "." + std::to_string(processNumber()) + "-" + std::to_string(counter.fetch_add(1)) + ".tmp";
}

}  // namespace

bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit) {
    bytes.clear();
    std::error_code error;
    // Asked before opening: opening a pipe would wait for its writer.
    if (!fs::is_regular_file(path, error)) return false;
    const OpenFile file(std::fopen(path.c_str(), "rb"));
    const std::uintmax_t size = fs::file_size(path, error);
    if (!file || (!error && size > limit)) return false;
    if (!error) bytes.reserve(static_cast<std::size_t>(size) + 65536);
    if (readAll(file.get(), bytes, limit)) return true;
    bytes.clear();
    return false;
}

bool writeFile(const std::string& path, const void* bytes, std::size_t size) {
    std::error_code error;
    std::string target = path;
    if (fs::is_symlink(path, error)) {
        const fs::path real = fs::canonical(path, error);
        if (error) return false;
        target = real.string();
    }
    const fs::file_status status = fs::status(target, error);
    const bool replaces = fs::exists(status);
    if (replaces && (!fs::is_regular_file(status) || !mayWrite(target))) return false;
    const std::string beside = nameBeside(target);
    bool done = writeAll(beside, bytes, size);
    if (done && replaces) fs::permissions(beside, status.permissions(), error);
    if (done) {
        fs::rename(beside, target, error);
        done = !error;
    }
    if (!done) fs::remove(beside, error);
    return done;
}

bool listFolder(const std::string& folder, std::vector<FolderEntry>& entries) {
    entries.clear();
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        std::error_code ignored;
        entries.push_back({at->path().filename().string(), at->is_directory(ignored)});
    }
    if (error) entries.clear();
    return !error;
}

bool exists(const std::string& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool isFolder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

bool removeFile(const std::string& path) {
    std::error_code error;
    return !fs::is_directory(fs::symlink_status(path, error)) && fs::remove(path, error);
}

bool makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    return isFolder(path);
}

}  // namespace vantoric::platform
