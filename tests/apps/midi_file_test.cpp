// MIDI files: what is read from whole and from broken ones, and what is written.
#include "apps/midi/midi_file.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "base/random.h"

namespace vantoric::midi {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes file(int format, int division, std::initializer_list<Bytes> tracks) {
    Bytes bytes = {'M',
                   'T',
                   'h',
                   'd',
                   0,
                   0,
                   0,
                   6,
                   0,
                   static_cast<std::uint8_t>(format),
                   0,
                   static_cast<std::uint8_t>(tracks.size()),
                   static_cast<std::uint8_t>(division >> 8),
                   static_cast<std::uint8_t>(division)};
    for (const Bytes& track : tracks) {
        bytes.insert(bytes.end(), {'M', 'T', 'r', 'k', 0, 0, 0, static_cast<std::uint8_t>(track.size())});
        bytes.insert(bytes.end(), track.begin(), track.end());
    }
    return bytes;
}

const Bytes twoNotes = {0, 0x90, 60, 100, 0x60, 60, 0, 0, 64, 90, 0x60, 64, 0, 0, 0xff, 0x2f, 0};

File parsed(const Bytes& bytes) {
    File result;
    std::string problem;
    EXPECT_TRUE(parse(bytes, result, problem)) << problem;
    return result;
}

std::string refusal(const Bytes& bytes) {
    File result;
    std::string problem;
    EXPECT_FALSE(parse(bytes, result, problem));
    return problem;
}

TEST(MidiFile, ReadsRunningStatus) {
    const File song = parsed(file(0, 96, {twoNotes}));
    ASSERT_EQ(song.events.size(), 4u);
    EXPECT_EQ(song.events[1].message, (Message{0x90, 60, 0}));
    EXPECT_TRUE(song.events[1].message.endsNote());
    EXPECT_EQ(song.events[2].tick, 96);
    EXPECT_EQ(song.events[3].tick, 192);
    EXPECT_EQ(song.length, 192);
}

TEST(MidiFile, PutsTheTracksOfFormat1OnOneTimeLine) {
    const File song = parsed(
        file(1, 96, {{0, 0xff, 0x51, 3, 0x07, 0xa1, 0x20, 0, 0xff, 0x2f, 0}, twoNotes, {0x30, 0xc1, 7, 0, 0xff, 0x2f, 0}}));
    ASSERT_EQ(song.events.size(), 5u);
    EXPECT_EQ(song.events[1].message, (Message{0xc1, 7, 0}));
    EXPECT_EQ(song.events[1].tick, 0x30);
    ASSERT_EQ(song.tempos.size(), 1u);
    EXPECT_DOUBLE_EQ(song.tempos[0].secondsPerQuarter, 0.5);
}

TEST(MidiFile, PlaysTheTracksOfFormat2OneAfterAnother) {
    const File song = parsed(file(2, 96, {twoNotes, twoNotes}));
    ASSERT_EQ(song.events.size(), 8u);
    EXPECT_EQ(song.events[4].tick, 192);
    EXPECT_EQ(song.length, 384);
}

TEST(MidiFile, CountsFilmFramesInRealTime) {
    // 25 frames of 40 parts a second: 1000 ticks a second, whatever the tempo says.
    const File song = parsed(file(0, 0xe728, {{0, 0xff, 0x51, 3, 1, 0, 0, 0, 0x90, 60, 1, 0, 0xff, 0x2f, 0}}));
    EXPECT_DOUBLE_EQ(song.ticksPerQuarter, 500.0);
    EXPECT_TRUE(song.tempos.empty());
}

TEST(MidiFile, ReadsMetersTitlesAndBends) {
    const File song =
        parsed(file(0, 96, {{0, 0xff, 3, 2, 'H', 'i', 0, 0xff, 0x58, 4, 6, 3, 24, 8, 0, 0xe3, 0x7f, 0x40, 0, 0xff, 0x2f, 0}}));
    EXPECT_EQ(song.title, "Hi");
    ASSERT_EQ(song.meters.size(), 1u);
    EXPECT_EQ(song.meters[0].numerator, 6);
    EXPECT_EQ(song.meters[0].denominator, 8);
    EXPECT_EQ(song.events[0].message, (Message{0xe3, 0x7f, 0x40}));
}

TEST(MidiFile, SkipsSystemExclusiveAndForeignChunks) {
    Bytes bytes = file(0, 96, {{0, 0xf0, 3, 1, 2, 0xf7, 0, 0x90, 60, 1, 0, 0xff, 0x2f, 0}});
    const Bytes foreign = {'X', 'x', 'x', 'x', 0, 0, 0, 3, 1, 2, 3};
    bytes.insert(bytes.begin() + 14, foreign.begin(), foreign.end());
    EXPECT_EQ(parsed(bytes).events.size(), 1u);
}

TEST(MidiFile, LivesWithoutAnEndOfTrack) { EXPECT_EQ(parsed(file(0, 96, {{0, 0x90, 60, 1, 0x20, 60, 0}})).length, 0x20); }

TEST(MidiFile, WarnsOfTracksThatAreMissing) {
    Bytes bytes = file(1, 96, {twoNotes});
    bytes[11] = 3;
    File song;
    std::string problem;
    EXPECT_TRUE(parse(bytes, song, problem));
    EXPECT_EQ(problem, "3 tracks announced, 1 found");
}

TEST(MidiFile, RefusesWhatIsNone) {
    EXPECT_EQ(refusal({}), "not a MIDI file");
    EXPECT_EQ(refusal({'R', 'I', 'F', 'F', 0, 0, 0, 0}), "not a MIDI file");
    EXPECT_EQ(refusal(file(3, 96, {twoNotes})), "MIDI file format 3 is unknown");
    EXPECT_EQ(refusal(file(0, 0, {twoNotes})), "broken: the time division is 0");
}

TEST(MidiFile, RefusesEveryTruncation) {
    const Bytes whole = file(1, 96, {twoNotes, twoNotes});
    const std::size_t afterFirstTrack = 14 + 8 + twoNotes.size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        if (size == afterFirstTrack) continue;  // a whole file with a track less
        EXPECT_NE(refusal(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), "") << size;
    }
}

TEST(MidiFile, SaysWhatIsWrongWithATrack) {
    EXPECT_EQ(refusal(file(0, 96, {{0, 60, 100}})), "broken: track 1: it has data without a status byte");
    EXPECT_EQ(refusal(file(0, 96, {{0, 0x90, 60}})), "broken: track 1: it breaks off within an event");
    EXPECT_EQ(refusal(file(0, 96, {{0, 0x90, 60, 0x80}})), "broken: track 1: it has a data byte above 127");
    EXPECT_EQ(refusal(file(0, 96, {{0xff, 0xff, 0xff, 0xff, 0x01}})), "broken: track 1: it breaks off within an event");
}

TEST(MidiFile, SurvivesBytesAtRandom) {
    const Bytes whole = file(1, 96, {twoNotes, twoNotes});
    LinearCongruence random{7};
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = whole;
        for (int i = 0; i < 3; ++i) bytes[(random.next() >> 8) % bytes.size()] = static_cast<std::uint8_t>(random.next() >> 16);
        File song;
        std::string problem;
        if (parse(bytes, song, problem)) {
            EXPECT_GT(song.ticksPerQuarter, 0.0);
            EXPECT_GE(song.length, 0);
        } else {
            EXPECT_NE(problem, "");
        }
    }
}

TEST(MidiFile, ReadsBackWhatItWrites) {
    const std::vector<Event> events = {{0, {0x91, 60, 90}}, {500000, {0x81, 60, 64}}, {240, {0xc1, 12, 0}}};
    const File song = parsed(write(480, "Song", {{0, 0.6}, {960, 0.75}}, {{0, 7, 8}}, {{"One", events}, {"Two", {}}}, 600000));
    EXPECT_EQ(song.title, "Song");
    EXPECT_EQ(song.format, 1);
    EXPECT_DOUBLE_EQ(song.ticksPerQuarter, 480.0);
    ASSERT_EQ(song.tempos.size(), 2u);
    EXPECT_DOUBLE_EQ(song.tempos[1].secondsPerQuarter, 0.75);
    EXPECT_EQ(song.meters[0].denominator, 8);
    ASSERT_EQ(song.events.size(), 3u);
    EXPECT_EQ(song.events[1].message, (Message{0xc1, 12, 0}));
    EXPECT_EQ(song.events[2].tick, 500000);
    EXPECT_EQ(song.length, 600000);
}

}  // namespace
}  // namespace vantoric::midi
