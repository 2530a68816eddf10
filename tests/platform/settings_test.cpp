#include "platform/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

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

std::string textOf(const std::string& path) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(readFile(path, bytes));
    return std::string(bytes.begin(), bytes.end());
}

TEST_F(Settings, AFileThatIsTooLargeIsLeftAlone) {
    ASSERT_TRUE(makeFolder(folder_ / "Orvix/Vantoric"));
    const std::string path = folder_ / "Orvix/Vantoric/settings";
    const std::string text = "Other=b\n" + std::string(70000, '#') + "\nLast=c\n";
    ASSERT_TRUE(writeFile(path, text.data(), text.size()));
    EXPECT_FALSE(writeSetting("Path", "/a"));
    EXPECT_EQ(textOf(path), text);
}

TEST_F(Settings, AValueThatMakesTheFileTooLargeToReadIsRefused) {
    ASSERT_TRUE(writeSetting("Path", "/a"));
    EXPECT_FALSE(writeSetting("Other", std::string(70000, 'b')));
    EXPECT_EQ(readSetting("Path"), "/a");
    EXPECT_TRUE(writeSetting("Path", "/c"));
}

// Ends the process with 0 if an ordinary user's write fails.
[[noreturn]] void writeAsOrdinaryUser() {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    _exit(writeSetting("Path", "/a") ? 1 : 0);
}

TEST_F(Settings, AFileThatCannotBeReadIsLeftAlone) {
    ASSERT_TRUE(writeSetting("Other", "b"));
    const std::string path = folder_ / "Orvix/Vantoric/settings";
    // A folder that anybody may write into, and a file that may be written and not read.
    for (const char* folder : {"", "Orvix", "Orvix/Vantoric"}) ASSERT_EQ(chmod((folder_ / folder).c_str(), 0777), 0);
    ASSERT_EQ(chmod(path.c_str(), 0222), 0);
    EXPECT_EXIT(writeAsOrdinaryUser(), testing::ExitedWithCode(0), "");
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    EXPECT_EQ(textOf(path), "Other=b\n");
}

}  // namespace
}  // namespace vantoric::platform
