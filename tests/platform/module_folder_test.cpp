#include "platform/module_folder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/scratch_folder.h"

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

TEST(ModuleFolder, APathMayHaveAnyLength) {
    for (const std::size_t length : {240u, 253u, 254u, 300u, 5000u}) {
        const std::string folder = "/" + std::string(length, 'd') + "/";
        EXPECT_EQ(folderOfModulePath(folder + "Vantoric.so"), folder);
        EXPECT_EQ(folderOfModulePath(folder + "a_folder_further/Vantoric.so"), folder + "a_folder_further/");
    }
}

// A module that tells where it lies, loaded from a path of one's own.
class LoadedProbe {
public:
    explicit LoadedProbe(const std::string& path) : module_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (module_ == nullptr) ADD_FAILURE() << dlerror();
    }
    ~LoadedProbe() {
        if (module_ != nullptr) dlclose(module_);
    }
    LoadedProbe(const LoadedProbe&) = delete;
    LoadedProbe& operator=(const LoadedProbe&) = delete;

    std::string dataFolder() const {
        if (module_ == nullptr) return {};
        const auto ask = reinterpret_cast<const char* (*)()>(dlsym(module_, "probedDataFolder"));
        return ask == nullptr ? std::string() : ask();
    }

private:
    void* module_;
};

// Where a copy of the module was put for a test, without links in it.
std::string installProbe(const std::string& folder) {
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(MODULE_PROBE, folder + "probe.so");
    return std::filesystem::canonical(folder).string() + "/";
}

TEST(ModuleFolder, AModuleFindsItsDataBesideItself) {
    const ScratchFolder folder;
    const std::string installed = installProbe(folder / "vst/");
    EXPECT_EQ(LoadedProbe(installed + "probe.so").dataFolder(), installed);
}

TEST(ModuleFolder, AModuleLoadedThroughLinksFindsItsDataBesideTheRealFile) {
    namespace fs = std::filesystem;
    const ScratchFolder folder;
    const std::string installed = installProbe(folder / "opt/vantoric/");
    fs::create_directories(folder / "home/vst");
    fs::create_symlink("../../opt/vantoric/probe.so", folder / "home/vst/second.so");
    fs::create_symlink("second.so", folder / "home/vst/first.so");
    fs::create_directory_symlink("opt", folder / "linked");
    for (const char* path : {"home/vst/second.so", "home/vst/first.so", "linked/vantoric/probe.so"})
        EXPECT_EQ(LoadedProbe(folder / path).dataFolder(), installed) << path;
}

TEST(ModuleFolder, AModuleFarDownFindsItsDataToo) {
    const ScratchFolder folder;
    std::string deep = folder.path();
    for (int i = 0; i < 8; ++i) deep += std::string(200, static_cast<char>('a' + i)) + "/";
    const std::string installed = installProbe(deep);
    ASSERT_GT(installed.size(), 1600u);
    EXPECT_EQ(LoadedProbe(installed + "probe.so").dataFolder(), installed);
}

TEST(ModuleFolder, AModuleThatIsReplacedWhileItRunsStillKnowsItsFolder) {
    const ScratchFolder folder;
    const std::string installed = installProbe(folder / "vst/");
    const LoadedProbe probe(installed + "probe.so");
    std::filesystem::remove(installed + "probe.so");
    EXPECT_EQ(probe.dataFolder(), installed);
}

TEST(ModuleFolder, AllFilesLieBelowTheDataFolder) {
    setDataFolder("/somewhere/else");
    EXPECT_EQ(dataFolder(), "/somewhere/else/");
    EXPECT_EQ(bankFolder(), "/somewhere/else/Vantoric_data/");
    EXPECT_EQ(soundsFolder(), "/somewhere/else/Vantoric_sounds/");
    EXPECT_EQ(wavetableFolder(), "/somewhere/else/Vantoric_wavetables/");
    setDataFolder("/with/separator/");
    EXPECT_EQ(dataFolder(), "/with/separator/");
    setDataFolder("");
    EXPECT_EQ(dataFolder(), moduleFolder());
}

}  // namespace
}  // namespace vantoric::platform
