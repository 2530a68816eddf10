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
// Makes the kept one the patch in force; where none is kept, or none that can be read, it stays as it was.
enum class KeptPatch { none, loaded, unreadable };
KeptPatch loadKeptPatch(PluggedInstrument& plugged);
// Gives the kept patch a name that none has yet, so that the next one does not replace it. The new path; empty if it stays.
std::string setKeptPatchAside();

}  // namespace vantoric::standalone
