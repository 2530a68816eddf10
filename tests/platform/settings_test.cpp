#include "platform/settings.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/scratch_folder.h"

namespace vantoric::platform {
namespace {

class Settings : public testing::Test {
protected:
    Settings() { setSettingsFolder(folder_.path()); }
    ~Settings() override { setSettingsFolder(""); }

    platform::ScratchFolder folder_;
};

TEST_F(Settings, AValueIsKept) {
    EXPECT_EQ(readSetting("Path"), "");
    ASSERT_TRUE(writeSetting("Path", "/usr/lib/vst/"));
    EXPECT_EQ(readSetting("Path"), "/usr/lib/vst/");
    EXPECT_TRUE(exists(folder_ / "Orvix/Vantoric/settings"));
}

TEST_F(Settings, OthersStayWhenOneChanges) {
    ASSERT_TRUE(writeSetting("Path", "/a"));
    ASSERT_TRUE(writeSetting("Other", "b = c"));
    ASSERT_TRUE(writeSetting("Path", "/d"));
    EXPECT_EQ(readSetting("Path"), "/d");
    EXPECT_EQ(readSetting("Other"), "b = c");
}

TEST_F(Settings, AnyTextSurvives) {
    for (const std::string text : {"", "C:\\new\\table", "two\nlines\\", "=", "caf\xc3\xa9"}) {
        ASSERT_TRUE(writeSetting("Text", text));
        EXPECT_EQ(readSetting("Text"), text);
    }
}

TEST_F(Settings, ANameThatWouldBreakTheFileIsRefused) {
    EXPECT_FALSE(writeSetting("a=b", "c"));
    EXPECT_FALSE(writeSetting("a\nb", "c"));
}

TEST_F(Settings, AFailureIsSilent) {
    ASSERT_TRUE(writeFile(folder_ / "Orvix", "in the way", 10));
    EXPECT_FALSE(writeSetting("Path", "/a"));
    EXPECT_EQ(readSetting("Path"), "");
}

TEST_F(Settings, ADamagedFileReadsAsFarAsItGoes) {
    ASSERT_TRUE(makeFolder(folder_ / "Orvix/Vantoric"));
    const std::string text = "rubbish\n=\nPath=/a\nLast=no line end";
    ASSERT_TRUE(writeFile(folder_ / "Orvix/Vantoric/settings", text.data(), text.size()));
    EXPECT_EQ(readSetting("Path"), "/a");
    EXPECT_EQ(readSetting("Last"), "no line end");
}

}  // namespace
}  // namespace vantoric::platform
