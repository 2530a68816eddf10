#include "platform/own_files.h"

#include <unordered_set>

#include "platform/module_folder.h"
#include "platform/user_folders.h"

#ifdef _WIN32
#include <windows.h>

#include "platform/wide_text.h"
#else
#include <unistd.h>
#endif

namespace vantoric::platform {

namespace {

std::string& chosenFolder() {
    static std::string folder;
    return folder;
}

bool canBeWritten(const std::string& folder) {
#ifdef _WIN32
    // Asked of the system's list of rights: a folder's mark for "read only" means something else.
    const HANDLE opened = CreateFileW(wide(folder).c_str(), FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return false;
    CloseHandle(opened);
    return true;
#else
    return access(folder.c_str(), W_OK | X_OK) == 0;
#endif
}

// Whoever is root may write there, and what he makes would stay when the package goes.
bool belongsToSystem([[maybe_unused]] const std::string& folder) {
#ifdef _WIN32
    return false;
#else
    return folder.starts_with("/usr/");
#endif
}

}  // namespace

void setOwnFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

std::string ownFolder() {
    if (!chosenFolder().empty()) return chosenFolder();
    const std::string data = dataFolder();
    if (!isFolder(data) || (!belongsToSystem(data) && canBeWritten(data))) return data;
    const std::string user = userDataFolder();
    return user.empty() ? data : user;
}

void makeOwnFolders() {
    const std::string own = ownFolder();
    if (own == dataFolder()) return;
    makeFolder(own + "Vantoric_data");
    makeFolder(own + belowWavetables());
    for (const char* category : {"User", "Favourites"}) makeFolder(own + belowSounds() + category);
}

std::string belowSounds() { return std::string("Vantoric_sounds") + pathSeparator; }
std::string belowWavetables() { return std::string("Vantoric_wavetables") + pathSeparator; }

std::string userFolder() { return ownFolder() + belowSounds() + "User" + pathSeparator; }
std::string favouritesFolder() { return ownFolder() + belowSounds() + "Favourites" + pathSeparator; }

std::string ownPath(const std::string& below) { return ownFolder() + below; }

std::string dataPath(const std::string& below) {
    const std::string own = ownFolder(), installed = dataFolder();
    return own != installed && exists(own + below) ? own + below : installed + below;
}

void visitDataFolder(const std::string& below, const std::function<bool(FolderEntry&&)>& visit) {
    const std::string own = ownFolder(), installed = dataFolder();
    if (own == installed) return void(visitFolder(installed + below, visit));
    std::unordered_set<std::string> seen;
    bool goesOn = true;
    const auto visitNew = [&](FolderEntry&& entry) {
        if (seen.insert(entry.name).second) goesOn = visit(std::move(entry));
        return goesOn;
    };
    visitFolder(own + below, visitNew);
    if (goesOn) visitFolder(installed + below, visitNew);
}

std::vector<FolderEntry> listDataFolder(const std::string& below) {
    std::vector<FolderEntry> entries;
    visitDataFolder(below, [&](FolderEntry&& entry) {
        entries.push_back(std::move(entry));
        return true;
    });
    return entries;
}

}  // namespace vantoric::platform
