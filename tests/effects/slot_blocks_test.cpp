// How a signal is cut into blocks is not heard in a slot.
#include <memory>
#include <numeric>

#include "effects/multieffect.h"
#include "tests/effects/effect_run.h"

namespace vantoric {
namespace {

using namespace testing_effects;

constexpr int longestPiece = 256;
constexpr int longHostBlock = 8192;  // 4096 frames of a host, at twice its rate

using Values = std::array<float, 5>;

// The sound of a slot whose settings were given once, cut into pieces; each is `next()` samples long.
template <class Next>
Sound played(int type, float rate, const Values& values, Sound signal, Next next) {
    RandomSources random;
    const auto slot = std::make_unique<Multieffect>(random);
    slot->setSampleRate(rate);
    slot->setTempo(170.0f, 3.7);
    slot->setType(type);
    for (int i = 0; i < 5; ++i) slot->setParameter(i, values[static_cast<std::size_t>(i)]);
    for (int done = 0; done < signal.count();) {
        const int length = std::min(next(), signal.count() - done);
        slot->process(signal.left.data() + done, signal.right.data() + done, length);
        done += length;
    }
    return signal;
}

// What a type takes at a time at most; it passes longer blocks unchanged.
int longestBlockOf(int type) {
    constexpr int ampSim = 60;
    return type == ampSim ? 256 : longHostBlock;
}

class EveryTypeInBlocks : public ::testing::TestWithParam<int> {};

TEST_P(EveryTypeInBlocks, SoundsTheSameHoweverTheSignalIsCut) {
    const int type = GetParam();
    LinearCongruence draw{static_cast<std::uint32_t>(type) + 1};
    Values wild;
    for (float& value : wild) value = draw.unit();
    for (const float rate : {44100.0f, 88200.0f, 192000.0f})
        for (const Values& values : {effectType(type).defaults, wild, Values{0.7f, 0.9f, 0.6f, 0.9f, 0.8f}}) {
            const bool thorough = rate == 88200.0f && !sanitized;
            const Sound in = noise(static_cast<int>(rate) / (thorough ? 1 : 10), 0.5f);
            const Sound whole = played(type, rate, values, in, [&] { return longestBlockOf(type); });
            EXPECT_EQ(played(type, rate, values, in, [] { return longestPiece; }), whole) << rate;
            const auto random = [&] { return std::min(1 + static_cast<int>(draw.unit() * longestPiece), longestPiece); };
            EXPECT_EQ(played(type, rate, values, in, random), whole) << rate;
            if (thorough) {
                EXPECT_EQ(played(type, rate, values, in, [] { return 1; }), whole);
            }
        }
}

constexpr std::array<int, effectTypeCount> everyType = [] {
    std::array<int, effectTypeCount> all{};
    std::iota(all.begin(), all.end(), 0);
    return all;
}();
INSTANTIATE_TEST_SUITE_P(Type, EveryTypeInBlocks, ::testing::ValuesIn(everyType));

}  // namespace
}  // namespace vantoric
