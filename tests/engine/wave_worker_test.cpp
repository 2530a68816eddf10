#include "engine/wave_worker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "base/engine_access.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/wave_library.h"
#include "parameters/parameter_model.h"
#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "sound/kernels.h"
#include "tests/base/failing_allocation.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

// A worker with the memory of twelve oscillators that no voice reads.
struct Worker : ::testing::Test {
    Worker() : worker(flags, library, messages, parameters, all()) { test::sharedDataFolder(); }

    AllOscillators all() {
        AllOscillators oscillators;
        for (std::size_t i = 0; i < oscillators.size(); ++i) oscillators[i] = {&samples[i], &waves[i]};
        return oscillators;
    }
    // A square wave as it comes from a patch: frame 0 of level 0 alone.
    void giveSquare(int oscillator) {
        waves[static_cast<std::size_t>(oscillator)].forget();
        for (int i = 0; i < cycleSamples; ++i)
            waves[static_cast<std::size_t>(oscillator)].cycle[static_cast<std::size_t>(i)] = i < cycleSamples / 2 ? 9000 : -9000;
    }
    bool levelsOf(int oscillator) {
        const std::int16_t* const made = waves[static_cast<std::size_t>(oscillator)].samples();
        if (made == nullptr) return false;
        return std::any_of(made, made + sizeof(CustomWave) / 2,
                           [](int sample) { return sample != 0 && sample != 9000 && sample != -9000; });
    }
    bool idle() const { return !flags.rebuildRequested.isSet() && !flags.rebuildCancel.isSet() && !flags.rebuildRunning.isSet(); }
    void waitFor(const Flag& flag, bool set) {
        for (int i = 0; i < 5000 && flag.isSet() != set; ++i) platform::sleepMilliseconds(1);
    }

    EngineFlags flags;
    Messages messages;
    WaveLibrary library;
    ParameterModel parameters;
    std::array<Sample, layerCount * oscillatorCount> samples;
    std::array<CustomWaveSlot, layerCount * oscillatorCount> waves;
    WaveWorker worker;
};

TEST_F(Worker, RebuildsWhatIsAskedForAndClearsTheFlags) {
    giveSquare(0);
    giveSquare(11);
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_TRUE(levelsOf(0));
    EXPECT_TRUE(levelsOf(11));
    EXPECT_TRUE(idle());
}

TEST_F(Worker, OscillatorsOfTheSameCycleShareOneWave) {
    giveSquare(2);
    giveSquare(3);
    giveSquare(7);
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_EQ(waves[2].samples(), waves[3].samples());
    EXPECT_EQ(waves[2].samples(), waves[7].samples());
    EXPECT_NE(waves[2].samples(), waves[0].samples());
    EXPECT_EQ(waves[0].samples(), waves[11].samples()) << "both were never given one";
}

TEST_F(Worker, ACycleThatHardlyDiffersFromTheOneBeforeTakesItsWave) {
    giveSquare(5);
    giveSquare(6);
    waves[6].cycle[100] += 2;
    giveSquare(8);
    waves[8].cycle[100] += 2;
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_EQ(waves[6].samples(), waves[5].samples());
    EXPECT_NE(waves[8].samples(), waves[5].samples()) << "the one before is another";
}

TEST_F(Worker, ARequestLeavesWhatIsBuiltAsItIs) {
    giveSquare(5);
    flags.rebuildRequested.set();
    worker.poll();
    const CustomCycle made = waves[5].cycle;
    const std::int16_t* const before = waves[5].samples();
    giveSquare(6);
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_EQ(waves[5].cycle, made);
    EXPECT_EQ(waves[5].samples(), before);
    EXPECT_EQ(waves[6].samples(), before) << "it was given the same cycle";
}

TEST_F(Worker, WhatAFailedLoadTookBackIsMadeUpForOnceTheEngineIsFree) {
    giveSquare(3);
    flags.engineLocked.set();
    flags.rebuildOwed.set();
    flags.rebuildCancel.set();
    worker.poll();
    EXPECT_FALSE(levelsOf(3)) << "a load is at work";
    {
        EngineAccess access(flags, platform::sleepMilliseconds);
        const EngineHold hold(access, HoldFor::waves);
        worker.poll();
        EXPECT_FALSE(levelsOf(3)) << "another one is";
    }
    worker.poll();
    EXPECT_TRUE(levelsOf(3));
    EXPECT_FALSE(flags.rebuildOwed.isSet());
    EXPECT_TRUE(idle());
}

TEST_F(Worker, ASampleIsSilentUntilItsLevelsAreMade) {
    ASSERT_TRUE(samples[4].allocate(5000));
    samples[4].length = 5000;
    samples[4].levelsPending.set();
    flags.rebuildRequested.set();
    flags.rebuildCancel.set();
    worker.poll();
    EXPECT_TRUE(samples[4].levelsPending.isSet());
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_FALSE(samples[4].levelsPending.isSet());
}

TEST_F(Worker, DoesNothingUnasked) {
    giveSquare(0);
    worker.poll();
    EXPECT_FALSE(levelsOf(0));
    EXPECT_TRUE(idle());
}

TEST_F(Worker, BuildsNothingWhileALoadHoldsTheEngine) {
    giveSquare(0);
    flags.engineLocked.set();
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_FALSE(levelsOf(0));
    EXPECT_TRUE(flags.rebuildRequested.isSet());
    flags.engineLocked.clear();
    worker.poll();
    EXPECT_TRUE(levelsOf(0));
}

TEST_F(Worker, GivesUpAtOnceWhenCancelled) {
    giveSquare(0);
    flags.rebuildRequested.set();
    flags.rebuildCancel.set();
    worker.poll();
    EXPECT_FALSE(levelsOf(0));
    EXPECT_TRUE(idle());
}

TEST_F(Worker, ACancelThatMetNoRebuildDoesNotStopTheNext) {
    giveSquare(0);
    flags.rebuildCancel.set();
    worker.poll();
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_TRUE(levelsOf(0));
}

TEST_F(Worker, ARequestDuringARebuildCancelsItAndAllBeginsAnew) {
    giveSquare(11);
    flags.rebuildRequested.set();
    worker.rebuild();
    EXPECT_TRUE(flags.rebuildCancel.isSet());
    EXPECT_FALSE(levelsOf(11));
    worker.poll();  // the end of the one that was cancelled
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_TRUE(levelsOf(11));
    EXPECT_TRUE(idle());
}

TEST_F(Worker, TheLastOfManyRequestsIsServedWhole) {
    for (int oscillator = 0; oscillator < 12; ++oscillator) giveSquare(oscillator);
    worker.start();
    waitFor(flags.audioMuted, false);
    for (int round = 0; round < 5; ++round) {
        flags.rebuildRequested.set();
        waitFor(flags.rebuildRequested, false);
    }
    for (int i = 0; i < 5000 && !idle(); ++i) platform::sleepMilliseconds(1);
    worker.stop();
    for (int oscillator = 0; oscillator < 12; ++oscillator) EXPECT_TRUE(levelsOf(oscillator)) << oscillator;
}

TEST_F(Worker, StartsWithCleanFlagsUnmutesWithTheBanksAndStops) {
    for (Flag* flag : {&flags.rebuildCancel, &flags.rebuildRunning, &flags.workerStop, &flags.workerStopped, &flags.audioMuted})
        flag->set();
    worker.start();
    waitFor(flags.audioMuted, false);
    EXPECT_FALSE(flags.audioMuted.isSet());
    EXPECT_FALSE(flags.bootPending.isSet());
    EXPECT_TRUE(library.loaded());
    giveSquare(3);
    flags.rebuildRequested.set();
    waitFor(flags.rebuildRequested, false);
    waitFor(flags.rebuildRunning, false);
    worker.stop();
    EXPECT_TRUE(levelsOf(3));
    EXPECT_TRUE(flags.workerStopped.isSet());
    EXPECT_FALSE(flags.rebuildRunning.isSet());
}

TEST_F(Worker, SleepsUntilItIsRung) {
    worker.start();
    ASSERT_TRUE(worker.waitForWaves(60000));
    const auto timesWoken = [] {
        long sum = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::ifstream status(task.path() / "status");
            for (std::string line; std::getline(status, line);)
                if (line.starts_with("voluntary_ctxt_switches:") && task.path().filename() != std::to_string(getpid()))
                    sum += std::stol(line.substr(24));
        }
        return sum;
    };
    platform::sleepMilliseconds(100);  // what it does at the start is done
    const long before = timesWoken();
    platform::sleepMilliseconds(500);
    EXPECT_LE(timesWoken() - before, 10) << "a look every 10 ms would be 50";
    giveSquare(1);
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(60000));
    EXPECT_TRUE(levelsOf(1));
}

TEST_F(Worker, WhoeverWaitsForWavesGetsThemBuiltOrItsTime) {
    EXPECT_FALSE(worker.waitForWaves(1)) << "the banks are not loaded";
    worker.start();
    EXPECT_TRUE(worker.waitForWaves(60000));
    for (int round = 0; round < 20; ++round) {
        giveSquare(round % 12);
        flags.rebuildRequested.set();
        ASSERT_TRUE(worker.waitForWaves(60000));
        ASSERT_TRUE(levelsOf(round % 12));
    }
    worker.stop();
    flags.rebuildRequested.set();
    EXPECT_FALSE(worker.waitForWaves(1)) << "nobody is at work";
}

TEST_F(Worker, AllocationsThatFailEndNeitherThreadNorProcess) {
    worker.start();
    ASSERT_TRUE(worker.waitForWaves(60000));
    giveSquare(3);
    test::throwingAllocation = sizeof(CustomWave);
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(60000));
    test::throwingAllocation = 0;
    EXPECT_FALSE(levelsOf(3)) << "silent";
    const std::vector<Message> told = messages.take();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].title, "Error WtoOs");
    EXPECT_EQ(told[0].text, "Not enought memory.");
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(60000));
    EXPECT_TRUE(levelsOf(3)) << "the next request builds it";
    worker.stop();
    EXPECT_TRUE(flags.workerStopped.isSet());
}

TEST_F(Worker, KnowsTheBanksThatAPatchPlays) {
    for (const BankPart& part : banksInUse(parameters)) {
        EXPECT_EQ(part.index, 0);
        EXPECT_EQ(part.frame, BankPart::allFrames);
    }
    const auto set = [&](int number, int row) { parameters.writeRaw(number, listValue(row)); };
    const auto first = [&] { return banksInUse(parameters)[0]; };
    set(parameter::WTWave1, 35);
    EXPECT_EQ(first().index, 35);
    set(parameter::SynType1, hypersawType);
    set(parameter::SSWave1, 2);
    EXPECT_EQ(first().index, 2);
    EXPECT_TRUE(first().isSsList);
    set(parameter::SSWave1, 7);
    EXPECT_EQ(first().index, vaSquareImpulse);
    EXPECT_EQ(first().frame, 0);
    set(parameter::SSWave1, 9);
    EXPECT_EQ(first().index, BankPart::none) << "computed";
    set(parameter::SynType1, analogType);
    set(parameter::AnaWave1, 18);
    EXPECT_EQ(first().index, elAlpha2);
    EXPECT_EQ(first().frame, 64);
    for (const int type : {noiseType, sampleType, customWaveType}) {
        set(parameter::SynType1, type);
        EXPECT_EQ(first().index, BankPart::none) << type;
    }
}

TEST_F(Worker, KnowsTheCycleThatEachStackReads) {
    struct Row {
        int ssWave, wave, frame;
    };
    constexpr int none = BankPart::none, whole = BankPart::allFrames;
    constexpr Row rows[] = {{3, vaTriangleSaw, 63},  {4, vaTriangleSaw, 63}, {5, vaTriangleSaw, 63}, {6, vaTriangleSaw, 63},
                            {7, vaSquareImpulse, 0}, {8, noNoisySaw, 127},   {9, none, whole},       {10, vaTriangleSaw, 63},
                            {11, noNoisySaw, 127},   {12, none, whole},      {127, none, whole}};
    parameters.writeRaw(parameter::SynType1, listValue(hypersawType));
    for (const Row& row : rows) {
        parameters.writeRaw(parameter::SSWave1, listValue(row.ssWave));
        const BankPart part = banksInUse(parameters)[0];
        EXPECT_EQ(part.index, row.wave) << row.ssWave;
        EXPECT_EQ(part.frame, row.frame) << row.ssWave;
        EXPECT_FALSE(part.isSsList) << row.ssWave;
    }
}

TEST(WaveChoices, AreTheTypesAndTheThreeListsOfWavesOfAllLayers) {
    int count = 0;
    for (int index = -1; index <= parameterCount; ++index) count += choosesWave(index);
    EXPECT_EQ(count, 4 * oscillatorCount * layerCount);
    EXPECT_TRUE(choosesWave(hostIndex(parameter::WTWave1 + 2, 3)));
    EXPECT_TRUE(choosesWave(parameter::AnaWave1));
    EXPECT_FALSE(choosesWave(parameter::Pw1));
    EXPECT_FALSE(choosesWave(parameter::Volume));
}

TEST_F(Worker, StopsWithoutEverHavingStarted) {
    worker.stop();
    EXPECT_FALSE(flags.workerStopped.isSet());
}

TEST_F(Worker, AHoldKeepsEveryoneAwayAndAsksAgainForTheRebuildItStopped) {
    flags.rebuildRequested.set();
    {
        EngineAccess access(flags, platform::sleepMilliseconds);
        const EngineHold hold(access, HoldFor::waves);
        EXPECT_TRUE(flags.engineLocked.isSet());
        EXPECT_TRUE(idle());
    }
    EXPECT_FALSE(flags.engineLocked.isSet());
    EXPECT_TRUE(flags.rebuildRequested.isSet());
}

TEST_F(Worker, AHoldAsksForNoRebuildThatNobodyWanted) {
    {
        EngineAccess access(flags, platform::sleepMilliseconds);
        const EngineHold hold(access, HoldFor::waves);
    }
    EXPECT_FALSE(flags.rebuildRequested.isSet());
}

int slept = 0;
void countSleep(int milliseconds) { slept += milliseconds; }

TEST_F(Worker, AHoldsWaitsAreBounded) {
    slept = 0;
    flags.engineLocked.set();
    flags.audioRunning.set();
    flags.rebuildRunning.set();
    EngineAccess access(flags, countSleep);
    const EngineHold hold(access, HoldFor::waves);
    EXPECT_EQ(slept, 51 * 100 + 1000 + 1000);
    EXPECT_FALSE(flags.rebuildRunning.isSet());
    EXPECT_FALSE(flags.audioRunning.isSet());
}

TEST_F(Worker, TheLastInstanceEmptiesTheLibrary) {
    const Flag go;
    {
        const WaveLibrary::Membership first(library);
        EXPECT_EQ(first.number(), 1);
        {
            const WaveLibrary::Membership second(library);
            EXPECT_EQ(second.number(), 2);
            EXPECT_TRUE(library.load(test::sharedDataFolder().path(), messages, go));
        }
        EXPECT_TRUE(library.loaded());
    }
    EXPECT_FALSE(library.loaded());
    EXPECT_EQ(WaveLibrary::Membership(library).number(), 1);
}

TEST_F(Worker, AWaveThatABlockStillReadsIsKeptThoughALoadHasClearedTheMarkOfTheBlock) {
    giveSquare(0);
    flags.rebuildRequested.set();
    worker.poll();
    const std::weak_ptr<const CustomWave> old = waves[0].wave();
    const auto load = [this](int value) {
        EngineAccess access(flags, [](int) {});
        const EngineHold hold(access, HoldFor::waves);  // clears `audioRunning` by force
        for (int i = 0; i < cycleSamples; ++i) {
            for (CustomWaveSlot& wave : waves) wave.cycle[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i % value);
        }
        for (CustomWaveSlot& wave : waves) wave.forget();
    };
    {
        const Passes::Scope block(flags.blockPasses);
        flags.audioRunning.set();
        load(500);
        flags.rebuildRequested.set();
        worker.poll();
        EXPECT_TRUE(waves[0].isBuilt());
        EXPECT_FALSE(flags.audioRunning.isSet());
        EXPECT_FALSE(old.expired());
    }
    load(700);
    flags.rebuildRequested.set();
    worker.poll();
    EXPECT_TRUE(old.expired()) << "the block is out";
}

TEST_F(Worker, AnInstanceWhoseConstructionFailsLeavesTheCountRight) {
    struct Instance {
        explicit Instance(WaveLibrary& banks) : membership(banks) { throw std::bad_alloc(); }
        WaveLibrary::Membership membership;
    };
    EXPECT_THROW(Instance failing(library), std::bad_alloc);
    EXPECT_EQ(WaveLibrary::Membership(library).number(), 1);
}

// A bank of some frames (1 or 64), sample n of which is n mod 30000.
std::vector<std::uint8_t> smallBank(int frames = 1) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(bankHeaderBytes) +
                                    static_cast<std::size_t>(frames) * bankFrameBytes);
    bytes[16] = 16;
    bytes[20] = bytes[22] = 1;
    bytes[34] = 16;
    const int size = frames * bankFrameBytes;
    bytes[41] = size >> 8 & 0xff;
    bytes[42] = static_cast<std::uint8_t>(size >> 16);
    for (std::size_t i = 0; i < static_cast<std::size_t>(size) / 2; ++i) {
        bytes[bankHeaderBytes + 2 * i] = i % 30000 & 0xff;
        bytes[bankHeaderBytes + 2 * i + 1] = static_cast<std::uint8_t>(i % 30000 >> 8);
    }
    return bytes;
}

// A library with one bank of 64 frames in the entry of the first wave.
struct Library : ::testing::Test {
    Library() {
        const auto bank = smallBank(64);
        EXPECT_TRUE(platform::writeFile(path, bank.data(), bank.size()));
    }
    bool load() { return library.load(folder.path(), messages, go); }
    // How many pages of so many samples are in this process's view, as /proc/self/pagemap tells.
    static int residentPages(const std::int16_t* samples, std::size_t count) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const auto first = reinterpret_cast<std::size_t>(samples) / page;
        const auto last = (reinterpret_cast<std::size_t>(samples + count) - 1) / page;
        std::vector<std::uint64_t> entries(last - first + 1);
        const int map = open("/proc/self/pagemap", O_RDONLY);
        EXPECT_EQ(pread(map, entries.data(), entries.size() * 8, static_cast<off_t>(first * 8)),
                  static_cast<ssize_t>(entries.size() * 8));
        close(map);
        return static_cast<int>(std::count_if(entries.begin(), entries.end(), [](auto entry) { return entry >> 63 != 0; }));
    }

    platform::ScratchFolder folder;
    const std::string path = folder / "VA_Triangle_Saw.va";
    Messages messages;
    const Flag go;
    WaveLibrary library;
    const WaveLibrary::Membership membership{library};
};

TEST_F(Library, ShowsTheBanksAsTheyLieInTheirFiles) {
    ASSERT_TRUE(load());
    const BankWave* const wave = library.store().wave(vaTriangleSaw);
    ASSERT_NE(wave, nullptr);
    EXPECT_EQ(wave->frames, 64);
    for (const std::size_t i : {0u, 2047u, 29999u, 30000u, 1048575u}) EXPECT_EQ(wave->samples[i], i % 30000) << i;
    EXPECT_EQ(library.store().rowCycle(0, 2), library.store().cycle(vaTriangleSaw, 63, 2));
}

TEST_F(Library, FetchesWhatAPatchPlaysAheadOfItsVoices) {
    ASSERT_TRUE(load());
    const BankPart whole{vaTriangleSaw, false}, missing{vaSquareImpulse, false}, nothing;
    library.touch(std::array{missing, nothing, whole});
    EXPECT_EQ(residentPages(library.store().wave(vaTriangleSaw)->samples, 64u * mipLevels * cycleSamples), 513);
}

TEST_F(Library, FetchesSingleFramesAtAllLevels) {
    ASSERT_TRUE(load());
    library.touch(std::array{BankPart{vaTriangleSaw, false, 63}, BankPart{vaTriangleSaw, false, 900}});
    for (int level = 0; level < mipLevels; ++level)
        EXPECT_EQ(residentPages(library.store().cycle(vaTriangleSaw, 63, level), cycleSamples), 2) << level;
}

TEST_F(Library, AFileThatIsCutShortFallsSilentAtTheNextLoad) {
    ASSERT_TRUE(load());
    std::filesystem::resize_file(path, 4096);
    library.touch(std::array{BankPart{vaTriangleSaw, false}});
    const std::int16_t* const samples = library.store().wave(vaTriangleSaw)->samples;
    EXPECT_TRUE(std::all_of(samples, samples + 64u * mipLevels * cycleSamples, [](int sample) { return sample == 0; }));
}

TEST_F(Library, WhatCanNotBeReadInPlaceIsReadAndMoved) {
    auto bank = smallBank(64);
    bank[16] = 17;  // the data begin at an odd place
    bank.insert(bank.begin() + bankHeaderBytes, 0);
    ASSERT_TRUE(platform::writeFile(path, bank.data(), bank.size()));
    ASSERT_TRUE(load());
    ASSERT_NE(library.store().wave(vaTriangleSaw), nullptr);
    EXPECT_EQ(library.store().wave(vaTriangleSaw)->samples[12345], 12345);
    library.touch(std::array{BankPart{vaTriangleSaw, false}});
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(Library, ShortMemoryShowsABoxAndLeavesTheEntryEmpty) {
    auto header = smallBank();
    header.resize(bankHeaderBytes);
    header[41] = 0x80;
    header[42] = header[43] = 0xff;
    ASSERT_TRUE(platform::writeFile(path, header.data(), header.size()));
    std::filesystem::resize_file(path, 0xffff8000ull + bankHeaderBytes);  // almost all of it a hole
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit tight{std::min<rlim_t>(before.rlim_max, 2u << 30), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
    const bool isLoaded = load();
    setrlimit(RLIMIT_AS, &before);
    EXPECT_TRUE(isLoaded);
    EXPECT_EQ(library.store().wave(vaTriangleSaw), nullptr);
    const std::vector<Message> told = messages.take();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].title, "Error WtoOs");
    EXPECT_EQ(told[0].text, "Not enought memory.");
}
#endif

TEST_F(Worker, AnInstanceThatComesAsTheLastOneGoesHasItsBanks) {
    const std::string folder = test::sharedDataFolder().path() + "banks/";
    std::filesystem::create_directories(folder);
    const auto bank = smallBank();
    ASSERT_TRUE(platform::writeFile(folder + "VA_Triangle_Saw.va", bank.data(), bank.size()));
    const Flag go;
    std::atomic<int> without{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                const WaveLibrary::Membership membership(library);
                library.load(folder, messages, go);
                if (library.store().wave(vaTriangleSaw) == nullptr) ++without;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(without, 0);
    EXPECT_EQ(library.store().wave(vaTriangleSaw), nullptr);
}

TEST_F(Worker, ALibraryThatIsToldToStopIsNotLoaded) {
    Flag stop;
    stop.set();
    EXPECT_FALSE(library.load(test::sharedDataFolder().path(), messages, stop));
    EXPECT_FALSE(library.loaded());
    stop.clear();
    EXPECT_TRUE(library.load(test::sharedDataFolder().path(), messages, stop));
}

TEST_F(Library, AWaveThatIsChosenOutsideTheAudioThreadIsFetchedByTheWorker) {
    EngineFlags flags;
    ParameterModel parameters;
    std::array<Sample, layerCount * oscillatorCount> samples;
    std::array<CustomWaveSlot, layerCount * oscillatorCount> slots;
    AllOscillators oscillators;
    for (std::size_t i = 0; i < oscillators.size(); ++i) oscillators[i] = {&samples[i], &slots[i]};
    for (int i = 0; i < layerCount * oscillatorCount; ++i)
        parameters.writeRaw(hostIndex(parameter::SynType1 + i % oscillatorCount, i / oscillatorCount), listValue(noiseType));
    ASSERT_TRUE(load());
    WaveWorker worker(flags, library, messages, parameters, oscillators);
    worker.start();
    ASSERT_TRUE(worker.waitForWaves(60000));
    const std::int16_t* const bank = library.store().wave(vaTriangleSaw)->samples;
    constexpr std::size_t whole = 64u * mipLevels * cycleSamples;
    EXPECT_LE(residentPages(bank, whole), 40) << "what nobody plays takes no memory";
    parameters.writeRaw(parameter::SynType1, listValue(wavetableType));
    worker.wavesChosen();
    for (int i = 0; i < 5000 && residentPages(bank, whole) < 513; ++i) platform::sleepMilliseconds(1);
    EXPECT_EQ(residentPages(bank, whole), 513);
}

}  // namespace
}  // namespace vantoric
