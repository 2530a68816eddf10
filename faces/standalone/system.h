// What the operating system has to play on and to be played by: one file a system, system_linux.cpp and system_win32.cpp. On the
// program's main thread.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "faces/standalone/sound_device.h"
#include "faces/standalone/sound_system.h"

namespace vantoric::standalone {

struct SoundKindName {
    SoundKind kind;
    const char* name;  // on the command line and in the kept settings
};
// Those that the system has, the automatic one and none among them.
std::span<const SoundKindName> soundKinds();
// The kind whose devices a user can name.
SoundKind namedSound();

// What the command line tells of them.
struct SystemTexts {
    const char *summary, *sound, *device, *rate, *period, *closing;
};
const SystemTexts& systemTexts();

// Opens what is chosen, of a kind that makes sound, and plays. Null with a reason where it can't be had. The player outlives it.
std::unique_ptr<SoundDevice> openSound(Player& player, const SoundChoice& choice, std::string& problem);

// MIDI beside that of the sound device. Null with a reason where there is none. The player outlives it.
std::unique_ptr<SystemMidi> openSystemMidi(Player& player, std::string& problem);

// What can play, for the user. A device's name is that for the command line.
struct DeviceGroup {
    std::string heading;
    struct Device {
        std::string name, description;
    };
    std::vector<Device> devices;
};
std::vector<DeviceGroup> soundDevices(Player& player);

// The command line as UTF-8, the program's name first.
std::vector<std::string> commandLine(int count, char** texts);

// Has `wantEnd` called when the user or the system wants the program to end, within a signal or on any thread. Once, at the
// program's start.
void watchForEnd(void (*wantEnd)());
// All that was to be done before the program's end is done: a system that waits for it waits no longer.
void tellEnd();

}  // namespace vantoric::standalone
