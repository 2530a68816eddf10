// All types of the slot under every rate and input, and changes of type without end.
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>

#include "effects/multieffect.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

using Values = std::array<float, 5>;

struct Box {
    RandomSources random;
    Multieffect slot{random};

    Box() {
        slot.setSampleRate(88200.0f);
        slot.setTempo(480.0f, 0.0);
    }
    void use(int type, const Values& values) {
        slot.setType(0);
        slot.setType(type);
        for (int i = 0; i < 5; ++i) slot.setParameter(i, values[static_cast<std::size_t>(i)]);
    }
};

bool silent(const Sound& sound, int from, int to) {
    return peak(sound.left, from, to) == 0.0f && peak(sound.right, from, to) == 0.0f;
}

// A slot silences a block in which an effect gives no number. Half of the mix is the input, so otherwise no block of noise
// falls silent.
TEST(EveryType, BearsEveryRateAndEveryInput) {
    constexpr int block = 64, count = 15 * block;
    const Sound full = noise(count, 1.0f);
    const auto box = std::make_unique<Box>();
    for (int type = 0; type < effectTypeCount; ++type)
        for (const float rate : everyRate()) {
            box->slot.setSampleRate(rate);
            for (const float p : {0.0f, 0.5f, 1.0f})
                for (const Sound& in : {impulse(count), Sound(count), full, noise(count, 1e-39f)}) {
                    box->use(type, {0.5f, p, p, p, p});
                    const Sound out = run(box->slot, in, block);
                    for (int n = 0; n < count; ++n)  // NaN fails this comparison too
                        ASSERT_TRUE(std::fabs(out.left[n]) < 300.0f && std::fabs(out.right[n]) < 300.0f)
                            << "type " << type << " at " << rate << ", parameters " << p;
                    for (int at = 0; in == full && at < count; at += block)
                        ASSERT_FALSE(silent(out, at, at + block)) << "type " << type << " at " << rate << ", parameters " << p;
                }
        }
}

// A minute with VANTORIC_LONG_TESTS set.
TEST(EveryType, MayFollowAnyOtherOnEveryBlock) {
    constexpr int block = 88, blocksInSecond = 1002;
    const int blocks = std::getenv("VANTORIC_LONG_TESTS") != nullptr ? 60 * blocksInSecond : sanitized ? 300 : 2 * blocksInSecond;
    const auto stormy = std::make_unique<Box>();
    const Sound in = noise(block, 1.0f);
    LinearCongruence generator{21};
    const auto draw = [&] { return generator.unit(); };
    for (int i = 0; i < blocks; ++i) {
        stormy->slot.setTempo(60.0f + 400.0f * draw(), i * 0.002);
        stormy->slot.setType(static_cast<int>(draw() * 76.99f));
        for (int k = 0; k < 5; ++k) stormy->slot.setParameter(k, draw());
        const Sound out = run(stormy->slot, in, block);
        ASSERT_LT(peak(out.left), 1000.0f) << "type " << stormy->slot.type();
        ASSERT_LT(peak(out.right), 1000.0f) << "type " << stormy->slot.type();
    }
    // Nothing of all that is left when a type starts.
    const Sound next = noise(sanitized ? 1000 : 4000, 0.5f);
    for (int type = 0; type < effectTypeCount; ++type) {
        const auto fresh = std::make_unique<Box>();
        stormy->slot.setTempo(480.0f, 0.0);
        fresh->use(type, effectType(type).defaults);
        stormy->use(type, effectType(type).defaults);
        stormy->random = fresh->random;
        EXPECT_EQ(run(stormy->slot, next, block), run(fresh->slot, next, block)) << "type " << type;
    }
}

// The window, a load or a suspension set and clear the slots while they play.
TEST(EveryType, MayComeFromAnotherThreadWhileAudioRuns) {
    const auto box = std::make_unique<Box>();
    std::atomic<bool> done{false};
    std::thread window([&] {
        LinearCongruence generator{5};
        while (!done) {
            box->slot.setType(static_cast<int>(generator.unit() * 76.99f));
            for (int k = 0; k < 5; ++k) box->slot.setParameter(k, generator.unit());
            if (generator.unit() < 0.1f) box->slot.clearState();
            if (generator.unit() < 0.1f) box->slot.setSampleRate(generator.unit() < 0.5f ? 44100.0f : 88200.0f);
            box->slot.setTempo(60.0f + 100.0f * generator.unit(), generator.unit());
            char text[effectTextSize];
            box->slot.getParameterDisplay(1, text);
            if (generator.unit() < 0.02f) box->slot.touchMemory(box->slot.type());
        }
    });
    const Sound in = noise(88, 0.5f);
    bool finite = true;
    for (int block = 0; block < (sanitized ? 1000 : 10000); ++block) {
        const Sound out = run(box->slot, in);
        finite = finite && allFinite(out.left.data(), out.right.data(), out.count());
    }
    done = true;
    window.join();
    EXPECT_TRUE(finite);
    box->use(0, {});
    EXPECT_EQ(run(box->slot, in), in);
}

}  // namespace
}  // namespace vantoric
