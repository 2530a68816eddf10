#include "engine/program_changes.h"

#include <gtest/gtest.h>

namespace vantoric {
namespace {

TEST(ProgramChanges, TheLastOneReachesEveryListenerOnce) {
    ProgramChanges changes;
    ProgramChanges::Reader window(changes), library(changes);
    EXPECT_FALSE(window.take());
    changes.post(5);
    changes.post(9);
    EXPECT_EQ(window.take(), 9);
    EXPECT_FALSE(window.take());
    EXPECT_EQ(library.take(), 9);
}

TEST(ProgramChanges, TheSameNumberAgainIsNewsAgain) {
    ProgramChanges changes;
    ProgramChanges::Reader reader(changes);
    for (int i = 0; i < 300; ++i) {
        changes.post(127);
        EXPECT_EQ(reader.take(), 127);
    }
}

TEST(ProgramChanges, AListenerThatComesLateHearsNothingOld) {
    ProgramChanges changes;
    changes.post(3);
    ProgramChanges::Reader late(changes);
    EXPECT_FALSE(late.take());
}

}  // namespace
}  // namespace vantoric
