#include "apps/render/patch_library.h"

#include <filesystem>
#include <system_error>

#include "platform/module_folder.h"
#include "platform/own_files.h"

namespace vantoric::render {

namespace fs = std::filesystem;

void chooseLibrary(const std::string& plugin, const std::string& song) {
    std::error_code ignored;
    const fs::path own = platform::installedFolder(platform::folderOfModulePath(fs::weakly_canonical(plugin, ignored)));
    const fs::path above = song.empty() ? own : fs::absolute(song, ignored).parent_path() / "..";
    platform::setDataFolder(own);
    for (const fs::path& folder : {own, above, above / "Vantoric"})
        if (fs::is_directory(folder / "Vantoric_sounds", ignored)) return platform::setDataFolder(folder.lexically_normal());
}

std::string libraryPatch(const std::string& name) { return platform::dataPath(platform::belowSounds() + name + ".fxp"); }

std::string patchPath(const std::string& nameOrFile) {
    const std::string inLibrary = libraryPatch(nameOrFile);
    const bool isFile = platform::exists(nameOrFile) && !platform::isFolder(nameOrFile);
    return !isFile && platform::exists(inLibrary) ? inLibrary : nameOrFile;
}

}  // namespace vantoric::render
