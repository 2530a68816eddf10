#include "base/flag.h"

#include <gtest/gtest.h>

namespace vantoric {
namespace {

int slept;
Flag* clearedAfterThree;
void countSleep(int milliseconds) { slept += milliseconds; }
void countAndClear(int milliseconds) {
    slept += milliseconds;
    if (slept == 3) clearedAfterThree->clear();
}

TEST(Flag, ABoundedWaitClearsTheFlagByForce) {
    Flag flag;
    flag.set();
    slept = 0;
    EXPECT_FALSE(waitUntilClear(flag, 1000, 1, countSleep));
    EXPECT_EQ(slept, 1000);
    EXPECT_FALSE(flag.isSet());
}

TEST(Flag, AWaitEndsWhenTheFlagFalls) {
    Flag flag;
    clearedAfterThree = &flag;
    flag.set();
    slept = 0;
    EXPECT_TRUE(waitUntilClear(flag, 1000, 1, countAndClear));
    EXPECT_EQ(slept, 3);
}

TEST(Flag, AnUnforcedWaitLeavesTheFlagSet) {
    Flag flag;
    flag.set();
    slept = 0;
    EXPECT_FALSE(waitUntilClear(flag, 100, 100, countSleep, false));
    EXPECT_EQ(slept, 10000);
    EXPECT_TRUE(flag.isSet());
}

}  // namespace
}  // namespace vantoric
