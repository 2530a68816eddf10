#include "platform/settings.h"

#ifndef _WIN32

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/user_folders.h"

namespace vantoric::platform {

namespace {

constexpr std::size_t settingsLimit = 65536;

std::string& chosenFolder() {
    static std::string folder;
    return folder;
}

// With a trailing separator; empty if the user has none.
std::string settingsFolder() {
    const std::string root = chosenFolder().empty() ? userConfigFolder() : chosenFolder();
    return root.empty() ? root : root + "Orvix/Vantoric/";
}

// Values may be any text: line breaks and backslashes are written as \n and \\.
std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\n')
            out += "\\n";
        else if (c == '\\')
            out += "\\\\";
        else
            out += c;
    }
    return out;
}

std::string unescaped(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool marked = text[i] == '\\' && i + 1 < text.size();
        if (marked) ++i;
        out += marked && text[i] == 'n' ? '\n' : text[i];
    }
    return out;
}

using Settings = std::map<std::string, std::string>;

Settings parse(const std::vector<std::uint8_t>& bytes) {
    Settings settings;
    const std::string text(bytes.begin(), bytes.end());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string line = text.substr(at, end - at);
        if (const std::size_t equals = line.find('='); equals != std::string::npos)
            settings[line.substr(0, equals)] = unescaped(line.substr(equals + 1));
        at = end + 1;
    }
    return settings;
}

}  // namespace

void setSettingsFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

std::string readSetting(const std::string& name) {
    const std::string folder = settingsFolder();
    std::vector<std::uint8_t> bytes;
    if (folder.empty() || !readFile(folder + "settings", bytes, settingsLimit)) return {};
    const Settings settings = parse(bytes);
    const auto found = settings.find(name);
    return found == settings.end() ? std::string() : found->second;
}

bool writeSetting(const std::string& name, const std::string& value) {
    const std::string folder = settingsFolder();
    if (folder.empty() || name.find_first_of("=\n") != std::string::npos || !makeFolder(folder)) return false;
    const std::string path = folder + "settings";
    std::vector<std::uint8_t> bytes;
    const FileRead read = tryReadFile(path, bytes, settingsLimit);
    // What cannot be read cannot be kept.
    if (read != FileRead::done && read != FileRead::missing) return false;
    Settings settings = parse(bytes);
    settings[name] = value;
    std::string text;
    for (const auto& [key, stored] : settings) text += key + "=" + escaped(stored) + "\n";
    return text.size() <= settingsLimit && writeFile(path, text.data(), text.size());
}

}  // namespace vantoric::platform

#endif
