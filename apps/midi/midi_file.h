// Standard MIDI files, read and written. Reading takes formats 0, 1 and 2, running status, both kinds of
// time division and chunks of unknown type; it never trusts a length. (MIDI 1.0 detailed specification,
// Standard MIDI Files 1.0.)
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantoric::midi {

// A channel message. `data2` is 0 where the message has one data byte.
struct Message {
    std::uint8_t status = 0, data1 = 0, data2 = 0;

    int kind() const { return status & 0xf0; }
    int channel() const { return status & 0x0f; }
    bool startsNote() const { return kind() == 0x90 && data2 > 0; }
    bool endsNote() const { return kind() == 0x80 || (kind() == 0x90 && data2 == 0); }
    friend bool operator==(const Message&, const Message&) = default;
};

struct Event {
    std::int64_t tick = 0;
    Message message;
    int track = 0;  // of a file that was read: the number of its track, from 0
};

struct TempoChange {
    std::int64_t tick = 0;
    double secondsPerQuarter = 0.5;
};

struct MeterChange {
    std::int64_t tick = 0;
    int numerator = 4, denominator = 4;
};

// A whole file on one time line. Tracks of format 2 follow one another. Where the file divides time by film
// frames, a quarter note stands for half a second and tempo changes are left out.
struct File {
    int format = 1;
    double ticksPerQuarter = 480;
    std::vector<Event> events;  // by time; at one time by track, then in the order of the track
    std::vector<TempoChange> tempos;
    std::vector<MeterChange> meters;
    std::int64_t length = 0;  // ticks, to the last end of track
    std::string title;        // the name of the first track that has one
};

// Reads a file from memory. On failure `file` is undefined and `problem` says what is wrong. `problem` can
// also hold a warning after success: fewer tracks than announced.
bool parse(std::span<const std::uint8_t> bytes, File& file, std::string& problem);

// The same from disk.
bool load(const std::string& path, File& file, std::string& problem);

// One track of a file to write. Events need not be in order; those of one tick keep theirs.
struct Track {
    std::string name;
    std::vector<Event> events;
};

// A format 1 file: a first track with title, tempos and meters, then the given ones. `length` is the tick of
// every end of track, if no event is later. ticksPerQuarter: 1 to 32767.
std::vector<std::uint8_t> write(int ticksPerQuarter, const std::string& title, const std::vector<TempoChange>& tempos,
                                const std::vector<MeterChange>& meters, const std::vector<Track>& tracks, std::int64_t length);

}  // namespace vantoric::midi
