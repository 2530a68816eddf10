// The waves of the LFOs: a row has the menu's label of one and the name by which `Lfo` makes it (voice/lfo.cpp).
#pragma once

#include <array>

namespace vantoric::lfo {

// By the index into the list of waves.
enum Wave : int {
    Sine = 2,
    Triangle = 3,
    SawUp = 4,
    SawDown = 5,
    Square = 6,
    Random = 8,
    RandomRamp = 9,
    Digital = 10,
    Bandlimited = 11,
    FadeOut = 13,
    FadeIn = 14,
    FadeInOut = 15,
    FadeStepDown = 16,
    FadeStepUp = 17,
    Square12 = 19,
    Square25 = 20,
    Square33 = 21,
    Square50 = 22,
    Square66 = 23,
    Square75 = 24,
    Square88 = 25,
    Stair4Up = 27,
    Stair8Up = 28,
    Stair4Down = 29,
    Stair8Down = 30,
    Stair4UpDown = 31,
    Stair8UpDown = 32,
};

inline constexpr struct {
    const char* label;
    Wave wave;
} waveRows[] = {
    {"Sine", Sine},
    {"Triangle", Triangle},
    {"Saw up", SawUp},
    {"Saw down", SawDown},
    {"Square", Square},
    {"Random", Random},
    {"Random Ramp", RandomRamp},
    {"Digital", Digital},
    {"Bandlimited", Bandlimited},
    {"Fade out", FadeOut},
    {"Fade in", FadeIn},
    {"Fade in/out", FadeInOut},
    {"Fade step down", FadeStepDown},
    {"Fade step up", FadeStepUp},
    {"Square 12%", Square12},
    {"Square 25%", Square25},
    {"Square 33%", Square33},
    {"Square 50%", Square50},
    {"Square 66%", Square66},
    {"Square 75%", Square75},
    {"Square 88%", Square88},
    {"Stair 4 up", Stair4Up},
    {"Stair 8 up", Stair8Up},
    {"Stair 4 down", Stair4Down},
    {"Stair 8 down", Stair8Down},
    {"Stair 4 up/down", Stair4UpDown},
    {"Stair 8 up/down", Stair8UpDown},
};

inline constexpr int waveCount = Stair8UpDown + 1;

// The menu: "Off" first, a separator ("-") at each index without a wave.
inline constexpr std::array<const char*, waveCount> waveLabels = [] {
    std::array<const char*, waveCount> labels{};
    labels.fill("-");
    labels[0] = "Off";
    for (const auto& row : waveRows) labels[row.wave] = row.label;
    return labels;
}();

}  // namespace vantoric::lfo
