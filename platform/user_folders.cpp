#include "platform/user_folders.h"

#ifndef _WIN32

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/files.h"

namespace vantoric::platform {

namespace {

constexpr std::size_t longestList = 1 << 16;  // bytes

// A relative path counts as none.
std::string environmentFolder(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr && text[0] == '/' ? withSeparator(text) : "";
}

// What a variable names, or a place in the home folder.
std::string folderOf(const char* variable, const char* inHome) {
    if (std::string folder = environmentFolder(variable); !folder.empty()) return folder;
    const std::string home = homeFolder();
    return home.empty() ? home : home + inHome;
}

std::string below(const std::string& folder, const char* name) { return folder.empty() ? folder : folder + name; }

}  // namespace

std::string homeFolder() { return environmentFolder("HOME"); }
std::string userDataFolder() { return below(folderOf("XDG_DATA_HOME", ".local/share/"), "vantoric/"); }
std::string userStateFolder() { return below(folderOf("XDG_STATE_HOME", ".local/state/"), "vantoric/"); }
std::string userConfigFolder() { return folderOf("XDG_CONFIG_HOME", ".config/"); }

std::string userMusicFolder() {
    const std::string home = homeFolder();
    if (home.empty()) return home;
    std::vector<std::uint8_t> bytes;
    readFile(userConfigFolder() + "user-dirs.dirs", bytes, longestList);
    const std::string text(bytes.begin(), bytes.end());
    constexpr char name[] = "XDG_MUSIC_DIR=\"";
    const std::size_t at = text.find(name);
    if (at == std::string::npos) return home + "Music/";
    const std::size_t from = at + sizeof name - 1;
    const std::string folder = text.substr(from, text.find('"', from) - from);
    constexpr char inHome[] = "$HOME";
    if (!folder.starts_with(inHome)) return withSeparator(folder);
    return withSeparator(home.substr(0, home.size() - 1) + folder.substr(sizeof inHome - 1));
}

}  // namespace vantoric::platform

#endif
