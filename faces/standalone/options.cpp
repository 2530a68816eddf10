#include "faces/standalone/options.h"

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/real_option.h"
#include "base/version.h"
#include "faces/standalone/system.h"

namespace vantoric::standalone {
namespace {

constexpr char exitCodes[] =
    "\nExit codes: 0 done, 1 trouble, 2 wrong use, 3 no sound, 4 no display, 5 no such patch or a damaged one, 6 recording "
    "failed.";

std::string somethingIn(const std::string& text) { return text.empty() ? "should not be empty" : ""; }

void describe(CLI::App& app, Options& options, std::string& sound) {
    app.add_flag_callback("--no-window", [&options] { options.withWindow = false; }, "play without a window, until Ctrl-C");
    app.add_option("--patch", options.patch, "patch to begin with: a file (.fxp), or CATEGORY/NAME of the library")
        ->check(somethingIn);
    const SystemTexts& system = systemTexts();
    std::vector<std::string> kinds;
    for (const SoundKindName& kind : soundKinds()) kinds.emplace_back(kind.name);
    app.add_option("--sound", sound, system.sound)->check(CLI::IsMember(std::move(kinds)));
    app.add_option("--device", options.device, system.device);
    app.add_option("--rate", options.rate, system.rate)->check(CLI::Range(8000, 192000));
    app.add_option("--period", options.period, system.period)->check(CLI::Range(16, 8192));
    app.add_option("--record", options.record, "WAV file to record what is played into, from the first frame on")
        ->check(somethingIn);
    holdToReal(app.add_option("--seconds", options.seconds, "end after playing for so long"), 0.001, 1e6);
    app.add_flag("--list-devices", options.listDevices, "print the sound devices and keyboards that there are");
    app.add_flag("--probe", options.probe, "tell by the exit code whether there are a display and a sound device");
    app.set_version_flag("--version", std::string("vantoric ") + versionText, "print the version");
    app.footer(std::string(system.closing) + exitCodes);
}

}  // namespace

std::optional<Exit> readOptions(int count, char** texts, Options& options) {
    CLI::App app(systemTexts().summary, "vantoric");
    std::string sound;
    describe(app, options, sound);
    try {
        app.parse(count, texts);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Exit::done : Exit::wrongUse;
    }
    SoundKind kind{};
    if (readSoundKind(sound, kind)) options.sound = kind;
    return std::nullopt;
}

SoundChoice chosenSound(const SoundChoice& kept, const Options& options) {
    SoundChoice choice = kept;
    // Who names a device means it.
    if (options.device && !options.sound) choice.kind = namedSound();
    if (options.sound) choice.kind = *options.sound;
    if (options.device) choice.device = *options.device;
    if (options.rate) choice.rate = *options.rate;
    if (options.period) choice.period = *options.period;
    return choice;
}

std::string unusedDevice(const Options& options) {
    if (!options.device || !options.sound || *options.sound == namedSound() || *options.sound == SoundKind::automatic) return {};
    return "--device is of --sound " + nameOf(namedSound()) + " alone: \"" + *options.device + "\" is not used";
}

}  // namespace vantoric::standalone
