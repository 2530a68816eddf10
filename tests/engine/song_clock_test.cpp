#include "engine/song_clock.h"

#include <gtest/gtest.h>

#include <limits>

#include "engine/rates.h"

namespace vantoric {
namespace {

struct Song {
    Song() { setRates(state, 48000.0f); }
    void tick(double tempo, double ppqPos) {
        const Transport answer{true, tempo, ppqPos};
        clock.tick(state, &answer);
    }
    EngineState state;
    SongClock clock;
};

TEST(SongClock, ConstantHostPositionLetsTheSongRunOn) {
    Song song;
    song.tick(90.0, 4.25);
    EXPECT_EQ(song.state.songPosition, 4.25);
    for (int tick = 0; tick < 1000; ++tick) song.tick(90.0, 4.25);
    EXPECT_NEAR(song.state.songPosition, 4.25 + 90.0 / 60, 1e-9);
    EXPECT_EQ(song.clock.lastPpqPos(), 4.25);
}

TEST(SongClock, MovingHostPositionIsTaken) {
    Song song;
    song.tick(120.0, 8.0);
    song.tick(120.0, 8.5);
    EXPECT_EQ(song.state.songPosition, 8.5);
}

TEST(SongClock, ImpossibleTemposReadAs120) {
    Song song;
    for (const double tempo : {0.0, -3.0, 10000.5, std::numeric_limits<double>::quiet_NaN()}) {
        song.tick(tempo, 1.0);
        EXPECT_EQ(song.state.tempoBpm, 120.0) << tempo;
    }
    song.tick(10000.0, 1.0);
    EXPECT_EQ(song.state.tempoBpm, 10000.0);
}

TEST(SongClock, WithoutAnAnswerThePositionStandsAt120) {
    Song song;
    song.tick(140.0, 2.5);
    song.clock.tick(song.state, nullptr);
    EXPECT_EQ(song.state.tempoBpm, 120.0);
    EXPECT_EQ(song.state.songPosition, 2.5);
}

TEST(SongClock, PositionsOutOfRangeBecomeZero) {
    Song song;
    for (const double position : {-0.001, 1000000.5, std::numeric_limits<double>::quiet_NaN()}) {
        song.tick(120.0, 3.0);
        song.tick(120.0, position);
        EXPECT_EQ(song.state.songPosition, 0.0) << position;
    }
    song.tick(120.0, 1000000.0);
    EXPECT_EQ(song.state.songPosition, 1000000.0);
}

TEST(SongClock, ResetForgetsTheHostsPosition) {
    Song song;
    song.tick(120.0, 5.0);
    song.clock.reset(song.state);
    EXPECT_EQ(song.state.songPosition, 0.0);
    EXPECT_EQ(song.clock.lastPpqPos(), 0.0);
    song.tick(120.0, 5.0);
    EXPECT_EQ(song.state.songPosition, 5.0);
}

}  // namespace
}  // namespace vantoric
