// A file's bytes as read-only memory that costs nothing where nobody reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vantoric::platform {

// Part of a regular file, mapped and shared with every other reader, or read into memory where a mapping is not to be
// trusted. A mapping ends the process if its bytes can't be fetched any more, so only files on local disks are mapped
// (a network share goes down, a stick is pulled out), and no part that the file did not hold when it was mapped. That
// leaves the file that someone shortens in place; whoever replaces a file by a new one of its name does no harm, as the
// old one stays for its readers. touch() finds a shortened file and puts silence in its place before anyone reads it.
//
// Nothing here throws but a failed allocation of a few bytes, and nothing belongs on the audio thread.
class MappedFile {
public:
    enum class Result { done, unreadable, outOfMemory };

    // Opens a file for reading. Null if there is none, it is no regular file or it can't be read.
    static std::unique_ptr<MappedFile> open(const std::string& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // Bytes of the file as it was opened.
    std::uint64_t size() const { return size_; }
    // Copies `count` bytes from `offset` on. False if the file does not hold them. Before take().
    bool read(std::uint64_t offset, void* bytes, std::size_t count) const;

    // Maps or reads `count` bytes (1 or more) from `offset` on and closes the file; the bytes stay. Once only.
    Result take(std::uint64_t offset, std::size_t count);
    // The bytes that were taken; null before. Readable by any thread as long as the object lives.
    const std::uint8_t* data() const { return data_; }
    bool isMapped() const { return mapping_ != nullptr; }

    // Fetches `count` bytes from `offset` of what was taken into memory and into this process's view of it, so that
    // reading them waits for nothing. Waits for the disk. False if they are gone: all of data() reads as zeros then.
    bool touch(std::size_t offset, std::size_t count);
    // Asks the system to fetch all that was taken when it finds the time. Waits little.
    void prefetch();

private:
    MappedFile() = default;

    bool map(std::uint64_t offset, std::size_t count);
    Result copy(std::uint64_t offset, std::size_t count);
    void close();

    std::intptr_t file_ = -1;
    std::uint64_t size_ = 0;
    const std::uint8_t* data_ = nullptr;
    std::unique_ptr<std::uint8_t[]> copy_;
    std::uint8_t* mapping_ = nullptr;
    std::size_t mappedBytes_ = 0, count_ = 0;
};

}  // namespace vantoric::platform
