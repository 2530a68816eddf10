#include "platform/own_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "platform/module_folder.h"
#include "platform/scratch_folder.h"

namespace vantoric::platform {
namespace {

// An installation that cannot be written, and the user's folder over it.
struct OwnFiles : testing::Test {
    OwnFiles() {
        setDataFolder(installed.path());
        setOwnFolder(own.path());
        makeOwnFolders();
    }
    ~OwnFiles() override {
        setOwnFolder("");
        setDataFolder("");
    }
    static void put(const std::string& folder, const std::string& name) {
        makeFolder(folder + name.substr(0, name.rfind('/')));
        EXPECT_TRUE(writeFile(folder + name, "x", 1));
    }
    ScratchFolder installed, own;
};

TEST_F(OwnFiles, TheUsersFoldersAreTheUsers) {
    EXPECT_EQ(userFolder(), ownFolder() + "Vantoric_sounds/User/");
    EXPECT_EQ(favouritesFolder(), ownFolder() + "Vantoric_sounds/Favourites/");
    EXPECT_TRUE(isFolder(userFolder()));
    EXPECT_TRUE(isFolder(ownFolder() + "Vantoric_data"));
    EXPECT_EQ(soundsFolder(), dataFolder() + "Vantoric_sounds/");
}

TEST_F(OwnFiles, AFileOfTheUserHidesTheInstalledOne) {
    put(dataFolder(), "Vantoric_sounds/Bass/Low.fxp");
    EXPECT_EQ(dataPath("Vantoric_sounds/Bass/Low.fxp"), dataFolder() + "Vantoric_sounds/Bass/Low.fxp");
    put(ownFolder(), "Vantoric_sounds/Bass/Low.fxp");
    EXPECT_EQ(dataPath("Vantoric_sounds/Bass/Low.fxp"), ownFolder() + "Vantoric_sounds/Bass/Low.fxp");
    EXPECT_EQ(dataPath("nowhere"), dataFolder() + "nowhere");
    EXPECT_EQ(ownPath("nowhere"), ownFolder() + "nowhere");
}

TEST_F(OwnFiles, FoldersAreListedAsOne) {
    put(dataFolder(), "Vantoric_sounds/Bass/Low.fxp");
    put(dataFolder(), "Vantoric_sounds/Bass/Lower.fxp");
    put(ownFolder(), "Vantoric_sounds/Bass/Low.fxp");
    put(ownFolder(), "Vantoric_sounds/Bass/Mine.fxp");
    std::vector<std::string> names;
    for (const FolderEntry& entry : listDataFolder("Vantoric_sounds/Bass")) names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"Low.fxp", "Lower.fxp", "Mine.fxp"}));
    int visited = 0;
    visitDataFolder("Vantoric_sounds/Bass", [&](FolderEntry&&) { return ++visited < 2; });
    EXPECT_EQ(visited, 2);
}

TEST(OwnFolder, IsTheInstallationWhereThatCanBeWritten) {
    const ScratchFolder folder;
    setDataFolder(folder.path());
    EXPECT_EQ(ownFolder(), dataFolder());
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    if (access(folder.path().c_str(), W_OK) != 0) {  // who is root may write everywhere
        EXPECT_TRUE(ownFolder().ends_with("/vantoric/")) << ownFolder();
    }
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    setDataFolder("");
}

TEST(OwnFolder, IsNeverAnInstallationOfTheSystem) {
    for (const char* system : {"/usr/lib", "/usr/share"}) {  // who is root may write there
        setDataFolder(system);
        EXPECT_TRUE(ownFolder().ends_with("/vantoric/")) << ownFolder();
    }
    setDataFolder("");
}

}  // namespace
}  // namespace vantoric::platform
