// Samples are loaded, edited, tuned and rebuilt while sixteen voices of each kernel play them.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "sound/kernels.h"
#include "tests/engine/engine_rig.h"
#include "tests/samples/wave_maker.h"

namespace vantoric {
namespace {

namespace par = parameter;
using Clock = std::chrono::steady_clock;
using test::WaveMaker;

// How often this thread gave the processor away to wait for something. The sanitizers' own locks wait too.
long waitsOfThisThread() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

struct SampleThreads : ::testing::Test {
    SampleThreads() {
        rig.clearParameters();
        rig.plainLayer();
        rig.setList(par::Quality, 1);
        for (int i = 0; i < oscillatorCount; ++i) {
            rig.setList(par::SynType1 + i, sampleType);
            rig.set(par::On1 + i, 1.0f);
            rig.set(par::Vol1 + i, 0.5f);
        }
        rig.set(par::Fm1, 0.3f);
        rig.set(par::Sync1 + 1, 1.0f);
        rig.audio.resetEngine();
        const auto square = [](int i) { return i % 80 < 40 ? 9000 : -9000; };
        files = {put("C3.wav", WaveMaker().putFrames(3000, square).looped(80, 2879)),
                 put("a.wav", WaveMaker().putFrames(50, square).file()),
                 put("b.wav", WaveMaker().putFrames(20000, square).file()), put("broken.wav", test::Bytes(100)),
                 folder / "missing.wav"};
        for (int i = 0; i < oscillatorCount; ++i) EXPECT_TRUE(rig.audio.sampleLoader().loadSample(0, i, files[0]));
    }
    std::string put(const std::string& name, const test::Bytes& bytes) {
        EXPECT_TRUE(platform::writeFile(folder / name, bytes.data(), bytes.size()));
        return folder / name;
    }

    void playBlock(int number) {
        if (number % 4 == 0) rig.send({{0x90, 30 + number / 4 % 60, 100}});
        if (number % 500 == 499) rig.send({{0xb0, 123, 0}});
        const int frames = 64 + number % 100;
        std::array<float, 164> left{}, right{};
        const long before = waitsOfThisThread();
        rig.audio.render(left.data(), right.data(), frames, rig.host.transport);
        waits += waitsOfThisThread() - before;
        rig.left.assign(left.begin(), left.begin() + frames);
        rig.right.assign(right.begin(), right.begin() + frames);
        for (const float x : rig.left)
            if (!std::isfinite(x)) finite = false;
        loudest = std::max(loudest, rig.peak());
        ++blocks;
    }
    void load(int number) {
        SampleLoader& loader = rig.audio.sampleLoader();
        loader.loadSample(0, number % oscillatorCount, files[static_cast<std::size_t>(number) % files.size()]);
        rig.audio.sampleEditor().editSample(0, (number + 1) % oscillatorCount, number % editCommandCount);
        if (number % 7 == 6) loader.autotune(0, number % oscillatorCount);
        if (number % 20 == 19) exchangeChunk();
        platform::sleepMilliseconds(10);
    }
    void exchangeChunk() {
        const ChunkBytes chunk = rig.audio.patchChunk().getChunk();
        EXPECT_EQ(rig.audio.patchChunk().setChunk(chunk.data.get(), chunk.size), 1);
    }

    platform::ScratchFolder folder;
    test::EngineRig rig;
    std::vector<std::string> files;
    std::atomic<bool> finite{true};
    int blocks = 0;
    long waits = 0;  // of the audio thread within its blocks
    float loudest = 0.0f;
};

TEST_F(SampleThreads, LoadEditTuneAndRebuildWhileSixteenVoicesPlay) {
    const auto end = Clock::now() + std::chrono::seconds(3);
    const auto until = [end](auto work) {
        for (int i = 0; Clock::now() < end; ++i) work(i);
    };
    std::thread audio([&] { until([this](int i) { playBlock(i); }); });
    std::thread editor([&] { until([this](int i) { load(i); }); });
    std::thread requests([&] {
        until([this](int i) {
            rig.setList(par::LoopMod1 + i % oscillatorCount, i % 2);
            rig.audio.flags().rebuildRequested.set();
            platform::sleepMilliseconds(250);
        });
    });
    for (std::thread* thread : {&audio, &editor, &requests}) thread->join();
    EXPECT_GT(blocks, 20);
    EXPECT_GT(loudest, 0.01f);
    EXPECT_TRUE(finite);
    if (!isSanitized) {
        EXPECT_EQ(waits, 0) << "no block is late for another thread's work";
    }
    EXPECT_FALSE(rig.audio.flags().engineLocked.isSet());
}

}  // namespace
}  // namespace vantoric
