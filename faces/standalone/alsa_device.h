// Sound by ALSA: a card itself, or what the system calls by a name, "default" above all.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// What goes wrong in ALSA's library is said in words of the program's own, not printed.
void quietenAlsa();

struct AlsaName {
    std::string name, description;
};
// Devices that can play, named ones first, then the cards' own.
std::vector<AlsaName> alsaDevices();

// Opens one with the next rate (Hz) and period (frames) that it can do, and plays. Null with a reason where it can't be opened
// or is no stereo device. "null" plays to nobody, in real time.
std::unique_ptr<SoundDevice> openAlsa(Player& player, const std::string& name, int rate, int period, std::string& problem);

}  // namespace vantoric::standalone
