#include <array>
#include <atomic>
#include <csignal>

#include "faces/standalone/system.h"
#include "faces/standalone/wasapi_device.h"
#include "faces/standalone/winmm_inputs.h"
#include "platform/wide_text.h"

// After our own headers: it takes plain words for its own.
#include <windows.h>
// After windows.h: it needs its types.
#include <shellapi.h>

namespace vantoric::standalone {
namespace {

constexpr std::array<SoundKindName, 3> kinds{
    {{SoundKind::automatic, "auto"}, {SoundKind::wasapi, "wasapi"}, {SoundKind::none, "none"}}};

constexpr SystemTexts texts{
    "The synthesizer by itself: sound by WASAPI, MIDI from every keyboard.",
    "auto: WASAPI; wasapi; none: time passes in silence",
    "device of WASAPI, as --list-devices names it",
    "sample rate in Hz",
    "frames that are kept ahead at least; the system has a period of its own",
    "Options count for one start.",
};

void (*endOfProgram)() = nullptr;
std::atomic<bool> hasEnded{false};

// The system ends a program whose console is closed as soon as this returns, or after some seconds.
BOOL WINAPI consoleTold(DWORD) {
    endOfProgram();
    constexpr int mostWaits = 100, pause = 50;  // milliseconds
    for (int i = 0; i < mostWaits && !hasEnded; ++i) Sleep(pause);
    return TRUE;
}

}  // namespace

std::span<const SoundKindName> soundKinds() { return kinds; }
SoundKind namedSound() { return SoundKind::wasapi; }
const SystemTexts& systemTexts() { return texts; }

std::unique_ptr<SoundDevice> openSound(Player& player, const SoundChoice& choice, std::string& problem) {
    return openWasapi(player, choice.device, choice.rate, choice.period, problem);
}

std::unique_ptr<SystemMidi> openSystemMidi(Player& player, std::string&) { return std::make_unique<WinmmInputs>(player); }

std::vector<DeviceGroup> soundDevices(Player&) {
    DeviceGroup group{"WASAPI (--device)", {}};
    for (WasapiName& device : wasapiDevices()) group.devices.push_back({std::move(device.name), std::move(device.id)});
    return {group};
}

std::vector<std::string> commandLine(int count, char** given) {
    SetConsoleOutputCP(CP_UTF8);
    int wideCount = 0;
    LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &wideCount);
    if (words == nullptr) return {given, given + count};
    std::vector<std::string> line;
    for (int i = 0; i < wideCount; ++i) line.push_back(platform::utf8(words[i]));
    LocalFree(words);
    return line;
}

void watchForEnd(void (*wantEnd)()) {
    endOfProgram = wantEnd;
    SetConsoleCtrlHandler(consoleTold, TRUE);
    // Also sent by programs that have no console.
    std::signal(SIGTERM, [](int) { endOfProgram(); });
}

void tellEnd() { hasEnded = true; }

}  // namespace vantoric::standalone
