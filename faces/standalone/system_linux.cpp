#include <array>
#include <csignal>
#include <utility>

#include "faces/standalone/alsa_device.h"
#include "faces/standalone/jack_device.h"
#include "faces/standalone/sequencer_input.h"
#include "faces/standalone/system.h"

namespace vantoric::standalone {
namespace {

constexpr std::array<SoundKindName, 4> kinds{
    {{SoundKind::automatic, "auto"}, {SoundKind::jack, "jack"}, {SoundKind::alsa, "alsa"}, {SoundKind::none, "none"}}};

constexpr SystemTexts texts{
    "The synthesizer by itself: its window, sound by JACK or ALSA, MIDI from every keyboard.",
    "auto: JACK where a server runs, else ALSA; jack; alsa; none: time passes in silence",
    "device of ALSA, as --list-devices names it",
    "sample rate in Hz; JACK has its own",
    "frames a block; JACK has its own",
    "The settings panel of the window sets sound and MIDI too, and is remembered; options count for one start.",
};

void (*endOfProgram)() = nullptr;

}  // namespace

std::span<const SoundKindName> soundKinds() { return kinds; }
SoundKind namedSound() { return SoundKind::alsa; }
const SystemTexts& systemTexts() { return texts; }

std::unique_ptr<SoundDevice> openSound(Player& player, const SoundChoice& choice, std::string& problem) {
    std::string noJack, noAlsa;
    std::unique_ptr<SoundDevice> opened;
    if (choice.kind != SoundKind::alsa) opened = openJack(player, noJack);
    if (!opened && choice.kind != SoundKind::jack) opened = openAlsa(player, choice.device, choice.rate, choice.period, noAlsa);
    if (!opened) problem = noJack + (noJack.empty() || noAlsa.empty() ? "" : "; ") + noAlsa;
    return opened;
}

std::unique_ptr<SystemMidi> openSystemMidi(Player& player, std::string& problem) {
    auto sequencer = SequencerInput::open(player, problem);
    if (!sequencer) problem = "no ALSA sequencer: " + problem;
    return sequencer;
}

std::vector<DeviceGroup> soundDevices(Player& player) {
    std::string problem;
    const bool hasJack = openJack(player, problem) != nullptr;
    std::vector<DeviceGroup> groups{{"JACK", {{hasJack ? "a server is running" : problem, ""}}}, {"ALSA (--device)", {}}};
    for (AlsaName& device : alsaDevices())
        groups.back().devices.push_back({std::move(device.name), std::move(device.description)});
    return groups;
}

std::vector<std::string> commandLine(int count, char** texts) { return {texts, texts + count}; }

void watchForEnd(void (*wantEnd)()) {
    endOfProgram = wantEnd;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, [](int) { endOfProgram(); });
    std::signal(SIGXFSZ, SIG_IGN);  // a recording that may grow no more ends as on a full disk
}

void tellEnd() {}

}  // namespace vantoric::standalone
