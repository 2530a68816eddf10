// A singer and speaker by formants: a glottis, five resonances in a row, and breath (D. H. Klatt, 1980).
#pragma once

#include <array>
#include <vector>

#include "factory/samples/models.h"

namespace vantoric::made {

// How the mouth stands: formants and their widths in Hz.
struct Mouth {
    std::array<double, 5> formants, widths;
};

// Of one speech sound: it is reached in a smooth move of `move` seconds and then held.
struct Sound {
    Mouth mouth;
    double move, hold;     // seconds
    double voice, breath;  // levels
    double hertz;          // pitch at its end
};

// Speaks the sounds one after the other. `vibrato` is the depth in parts of the pitch, 5.5 times a second.
Wave speak(const std::vector<Sound>& sounds, double vibrato, std::uint32_t seed);

// The mouths of sung and spoken sounds: "a", "e", "i", "o", "u", and "w", "r", "y", "g", "m", "@", "d".
Mouth mouthOf(const char* sound);

}  // namespace vantoric::made
