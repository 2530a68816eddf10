#include "platform/module_folder.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>

#include <filesystem>
#include <system_error>
#endif

namespace vantoric::platform {

namespace {

std::string& chosenFolder() {
    static std::string folder;
    return folder;
}

std::string below(const std::string& folder, const char* name) { return folder + name + pathSeparator; }

#ifdef _WIN32

std::string modulePath() {
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(&modulePath), &module)) return {};
    char path[modulePathLimit + 1] = {};
    const DWORD length = GetModuleFileNameA(module, path, sizeof path);
    return std::string(path, length < sizeof path ? length : sizeof path - 1);
}

#else

std::string modulePath() {
    namespace fs = std::filesystem;
    Dl_info info{};
    std::error_code error;
    if (dladdr(reinterpret_cast<void*>(&modulePath), &info) == 0 || info.dli_fname == nullptr) return {};
    const fs::path named(info.dli_fname);
    // A program found by the search path is known to the loader by its bare name only.
    const fs::path path = named.has_parent_path() ? fs::absolute(named, error) : fs::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

#endif

}  // namespace

std::string folderOfModulePath(const std::string& path) {
    const std::string cut = path.substr(0, modulePathLimit);
    return cut.substr(0, cut.rfind(pathSeparator) + 1);
}

std::string moduleFolder() { return folderOfModulePath(modulePath()); }

void setDataFolder(const std::string& folder) {
    chosenFolder() = folder;
    if (!folder.empty() && folder.back() != pathSeparator) chosenFolder() += pathSeparator;
}

std::string dataFolder() { return chosenFolder().empty() ? moduleFolder() : chosenFolder(); }
std::string bankFolder() { return below(dataFolder(), "Vantoric_data"); }
std::string soundsFolder() { return below(dataFolder(), "Vantoric_sounds"); }
std::string userFolder() { return below(soundsFolder(), "User"); }
std::string favouritesFolder() { return below(soundsFolder(), "Favourites"); }
std::string wavetableFolder() { return below(dataFolder(), "Vantoric_wavetables"); }

}  // namespace vantoric::platform
