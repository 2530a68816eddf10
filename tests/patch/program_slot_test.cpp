#include "patch/program_slot.h"

#include <gtest/gtest.h>

#include <set>

#include "platform/recorded_dialogs.h"

namespace vantoric {
namespace {

struct ProgramName : ::testing::Test {
    platform::RecordedDialogs dialogs;
    ProgramSlot slot{dialogs};
};

TEST_F(ProgramName, StartsAsThreeZeros) { EXPECT_EQ(slot.getProgramName(), "000"); }

TEST_F(ProgramName, OfTwentySevenCharactersIsStored) {
    slot.setProgramName(std::string(27, 'a'));
    EXPECT_EQ(slot.getProgramName(), std::string(27, 'a'));
    EXPECT_TRUE(dialogs.boxes().empty());
}

TEST_F(ProgramName, OfTwentyEightCharactersIsTooLong) {
    slot.setProgramName(std::string(28, 'a'));
    EXPECT_EQ(slot.getProgramName(), "ThisNameIsTooLong");
    ASSERT_EQ(dialogs.boxes().size(), 1u);
    EXPECT_EQ(dialogs.boxes()[0].title, "Warning");
    EXPECT_EQ(dialogs.boxes()[0].text,
              "The name of the preset is longer than 27 characters. This hurts the VST/AU interface specification and can crash "
              "your host software. Please use a shorter name!");
}

TEST_F(ProgramName, EmptyReadsAsNoname) {
    slot.setProgramName("");
    EXPECT_EQ(slot.getProgramName(), "Noname");
}

TEST_F(ProgramName, OnlyProgramZeroHasOne) {
    std::string text = "before";
    EXPECT_FALSE(slot.getProgramNameIndexed(0, 1, text));
    EXPECT_FALSE(slot.getProgramNameIndexed(0, -1, text));
    EXPECT_EQ(text, "before");
    EXPECT_TRUE(slot.getProgramNameIndexed(-1, 0, text));
    EXPECT_EQ(text, "000");
}

TEST_F(ProgramName, SetProgramDoesNothing) {
    slot.setProgram(1);
    EXPECT_EQ(slot.getProgram(), 0);
    EXPECT_EQ(slot.getProgramName(), "000");
}

TEST_F(ProgramName, InitNamesChangeAndStayShort) {
    std::set<std::string> names;
    for (int k = 0; k < 200; ++k) {
        const std::string name = nextInitName();
        EXPECT_EQ(name.substr(0, 5), "Init ");
        EXPECT_GE(name.size(), 6u);
        EXPECT_LE(name.size(), 7u);
        names.insert(name);
    }
    EXPECT_GT(names.size(), 50u);
}

}  // namespace
}  // namespace vantoric
