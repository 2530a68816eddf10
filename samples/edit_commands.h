// The commands of the sample display's "Edit" menu, as what they do to a sound. All work is in 16-bit
// integers; results truncate. Not for the audio thread; from any other.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/random.h"

namespace vantoric {

// A sample as the commands take and leave it.
struct EditSound {
    std::vector<std::int16_t> samples;
    std::int32_t loopStart = 0, loopEnd = 0;  // samples; the end is exclusive. Also the markers of the selection
    std::uint32_t sampleRate = 44100;         // Hz
};

// What a row of the menu is, for whoever runs it.
enum class EditRole : unsigned char {
    separator,
    undo,        // swaps sound and backup; levels are rebuilt with wrap
    clear,       // leaves no sample
    exportWave,  // changes nothing
    autotune,    // sets the rate from the pitch
    tune,        // sets the rate; Oct, Semi, Interv and Detune go to their middle
    loop,        // sets a loop: LoopMod and Start follow, levels are rebuilt with wrap
    data,        // changes the sound: levels are rebuilt without wrap
};

struct EditCommand {
    const char* label;  // "-" for a separator
    EditRole role;
    // Runs it; null for separators and for the rows that need more than the sound.
    void (*apply)(EditSound&, LinearCongruence&);
};

inline constexpr int editCommandCount = 45;
// The rows of the menu by their index.
extern const std::array<EditCommand, editCommandCount> editCommands;

// First row that stores the sound for undo; all from here on do, but for separators and the export.
inline constexpr int firstStoredCommand = 2;

// The samples that a command works on: those between the loop markers, whichever comes first; from 0 to
// `loopEnd` if both are equal. What lies beyond the data is cut.
std::span<std::int16_t> editRange(EditSound& sound);

// Runs command 0 to 44 on a sound. `random` is drawn from once a sample of the range by the noisifying
// commands. False, with nothing done, for an index out of range, for a row whose `apply` is null and for an
// empty sound. May throw std::bad_alloc, with the sound as it was.
bool applyEdit(EditSound& sound, int command, LinearCongruence& random);

}  // namespace vantoric
