// What the program remembers from one start to the next: its settings and the patch as it was left.
#pragma once

#include <set>
#include <string>

#include "faces/common/plugged_instrument.h"
#include "faces/standalone/sound_system.h"

namespace vantoric::standalone {

struct KeptSettings {
    SoundChoice sound;
    double tempo = 120;
    int octave = 3;
    bool showsKeys = true;
    std::set<std::string> unwantedInputs;
    bool operator==(const KeptSettings&) const = default;
};

// Lines "name=value" in the user's state folder. What is missing or makes no sense has its default; lines of unknown names are
// passed over. Not for the audio thread; nothing throws but for short memory.
KeptSettings readKeptSettings();
// False if they cannot be written; the old ones stay then.
bool keepSettings(const KeptSettings& settings);

// The patch in force, beside the settings.
bool keepPatch(PluggedInstrument& plugged);
// False if none is kept, or none that is whole, with the patch as it was; the user is told of one that is not.
bool loadKeptPatch(PluggedInstrument& plugged);

}  // namespace vantoric::standalone
