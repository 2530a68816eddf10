// Sound by WASAPI: the system's mixer, shared with other programs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

struct WasapiName {
    std::string name, id;  // as the system shows it; what no other device has
};
// Devices that are plugged in and can play.
std::vector<WasapiName> wasapiDevices();

// Opens a device by its name or id, "default" for what the user has chosen in the system, and plays from its own thread whenever
// the mixer asks. The rate (Hz) is converted by the system where it is not the mixer's; the mixer's own is taken where the system
// does not. The period (frames) is the least that is kept ahead; the mixer has a period of its own, mostly 10 ms. Null with a
// reason where the device can't be opened.
std::unique_ptr<SoundDevice> openWasapi(Player& player, const std::string& name, int rate, int period, std::string& problem);

}  // namespace vantoric::standalone
