#include "base/engine_access.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace vantoric {
namespace {

int slept = 0;  // milliseconds
void countSleep(int milliseconds) { slept += milliseconds; }

std::unique_ptr<std::int16_t[]> memory() { return std::make_unique<std::int16_t[]>(4); }

struct TakingTheEngine : ::testing::Test {
    TakingTheEngine() { slept = 0; }
    EngineFlags flags;
    EngineAccess access{flags, countSleep};
};

TEST_F(TakingTheEngine, IsFreeAndLeavesTheFlagsClearWhileAllIsQuiet) {
    for (const HoldFor purpose : {HoldFor::waves, HoldFor::patch, HoldFor::settings}) {
        const EngineHold hold(access, purpose);
        EXPECT_TRUE(flags.engineLocked.isSet());
    }
    EXPECT_EQ(slept, 0);
    EXPECT_FALSE(flags.engineLocked.isSet() || flags.rebuildRequested.isSet() || flags.rebuildCancel.isSet());
}

TEST_F(TakingTheEngine, IsOneUsersTurnAtATime) {
    std::atomic<int> inside{0};
    std::atomic<bool> met{false};
    const auto work = [&] {
        for (int i = 0; i < 2000; ++i) {
            const EngineTurn turn(access);
            if (inside.fetch_add(1) != 0) met = true;
            const EngineHold hold(access, i % 2 == 0 ? HoldFor::waves : HoldFor::settings);
            std::this_thread::yield();  // into the arms of whoever does not wait
            inside.fetch_sub(1);
        }
    };
    std::array<std::thread, 3> threads;
    for (std::thread& thread : threads) thread = std::thread(work);
    for (std::thread& thread : threads) thread.join();
    EXPECT_FALSE(met);
    EXPECT_EQ(slept, 0) << "nobody finds the engine locked by another";
}

TEST_F(TakingTheEngine, SettingsLeaveAnEngineThatAFailedLoadLocked) {
    flags.engineLocked.set();
    flags.rebuildRunning.set();
    {
        const EngineHold hold(access, HoldFor::settings);
        EXPECT_TRUE(flags.engineLocked.isSet());
    }
    EXPECT_TRUE(flags.engineLocked.isSet()) << "silent until the next load";
    EXPECT_TRUE(flags.rebuildRunning.isSet()) << "the worker goes on";
    EXPECT_EQ(slept, 0);
}

TEST_F(TakingTheEngine, ALoadWaitsForALockThatWasLeftAndThenForcesIt) {
    flags.engineLocked.set();
    {
        const EngineHold hold(access, HoldFor::patch);
    }
    EXPECT_EQ(slept, 1000);
    EXPECT_FALSE(flags.engineLocked.isSet());
}

TEST_F(TakingTheEngine, ALockThatAnEndedHoldLeftIsTakenOverAtOnce) {
    {
        EngineHold hold(access, HoldFor::patch);
        hold.setStaysLocked(true);
    }
    EXPECT_TRUE(access.isLeftLocked());
    {
        const EngineHold hold(access, HoldFor::settings);
    }
    EXPECT_TRUE(access.isLeftLocked()) << "still silent until the next load";
    {
        const EngineHold hold(access, HoldFor::patch);
    }
    EXPECT_FALSE(access.isLeftLocked());
    EXPECT_FALSE(flags.engineLocked.isSet());
    EXPECT_EQ(slept, 0);
}

TEST_F(TakingTheEngine, AHoldWithinAHoldLeavesTheSilenceToTheOuterOne) {
    const EngineHold outer(access, HoldFor::settings);
    {
        flags.rebuildRequested.set();
        const EngineHold inner(access, HoldFor::waves);
        EXPECT_FALSE(flags.rebuildRequested.isSet()) << "but the worker gives way";
    }
    EXPECT_EQ(slept, 0);
    EXPECT_TRUE(flags.engineLocked.isSet());
    EXPECT_TRUE(flags.rebuildRequested.isSet());
}

TEST_F(TakingTheEngine, WhatNobodyReadsIsFreedAtOnce) {
    {
        const Passes::Scope over(flags.blockPasses);
    }
    const EngineHold hold(access, HoldFor::waves);
    access.retire(memory());
    access.retire(nullptr);
    EXPECT_EQ(access.retired(), 0u);
}

TEST_F(TakingTheEngine, WhatABlockMayReadIsKeptUntilTheBlockHasPassed) {
    for (Passes* reader : {&flags.blockPasses, &flags.workerPasses}) {
        std::optional<Passes::Scope> reading(std::in_place, *reader);
        flags.audioRunning.set();
        slept = 0;
        {
            const EngineHold hold(access, HoldFor::waves);
            EXPECT_EQ(slept, 1000) << "the flag fell by force, the reader reads on";
            access.retire(memory());
        }
        {
            const EngineTurn later(access);
        }
        EXPECT_EQ(access.retired(), 1u);
        reading.reset();
        {
            const Passes::Scope next(*reader);
        }
        {
            const EngineTurn later(access);
        }
        EXPECT_EQ(access.retired(), 0u);
    }
}

#ifndef NDEBUG
TEST(TakingTheEngineDeathTest, FromWithinTheBlockIsCaught) {
    EngineFlags flags;
    EngineAccess access{flags, countSleep};
    EXPECT_DEATH(
        {
            const AudioThreadCheck::Scope inside(access.audioThread());
            const EngineTurn turn(access);
        },
        "not from within the block");
}
#endif

}  // namespace
}  // namespace vantoric
