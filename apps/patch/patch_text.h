// The readable form of a patch: JSON that holds what differs from the init state.
//
//   {"format": 1, "name": "Soft Pad", "about": "...",
//    "global": {"Volume": "40%", "SoundMod": "Dynamic bass"},
//    "master": {"type": "Reverb Hall", "mix": 33},
//    "layers": [{"SynType1": "Analog", "AttVol": "0.35 sec", "matrix": [...], ...}]}
//
// docs/patches.md describes every key.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "apps/patch/patch.h"

namespace vantoric::patch {

inline constexpr int textFormat = 1;            // also the version of the init state
inline constexpr std::size_t longestName = 26;  // what a patch file stores

// The keys of an effect slot and the parameter numbers behind them, and the same for any other group of a layer.
struct SlotKeys {
    const char* key;
    int type, mix, first;  // parameter numbers; `first` of four
};
inline constexpr SlotKeys insertSlots[] = {
    {"insert1", parameter::FxInType, parameter::FxInMix, parameter::FxInPar1},
    {"insert2", parameter::FxIn2Type, parameter::FxIn2Mix, parameter::FxIn2Par1},
};
inline constexpr SlotKeys masterSlot = {"master", parameter::FxMaType, parameter::FxMaMix, parameter::FxMaPar1};
inline constexpr int slotParameters = 4, matrixRows = 16, arpSteps = 16, stepCount = 16;

// Reads a text into a patch in its init state. `folder`: where sample files with relative paths are, with its
// separator, or else in the folder `samples`, if one is given; `stem`: the name of a patch whose text has none. Throws
// PatchError, for wrong JSON with the line.
void readText(std::string_view text, const std::string& folder, const std::string& stem, Patch& patch,
              const std::string& samples = "");

// Writes a patch. `saveSample(index)` stores the sample of oscillator layer x 3 + oscillator and gives the path for
// the text; empty leaves the sample out.
std::string writeText(const Patch& patch, const std::function<std::string(int index)>& saveSample);

}  // namespace vantoric::patch
