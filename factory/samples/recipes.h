// The samples of the factory patches: what each is made of.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "factory/samples/models.h"

namespace vantoric::made {

// Finished: from -1 to 1, no constant part.
struct Sample {
    Wave wave;
    std::size_t loop = 0;  // the frame where the loop begins that ends with the wave; 0: none
};
struct Recipe {
    const char* name;  // of the file, without ".wav"
    std::function<Sample()> make;
};
const std::vector<Recipe>& recipes();

// Drums. `force` from 0 to 1 is how hard they are struck: harder is brighter, longer and bends more.
Wave kick(double force);
Wave snare(double force);
Wave tom(double force);
Wave hat(bool open, double force);
Wave clap(std::uint32_t seed);
Wave stick();

// Strings, bars and tubes at the pitch `home`.
struct PluckedString {
    double hertz = home;
    double place = 0.13;      // of the string's length, where it is plucked
    double brightness = 0.6;  // 0 the ball of the thumb, 1 a plectrum
    double seconds = 3.0;     // until it is 60 dB down
    double loss = 0.4;        // 0 steel, 1 nylon: how much faster high partials go
    double body = 0.3;        // how much of the box is heard
    std::uint32_t seed = 1;
};
Wave pluck(const PluckedString& string, double length);
Wave bar(double mallet);                      // 0 soft yarn, 1 hard rubber
Sample tube(double pressure, double length);  // a cylinder with a reed, blown with 0.54 to 0.84; looped

// Voices.
Sample vowel(const char* which, double hertz);  // "a", "e", "i", "o", "u": sung, looped in its second half
Wave phrase();                                  // "we were away a year ago"
Wave syllable();                                // "dah"

}  // namespace vantoric::made
