#include "platform/module_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vantoric::platform {
namespace {

TEST(ModuleFolder, IsWhereThisProgramLies) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string folder = moduleFolder();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(folder.back(), pathSeparator);
    EXPECT_TRUE(std::filesystem::equivalent(folder, std::filesystem::path(program).parent_path()));
}

TEST(ModuleFolder, EndsAfterTheLastSeparator) {
    EXPECT_EQ(folderOfModulePath("/usr/lib/vst/Vantoric.so"), "/usr/lib/vst/");
    EXPECT_EQ(folderOfModulePath("/Vantoric.so"), "/");
    EXPECT_EQ(folderOfModulePath("Vantoric.so"), "");
}

TEST(ModuleFolder, APathOfMoreThan255CharactersIsCut) {
    const std::string folder = "/" + std::string(240, 'd') + "/";  // 242 characters
    EXPECT_EQ(folderOfModulePath(folder + "Vantoric.so"), folder);
    // The cut takes the end of the second folder's name and with it the place where the files are.
    EXPECT_EQ(folderOfModulePath(folder + "a_folder_too_far/Vantoric.so"), folder);
    const std::string exact = "/" + std::string(253, 'd') + "/";
    ASSERT_EQ(exact.size(), 255u);
    EXPECT_EQ(folderOfModulePath(exact + "Vantoric.so"), exact);
    EXPECT_EQ(folderOfModulePath("/" + std::string(300, 'd') + "/Vantoric.so"), "/");
}

TEST(ModuleFolder, AllFilesLieBelowTheDataFolder) {
    setDataFolder("/somewhere/else");
    EXPECT_EQ(dataFolder(), "/somewhere/else/");
    EXPECT_EQ(bankFolder(), "/somewhere/else/Vantoric_data/");
    EXPECT_EQ(soundsFolder(), "/somewhere/else/Vantoric_sounds/");
    EXPECT_EQ(userFolder(), "/somewhere/else/Vantoric_sounds/User/");
    EXPECT_EQ(favouritesFolder(), "/somewhere/else/Vantoric_sounds/Favourites/");
    EXPECT_EQ(wavetableFolder(), "/somewhere/else/Vantoric_wavetables/");
    setDataFolder("/with/separator/");
    EXPECT_EQ(dataFolder(), "/with/separator/");
    setDataFolder("");
    EXPECT_EQ(dataFolder(), moduleFolder());
}

}  // namespace
}  // namespace vantoric::platform
