// A MIDI file on the clock: seconds, bars, and the messages of a performance frame by frame.
#pragma once

#include <cstdint>
#include <vector>

#include "apps/midi/midi_file.h"
#include "apps/render/plugin.h"

namespace vantoric::render {

// Tempo and meter of a file over its length. Before the first change the tempo is 120 and the meter 4/4.
class Song {
public:
    explicit Song(midi::File file);

    const midi::File& file() const { return file_; }
    // Seconds to the last end of track.
    double length() const { return secondsAt(static_cast<double>(file_.length)); }
    int notes() const;

    double secondsAt(double tick) const;
    double tickAt(double seconds) const;
    // Where the transport stands, seconds from the start of the song, also beyond its end.
    Transport transportAt(double seconds) const;

private:
    struct TempoSpan {
        double tick, seconds, secondsPerTick;
    };
    struct MeterSpan {
        double tick;
        int numerator, denominator;
        double ticksPerBar(double ticksPerQuarter) const { return ticksPerQuarter * 4.0 * numerator / denominator; }
    };

    midi::File file_;
    std::vector<TempoSpan> tempos_;
    std::vector<MeterSpan> meters_;
};

struct TimedMessage {
    std::int64_t frame = 0;  // from the start of the performance
    midi::Message message;
};

// A stretch of the song as it is to be sent. All in order of time.
struct Performance {
    std::vector<TimedMessage> messages;
    std::int64_t frames = 0;  // until the last note is let go; the tail comes after
};

// The messages from `start` to `end` (seconds; end is held to the song's length). Controllers, bends,
// pressures and programs from before the start are sent at frame 0 with their last value; notes that began
// before it are left out. What still sounds at the end is let go there, pedals first.
Performance perform(const Song& song, double rate, double start, double end);

}  // namespace vantoric::render
