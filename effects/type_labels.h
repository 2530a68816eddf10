// The names of the effect types as menus show them, and as list parameters are read.
#pragma once

#include <array>

namespace vantoric {

inline constexpr int effectTypeCount = 77;
inline constexpr int trancegateType = 17;  // inserts only: the master slot reads it as off

// By type; "-" is a separator. The trailing blank of "Phaser Stereo " belongs to the label.
inline constexpr std::array<const char*, effectTypeCount> insertTypeLabels = {
    "off",
    "-",
    "Reverb Hall",
    "Reverb Cathedral",
    "Reverb Room",
    "-",
    "Delay",
    "Delay Band",
    "PingPong",
    "Multitap",
    "-",
    "Chorus",
    "Ensemble",
    "Phaser",
    "Flanger",
    "Rotary",
    "-",
    "Trancegate",
    "Compressor",
    "Tube Amp",
    "Equalizer",
    "Surround encode",
    "Vocoder",
    "-",
    "Reverb Infinity",
    "Reverb Big",
    "Reverb Glass",
    "Reverb Plate",
    "Reverb Cold",
    "Reverb Theater",
    "Reverb Hangar",
    "-",
    "Chorus White",
    "Phaser FB",
    "Phaser Stereo ",
    "Vibrato",
    "Vibrato Stereo",
    "Tremolo",
    "Tremolo Stereo",
    "-",
    "Vocoder SVC",
    "Vocoder Pro",
    "-",
    "Delay Wide",
    "Delay Fat",
    "Delay Diffuse",
    "Delay Dual",
    "Tape Delay",
    "Echo",
    "Resonator",
    "Reflections",
    "-",
    "Saturate",
    "Soft Clip",
    "Hard Clip",
    "Recitify",
    "Bitcrush",
    "Warp",
    "Waveshape",
    "Ripple",
    "Amp Sim",
    "Multiband Dist",
    "-",
    "Degrader",
    "Noise",
    "Chorus Standard",
    "Stereo Flanger",
    "Surround Pan",
    "Stereo Width",
    "Laser Punch",
    "-",
    "Reverb Gated",
    "Reverb Gated Echo",
    "Reverb Reverse",
    "-",
    "Hyper Unison",
    "Haas Effect",
};

// The master slot's list differs in one row.
inline constexpr std::array<const char*, effectTypeCount> masterTypeLabels = [] {
    auto labels = insertTypeLabels;
    labels[trancegateType] = insertTypeLabels[0];
    return labels;
}();

}  // namespace vantoric
