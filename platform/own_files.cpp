#include "platform/own_files.h"

#include <cstdlib>
#include <unordered_set>

#include "platform/module_folder.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vantoric::platform {

namespace {

std::string& chosenFolder() {
    static std::string folder;
    return folder;
}

std::string withSeparator(std::string folder) {
    if (!folder.empty() && folder.back() != pathSeparator) folder += pathSeparator;
    return folder;
}

bool canBeWritten(const std::string& folder) {
#ifdef _WIN32
    return _access(folder.c_str(), 2) == 0;
#else
    return access(folder.c_str(), W_OK | X_OK) == 0;
#endif
}

std::string environmentFolder(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr ? withSeparator(text) : "";
}

// Empty if the user has none.
std::string userDataFolder() {
#ifdef _WIN32
    const std::string local = environmentFolder("LOCALAPPDATA");
    return local.empty() ? local : local + "Vantoric\\";
#else
    const std::string data = environmentFolder("XDG_DATA_HOME");
    if (data.starts_with('/')) return data + "vantoric/";
    const std::string home = environmentFolder("HOME");
    return home.starts_with('/') ? home + ".local/share/vantoric/" : "";
#endif
}

}  // namespace

void setOwnFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

std::string ownFolder() {
    if (!chosenFolder().empty()) return chosenFolder();
    const std::string data = dataFolder();
    if (!isFolder(data) || canBeWritten(data)) return data;
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
