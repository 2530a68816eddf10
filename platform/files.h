// Files and folders; paths are UTF-8 on Windows and whatever bytes they are elsewhere. Nothing here throws but for short memory,
// shows anything or belongs on the audio thread; every function may be called from any other thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace vantoric::platform {

#ifdef _WIN32
inline constexpr char pathSeparator = '\\';
#else
inline constexpr char pathSeparator = '/';
#endif

// A folder with a separator at its end; an empty text stays empty.
std::string withSeparator(std::string folder);

inline constexpr std::size_t defaultReadLimit = std::size_t{1} << 30;  // bytes

// missing: no file of that name. unreadable: a folder, a device, missing rights, or failing while being read.
// stopped: whoever asked did not want it any more.
enum class FileRead { done, missing, unreadable, tooLarge, stopped };

// Asked between the pieces of a long read, with the bytes read so far and those expected: whether to go on.
using GoesOn = std::function<bool(std::size_t read, std::size_t all)>;

// Reads a whole regular file of up to `limit` bytes. `bytes` is empty unless done.
FileRead tryReadFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit = defaultReadLimit,
                     const GoesOn& goesOn = {});
// The same for those who need no reason: whether it is done.
bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes, std::size_t limit = defaultReadLimit);

// Writes a whole file: beside its place first, and only once it is on disk renamed, so that a reader sees the
// old or the new one, also after a power cut. It may take as long as the disk does. An existing file keeps its
// access rights; a symbolic link stays, and its target is replaced. False, with the old file as it was, if it
// is write protected or a folder, the folder is missing or cannot be written, or the disk is full or fails.
// `bytes` may be null if `size` is 0.
bool writeFile(const std::string& path, const void* bytes, std::size_t size);

// Makes a file to be written piece by piece, over one that is there. Null, with a reason in errno, if it can't be made, or if
// another one who made it so has not closed it yet, in this program or in another: it stays as it is. Whoever asked closes it.
std::FILE* makeFile(const std::string& path);

struct FolderEntry {
    std::string name;  // without its folder
    bool isFolder;     // after following a symbolic link
};

// All entries of a folder but "." and "..", in no certain order. False, with `entries` empty, if it
// cannot be listed.
bool listFolder(const std::string& folder, std::vector<FolderEntry>& entries);
// The same one by one, until `visit` returns false: for folders that may be large or slow. False if it cannot be listed, also
// after some entries.
bool visitFolder(const std::string& folder, const std::function<bool(FolderEntry&&)>& visit);
// The same, with what went wrong; no error where `visit` ended it.
std::error_code readFolder(const std::string& folder, const std::function<bool(FolderEntry&&)>& visit);

// Whether a file or folder of that name exists.
bool exists(const std::string& path);

// Whether it is a folder.
bool isFolder(const std::string& path);

// Removes a file (no folder). False if there was none or it stays.
bool removeFile(const std::string& path);

// Gives a file another name on the same disk, over one that is there. False, with both as they were, if that cannot be.
bool renameFile(const std::string& from, const std::string& to);

// Makes a folder and those above it. True if it is there afterwards.
bool makeFolder(const std::string& path);

}  // namespace vantoric::platform
