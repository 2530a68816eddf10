// Songs written as text, and how they become MIDI files.
//
// A score is lines of words. A word that starts with ";" makes the rest of its line a comment. Lines that start
// with one of these words say something about the whole:
//
//   title TEXT
//   patch CATEGORY/NAME       the patch of the factory that suits it
//   level DECIBELS            by how much a recording on that patch is to be raised
//   about TEXT                what it shows, for a list of songs
//   loudness LUFS             of the finished recording (ITU-R BS.1770)
//   instrument NAME = CATEGORY/NAME level=DECIBELS pan=POSITION set=PARAMETER=VALUE ...
//                             an instance of the instrument with a patch of its own; level, pan (-100 left to 100
//                             right) and settings of the patch, as vantoric-render takes them, can be left out
//   let NAME = WORDS          a phrase; "@NAME" plays it, "@NAME(c4,e4,g4)" with $1, $2 ... replaced
//   conductor                 what follows is tempo and meter
//   part NAME channel N       what follows is played on channel N (1 to 16), from the start of the song
//   part NAME on INSTRUMENT   the same on channel 1 of that instrument; "channel N on INSTRUMENT" on another one
//
// All other words are music, one after the other:
//
//   c4/4  eb5/8.  f#3         a note: name, octave (c4 is key 60), length; without a length the last one holds
//   [c4 e4 g4]/2              a chord
//   r/4                       a rest
//   lengths                   /1 /2 /4 ... part of a whole note; "." half longer, "t" triplet, "*3" three times,
//                             "+" adds: c4/4+16 f#3/2.*2
//   at the end of a note      "'" short, "_" to its full length and a little over, "!" louder
//   v=80  v=50-90/1*2         velocity; moving evenly from 50 to 90 during two whole notes
//   gate=90                   part of its length that a note sounds, in percent
//   human=6                   velocity strays by up to 6, the same at every compilation
//   up=12                     transposes what follows by semitones
//   cc64=127  cc1=0-90/1      a controller; moving
//   bend=-8192                pitch wheel, -8192 to 8191, or moving
//   program=5                 program change, 0 to 127
//   tempo=72  tempo=72-50/1   quarter notes a minute; moving (conductor)
//   meter=3/4                 (conductor)
//   |                         a bar line stands here: checked against the meter
//   { ... & ... }             at the same time; all branches must be equally long
//   3x( ... )                 three times
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantoric::song {

// Compiles a score to the bytes of a format 1 MIDI file with 480 ticks a quarter note. On failure `problem` is
// "line N: what is wrong" and false is returned. `advice`, if given, becomes what the score says to its player.
struct Instrument {
    std::string name, patch;
    double level = 0.0, pan = 0.0;      // decibels; -100 left to 100 right
    std::vector<std::string> settings;  // "NAME=VALUE"
    std::vector<int> tracks;            // of the MIDI file, where the conductor's is 0
};
struct Advice {
    std::string patch;   // of a song for one instrument; else of its first one; empty if it names none
    double level = 0.0;  // decibels
    std::optional<double> loudness;
    std::vector<Instrument> instruments;  // none if the song names no more than a patch
};
bool compile(const std::string& score, std::vector<std::uint8_t>& midi, std::string& problem, Advice* advice = nullptr);

// The advice as a mix, which vantoric-render plays; `song` is the MIDI file as seen from there.
std::string mixText(const Advice& advice, const std::string& song);

}  // namespace vantoric::song
