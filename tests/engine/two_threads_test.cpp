// What comes from another thread while a block runs: it waits for the block's end, or is turned away.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

using test::EngineRig;

// Calls something on a thread of its own from the last stage of a block, and looks whether it is over before the block is.
class CallFromElsewhere final : public BlockObserver {
public:
    CallFromElsewhere(EngineRig& rig, std::function<void()> call) : flags_(rig.audio.flags()), call_(std::move(call)) {
        rig.audio.setBlockObserver(this);
        rig.block(64);
        if (thread_.joinable()) thread_.join();
        rig.audio.setBlockObserver(nullptr);
    }
    bool tookTheEngine() const { return tookTheEngine_; }
    bool wasOverInside() const { return wasOverInside_; }
    bool isOver() const { return isOver_; }
    int stages() const { return stages_; }

private:
    void onStep(BlockStep step, int, int) override {
        if (step != BlockStep::finalStage || ++stages_ > 1) return;
        thread_ = std::thread([this] {
            call_();
            isOver_ = true;
        });
        for (int i = 0; i < 5000 && !flags_.engineLocked.isSet() && !isOver_; ++i) platform::sleepMilliseconds(1);
        tookTheEngine_ = flags_.engineLocked.isSet();
        platform::sleepMilliseconds(10);
        wasOverInside_ = isOver_.load();
    }

    EngineFlags& flags_;
    std::function<void()> call_;
    std::thread thread_;
    std::atomic<int> stages_{0};
    std::atomic<bool> isOver_{false}, tookTheEngine_{false}, wasOverInside_{false};
};

void expectToWaitForTheBlock(EngineRig& rig, std::function<void()> call) {
    const CallFromElsewhere made(rig, std::move(call));
    EXPECT_TRUE(made.tookTheEngine());
    EXPECT_FALSE(made.wasOverInside());
    EXPECT_TRUE(made.isOver());
    EXPECT_FALSE(rig.audio.flags().engineLocked.isSet());
}

TEST(TwoThreads, SwitchingOffWaitsUntilTheBlockIsOver) {
    EngineRig rig;
    expectToWaitForTheBlock(rig, [&] { rig.audio.stop(); });
}

TEST(TwoThreads, SwitchingOnWaitsUntilTheBlockIsOver) {
    EngineRig rig;
    expectToWaitForTheBlock(rig, [&] { rig.audio.start(); });
}

TEST(TwoThreads, AnotherRateWaitsUntilTheBlockIsOver) {
    EngineRig rig;
    expectToWaitForTheBlock(rig, [&] { rig.audio.setSampleRate(96000.0f); });
    EXPECT_EQ(rig.audio.state().internalRate, 96000.0f);
}

TEST(TwoThreads, ABlockWithinABlockIsSilentAndDoesNothing) {
    EngineRig rig;
    std::vector<float> left(64, 1.0f), right(64, 1.0f);
    const CallFromElsewhere made(rig, [&] { rig.audio.render(left.data(), right.data(), 64, {}); });
    EXPECT_TRUE(made.wasOverInside());
    EXPECT_EQ(made.stages(), 1);
    EXPECT_EQ(left, std::vector<float>(64, 0.0f));
    EXPECT_EQ(right, left);
}

}  // namespace
}  // namespace vantoric
