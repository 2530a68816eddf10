// Patches exchanged while a block renders, a worker reads waves and a window queues notes.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "base/numbers.h"
#include "platform/thread.h"
#include "tests/patch/patch_bench.h"

namespace vantoric {
namespace {

struct PatchThreads : ::testing::Test {
    PatchThreads() : bench(platform::sleepMilliseconds) {
        // No notes and no bookkeeping of calls here: layers hear no channel.
        for (int layer = 0; layer < layerCount; ++layer) quiet(layer);
    }
    void quiet(int layer) { bench.parameters.writeRaw(hostIndex(parameter::MidiSpli, layer), listValue(17)); }

    // What an audio block does with the flags, in between a look at everything that a load replaces.
    void block() {
        EngineFlags& flags = bench.state.flags;
        flags.audioRunning.set();
        if (!flags.engineLocked.isSet()) {
            bench.intake.drainMidiQueue(0);
            for (const Sample& sample : bench.samples) {
                for (int i = 0; i < sample.length; ++i) agree = agree && sample.levels[0][i] == sample.levels[4][i];
            }
        }
        flags.audioRunning.clear();
    }

    // What the wave worker does.
    void rebuild() {
        EngineFlags& flags = bench.state.flags;
        if (!flags.rebuildRequested.isSet()) return;
        flags.rebuildRunning.set();
        if (flags.rebuildRequested.isSet()) {
            flags.rebuildRequested.clear();
            for (int k = 0; k < chunk::waveCount && !flags.rebuildCancel.isSet(); ++k) {
                sum += static_cast<unsigned>(bench.customWaves[k][0] + bench.samples[k].length);
            }
            flags.rebuildCancel.clear();
        }
        flags.rebuildRunning.clear();
    }

    PatchBench bench;
    std::atomic<bool> stop{false};
    bool agree = true;
    unsigned sum = 0;
};

TEST_F(PatchThreads, LoadingKeepsEveryoneElseAway) {
    HandMadeChunk with, without;
    with.header(0, {500, 0, 500, 44100}).header(7, {300, 10, 20, 22050}).data(800, 3);
    for (HandMadeChunk* made : {&with, &without}) {
        for (int layer = 0; layer < layerCount; ++layer) made->parameter(hostIndex(parameter::MidiSpli, layer), listValue(17));
    }
    std::thread audio([this] {
        while (!stop) block();
    });
    std::thread worker([this] {
        while (!stop) rebuild();
    });
    std::thread window([this] {
        while (!stop) {
            bench.intake.enqueueMidi(0x90, 60, 100, 0);
            bench.parameters.setParameter(parameter::Cutoff1, 0.5f);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 200; ++round) {
        EXPECT_EQ(bench.load(round % 2 == 0 ? with.bytes : without.bytes), 1);
        EXPECT_GE(bench.save().size(), 55169u);
    }
    stop = true;
    audio.join();
    worker.join();
    window.join();
    EXPECT_TRUE(agree);
    EXPECT_TRUE(bench.told.boxes().empty());
    EXPECT_FALSE(bench.state.flags.engineLocked.isSet());
}

TEST_F(PatchThreads, WhatIsSavedDuringALoadIsOnePatchAndNotHalfOfTwo) {
    HandMadeChunk one, other;
    one.name("one").header(0, {500, 0, 500, 44100}).data(500, 3);
    other.name("other").header(0, {20, 0, 20, 44100}).data(20, 9);
    for (HandMadeChunk* made : {&one, &other})
        for (int layer = 0; layer < layerCount; ++layer) made->parameter(hostIndex(parameter::SynType1, layer), listValue(3));
    for (int i = 0; i < parameterCount; ++i) other.parameter(i, 0.25f);
    other.parameter(parameter::SynType1, listValue(3));
    std::vector<std::vector<std::uint8_t>> known;
    for (const HandMadeChunk* made : {&one, &other}) {
        EXPECT_EQ(bench.load(made->bytes), 1);
        known.push_back(bench.save());
    }
    std::thread loader([&] {
        for (int round = 0; round < 300; ++round) EXPECT_EQ(bench.load(round % 2 == 0 ? one.bytes : other.bytes), 1);
        stop = true;
    });
    std::thread reader([&] {
        while (!stop) {
            const std::string name = bench.program.getProgramName();
            EXPECT_TRUE(name == "one" || name == "other") << name;
        }
    });
    int saves = 0;
    while (!stop) {
        const std::vector<std::uint8_t> saved = bench.save();
        EXPECT_TRUE(saved == known[0] || saved == known[1]);
        ++saves;
    }
    loader.join();
    reader.join();
    EXPECT_GT(saves, 0);
}

// Also where the engine is not locked: between two steps of a command, or behind a load that is not yet over.
TEST_F(PatchThreads, SavingWaitsForWhoeverHasTheTurn) {
    std::atomic<bool> isSaved{false};
    std::vector<std::uint8_t> saved;
    std::thread saver;
    {
        const EngineTurn turn(bench.access);
        bench.program.setProgramName("half");
        saver = std::thread([&] {
            saved = bench.save();
            isSaved = true;
        });
        for (int i = 0; i < 200 && !isSaved; ++i) platform::sleepMilliseconds(1);
        EXPECT_FALSE(isSaved);
        bench.program.setProgramName("whole");
    }
    saver.join();
    EXPECT_EQ(std::string(&saved[1], &saved[6]), "whole");
}

}  // namespace
}  // namespace vantoric
