#include "editor/model/window_size.h"

#include <gtest/gtest.h>

#include "editor/model/window_files.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"

namespace vantoric {
namespace {

class WindowSizeTest : public testing::Test {
protected:
    WindowSizeTest() {
        platform::setDataFolder(folder_.path());
        platform::makeFolder(platform::bankFolder());
    }
    ~WindowSizeTest() override { platform::setDataFolder(""); }

    static constexpr Screen large{8000, 6000};

    platform::ScratchFolder folder_;
    platform::RecordedDialogs dialogs_;
};

TEST_F(WindowSizeTest, TheNormalLayoutIsHalfAsLargeAgain) {
    WindowSize size(dialogs_, "");
    size.applySize(0);
    EXPECT_EQ(size.layoutScale(), 1.0);
    size.applySize(3);
    EXPECT_EQ(size.layoutScale(), 1.5);
    EXPECT_EQ(size.width(), 1800);
}

TEST_F(WindowSizeTest, ZoomsAreExactThirdsWhereTheTableRoundsThem) {
    EXPECT_EQ(zoomOfSize(7), 4.0 / 3.0);
    EXPECT_EQ(zoomOfSize(9), 5.0 / 3.0);
    EXPECT_EQ(zoomOfSize(16), 0.8333) << "none of the known ones";
}

TEST_F(WindowSizeTest, ThePercentageIsThatOfTheLabel) {
    WindowSize size(dialogs_, "");
    const int wanted[] = {66, 66, 66, 100, 100, 100, 125, 133, 150, 166, 175, 200, 250, 300, 50, 75, 83, 88};
    for (int index = 0; index < editorSizeCount; ++index) {
        size.applySize(index);
        EXPECT_EQ(size.percent(), wanted[index]) << sizeRow(index).label;
    }
}

TEST_F(WindowSizeTest, AnySizeOutsideIsHeldToTheTable) {
    WindowSize size(dialogs_, "");
    size.applySize(99);
    EXPECT_EQ(size.sizeIndex(), 17);
    size.applySize(-5);
    EXPECT_EQ(size.sizeIndex(), 0);
}

TEST_F(WindowSizeTest, AChosenSizeIsThatOfTheNextStart) {
    WindowSize(dialogs_, "").chooseSize(8, large, [](bool) {});
    WindowSize next(dialogs_, "");
    next.loadSize({1000, 700});
    EXPECT_EQ(next.sizeIndex(), 8);
}

// The screen is to be larger than the window, not as large.
TEST_F(WindowSizeTest, ASizeThatFillsTheScreenIsAQuestion) {
    WindowSize size(dialogs_, "Glaigail");
    size.chooseSize(3, {1801, 991}, [](bool) {});
    EXPECT_TRUE(dialogs_.boxes().empty());
    size.chooseSize(3, {1800, 991}, [](bool) {});
    ASSERT_EQ(dialogs_.boxes().size(), 1u);
    EXPECT_TRUE(dialogs_.boxes()[0].isQuestion);
}

TEST_F(WindowSizeTest, ARefusalKeepsSizeAndFile) {
    WindowSize size(dialogs_, "");
    size.applySize(3);
    bool wasTaken = false;
    size.chooseSize(13, {1920, 1080}, [&](bool) { wasTaken = true; });
    EXPECT_FALSE(wasTaken);
    EXPECT_EQ(size.sizeIndex(), 3);
    EXPECT_FALSE(readSizeIndex().has_value());
}

TEST_F(WindowSizeTest, OneHostCannotZoom) {
    WindowSize size(dialogs_, "Orion");
    bool zoomChanged = true;
    size.chooseSize(8, large, [&](bool changed) { zoomChanged = changed; });
    EXPECT_EQ(size.sizeIndex(), 3);
    EXPECT_EQ(readSizeIndex(), 3);
    EXPECT_FALSE(zoomChanged);
}

}  // namespace
}  // namespace vantoric
