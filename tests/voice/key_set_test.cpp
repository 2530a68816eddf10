#include "voice/key_set.h"

#include <gtest/gtest.h>

#include <set>

#include "base/random.h"

namespace vantoric {
namespace {

KeySet keysOf(const std::set<int>& keys) {
    KeySet set;
    for (const int key : keys) set.add(key);
    return set;
}

TEST(KeySet, AnEmptySetHasNoNeighbours) {
    const KeySet set;
    EXPECT_FALSE(set.any());
    EXPECT_EQ(set.lowest(), -1);
    EXPECT_EQ(set.highest(), -1);
    for (int key = -1; key <= 127; ++key) {
        EXPECT_EQ(set.above(key), -1);
        EXPECT_EQ(set.below(key), -1);
    }
}

TEST(KeySet, FindsTheNeighboursThatASortedSetFinds) {
    LinearCongruence random{1};
    for (int round = 0; round < 50; ++round) {
        std::set<int> keys;
        for (int i = 0; i < 1 + round / 5; ++i) keys.insert(static_cast<int>(random.next() >> 25));
        const KeySet set = keysOf(keys);
        for (int key = -1; key <= 128; ++key) {
            const auto next = keys.upper_bound(key);
            const auto at = keys.lower_bound(key);
            if (key <= 127) {
                EXPECT_EQ(set.above(key), next == keys.end() ? -1 : *next);
            }
            EXPECT_EQ(set.below(key), at == keys.begin() ? -1 : *std::prev(at));
            if (key >= 0 && key <= 127) {
                EXPECT_EQ(set.has(key), keys.count(key) == 1);
            }
        }
    }
}

TEST(KeySet, TheLowestKeyIsNeverKey0) {
    EXPECT_EQ(keysOf({0}).lowest(), -1);
    EXPECT_EQ(keysOf({0, 38}).lowest(), 38);
    EXPECT_EQ(keysOf({0}).highest(), 0);
}

TEST(KeySet, LosesWhatIsTakenAway) {
    KeySet set = keysOf({3, 63, 64, 127});
    set.remove(63);
    EXPECT_EQ(set.above(3), 64);
    EXPECT_EQ(set.without(keysOf({64, 100})).above(3), 127);
    set.clear();
    EXPECT_FALSE(set.any());
}

}  // namespace
}  // namespace vantoric
