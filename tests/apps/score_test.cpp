// Songs from text.
#include "apps/song/score.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "apps/midi/midi_file.h"
#include "apps/render/song.h"

namespace vantoric::song {
namespace {

midi::File compiled(const std::string& score) {
    std::vector<std::uint8_t> bytes;
    std::string problem;
    EXPECT_TRUE(compile(score, bytes, problem)) << problem;
    midi::File file;
    EXPECT_TRUE(midi::parse(bytes, file, problem)) << problem;
    return file;
}

midi::File music(const std::string& words) { return compiled("part Piano channel 2\n" + words); }

std::string refusal(const std::string& score) {
    std::vector<std::uint8_t> bytes;
    std::string problem;
    EXPECT_FALSE(compile(score, bytes, problem));
    return problem;
}

std::vector<midi::Event> starts(const midi::File& file) {
    std::vector<midi::Event> result;
    for (const midi::Event& event : file.events)
        if (event.message.startsNote()) result.push_back(event);
    return result;
}

TEST(Score, ReadsNotesAndLengths) {
    const auto notes = starts(music("c4/4 eb5/8. f#3 b8/4t g3/2+8 a0/1*2 c4/4"));
    std::vector<int> keys;
    std::vector<std::int64_t> ticks;
    for (const auto& note : notes) keys.push_back(note.message.data1), ticks.push_back(note.tick);
    EXPECT_EQ(keys, (std::vector<int>{60, 75, 54, 119, 55, 21, 60}));
    EXPECT_EQ(ticks, (std::vector<std::int64_t>{0, 480, 840, 1200, 1520, 2720, 6560}));
    EXPECT_EQ(notes[0].message.channel(), 1);
}

TEST(Score, PlaysChordsBranchesAndRepeats) {
    const auto chord = starts(music("[c4 e4 g4]/2"));
    EXPECT_EQ(chord.size(), 3u);
    EXPECT_EQ(chord[2].tick, 0);
    const midi::File both = music("{ c4/2 & r/4 e4/4 } g4/4");
    EXPECT_EQ(starts(both)[1].tick, 480);
    EXPECT_EQ(starts(both)[2].tick, 960);
    EXPECT_EQ(starts(music("3x( c4/4 2x( d4/8 ) )")).size(), 9u);
}

TEST(Score, PlaysPhrasesWithArguments) {
    const auto notes =
        starts(compiled("let two = $1/4 $2/4\nlet four = @two($1,$2) @two($2,$1)\npart A channel 1\n@four(c4,d4)"));
    ASSERT_EQ(notes.size(), 4u);
    EXPECT_EQ(notes[2].message.data1, 62);
    EXPECT_EQ(notes[3].message.data1, 60);
}

TEST(Score, MovesVelocityControllersAndTempo) {
    const auto notes = starts(music("v=50-90/1 c4/2 c4/2 c4/4"));
    EXPECT_EQ(notes[0].message.data2, 50);
    EXPECT_EQ(notes[1].message.data2, 70);
    EXPECT_EQ(notes[2].message.data2, 90);
    const midi::File wheel = music("cc1=0-127/4 bend=-8192 c4/1");
    EXPECT_EQ(wheel.events.front().message, (midi::Message{0xb1, 1, 0}));
    EXPECT_TRUE(std::any_of(wheel.events.begin(), wheel.events.end(),
                            [](const auto& e) { return e.tick == 480 && e.message == midi::Message{0xb1, 1, 127}; }));
    EXPECT_TRUE(std::any_of(wheel.events.begin(), wheel.events.end(),
                            [](const auto& e) { return e.message == midi::Message{0xe1, 0, 0}; }));
    const midi::File slowing = compiled("conductor\ntempo=120-60/1 r/1\npart A channel 1\nc4/1");
    EXPECT_EQ(slowing.tempos.size(), 9u);
    EXPECT_DOUBLE_EQ(slowing.tempos.back().secondsPerQuarter, 1.0);
}

TEST(Score, ShapesLengthsByMarks) {
    auto end = [](const std::string& words) { return music(words).events.back().tick; };
    EXPECT_EQ(end("gate=50 c4/4"), 240);
    EXPECT_EQ(end("c4/4'"), 192);
    EXPECT_EQ(end("c4/4_"), 494);
    EXPECT_EQ(starts(music("v=60 c4/4!"))[0].message.data2, 74);
}

TEST(Score, EndsANoteBeforeItIsStruckAgain) {
    const midi::File file = music("c4/4_ c4/4");
    EXPECT_TRUE(file.events[1].message.endsNote());
    EXPECT_EQ(file.events[1].tick, 480);
    EXPECT_TRUE(file.events[2].message.startsNote());
}

TEST(Score, SaysWhereItMakesNoSense) {
    EXPECT_EQ(refusal("c4"), "line 1: music before the first part");
    EXPECT_EQ(refusal("part A channel 1\n; words\nc4/4 h4"), "line 3: what is \"h4\"?");
    EXPECT_EQ(refusal("part A channel 17\n"), "line 1: \"17\" should be a whole number from 1 to 16");
    EXPECT_EQ(refusal("part A channel 1\nc4/2 |"), "line 2: this bar line comes 2.000000 quarter notes into a bar");
    EXPECT_EQ(refusal("part A channel 1\n{ c4/2 & c4/4 }"), "line 2: the branches of { & } are not equally long");
    EXPECT_EQ(refusal("part A channel 1\n@none"), "line 2: there is no phrase \"none\" above this line");
    EXPECT_EQ(refusal("let a = @a c4\npart A channel 1\n@a"), "line 3: phrases within phrases without end");
    EXPECT_EQ(refusal("let a = $2/4\npart A channel 1\n@a(c4)"), "line 3: \"a\" wants more arguments");
    EXPECT_EQ(refusal("part A channel 1\n{ c4/2"), "line 2: \"{\" is never closed");
    EXPECT_EQ(refusal("part A channel 1\n[c4 e4"), "line 2: a chord without \"]\"");
    EXPECT_EQ(refusal("part A channel 1\nv=200"), "line 2: \"v=200\" is out of range");
    EXPECT_EQ(refusal("conductor\nc4/4"), "line 2: \"c4/4\" stands outside of a part");
    EXPECT_EQ(refusal("title Nothing"), "line 1: a score without a part");
}

TEST(Score, AdvisesItsPlayer) {
    std::vector<std::uint8_t> bytes;
    std::string problem;
    Advice advice;
    EXPECT_TRUE(compile("patch Keys/Paper Harp\nlevel 4\npart Piano channel 1\nc4/4", bytes, problem, &advice)) << problem;
    EXPECT_EQ(advice.patch, "Keys/Paper Harp");
    EXPECT_EQ(advice.level, 4.0);
    EXPECT_TRUE(compile("part Piano channel 1\nc4/4", bytes, problem, &advice)) << problem;
    EXPECT_EQ(advice.patch, "");
    EXPECT_EQ(advice.level, 0.0);
    EXPECT_EQ(refusal("level loud\npart Piano channel 1\nc4/4").substr(0, 6), "line 1");
}

TEST(Score, SpreadsItsPartsOverInstruments) {
    const std::string score =
        "loudness -16\ninstrument bass = Bass/Rubber Bass level=-3.5 pan=-20\n"
        "instrument keys = Keys/Paper Harp set=2:Cutoff1=0.5\n"
        "part Left Hand on bass\nc2/1\npart Right channel 3 on keys\nc5/1\npart Middle on keys\nc4/1";
    std::vector<std::uint8_t> bytes;
    std::string problem;
    Advice advice;
    ASSERT_TRUE(compile(score, bytes, problem, &advice)) << problem;
    EXPECT_EQ(advice.patch, "Bass/Rubber Bass");
    EXPECT_EQ(mixText(advice, "a.mid"),
              "song a.mid\nloudness -16\ninstrument level=-3.5 pan=-20 track=1 Bass/Rubber Bass\n"
              "instrument level=0 pan=0 track=2 track=3 set=2:Cutoff1=0.5 Keys/Paper Harp\n");
    const auto notes = starts(compiled(score));
    ASSERT_EQ(notes.size(), 3u);
    EXPECT_EQ(notes[0].message.channel(), 0);
    EXPECT_EQ(notes[1].message.channel(), 2);
    EXPECT_EQ(notes[1].track, 2);
}

TEST(Score, SaysWhatIsWrongWithInstruments) {
    EXPECT_EQ(refusal("instrument bass Bass/X\npart A on bass\nc4"),
              "line 1: an instrument is written as: instrument NAME = CATEGORY/PATCH level=-6 pan=20");
    EXPECT_EQ(refusal("instrument bass = level=3"), "line 1: the instrument \"bass\" has no patch");
    EXPECT_EQ(refusal("instrument bass = Bass/X pan=200"), "line 1: \"200\" is out of range");
    EXPECT_EQ(refusal("instrument bass = Bass/X colour=3"), "line 1: what is \"colour=3\"?");
    EXPECT_EQ(refusal("instrument bass = Bass/X\npart A on drums\nc4"),
              "line 3: there is no instrument \"drums\" for the part \"A\"");
    EXPECT_EQ(refusal("instrument bass = Bass/X\npart A channel 2\nc4"), "line 3: the part \"A\" is on no instrument");
    EXPECT_EQ(refusal("part A"), "line 1: a part is opened by: part NAME channel N, or part NAME on INSTRUMENT");
    EXPECT_EQ(refusal("loudness 3"), "line 1: \"3\" is out of range");
}

// The scores in the folder of the demo songs.
std::vector<std::string> demoSongs() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SONG_FOLDER))
        if (entry.path().extension() == ".song") names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Score, HasAtLeastTenDemoSongs) { EXPECT_GE(demoSongs().size(), 10u); }

class DemoSongs : public testing::TestWithParam<std::string> {};

TEST_P(DemoSongs, LastFrom40To125SecondsAndHaveDynamics) {
    std::ifstream input(std::filesystem::path(SONG_FOLDER) / GetParam());
    const midi::File file = compiled({std::istreambuf_iterator<char>(input), {}});
    const render::Song song(file);
    EXPECT_GT(song.length(), 40.0);
    EXPECT_LT(song.length(), 125.0);
    EXPECT_GE(file.tempos.size(), 1u);
    EXPECT_NE(file.title, "");
    int softest = 127, loudest = 0;
    for (const auto& note : starts(file)) {
        softest = std::min<int>(softest, note.message.data2);
        loudest = std::max<int>(loudest, note.message.data2);
    }
    EXPECT_GE(loudest - softest, 25);
}

TEST_P(DemoSongs, NamePatchesOfTheFactoryAndALoudness) {
    std::ifstream input(std::filesystem::path(SONG_FOLDER) / GetParam());
    std::vector<std::uint8_t> bytes;
    std::string problem;
    Advice advice;
    EXPECT_TRUE(compile({std::istreambuf_iterator<char>(input), {}}, bytes, problem, &advice)) << problem;
    std::vector<std::string> patches = {advice.patch};
    for (const Instrument& instrument : advice.instruments) patches.push_back(instrument.patch);
    for (const std::string& patch : patches)
        EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(SONG_FOLDER) / "../patches" / (patch + ".json"))) << patch;
    EXPECT_EQ(advice.loudness, -16.0);
}

TEST_P(DemoSongs, StayOnTheFourChannelsOfAPatch) {
    std::ifstream input(std::filesystem::path(SONG_FOLDER) / GetParam());
    for (const auto& event : compiled({std::istreambuf_iterator<char>(input), {}}).events) EXPECT_LT(event.message.channel(), 4);
}

TEST_P(DemoSongs, LetGoOfEveryKey) {
    std::ifstream input(std::filesystem::path(SONG_FOLDER) / GetParam());
    const midi::File file = compiled({std::istreambuf_iterator<char>(input), {}});
    std::map<std::pair<int, int>, int> held;
    for (const auto& event : file.events) {
        if (event.message.startsNote()) ++held[{event.message.channel(), event.message.data1}];
        if (event.message.endsNote()) --held[{event.message.channel(), event.message.data1}];
    }
    for (const auto& [key, count] : held) EXPECT_EQ(count, 0) << key.first << " " << key.second;
}

INSTANTIATE_TEST_SUITE_P(All, DemoSongs, testing::ValuesIn(demoSongs()),
                         [](const auto& song) { return song.param.substr(0, song.param.find('.')); });

}  // namespace
}  // namespace vantoric::song
