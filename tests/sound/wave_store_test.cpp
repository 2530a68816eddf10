#include "sound/wave_store.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <thread>

#include "base/random.h"
#include "sound/kernel_reads.h"

using namespace vantoric;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<unsigned char>;

void put32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (int k = 0; k < 4; ++k) bytes[at + static_cast<std::size_t>(k)] = static_cast<unsigned char>(value >> (8 * k));
}

// A bank of `frames` frames; sample n of the data is n mod 30000.
Bytes bankOf(std::uint32_t frames, std::uint32_t formatBytes = 16) {
    Bytes bytes(formatBytes + 28 + std::size_t{frames} * bankFrameBytes);
    put32(bytes, 16, formatBytes);
    bytes[20] = 1;
    bytes[22] = 1;
    bytes[34] = 16;
    put32(bytes, 40, frames * bankFrameBytes);
    for (std::size_t i = std::max<std::size_t>(formatBytes + 28, 44); i + 1 < bytes.size(); i += 2) {
        const auto value = static_cast<std::uint16_t>((i - formatBytes - 28) / 2 % 30000);
        bytes[i] = static_cast<unsigned char>(value);
        bytes[i + 1] = static_cast<unsigned char>(value >> 8);
    }
    return bytes;
}

class Banks : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("vantoric_banks_" + std::to_string(getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    fs::path write(const std::string& name, const Bytes& bytes) {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return folder / name;
    }
    void expectSkipped(const Bytes& bytes) {
        EXPECT_EQ(store.loadWaveFile(5, write("bank.va", bytes), false), WaveLoad::skipped);
        EXPECT_EQ(store.wave(5), nullptr);
    }

    fs::path folder;
    WaveStore store;
};

}  // namespace

TEST_F(Banks, AGoodFileBecomesAWave) {
    ASSERT_EQ(store.loadWaveFile(5, write("good.va", bankOf(3)), false), WaveLoad::loaded);
    const BankWave* wave = store.wave(5);
    ASSERT_NE(wave, nullptr);
    EXPECT_EQ(wave->frames, 3);
    EXPECT_EQ(wave->samples[12345], 12345);
    EXPECT_EQ(store.cycle(5, 2, 1), wave->samples + 5 * cycleSamples);
    EXPECT_EQ(store.wave(5, true), nullptr);
}

TEST_F(Banks, TheDataBeginWhereTheFormatChunkEnds) {
    ASSERT_EQ(store.loadWaveFile(0, write("long.va", bankOf(1, 18)), true), WaveLoad::loaded);
    EXPECT_EQ(store.wave(0, true)->samples[7], 7);
}

TEST_F(Banks, EveryFailedTestSkipsTheFile) {
    const auto changed = [](std::size_t at, unsigned char value) {
        Bytes bytes = bankOf(1);
        bytes[at] = value;
        return bytes;
    };
    expectSkipped(changed(20, 3));
    expectSkipped(changed(21, 1));
    expectSkipped(changed(22, 2));
    expectSkipped(changed(34, 8));
    expectSkipped(changed(40, 2));
    expectSkipped(changed(43, 1));  // more data than the file holds
    expectSkipped(changed(43, 255));
    expectSkipped(changed(19, 255));  // the data would begin far beyond the end
    Bytes empty = bankOf(1);
    put32(empty, 40, 0);
    expectSkipped(empty);
}

TEST_F(Banks, ATruncatedFileIsSkippedWhereverItEnds) {
    const Bytes whole = bankOf(1);
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{43}, std::size_t{44}, std::size_t{1000}, whole.size() - 1})
        expectSkipped(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
}

TEST_F(Banks, MissingFilesFoldersAndWrongIndicesAreSkipped) {
    EXPECT_EQ(store.loadWaveFile(5, folder / "none.va", false), WaveLoad::skipped);
    EXPECT_EQ(store.loadWaveFile(5, folder, false), WaveLoad::skipped);
    EXPECT_EQ(store.loadWaveFile(5, "/dev/zero", false), WaveLoad::skipped);
    const fs::path good = write("good.va", bankOf(1));
    EXPECT_EQ(store.loadWaveFile(-1, good, false), WaveLoad::skipped);
    EXPECT_EQ(store.loadWaveFile(128, good, false), WaveLoad::skipped);
    EXPECT_EQ(store.wave(-1), nullptr);
    EXPECT_EQ(store.wave(128), nullptr);
}

TEST_F(Banks, RandomBytesNeverGetThrough) {
    LinearCongruence chance{2024};
    const Bytes seed = bankOf(1);
    for (int round = 0; round < 300; ++round) {
        Bytes bytes(seed.begin(), seed.begin() + 44 + static_cast<std::ptrdiff_t>(chance.next() >> 20));
        const int changes = static_cast<int>(chance.next() >> 29);
        for (int k = 0; k < changes; ++k) bytes[(chance.next() >> 8) % 44] = static_cast<unsigned char>(chance.next() >> 24);
        expectSkipped(bytes);
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(chance.next() >> 24);
        expectSkipped(bytes);
    }
}

TEST_F(Banks, RandomHeadersKeepOrRefuseButNeverOverrun) {
    LinearCongruence chance{7};
    const Bytes seed = bankOf(2);
    for (int round = 0; round < 200; ++round) {
        Bytes bytes = seed;
        bytes[16 + (chance.next() >> 8) % 28] = static_cast<unsigned char>(chance.next() >> 24);
        if (store.loadWaveFile(6, write("mutant.va", bytes), false) != WaveLoad::loaded) continue;
        const BankWave* wave = store.wave(6);
        ASSERT_LE(wave->frames, 2);
        long sum = 0;
        for (std::size_t i = 0; i < cycleOffset(wave->frames, 0, mipLevels); ++i) sum += wave->samples[i];
        EXPECT_GE(sum, 0);
    }
}

TEST_F(Banks, AFailedReloadKeepsTheWave) {
    store.loadWaveFile(5, write("good.va", bankOf(1)), false);
    const BankWave* before = store.wave(5);
    EXPECT_EQ(store.loadWaveFile(5, write("bad.va", {1, 2, 3}), false), WaveLoad::skipped);
    EXPECT_EQ(store.wave(5), before);
}

TEST_F(Banks, AFolderOfBanksFillsBothListsAndTheRows) {
    write("VA_Triangle_Saw.va", bankOf(64));
    write("WT_Sine.va", bankOf(1));
    write("SS_3Saws.va", bankOf(2));
    const Flag stop;
    EXPECT_EQ(store.loadBanks(folder, stop), WaveLoad::loaded);
    EXPECT_EQ(store.wave(vaTriangleSaw)->frames, 64);
    EXPECT_EQ(store.wave(0, true)->frames, 2);
    EXPECT_EQ(store.wave(vaSquareImpulse), nullptr);
    EXPECT_EQ(store.rowCycle(0, 3), store.cycle(vaTriangleSaw, 63, 3));
    EXPECT_EQ(store.rowCycle(1, 0), nullptr);
}

TEST_F(Banks, ARowOfAShortWaveTakesItsLastFrame) {
    write("VA_Triangle_Saw.va", bankOf(2));
    const Flag stop;
    store.loadBanks(folder, stop);
    EXPECT_EQ(store.rowCycle(0, 7), store.cycle(vaTriangleSaw, 1, 7));
}

TEST_F(Banks, LoadingStopsBetweenFiles) {
    write("VA_Triangle_Saw.va", bankOf(1));
    Flag stop;
    stop.set();
    store.loadBanks(folder, stop);
    EXPECT_EQ(store.wave(vaTriangleSaw), nullptr);
}

TEST_F(Banks, ClearingEmptiesEveryEntryAndRow) {
    write("VA_Triangle_Saw.va", bankOf(1));
    const Flag stop;
    store.loadBanks(folder, stop);
    store.clear();
    EXPECT_EQ(store.wave(vaTriangleSaw), nullptr);
    EXPECT_EQ(store.rowCycle(0, 0), nullptr);
}

TEST_F(Banks, AWaveIsWholeAsSoonAsItIsSeen) {
    std::thread loader([&] {
        for (int frames = 1; frames <= 40; ++frames) {
            const std::vector<std::int16_t> samples(cycleOffset(frames, 0, mipLevels), static_cast<std::int16_t>(frames));
            store.setWave(vaTriangleSaw, false, samples.data(), frames);
            store.buildWaveRows();
        }
    });
    for (int seen = 0; seen < 40;) {
        const BankWave* wave = store.wave(vaTriangleSaw);
        if (wave == nullptr) continue;
        EXPECT_GE(wave->frames, seen);
        seen = wave->frames;
        EXPECT_EQ(wave->samples[cycleOffset(seen, 0, mipLevels) - 1], seen);
    }
    loader.join();
    EXPECT_EQ(store.rowCycle(0, 7)[2047], 40);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(Banks, AWaveThatDoesNotFitIntoMemoryIsReported) {
    Bytes header = bankOf(1);
    header.resize(44);
    put32(header, 40, 0xffff8000u);
    fs::resize_file(write("VA_Triangle_Saw.va", header), 0xffff8000ull + 44);  // almost all of it a hole
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit tight{std::min<rlim_t>(before.rlim_max, 2u << 30), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
    const Flag stop;
    EXPECT_EQ(store.loadBanks(folder, stop), WaveLoad::outOfMemory);
    setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(store.wave(vaTriangleSaw), nullptr);
}
#endif
