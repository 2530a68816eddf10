#include "platform/mapped_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"

namespace vantoric::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Mapping : testing::Test {
    static std::uint8_t byteAt(std::size_t i) { return static_cast<std::uint8_t>(i * 31 + i / 256); }
    std::string put(std::size_t size) {
        Bytes bytes(size);
        for (std::size_t i = 0; i < size; ++i) bytes[i] = byteAt(i);
        EXPECT_TRUE(writeFile(path, bytes.data(), bytes.size()));
        return path;
    }

    ScratchFolder folder;
    const std::string path = folder / "bank";
};

TEST_F(Mapping, TellsTheSizeAndReadsWhatTheFileHolds) {
    const auto file = MappedFile::open(put(1000));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), 1000u);
    Bytes bytes(44);
    EXPECT_TRUE(file->read(956, bytes.data(), 44));
    EXPECT_EQ(bytes[0], byteAt(956));
    EXPECT_EQ(bytes[43], byteAt(999));
    EXPECT_FALSE(file->read(957, bytes.data(), 44));
    EXPECT_FALSE(file->read(5000, bytes.data(), 1));
}

TEST_F(Mapping, GivesAnyPartOfTheFile) {
    for (const std::size_t offset : {0u, 44u, 4095u, 4096u, 70001u}) {
        const auto file = MappedFile::open(put(100000));
        ASSERT_EQ(file->take(offset, 100000 - offset), MappedFile::Result::done);
        bool same = true;
        for (std::size_t i = 0; i < 100000 - offset; ++i) same = same && file->data()[i] == byteAt(offset + i);
        EXPECT_TRUE(same) << offset;
        EXPECT_TRUE(file->touch(0, 100000 - offset));
    }
}

TEST_F(Mapping, TakesNothingBeyondTheEndAndNothingTwice) {
    const auto file = MappedFile::open(put(100));
    EXPECT_EQ(file->take(0, 101), MappedFile::Result::unreadable);
    EXPECT_EQ(file->take(101, 1), MappedFile::Result::unreadable);
    EXPECT_EQ(file->take(~std::uint64_t{0}, 100), MappedFile::Result::unreadable);
    EXPECT_EQ(file->take(0, 0), MappedFile::Result::unreadable);
    EXPECT_EQ(file->data(), nullptr);
    EXPECT_EQ(file->take(0, 100), MappedFile::Result::done);
    EXPECT_EQ(file->take(0, 100), MappedFile::Result::unreadable);
    EXPECT_EQ(file->data()[99], byteAt(99));
    EXPECT_FALSE(file->touch(50, 51));
}

TEST_F(Mapping, OpensRegularFilesOnly) {
    EXPECT_EQ(MappedFile::open(folder / "none"), nullptr);
    EXPECT_EQ(MappedFile::open(folder.path()), nullptr);
    EXPECT_EQ(MappedFile::open("/dev/zero"), nullptr);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(MappedFile::open(path), nullptr);
}

TEST_F(Mapping, AReplacedFileStaysForItsReaders) {
    const auto file = MappedFile::open(put(100000));
    ASSERT_EQ(file->take(0, 100000), MappedFile::Result::done);
    const std::uint8_t other = 0;
    ASSERT_TRUE(writeFile(path, &other, 1));
    EXPECT_TRUE(file->touch(0, 100000));
    EXPECT_EQ(file->data()[99999], byteAt(99999));
}

TEST_F(Mapping, AFileThatWasCutShortReadsAsZerosOnceItWasTouched) {
    const auto file = MappedFile::open(put(100000));
    ASSERT_EQ(file->take(44, 90000), MappedFile::Result::done);
    if (!file->isMapped()) GTEST_SKIP() << "files of this folder are copied";
    std::filesystem::resize_file(path, 5000);
    EXPECT_FALSE(file->touch(0, 90000));
    EXPECT_EQ(std::count(file->data(), file->data() + 90000, 0), 90000);
}

TEST_F(Mapping, AFileOfNoDiskIsCopied) {
    const char* const made = "/sys/kernel/btf/vmlinux";
    const auto file = MappedFile::open(made);
    if (file == nullptr || file->size() < 5000) GTEST_SKIP() << "no such file here";
    Bytes bytes(5000);
    ASSERT_TRUE(file->read(0, bytes.data(), bytes.size()));
    ASSERT_EQ(file->take(0, 5000), MappedFile::Result::done);
    EXPECT_FALSE(file->isMapped());
    EXPECT_EQ(std::memcmp(file->data(), bytes.data(), 5000), 0);
    EXPECT_TRUE(file->touch(0, 5000));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
long faults() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

TEST_F(Mapping, ReadingWhatWasTouchedFaultsNoMore) {
    constexpr std::size_t size = 4 << 20;
    const auto file = MappedFile::open(put(size));
    ASSERT_EQ(file->take(44, size - 44), MappedFile::Result::done);
    file->prefetch();
    ASSERT_TRUE(file->touch(0, size - 44));
    const long before = faults();
    unsigned sum = 0;
    for (std::size_t i = 0; i < size - 44; i += 64) sum += file->data()[i];
    EXPECT_LE(faults() - before, 2) << sum;  // of a thousand pages; the test itself may take one
}
#endif

}  // namespace
}  // namespace vantoric::platform
