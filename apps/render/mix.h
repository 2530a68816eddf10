// Songs for several instances of a plug-in: what a mix file says, and the instances added up.
//
// A mix is lines of words. A line that starts with ";" is a comment.
//
//   song FILE                      the Standard MIDI File, seen from the folder of the mix
//   loudness LUFS                  of the finished recording; left out: as loud as the instruments are
//   instrument level=DECIBELS pan=POSITION track=N set=PARAMETER=VALUE CATEGORY/PATCH
//                                  an instance. Pan goes from -100 (left) to 100; a track is counted from 0 in the
//                                  file, several can be named, none means all; settings as in settings.h. All but
//                                  the patch, which stands last, can be left out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/midi/midi_file.h"

namespace vantoric::render {

struct MixInstrument {
    std::string patch;              // "CATEGORY/NAME"
    double level = 0.0, pan = 0.0;  // decibels; -100 left to 100 right
    std::vector<int> tracks;        // none: all
    std::vector<std::string> settings;
};

struct Mix {
    std::string song;
    std::optional<double> loudness;  // LUFS
    std::vector<MixInstrument> instruments;
};

// Reads the text of a mix. On failure `problem` is "line N: what is wrong" and false is returned. Takes any bytes.
bool parseMix(const std::string& text, Mix& mix, std::string& problem);

// The file with the events of the given tracks only, tempo, meter and length as they are. No track means all.
midi::File withTracks(const midi::File& file, const std::vector<int>& tracks);

// Stereo in double precision, which grows as it is added to.
class MixBuffer {
public:
    // Adds interleaved stereo from this frame on, by the level (dB) and pan (-100 to 100) of an instrument: equal power,
    // unchanged in the middle.
    void add(std::size_t frame, const float* samples, int frames, double level, double pan);

    std::size_t frames() const { return samples_.size() / 2; }
    std::vector<double>& samples() { return samples_; }  // interleaved

private:
    std::vector<double> samples_;
};

}  // namespace vantoric::render
