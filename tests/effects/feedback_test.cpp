// Whatever the settings, no effect grows without end: a slot that explodes would be cleared again and again.
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

#include "effects/multieffect.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

constexpr int block = 88;
constexpr float loopBound = 16.0f;

using Values = std::array<float, 5>;

bool longTests() { return std::getenv("VANTORIC_LONG_TESTS") != nullptr; }

// Loud signals with something for every loop to ring on.
enum class Signal { noise, square, sine, silence, impulses, constant };
constexpr Signal everySignal[] = {Signal::noise,   Signal::square,   Signal::sine,
                                  Signal::silence, Signal::impulses, Signal::constant};

Sound loud(Signal signal, int count, float rate, float amplitude) {
    Sound sound(count);
    LinearCongruence generator{7};
    for (int n = 0; n < count; ++n) {
        float left = 0.0f, right = 0.0f;
        switch (signal) {
            case Signal::noise:
                left = 2.0f * generator.unit() - 1.0f;
                right = 2.0f * generator.unit() - 1.0f;
                break;
            case Signal::square:
                left = std::fmod(static_cast<float>(n) * 220.0f / rate, 1.0f) < 0.5f ? 1.0f : -1.0f;
                right = -left;
                break;
            case Signal::sine:
                left = std::sin(static_cast<float>(n) * 628.3f / rate);
                right = std::sin(static_cast<float>(n) * 18850.0f / rate);
                break;
            case Signal::silence: break;
            case Signal::impulses: left = right = n % 5000 == 0 ? 1.0f : 0.0f; break;
            case Signal::constant: left = right = 1.0f; break;
        }
        sound.left[n] = left * amplitude;
        sound.right[n] = right * amplitude;
    }
    return sound;
}

// What came of a run: the largest sample, and how many blocks were silenced as they held what is no number.
struct Outcome {
    float largest = 0.0f;
    std::uint32_t silenced = 0;

    void add(const Outcome& other) {
        largest = std::max(largest, other.largest);
        silenced += other.silenced;
    }
};

// Four parameters in turn: all corners of their range, some places within, and swept in leaps while it plays.
constexpr int corners = 16, within = 4, settings = corners + within + 1, swept = settings - 1;

Values valuesOf(int setting, LinearCongruence& draw) {
    Values values{setting < corners ? 1.0f : 0.7f, 0, 0, 0, 0};
    for (int p = 0; p < 4; ++p)
        values[static_cast<std::size_t>(p) + 1] =
            setting < corners ? static_cast<float>(setting >> p & 1) : std::min(draw.unit(), 1.0f);
    return values;
}

Outcome outcome(Multieffect& slot, const Values& values, const Sound& in, bool sweeping, LinearCongruence draw) {
    slot.clearState();
    for (int i = 0; i < 5; ++i) slot.setParameter(i, values[static_cast<std::size_t>(i)]);
    Outcome out;
    const std::uint32_t before = slot.silencedBlocks();
    float left[block], right[block];
    for (int done = 0; done + block <= in.count(); done += block) {
        if (sweeping)
            for (int p = 0; p < 5; ++p)
                if (draw.unit() < 0.05f) slot.setParameter(p, std::min(std::max(1.4f * draw.unit() - 0.2f, 0.0f), 1.0f));
        std::copy_n(in.left.data() + done, block, left);
        std::copy_n(in.right.data() + done, block, right);
        slot.process(left, right, block);
        float largest = 0.0f;
        for (int i = 0; i < block; ++i) largest = std::max({largest, std::fabs(left[i]), std::fabs(right[i])});
        out.largest = std::max(out.largest, largest);
    }
    out.silenced = slot.silencedBlocks() - before;
    return out;
}

class EveryTypeDrivenHard : public ::testing::TestWithParam<int> {};

// With VANTORIC_LONG_TESTS four seconds of each; it prints the largest output.
TEST_P(EveryTypeDrivenHard, NeverGrowsWithoutEnd) {
    constexpr float everyInternalRate[] = {44100.0f, 88200.0f, 96000.0f, 192000.0f};
    const int type = GetParam();
    Outcome all;
    std::string loudest;
    for (const float rate : everyInternalRate) {
        if (!longTests() && rate != (type % 2 == 0 ? 88200.0f : 192000.0f)) continue;
        RandomSources random;
        const auto slot = std::make_unique<Multieffect>(random);
        slot->setSampleRate(rate);
        slot->setTempo(300.0f, 0.0);
        slot->setType(type);
        for (const Signal signal : everySignal) {
            const float seconds = longTests() ? 4.0f : sanitized ? 0.01f : 0.1f;
            const Sound in = loud(signal, static_cast<int>(seconds * rate), rate, 1.0f);
            LinearCongruence draw{static_cast<std::uint32_t>(signal) + 1};
            for (int setting = 0; setting < settings; ++setting) {
                const Outcome one = outcome(*slot, valuesOf(setting, draw), in, setting == swept, draw);
                if (one.largest > all.largest)
                    loudest = "at " + std::to_string(rate) + " Hz, signal " + std::to_string(static_cast<int>(signal)) +
                              ", setting " + std::to_string(setting);
                all.add(one);
            }
        }
    }
    EXPECT_EQ(all.silenced, 0u);
    // The highest that a formula without feedback reaches: taps at 66 times the level in "Multitap", sums cut short by a
    // new length in "Degrader".
    EXPECT_LT(all.largest, 300.0f) << loudest;
    if (longTests()) std::printf("%-24s largest %8.2f %s\n", effectType(type).name, all.largest, loudest.c_str());
}

// Inputs far above full scale, as a master slot may get from many layers at once.
TEST_P(EveryTypeDrivenHard, BearsInputsFarAboveFullScale) {
    const int type = GetParam();
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    slot->setSampleRate(88200.0f);
    slot->setTempo(300.0f, 0.0);
    slot->setType(type);
    LinearCongruence draw{3};
    for (const float amplitude : {30.0f, 1000.0f}) {
        const Sound in = loud(Signal::square, sanitized ? 1000 : 10000, 88200.0f, amplitude);
        for (int setting = 0; setting < settings; ++setting) {
            const Outcome one = outcome(*slot, valuesOf(setting, draw), in, setting == swept, draw);
            // Products of both sides in the vocoders: 25 times the square of the level.
            EXPECT_LT(one.largest, 50.0f * amplitude * amplitude) << amplitude << " setting " << setting;
        }
    }
}

std::vector<int> soundingTypes() {
    std::vector<int> types;
    for (int type = 0; type < effectTypeCount; ++type)
        if (static_cast<int>(effectType(type).family) > 0) types.push_back(type);
    return types;
}
INSTANTIATE_TEST_SUITE_P(Type, EveryTypeDrivenHard, ::testing::ValuesIn(soundingTypes()));

// Its own loop: by the formula the gain of one turn is above 1 at some pitch.
TEST(FeedbackLoops, AFlangerAtFullSpeedDepthAndFeedbackSingsWithinItsBound) {
    constexpr int flanger = 14;
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    slot->setSampleRate(88200.0f);
    slot->setType(flanger);
    LinearCongruence draw{1};
    const Sound in = loud(Signal::noise, 400000, 88200.0f, 0.5f);
    for (const float center : {0.0f, 0.5f, 1.0f}) {
        const Outcome out = outcome(*slot, {1.0f, 1.0f, 1.0f, 1.0f, center}, in, false, draw);
        EXPECT_LE(out.largest, loopBound);
        EXPECT_EQ(out.silenced, 0u);
    }
}

// A delay that keeps all it gets adds up what comes in its own pitch.
TEST(FeedbackLoops, ADelayThatLosesNothingStopsAtItsBound) {
    for (const int type : {6, 43, 45, 48, 49}) {
        RandomSources random;
        const auto slot = std::make_unique<Multieffect>(random);
        slot->setSampleRate(88200.0f);
        slot->setTempo(300.0f, 0.0);
        slot->setType(type);
        LinearCongruence draw{1};
        float largest = 0.0f;
        for (int setting = 0; setting < corners; ++setting)
            for (const Signal signal : {Signal::sine, Signal::square}) {
                const Sound in = loud(signal, sanitized ? 5000 : 60000, 88200.0f, 8.0f);
                largest = std::max(largest, outcome(*slot, valuesOf(setting, draw), in, false, draw).largest);
            }
        EXPECT_LT(largest, 4.0f * loopBound) << type;
    }
}

// A number that is none is found at the end of the block, and the effect starts anew.
TEST(FeedbackLoops, ANumberThatIsNoneIsClearedAtTheEndOfTheBlock) {
    for (int type = 0; type < effectTypeCount; ++type) {
        if (static_cast<int>(effectType(type).family) <= 0) continue;
        RandomSources random;
        const auto slot = std::make_unique<Multieffect>(random);
        slot->setType(type);
        slot->setParameter(0, 1.0f);
        Sound bad = noise(block, 0.5f);
        bad.left[3] = bad.right[5] = NAN;
        run(*slot, bad);
        const Sound after = run(*slot, noise(100 * block, 0.5f));
        EXPECT_TRUE(allFinite(after.left.data(), after.right.data(), after.count())) << type;
    }
}

}  // namespace
}  // namespace vantoric
