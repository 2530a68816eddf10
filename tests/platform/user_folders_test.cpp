#include "platform/user_folders.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "tests/platform/environment.h"

namespace vantoric::platform {
namespace {

TEST(UserFolders, LieWhereTheUserSays) {
    const Environment home("HOME", "/home/me"), data("XDG_DATA_HOME", "/data"), state("XDG_STATE_HOME", "/state/"),
        configuration("XDG_CONFIG_HOME", "/config");
    EXPECT_EQ(homeFolder(), "/home/me/");
    EXPECT_EQ(userDataFolder(), "/data/vantoric/");
    EXPECT_EQ(userStateFolder(), "/state/vantoric/");
    EXPECT_EQ(userConfigFolder(), "/config/");
}

TEST(UserFolders, LieInTheHomeFolderOtherwiseAndARelativePathCountsAsNone) {
    const Environment home("HOME", "/home/me"), data("XDG_DATA_HOME", "data"), state("XDG_STATE_HOME", ""),
        configuration("XDG_CONFIG_HOME", nullptr);
    EXPECT_EQ(userDataFolder(), "/home/me/.local/share/vantoric/");
    EXPECT_EQ(userStateFolder(), "/home/me/.local/state/vantoric/");
    EXPECT_EQ(userConfigFolder(), "/home/me/.config/");
}

TEST(UserFolders, AreNowhereWithoutAHome) {
    const Environment home("HOME", nullptr), data("XDG_DATA_HOME", nullptr), state("XDG_STATE_HOME", nullptr),
        configuration("XDG_CONFIG_HOME", nullptr);
    for (const std::string& folder : {homeFolder(), userDataFolder(), userStateFolder(), userConfigFolder(), userMusicFolder()})
        EXPECT_EQ(folder, "");
}

TEST(UserFolders, MusicLiesWhereTheListOfFoldersSays) {
    const ScratchFolder list;
    const Environment home("HOME", "/home/me"), configuration("XDG_CONFIG_HOME", list.path().c_str());
    EXPECT_EQ(userMusicFolder(), "/home/me/Music/") << "there is no list";
    const auto write = [&](const std::string& text) {
        ASSERT_TRUE(writeFile(list / "user-dirs.dirs", text.data(), text.size()));
    };
    write("XDG_MUSIC_DIR=\"$HOME/Sound\"\nXDG_PICTURES_DIR=\"$HOME/Pictures\"\n");
    EXPECT_EQ(userMusicFolder(), "/home/me/Sound/");
    write("XDG_MUSIC_DIR=\"/srv/music");
    EXPECT_EQ(userMusicFolder(), "/srv/music/") << "the line breaks off";
    write("nothing of music");
    EXPECT_EQ(userMusicFolder(), "/home/me/Music/");
}

}  // namespace
}  // namespace vantoric::platform
