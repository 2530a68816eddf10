#include "engine/wave_worker.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include "base/engine_hold.h"
#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/wave_library.h"
#include "parameters/parameter_model.h"
#include "platform/files.h"
#include "platform/recorded_dialogs.h"
#include "platform/thread.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/base/failing_allocation.h"

namespace vantoric {
namespace {

// A worker with the memory of twelve oscillators that no voice reads.
struct Worker : ::testing::Test {
    Worker() : worker(flags, library, dialogs, parameters, all()) { test::sharedDataFolder(); }

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
    platform::RecordedDialogs dialogs;
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
        const EngineHold hold(flags, platform::sleepMilliseconds);
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
    ASSERT_TRUE(worker.waitForWaves(5000));
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
    EXPECT_LE(timesWoken() - before, 2);
    giveSquare(1);
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(5000));
    EXPECT_TRUE(levelsOf(1));
}

TEST_F(Worker, WhoeverWaitsForWavesGetsThemBuiltOrItsTime) {
    EXPECT_FALSE(worker.waitForWaves(1)) << "the banks are not loaded";
    worker.start();
    EXPECT_TRUE(worker.waitForWaves(5000));
    for (int round = 0; round < 20; ++round) {
        giveSquare(round % 12);
        flags.rebuildRequested.set();
        ASSERT_TRUE(worker.waitForWaves(5000));
        ASSERT_TRUE(levelsOf(round % 12));
    }
    worker.stop();
    flags.rebuildRequested.set();
    EXPECT_FALSE(worker.waitForWaves(1)) << "nobody is at work";
}

TEST_F(Worker, AllocationsThatFailEndNeitherThreadNorProcess) {
    worker.start();
    ASSERT_TRUE(worker.waitForWaves(5000));
    giveSquare(3);
    test::throwingAllocation = sizeof(CustomWave);
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(5000));
    test::throwingAllocation = 0;
    EXPECT_FALSE(levelsOf(3)) << "silent";
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, "Error WtoOs");
    EXPECT_EQ(dialogs.boxes()[0].text, "Not enought memory.");
    flags.rebuildRequested.set();
    EXPECT_TRUE(worker.waitForWaves(5000));
    EXPECT_TRUE(levelsOf(3)) << "the next request builds it";
    worker.stop();
    EXPECT_TRUE(flags.workerStopped.isSet());
}

TEST_F(Worker, ABoxThatFailsEndsTheThreadNeither) {
    struct Failing final : platform::RecordedDialogs {
        void message(const std::string&, const std::string&) override { throw std::runtime_error("no box"); }
    } failing;
    WaveWorker other(flags, library, failing, parameters, all());
    giveSquare(3);
    test::throwingAllocation = sizeof(CustomWave);
    flags.rebuildRequested.set();
    other.poll();
    test::throwingAllocation = 0;
    EXPECT_TRUE(idle());
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

TEST_F(Worker, StopsWithoutEverHavingStarted) {
    worker.stop();
    EXPECT_FALSE(flags.workerStopped.isSet());
}

TEST_F(Worker, AHoldKeepsEveryoneAwayAndAsksAgainForTheRebuildItStopped) {
    flags.rebuildRequested.set();
    {
        const EngineHold hold(flags, platform::sleepMilliseconds);
        EXPECT_TRUE(flags.engineLocked.isSet());
        EXPECT_TRUE(idle());
    }
    EXPECT_FALSE(flags.engineLocked.isSet());
    EXPECT_TRUE(flags.rebuildRequested.isSet());
}

TEST_F(Worker, AHoldAsksForNoRebuildThatNobodyWanted) {
    {
        const EngineHold hold(flags, platform::sleepMilliseconds);
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
    const EngineHold hold(flags, countSleep);
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
            EXPECT_TRUE(library.load(test::sharedDataFolder().path(), dialogs, go));
        }
        EXPECT_TRUE(library.loaded());
    }
    EXPECT_FALSE(library.loaded());
    EXPECT_EQ(WaveLibrary::Membership(library).number(), 1);
}

TEST_F(Worker, AnInstanceWhoseConstructionFailsLeavesTheCountRight) {
    struct Instance {
        explicit Instance(WaveLibrary& banks) : membership(banks) { throw std::bad_alloc(); }
        WaveLibrary::Membership membership;
    };
    EXPECT_THROW(Instance failing(library), std::bad_alloc);
    EXPECT_EQ(WaveLibrary::Membership(library).number(), 1);
}

// A bank of one frame.
std::vector<std::uint8_t> smallBank() {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(bankHeaderBytes) + bankFrameBytes);
    bytes[16] = 16;
    bytes[20] = bytes[22] = 1;
    bytes[34] = 16;
    bytes[41] = bankFrameBytes >> 8 & 0xff;
    bytes[42] = bankFrameBytes >> 16;
    return bytes;
}

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
                library.load(folder, dialogs, go);
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
    EXPECT_FALSE(library.load(test::sharedDataFolder().path(), dialogs, stop));
    EXPECT_FALSE(library.loaded());
    stop.clear();
    EXPECT_TRUE(library.load(test::sharedDataFolder().path(), dialogs, stop));
}

}  // namespace
}  // namespace vantoric
