#include "platform/mapped_file.h"

#ifndef _WIN32

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/vfs.h>
#endif

#include <algorithm>
#include <cerrno>
#include <new>

#ifndef MADV_POPULATE_READ
#define MADV_POPULATE_READ 22
#endif

namespace vantoric::platform {

namespace {

#ifdef __linux__
// File systems of disks that do not go away while the machine runs, by the numbers of statfs(2).
bool isLocal(int file) {
    constexpr std::uint32_t local[] = {0xef53 /* ext2 to ext4 */,
                                       0x58465342 /* XFS */,
                                       0x9123683e /* Btrfs */,
                                       0xf2f52010 /* F2FS */,
                                       0xca451a4e /* bcachefs */,
                                       0x2fc12fc1 /* ZFS */,
                                       0x794c7630 /* overlay */,
                                       0x73717368 /* squashfs */,
                                       0xe0f5e1e2 /* EROFS */,
                                       0x01021994 /* tmpfs */,
                                       0x858458f6 /* ramfs */};
    struct statfs system{};
    if (fstatfs(file, &system) != 0) return false;
    const auto kind = static_cast<std::uint32_t>(system.f_type);
    return std::find(std::begin(local), std::end(local), kind) != std::end(local);
}
#else
bool isLocal(int) { return false; }
#endif

std::size_t pageBytes() {
    static const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

}  // namespace

std::unique_ptr<MappedFile> MappedFile::open(const std::string& path) {
    // Without waiting for the other end of what turns out to be a pipe.
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return nullptr;
    struct stat status{};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(file);
        return nullptr;
    }
    std::unique_ptr<MappedFile> opened(new (std::nothrow) MappedFile);
    if (opened == nullptr) {
        ::close(file);
        return nullptr;
    }
    opened->file_ = file;
    opened->size_ = static_cast<std::uint64_t>(status.st_size);
    return opened;
}

MappedFile::~MappedFile() {
    close();
    if (mapping_ != nullptr) munmap(mapping_, mappedBytes_);
}

void MappedFile::close() {
    if (file_ >= 0) ::close(static_cast<int>(file_));
    file_ = -1;
}

bool MappedFile::read(std::uint64_t offset, void* bytes, std::size_t count) const {
    auto* to = static_cast<std::uint8_t*>(bytes);
    while (count > 0) {
        const ssize_t got = pread(static_cast<int>(file_), to, count, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        to += got;
        offset += static_cast<std::uint64_t>(got);
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

MappedFile::Result MappedFile::take(std::uint64_t offset, std::size_t count) {
    if (file_ < 0 || count == 0 || offset > size_ || count > size_ - offset) return Result::unreadable;
    count_ = count;
    const Result result = map(offset, count) ? Result::done : copy(offset, count);
    close();
    return result;
}

bool MappedFile::map(std::uint64_t offset, std::size_t count) {
    if (!isLocal(static_cast<int>(file_))) return false;
    const std::size_t lead = offset % pageBytes();
    void* const mapped =
        mmap(nullptr, lead + count, PROT_READ, MAP_SHARED, static_cast<int>(file_), static_cast<off_t>(offset - lead));
    if (mapped == MAP_FAILED) return false;
    mapping_ = static_cast<std::uint8_t*>(mapped);
    mappedBytes_ = lead + count;
    data_ = mapping_ + lead;
    return true;
}

MappedFile::Result MappedFile::copy(std::uint64_t offset, std::size_t count) {
    copy_.reset(new (std::nothrow) std::uint8_t[count]);
    if (copy_ == nullptr) return Result::outOfMemory;
    if (!read(offset, copy_.get(), count)) return copy_.reset(), Result::unreadable;
    data_ = copy_.get();
    return Result::done;
}

bool MappedFile::touch(std::size_t offset, std::size_t count) {
    if (data_ == nullptr || offset > count_ || count > count_ - offset) return false;
    if (mapping_ == nullptr || count == 0) return true;
    const std::size_t first = static_cast<std::size_t>(data_ - mapping_) + offset, lead = first % pageBytes();
    std::uint8_t* const begin = mapping_ + (first - lead);
    int result = 0;
    do result = madvise(begin, lead + count, MADV_POPULATE_READ);
    while (result != 0 && errno == EINTR);
    if (result == 0) return true;
    if (errno == EFAULT || errno == EHWPOISON) {
        // The same addresses, other contents, at one stroke.
        const void* const zeros = mmap(mapping_, mappedBytes_, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
        if (zeros == MAP_FAILED) errno = ENOMEM;
        return false;
    }
    if (errno == EINVAL)  // a kernel before 5.14: a byte of each page is read
        for (std::size_t at = 0; at < lead + count; at += pageBytes())
            static_cast<void>(*static_cast<volatile std::uint8_t*>(begin + at));
    return true;
}

void MappedFile::prefetch() {
    if (mapping_ != nullptr) madvise(mapping_, mappedBytes_, MADV_WILLNEED);
}

}  // namespace vantoric::platform

#endif
