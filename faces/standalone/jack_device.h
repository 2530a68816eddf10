// Sound and MIDI by JACK.
#pragma once

#include <memory>
#include <string>

#include "faces/standalone/sound_device.h"

namespace vantoric::standalone {

// Becomes a client of the server that runs, connects its outputs to the first two of the hardware and plays, at the server's
// rate and period. Null with a reason where no server runs; none is started.
std::unique_ptr<SoundDevice> openJack(Player& player, std::string& problem);

}  // namespace vantoric::standalone
