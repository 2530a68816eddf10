// Everything at once: one engine plays while parameters are edited, chunks loaded, waves rebuilt, texts asked
// for, and other engines come and go. What is looked at here is that nothing fails or hangs; the thread
// sanitizer looks at the rest.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "base/random.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
using test::EngineRig;
using Clock = std::chrono::steady_clock;

struct Threads : ::testing::Test {
    Threads() {
        rig.clearParameters();
        for (int layer = 0; layer < layerCount; ++layer) {
            rig.plainLayer(layer);
            for (int i = 0; i < oscillatorCount; ++i) rig.setList(par::SynType1 + i, 4, layer);
        }
        rig.audio.resetEngine();
    }

    // Repeats `work(number)` on a thread of its own until time is up.
    template <class Work>
    void repeat(Work work) {
        threads.emplace_back([this, work]() mutable {
            for (int i = 0; Clock::now() < end; ++i) work(i);
        });
    }
    void finish() {
        for (std::thread& thread : threads) thread.join();
    }

    void playBlock(int number) {
        rig.left.clear();
        rig.right.clear();
        if (number % 3 == 0) rig.send({{0x90, 40 + number % 40, 100}, {0x80, 40 + (number + 20) % 40, 0, 30}});
        if (number % 50 == 0)
            rig.send({{0xb0, 64, number % 100 == 0 ? 127 : 0}, {0xb0, 1, number % 128}, {0xe0, 0, number % 128}});
        if (number % 400 == 399) rig.send({{0xb0, 123, 0}});
        rig.block(64 + number % 200);
        for (const float x : rig.left)
            if (!std::isfinite(x)) finite = false;
        ++blocks;
    }

    // Any parameter, as a host sets it.
    void editParameter(LinearCongruence& random) {
        const int index = static_cast<int>(random.next() % parameterCount);
        rig.audio.setParameter(index, random.unit());
        char text[hostTextLength + 1] = {};
        rig.audio.parameters().getParameterDisplay(index, text);
        rig.audio.parameters().getParameterName(index, text);
        rig.audio.parameters().getParameterLabel(index, text);
        rig.audio.parameters().getParameter(index);
    }

    void exchangeChunk() {
        const ChunkBytes bytes = rig.audio.patchChunk().getChunk();
        ASSERT_GT(bytes.size, 0);
        EXPECT_EQ(rig.audio.patchChunk().setChunk(bytes.data.get(), bytes.size), 1);
        platform::sleepMilliseconds(20);
    }

    // Patches to a file and back, under names that others read meanwhile.
    void exchangeFile(int number) {
        const std::string path = folder / (number % 2 == 0 ? "one.fxp" : "the other.fxp");
        EXPECT_TRUE(rig.audio.patchFiles().savePatchFile(path));
        EXPECT_TRUE(rig.audio.patchFiles().loadPatchFile(path));
        platform::sleepMilliseconds(25);
    }
    void readName() {
        rig.audio.program().getProgramName();
        rig.audio.program().setProgramName("between two loads");
        rig.audio.isBusy();
        platform::sleepMilliseconds(1);
    }

    // The slots take their types from whoever sets them, also past the parameters.
    void chooseEffects(int number) {
        rig.audio.masterEffect().setType(number % 77);
        rig.audio.layer(number % layerCount).insert(number % 2).setType(number * 7 % 77);
        rig.audio.setParameter(par::FxMaType, listValue(number % 77));
        rig.audio.setParameter(hostIndex(par::FilType1 + number % 2, number % layerCount), listValue(number % 80));
        platform::sleepMilliseconds(1);
    }

    void rebuildWaves(int number) {
        if (number % 3 == 2)
            rig.audio.flags().rebuildCancel.set();
        else
            rig.audio.flags().rebuildRequested.set();
        platform::sleepMilliseconds(15);
    }

    void followChanges(ParameterChanges::Reader& reader) {
        if (reader.take().any()) ++changesSeen;
        rig.audio.internalRate();
        rig.audio.patchesLoaded();
        platform::sleepMilliseconds(1);
    }

    // Hosts do so while a block runs on another thread.
    void changeRate(int number) {
        rig.audio.setSampleRate(number % 3 == 0 ? 96000.0f : number % 3 == 1 ? 48000.0f : 44100.0f);
        if (number % 5 == 0) rig.audio.stop();
        rig.audio.start();
        platform::sleepMilliseconds(40);
    }

    platform::ScratchFolder folder;
    EngineRig rig;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(3);
    std::vector<std::thread> threads;
    std::atomic<int> blocks{0}, changesSeen{0};
    std::atomic<bool> finite{true};
};

TEST_F(Threads, PlayEditLoadRebuildAskAndOpenOthersAtOnce) {
    repeat([this](int number) { playBlock(number); });
    repeat([this, random = LinearCongruence{1}](int) mutable { editParameter(random); });
    repeat([this](int) { exchangeChunk(); });
    repeat([this](int number) { exchangeFile(number); });
    repeat([this](int) { readName(); });
    repeat([this](int number) { chooseEffects(number); });
    repeat([this](int number) { rebuildWaves(number); });
    repeat([this, reader = ParameterChanges::Reader(rig.audio.parameters().changes())](int) mutable { followChanges(reader); });
    repeat([this](int number) { changeRate(number); });
    repeat([](int number) {
        EngineRig other(number % 2 == 0 ? 44100.0f : 96000.0f);
        other.clearParameters();
        other.plainLayer();
        other.send({{0x90, 60, 100}});
        for (int i = 0; i < 5; ++i) other.block(128);
    });
    finish();
    EXPECT_GT(blocks, 20);
    EXPECT_GT(changesSeen, 5);
    EXPECT_TRUE(finite);
    rig.audio.flags().engineLocked.clear();
    EXPECT_FALSE(rig.audio.flags().audioRunning.isSet());
}

TEST(ThreadsOfManyEngines, OpenAndCloseOnManyThreadsAtOnce) {
    test::sharedDataFolder();
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 3; ++i) {
                EngineRig rig;
                rig.block(64);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace vantoric
