#include "platform/module_folder.h"

#ifdef _WIN32
#include <windows.h>

#include "platform/wide_text.h"
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

constexpr int mostClimbed = 4;

std::string below(const std::string& folder, const char* name) { return folder + name + pathSeparator; }

#ifdef _WIN32

constexpr DWORD longestPath = 32768;  // that the system knows

// Behind all links; the path itself where the system does not tell.
std::wstring realPath(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return path;
    std::wstring real(longestPath, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file, real.data(), longestPath, FILE_NAME_NORMALIZED);
    CloseHandle(file);
    if (length == 0 || length >= longestPath) return path;
    real.resize(length);
    const std::wstring longForm = L"\\\\?\\", shareForm = longForm + L"UNC\\";
    if (real.starts_with(shareForm)) return L"\\\\" + real.substr(shareForm.size());
    return real.starts_with(longForm) ? real.substr(longForm.size()) : real;
}

std::string modulePath() {
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&modulePath), &module)) return {};
    std::wstring path(longestPath, L'\0');
    const DWORD length = GetModuleFileNameW(module, path.data(), longestPath);
    path.resize(length < longestPath ? length : 0);
    return utf8(realPath(path));
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
    if (error) return {};
    // Weakly: a module that was replaced or removed since it was loaded is where it was.
    const fs::path real = fs::weakly_canonical(path, error);
    return error ? path.string() : real.string();
}

#endif

}  // namespace

std::string folderOfModulePath(const std::string& path) { return path.substr(0, path.rfind(pathSeparator) + 1); }

std::string moduleFolder() { return folderOfModulePath(modulePath()); }

void setDataFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

std::string installedFolder(const std::string& moduleFolder) {
    std::string at = moduleFolder;
    for (int climbed = 0; climbed <= mostClimbed && !at.empty(); ++climbed) {
        if (isFolder(at + "Vantoric_data")) return at;
        at = folderOfModulePath(at.substr(0, at.size() - 1));
    }
    return moduleFolder;
}

std::string dataFolder() { return chosenFolder().empty() ? installedFolder(moduleFolder()) : chosenFolder(); }
std::string bankFolder() { return below(dataFolder(), "Vantoric_data"); }
std::string soundsFolder() { return below(dataFolder(), "Vantoric_sounds"); }
std::string wavetableFolder() { return below(dataFolder(), "Vantoric_wavetables"); }

}  // namespace vantoric::platform
