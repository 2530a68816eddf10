#include "faces/standalone/kept_state.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <functional>
#include <sstream>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/user_state.h"

namespace vantoric::standalone {
namespace {

constexpr std::size_t mostSettings = 1 << 16, mostPatch = std::size_t{1} << 29;  // bytes

std::string pathOf(const char* name) {
    const std::string folder = platform::stateFolder();
    return folder.empty() ? "" : folder + name;
}

std::string settingsPath() { return pathOf("standalone.settings"); }
std::string patchStatePath() { return pathOf("standalone.patch"); }

bool write(const std::string& path, const void* bytes, std::size_t size) {
    return !path.empty() && platform::makeFolder(platform::stateFolder()) && platform::writeFile(path, bytes, size);
}

// A number within bounds; anything else leaves it as it was.
template <class Number>
void readNumber(const std::string& text, Number& number, Number lowest, Number highest) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size() && value >= lowest && value <= highest) number = value;
}

void take(KeptSettings& settings, const std::string& name, const std::string& value) {
    if (name == "sound") readSoundKind(value, settings.sound.kind);
    if (name == "device" && !value.empty()) settings.sound.device = value;
    if (name == "rate") readNumber(value, settings.sound.rate, 8000, 192000);
    if (name == "period") readNumber(value, settings.sound.period, 16, 8192);
    if (name == "tempo") readNumber(value, settings.tempo, 20.0, 300.0);
    if (name == "octave") readNumber(value, settings.octave, 0, 7);
    if (name == "keys") settings.showsKeys = value != "hidden";
    if (name == "not-connected" && !value.empty()) settings.unwantedInputs.insert(value);
}

std::size_t markOf(const ChunkBytes& patch) {
    const auto* const bytes = reinterpret_cast<const char*>(patch.data.get());
    return std::hash<std::string_view>()(std::string_view(bytes, static_cast<std::size_t>(patch.size)));
}

}  // namespace

KeptSettings readKeptSettings() {
    KeptSettings settings;
    std::vector<std::uint8_t> bytes;
    if (settingsPath().empty() || !platform::readFile(settingsPath(), bytes, mostSettings)) return settings;
    std::istringstream text(std::string(bytes.begin(), bytes.end()));
    for (std::string line; std::getline(text, line);)
        if (const auto equals = line.find('='); equals != std::string::npos)
            take(settings, line.substr(0, equals), line.substr(equals + 1));
    return settings;
}

bool keepSettings(const KeptSettings& settings) {
    std::ostringstream text;
    text << "sound=" << nameOf(settings.sound.kind) << "\ndevice=" << settings.sound.device << "\nrate=" << settings.sound.rate
         << "\nperiod=" << settings.sound.period << "\ntempo=" << settings.tempo << "\noctave=" << settings.octave
         << "\nkeys=" << (settings.showsKeys ? "shown" : "hidden") << '\n';
    for (std::string name : settings.unwantedInputs) {
        std::replace(name.begin(), name.end(), '\n', ' ');
        text << "not-connected=" << name << '\n';
    }
    const std::string all = text.str();
    return write(settingsPath(), all.data(), all.size());
}

bool keepSettings(const KeptSettings& settings, const KeptStart& start) {
    return (settings == start.settings && platform::exists(settingsPath())) || keepSettings(settings);
}

std::size_t markOfPatch(PluggedInstrument& plugged) { return markOf(plugged.patch()); }

bool keepPatch(PluggedInstrument& plugged, const KeptStart& start) {
    const ChunkBytes patch = plugged.patch();
    if (start.patch == markOf(patch) && platform::exists(patchStatePath())) return true;
    return patch.size > 0 && write(patchStatePath(), patch.data.get(), static_cast<std::size_t>(patch.size));
}

KeptPatch loadKeptPatch(PluggedInstrument& plugged) {
    std::vector<std::uint8_t> bytes;
    const std::string path = patchStatePath();
    const platform::FileRead read = path.empty() ? platform::FileRead::missing : platform::tryReadFile(path, bytes, mostPatch);
    if (read == platform::FileRead::missing) return KeptPatch::none;
    const bool isLoaded = read == platform::FileRead::done && plugged.restore(bytes.data(), bytes.size());
    return isLoaded ? KeptPatch::loaded : KeptPatch::unreadable;
}

std::string setKeptPatchAside() {
    const std::string path = patchStatePath();
    std::string aside = path + ".unreadable";
    for (int number = 2; platform::exists(aside); ++number) aside = path + ".unreadable " + std::to_string(number);
    return platform::renameFile(path, aside) ? aside : "";
}

}  // namespace vantoric::standalone
