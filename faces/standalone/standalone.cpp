#include "faces/standalone/standalone.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "platform/files.h"
#include "platform/own_files.h"
#include "platform/user_folders.h"

namespace vantoric::standalone {
namespace {

std::string clockText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%d:%04.1f", static_cast<int>(seconds) / 60,
                  seconds - 60 * (static_cast<int>(seconds) / 60));
    return text.data();
}

}  // namespace

std::string newRecordingPath() {
    const std::string folder = platform::userMusicFolder();
    if (folder.empty() || !platform::makeFolder(folder)) return {};
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    std::array<char, 64> name{};
    std::strftime(name.data(), name.size(), "Vantoric %Y-%m-%d %H.%M.%S", &local);
    std::string path = folder + name.data() + ".wav";
    for (int number = 2; platform::exists(path); ++number) path = folder + name.data() + " " + std::to_string(number) + ".wav";
    return path;
}

Standalone::Standalone(platform::Dialogs& dialogs)
    : plugged_(*this, dialogs, PluggedInstrument::Telling::whenAsked),
      player_(instrument_, recorder_),
      hands_(player_),
      midi_(player_),
      sound_(player_) {}

Standalone::~Standalone() {
    sound_.close();  // before the instrument loses its host
    plugged_.showMessages();
}

PatchLoad Standalone::loadPatch(const std::string& name) {
    const std::string inLibrary = platform::belowSounds() + name;
    for (const std::string& path : {name, platform::dataPath(inLibrary + ".fxp"), platform::dataPath(inLibrary)}) {
        if (!platform::exists(path) || platform::isFolder(path)) continue;
        return instrument_.patchFiles().loadPatchFile(path) ? PatchLoad::done : PatchLoad::refused;
    }
    return PatchLoad::missing;
}

void Standalone::loadLastPatch(bool isKeptAgain) {
    if (loadKeptPatch(plugged_) != KeptPatch::unreadable) return;
    const std::string aside = isKeptAgain ? setKeptPatchAside() : "";
    std::string text = "The patch of the last time cannot be read.";
    if (!aside.empty()) text += " It is kept as " + aside;
    instrument_.messages().post("Vantoric", text);
}

// ---- recording ----------------------------------------------------------------------------------------------

void Standalone::toggleRecording() {
    if (recorder_.isRecording()) return endRecording();
    const std::string path = newRecordingPath();
    std::string problem = "there is no folder for music";
    const bool isStarted = !path.empty() && recorder_.start(path, static_cast<int>(player_.rate()), problem);
    news_ = isStarted ? "" : "No recording: " + problem;  // what became of the last one is over
}

void Standalone::endRecording() {
    const bool isWhole = recorder_.stop();
    hasFailed_ = hasFailed_ || !isWhole;
    news_ = "Recorded " + clockText(recorder_.seconds()) + ": " + recorder_.path();
    if (!isWhole)
        news_ = "Recording ended: " + recorder_.trouble() + ". " + clockText(recorder_.seconds()) + " in " + recorder_.path();
}

bool Standalone::finish() {
    if (recorder_.isRecording() || recorder_.hasFailed()) endRecording();
    return !hasFailed_;
}

// ---- looking after it ---------------------------------------------------------------------------------------

void Standalone::poll() {
    sound_.poll();
    if (const std::string news = sound_.takeNews(); !news.empty()) news_ = news;
    if (clockSeconds() >= nextLook_) {
        nextLook_ = clockSeconds() + lookEvery;
        midi_.poll(sound_.midi());
    }
    if (recorder_.hasFailed()) endRecording();
    if (!boxesShown_) plugged_.showMessages();
}

std::string Standalone::takeNews() { return std::exchange(news_, {}); }

}  // namespace vantoric::standalone
