#include "library/category_hint.h"

#include <string_view>

#include "base/engine_state.h"

namespace vantoric {

namespace {

constexpr char keyOrChord[] = "Hold down a single key or play a chord. You can use the Modwheel to alter the sound.";
constexpr char modwheel[] = "You can use the Modwheel to alter the sound.";

struct Row {
    std::string_view category;
    const char* hint;
};
constexpr Row rows[] = {
    {"ArpMultiLayer", keyOrChord},
    {"ArpMultilayer", keyOrChord},  // as the folder of the factory is written
    {"ArpRhythm", keyOrChord},
    {"ArpSingleLayer", keyOrChord},
    {"Atmo1", keyOrChord},
    {"Atmo2", keyOrChord},
    {"Gate", keyOrChord},
    {"ArpSequence", "Press and hold down a single key of your keyboard. You can use the Modwheel to alter the sound."},
    {"Bass", "Play the bass sounds on the lower keys. You can use the Modwheel to alter the sound."},
    {"Brass", "These sounds are suitable for melodies and chords. You can use the Modwheel to alter the sound"},
    {"Keys", "These sounds are suitable for melodies and chords. You can use the Modwheel to alter the sound"},
    {"Stacked", "Play a single key in the middle of your keyboard. You can use the Modwheel to alter the sound."},
    {"Chip", "Vintage computer sounds from the past. You can use the Modwheel to morph the sound."},
    {"DroidWobble", "Hold down a single key. You can use the Modwheel to alter the sound."},
    {"Drum", "Press a single key on your keyboard. Many patches map different keys to different sounds."},
    {"Drumline", "Press and hold down a single key on your keyboard"},
    {"Effect", "You can use the Modwheel to alter the sound"},
    {"Lead", "These sounds are suitable for the main melody. You can use the Modwheel to alter the sound."},
    {"Organ", "These sounds are suitable for melodies and chords.You can use the Modwheel to alter the sound."},
    {"Pad", "Play a chord and hold down the keys. You can use the Modwheel to alter the sound."},
    {"Percussive", modwheel},
    {"SynthModern", modwheel},
    {"SynthVintage", modwheel},
    {"Semireal", "These sounds are similar to real instruments. You can use the Modwheel to alter the sound."},
    {"Vocal", "Synthetic vocals and chops. You can use the Modwheel to morph the sound."},
    {"Vocoder", "Hold down a key to play a Vocoder phrase. You can use the Modwheel to morph the sound."},
};

}  // namespace

CategoryHint categoryHint(const std::string& category, int loadTarget) {
    if (loadTarget >= 1 && loadTarget <= layerCount)
        return {"Load a patch to synthesizer layer " + std::to_string(loadTarget), HintKind::loadToLayer};
    for (const Row& row : rows)
        if (row.category == category) return {row.hint, HintKind::knownCategory};
    return {"Soundset", HintKind::otherCategory};
}

}  // namespace vantoric
