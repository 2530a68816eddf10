// What the program remembers from one start to the next: its settings and the patch as it was left.
#pragma once

#include <cstddef>
#include <optional>
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

// A number that another patch would hardly have.
std::size_t markOfPatch(PluggedInstrument& plugged);

// What was in force as the program started. Where nothing has changed since, and something is kept, nothing is written: another
// program may have kept what was changed in it meanwhile.
struct KeptStart {
    KeptSettings settings;
    std::optional<std::size_t> patch;  // its mark; none for a patch that is to be kept in any case
};
bool keepSettings(const KeptSettings& settings, const KeptStart& start);

// The patch in force, beside the settings.
bool keepPatch(PluggedInstrument& plugged, const KeptStart& start = {});
// Makes the kept one the patch in force; where none is kept, or none that can be read, it stays as it was.
enum class KeptPatch { none, loaded, unreadable };
KeptPatch loadKeptPatch(PluggedInstrument& plugged);
// Gives the kept patch a name that none has yet, so that the next one does not replace it. The new path; empty if it stays.
std::string setKeptPatchAside();

}  // namespace vantoric::standalone
