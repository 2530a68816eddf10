// The command line.
#pragma once

#include <optional>
#include <string>

#include "faces/standalone/sound_system.h"

namespace vantoric::standalone {

// What the program tells whoever started it.
enum class Exit { done = 0, trouble = 1, wrongUse = 2, noSound = 3, noDisplay = 4, noPatch = 5, noRecording = 6 };

struct Options {
    // In place of what was kept from the last time.
    std::optional<SoundKind> sound;
    std::optional<std::string> device;
    std::optional<int> rate, period;

    bool withWindow = true;
    std::string patch;   // empty: the one from the last time
    std::string record;  // empty: nothing
    double seconds = 0;  // of playing until the program ends; 0: until the user ends it
    bool listDevices = false, probe = false;
};

// Reads the command line. Nothing if the program is to go on; else it has printed what was asked for, or what is wrong.
std::optional<Exit> readOptions(int count, char** texts, Options& options);

// The kept choice with what the command line says.
SoundChoice chosenSound(const SoundChoice& kept, const Options& options);
// What to tell of a device that was named beside a kind of sound that takes none; empty if all is well.
std::string unusedDevice(const Options& options);

}  // namespace vantoric::standalone
