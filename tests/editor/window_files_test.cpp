#include "editor/model/window_files.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/scratch_folder.h"
#include "platform/settings.h"

namespace vantoric {
namespace {

constexpr char writeError[] =
    "File write error. The configuration could not be stored because the plugin directory is write protected!";

class ConfigFiles : public testing::Test {
protected:
    ConfigFiles() {
        platform::setDataFolder(folder_.path());
        platform::setSettingsFolder(folder_ / "config");
        platform::makeFolder(platform::bankFolder());
    }
    ~ConfigFiles() override {
        platform::setDataFolder("");
        platform::setSettingsFolder("");
    }
    void store(const std::string& path, std::initializer_list<std::uint8_t> bytes) {
        ASSERT_TRUE(platform::writeFile(path, bytes.begin(), bytes.size()));
    }
    // The configuration folder is a file: nothing can be read or written in it, whoever runs this.
    void breakFolder() {
        std::filesystem::remove_all(platform::bankFolder());
        store(folder_ / "Vantoric_data", {});
    }

    platform::ScratchFolder folder_;
    platform::RecordedDialogs dialogs_;
};

TEST_F(ConfigFiles, LieInTheDataFolder) {
    EXPECT_EQ(sizeFilePath(), folder_ / "Vantoric_data/VantoriSize.cfg");
    EXPECT_EQ(tooltipsFilePath(), folder_ / "Vantoric_data/VantoriTooltips.cfg");
}

TEST_F(ConfigFiles, TheSizeIsOneByte) {
    EXPECT_EQ(readSizeIndex(), std::nullopt);
    ASSERT_TRUE(writeSizeIndex(8, dialogs_));
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(platform::readFile(sizeFilePath(), bytes));
    EXPECT_EQ(bytes, std::vector<std::uint8_t>{8});
    EXPECT_EQ(readSizeIndex(), 8);
    EXPECT_TRUE(dialogs_.boxes().empty());
}

TEST_F(ConfigFiles, AnyByteIsASizeWithinTheList) {
    store(sizeFilePath(), {17, 3});
    EXPECT_EQ(readSizeIndex(), 17);
    store(sizeFilePath(), {255});
    EXPECT_EQ(readSizeIndex(), 17);
    store(sizeFilePath(), {});
    EXPECT_EQ(readSizeIndex(), std::nullopt);
}

TEST_F(ConfigFiles, AStoredSizeWinsOverTheScreen) {
    EXPECT_EQ(startSizeIndex(2560, 1440, nullptr), 3);
    store(sizeFilePath(), {1});
    EXPECT_EQ(startSizeIndex(2560, 1440, nullptr), 1);
}

TEST_F(ConfigFiles, AFirstStartTakesTheSizeThatFitsTheScreen) {
    EXPECT_EQ(sizeIndexForScreen(0, 0, nullptr), 0);
    EXPECT_EQ(sizeIndexForScreen(1920, 1080, ""), 0);
    EXPECT_EQ(sizeIndexForScreen(1920, 1080, "Glaigail"), 3);
    EXPECT_EQ(sizeIndexForScreen(2000, 1400, ""), 0) << "wider and higher, not as wide and as high";
    EXPECT_EQ(sizeIndexForScreen(2001, 1401, ""), 3);
    EXPECT_EQ(sizeIndexForScreen(2501, 1751, ""), 6);
    EXPECT_EQ(sizeIndexForScreen(2660, 1863, ""), 6);
    EXPECT_EQ(sizeIndexForScreen(2661, 1863, ""), 7);
    EXPECT_EQ(sizeIndexForScreen(3840, 2160, ""), 7);
    EXPECT_EQ(sizeIndexForScreen(3840, 2160, "Glaigail"), 11);
    EXPECT_EQ(sizeIndexForScreen(3840, 1080, "Glaigail"), 3) << "both sides count";
}

TEST_F(ConfigFiles, TooltipsAreOffWhileTheirFileIsThere) {
    EXPECT_FALSE(tooltipsHidden());
    toggleTooltips(dialogs_);
    EXPECT_TRUE(tooltipsHidden());
    toggleTooltips(dialogs_);
    EXPECT_FALSE(tooltipsHidden());
    ASSERT_EQ(dialogs_.boxes().size(), 2u);
    EXPECT_EQ(dialogs_.boxes()[0].title, "Info");
    EXPECT_EQ(dialogs_.boxes()[0].text,
              "Tooltips will be hidden. You need to close and open the plugin to make the changes take effect.");
    EXPECT_EQ(dialogs_.boxes()[1].text,
              "Tooltips will be shown. You need to close and open the plugin to make the changes take effect.");
}

TEST_F(ConfigFiles, AnUnwritableFolderMakesOnlyTheTwoCommandsReport) {
    breakFolder();
    EXPECT_FALSE(writeSizeIndex(3, dialogs_));
    toggleTooltips(dialogs_);
    ASSERT_EQ(dialogs_.boxes().size(), 2u);
    for (const auto& box : dialogs_.boxes()) {
        EXPECT_EQ(box.title, "Error");
        EXPECT_EQ(box.text, writeError);
    }
    EXPECT_EQ(readSizeIndex(), std::nullopt);
    EXPECT_FALSE(tooltipsHidden());
}

TEST_F(ConfigFiles, FlagFilesCountByTheirPresence) {
    EXPECT_FALSE(hideEditorRequested());
    EXPECT_FALSE(deallocRequested());
    store(hideEditorFilePath(), {});
    EXPECT_TRUE(hideEditorRequested());
    EXPECT_FALSE(deallocRequested());
    store(deallocFilePath(), {});
    EXPECT_TRUE(deallocRequested());
}

TEST_F(ConfigFiles, AnInstallationFarDownIsFoundAndWritten) {
    const std::string longFolder = folder_.path() + std::string(250, 'd') + "/" + std::string(250, 'e') + "/";
    ASSERT_TRUE(platform::makeFolder(longFolder + "Vantoric_data"));
    platform::setDataFolder(platform::folderOfModulePath(longFolder + "Vantoric.so"));
    ASSERT_TRUE(writeSizeIndex(5, dialogs_));
    EXPECT_EQ(readSizeIndex(), 5);
}

}  // namespace
}  // namespace vantoric
