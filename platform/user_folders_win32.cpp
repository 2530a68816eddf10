#include "platform/user_folders.h"

#ifdef _WIN32

#include <windows.h>
// After windows.h: they need its types.
#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

#include "platform/files.h"
#include "platform/wide_text.h"

namespace vantoric::platform {

namespace {

std::string environmentFolder(const wchar_t* name) {
    wchar_t text[32768];  // the longest that the system knows
    const DWORD length = GetEnvironmentVariableW(name, text, static_cast<DWORD>(std::size(text)));
    return length == 0 || length >= std::size(text) ? "" : withSeparator(utf8({text, length}));
}

std::string knownFolder(const KNOWNFOLDERID& id) {
    PWSTR path = nullptr;
    const bool isKnown = SUCCEEDED(SHGetKnownFolderPath(id, 0, nullptr, &path)) && path != nullptr;
    const std::string folder = isKnown ? withSeparator(utf8(path)) : "";
    CoTaskMemFree(path);
    return folder;
}

// As the environment says, which a user can change for one start, or as the system knows it.
std::string folderOf(const wchar_t* variable, const KNOWNFOLDERID& id) {
    const std::string folder = environmentFolder(variable);
    return folder.empty() ? knownFolder(id) : folder;
}

std::string below(const std::string& folder, const char* name) { return folder.empty() ? folder : folder + name; }

}  // namespace

std::string homeFolder() { return folderOf(L"USERPROFILE", FOLDERID_Profile); }
std::string userDataFolder() { return below(folderOf(L"LOCALAPPDATA", FOLDERID_LocalAppData), "Vantoric\\"); }
std::string userStateFolder() { return below(folderOf(L"LOCALAPPDATA", FOLDERID_LocalAppData), "Vantoric\\State\\"); }
std::string userConfigFolder() { return folderOf(L"APPDATA", FOLDERID_RoamingAppData); }
std::string userMusicFolder() { return knownFolder(FOLDERID_Music); }

}  // namespace vantoric::platform

#endif
