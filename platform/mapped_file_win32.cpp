#include "platform/mapped_file.h"

#ifdef _WIN32

#include <windows.h>

#include <algorithm>
#include <new>

#include "platform/wide_text.h"

namespace vantoric::platform {

namespace {

HANDLE handleOf(std::intptr_t file) { return reinterpret_cast<HANDLE>(file); }

// A disk that does not go away while the machine runs.
bool isLocal(HANDLE file) {
    wchar_t path[MAX_PATH + 1] = {};
    const DWORD length = GetFinalPathNameByHandleW(file, path, MAX_PATH, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    // "\\?\C:\..."; a share has "\\?\UNC\..."
    if (length < 7 || length > MAX_PATH || path[5] != L':') return false;
    const wchar_t root[] = {path[4], L':', L'\\', L'\0'};
    const UINT kind = GetDriveTypeW(root);
    return kind == DRIVE_FIXED || kind == DRIVE_RAMDISK;
}

DWORD granularity() {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
}

constexpr std::size_t pageBytes = 4096;

}  // namespace

std::unique_ptr<MappedFile> MappedFile::open(const std::string& path) {
    // Others may replace the file meanwhile. Shorten it they can't: Windows refuses that while it is mapped.
    const HANDLE file = CreateFileW(wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    LARGE_INTEGER size{};
    std::unique_ptr<MappedFile> opened;
    if (GetFileType(file) == FILE_TYPE_DISK && GetFileSizeEx(file, &size)) opened.reset(new (std::nothrow) MappedFile);
    if (opened == nullptr) {
        CloseHandle(file);
        return nullptr;
    }
    opened->file_ = reinterpret_cast<std::intptr_t>(file);
    opened->size_ = static_cast<std::uint64_t>(size.QuadPart);
    return opened;
}

MappedFile::~MappedFile() {
    close();
    if (mapping_ != nullptr) UnmapViewOfFile(mapping_);
}

void MappedFile::close() {
    if (file_ != -1) CloseHandle(handleOf(file_));
    file_ = -1;
}

bool MappedFile::read(std::uint64_t offset, void* bytes, std::size_t count) const {
    auto* to = static_cast<std::uint8_t*>(bytes);
    while (count > 0) {
        OVERLAPPED from{};
        from.Offset = static_cast<DWORD>(offset);
        from.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD got = 0;
        const auto asked = static_cast<DWORD>(std::min<std::size_t>(count, 1u << 30));
        if (!ReadFile(handleOf(file_), to, asked, &got, &from) || got == 0) return false;
        to += got;
        offset += got;
        count -= got;
    }
    return true;
}

MappedFile::Result MappedFile::take(std::uint64_t offset, std::size_t count) {
    if (file_ == -1 || count == 0 || offset > size_ || count > size_ - offset) return Result::unreadable;
    count_ = count;
    const Result result = map(offset, count) ? Result::done : copy(offset, count);
    close();
    return result;
}

bool MappedFile::map(std::uint64_t offset, std::size_t count) {
    if (!isLocal(handleOf(file_))) return false;
    const HANDLE section = CreateFileMappingW(handleOf(file_), nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (section == nullptr) return false;
    const std::size_t lead = offset % granularity();
    const std::uint64_t from = offset - lead;
    void* const view =
        MapViewOfFile(section, FILE_MAP_READ, static_cast<DWORD>(from >> 32), static_cast<DWORD>(from), lead + count);
    CloseHandle(section);  // the view keeps it
    if (view == nullptr) return false;
    mapping_ = static_cast<std::uint8_t*>(view);
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
    if (mapping_ == nullptr) return true;
    for (std::size_t at = 0; at < count; at += pageBytes)
        static_cast<void>(*static_cast<const volatile std::uint8_t*>(data_ + offset + at));
    if (count > 0) static_cast<void>(*static_cast<const volatile std::uint8_t*>(data_ + offset + count - 1));
    return true;
}

void MappedFile::prefetch() {
    if (mapping_ == nullptr) return;
    WIN32_MEMORY_RANGE_ENTRY range{mapping_, mappedBytes_};
    PrefetchVirtualMemory(GetCurrentProcess(), 1, &range, 0);
}

}  // namespace vantoric::platform

#endif
