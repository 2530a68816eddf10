#include "engine/wave_worker.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
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
#include "tests/engine/engine_rig.h"

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
        for (int i = 0; i < cycleSamples; ++i)
            waves[static_cast<std::size_t>(oscillator)].samples[static_cast<std::size_t>(i)] =
                i < cycleSamples / 2 ? 9000 : -9000;
    }
    bool levelsOf(int oscillator) {
        for (const auto sample : waves[static_cast<std::size_t>(oscillator)].samples)
            if (sample != 0 && sample != 9000 && sample != -9000) return true;
        return false;
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
    std::array<CustomWave, layerCount * oscillatorCount> waves;
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
    EXPECT_EQ(library.addInstance(), 1);
    EXPECT_EQ(library.addInstance(), 2);
    EXPECT_TRUE(library.load(test::sharedDataFolder().path(), dialogs, go));
    library.removeInstance();
    EXPECT_TRUE(library.loaded());
    library.removeInstance();
    EXPECT_FALSE(library.loaded());
    EXPECT_EQ(library.addInstance(), 1);
    library.removeInstance();
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
                library.addInstance();
                library.load(folder, dialogs, go);
                if (library.store().wave(vaTriangleSaw) == nullptr) ++without;
                library.removeInstance();
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
