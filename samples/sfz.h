// SFZ files: a multisample description read line by line by a search for known words, and what of it fits
// into an instrument of twelve oscillators. Pure text and numbers. Any thread but the audio thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantoric {

inline constexpr std::size_t maxSfzBytes = 10000000;    // of a file
inline constexpr std::size_t maxSfzLine = 2000;         // characters; a longer line is ignored
inline constexpr std::size_t maxSfzRegions = 500;       // further ones are ignored
inline constexpr std::size_t importedOscillators = 12;  // four layers of three
inline constexpr int sfzKeyNotGiven = -1;

// Whether a region loops. fromFile: the text says nothing, the wave file decides.
enum class SfzLoop : unsigned char { fromFile, off, on };

// What a region plays with, its own settings over those of its group.
struct SfzRegion {
    std::string sample;  // path as written, behind the default path; empty: none
    int group = 0;       // groups begun before it
    int lokey = sfzKeyNotGiven, hikey = sfzKeyNotGiven, keyCenter = sfzKeyNotGiven;  // 0 to 127
    double tune = 0.0;                                                               // cents
    double volume = 0.0;                                                             // decibels
    std::int32_t offset = 0;                                                         // samples
    std::int32_t loopStart = -1, loopEnd = -1;                                       // samples; -1: not given
    SfzLoop loop = SfzLoop::fromFile;
    int lovel = 0;  // 0 to 127
    // Of the volume envelope, from the first line that has them: seconds, the sustain in percent.
    std::optional<double> attack, hold, decay, sustain, release;
    std::optional<double> veltrack;  // percent
    std::optional<int> polyphony;    // voices, 1 or more
    // Each of these keeps a region out.
    bool isLaterRound = false, isReleaseSound = false, isLowerLayer = false;
    bool isRoundGiven = false;  // by the region itself
};

struct SfzFile {
    int lines = 0;  // that hold anything
    int groups = 0;
    std::vector<SfzRegion> regions;  // that are in, each with a sample, in the order of the file
};

// Reads the text of a file. Any bytes; memory stays within a few megabytes. May throw std::bad_alloc.
SfzFile parseSfz(std::string_view text);

// A number from 0 to 127 or the name of a note, c4 = 60, with # or b, letter case free ("c#4", "Db4", "C-1").
// Nothing if it is neither.
std::optional<int> sfzKey(std::string_view value);

// Indices of the regions, at most twelve of `count`, that are imported: all, or the middle twelve in a row, or
// from 24 on every n-th.
std::vector<std::size_t> chooseRegions(std::size_t count);

// The keys of an oscillator, 0 to 127, both inclusive.
struct KeyRange {
    int low, high;
};
// Widens neighbours to meet half-way, and the outer ones to the ends of the keyboard.
void widenKeys(std::span<KeyRange> ranges);

// Values of `Oct` and `Semi` that play a sample of root key 0 to 127 at its pitch.
float octOfKey(int key);
float semiOfKey(int key);

// Value of an envelope's time parameter for seconds: the inverse of 0.001 / e^(-10 v). 0 for 0, negative
// numbers and NaN.
float envelopeOfSeconds(double seconds);

// Row of the list `PlayMode` that has at least so many voices.
int playModeOf(int voices);

// One oscillator of an import.
struct SfzOscillator {
    std::size_t region;  // its index among the regions that were used
    std::string sample;  // path as the text gives it
    KeyRange keys;
    float oct, semi, detune, vol;     // parameter values, 0 to 1
    std::int32_t offset;              // samples
    std::int32_t loopStart, loopEnd;  // samples; -1: not given
    SfzLoop loop;
};

// All that an import sets. Nothing given: the import's default.
struct SfzPlan {
    std::size_t regions = 0;                                     // that were to choose from
    std::vector<SfzOscillator> oscillators;                      // at most twelve: number k is oscillator k % 3 of layer k / 3
    bool keyInfoMissing = false;                                 // a default of lokey, hikey or pitch_keycenter had to be used
    std::optional<float> attack, hold, decay, sustain, release;  // parameter values
    std::optional<float> velocityDepth;                          // 0 to 1
    std::optional<int> playMode;                                 // row of the list
};

// Chooses and converts. `onlyFirstGroup` leaves out all regions behind the second group marker. May throw
// std::bad_alloc.
SfzPlan planSfz(const SfzFile& file, bool onlyFirstGroup);

}  // namespace vantoric
