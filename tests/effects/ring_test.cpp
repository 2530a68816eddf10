#include "effects/ring.h"

#include <cmath>

namespace vantoric {
namespace {

using Small = Ring<float, 15>;

// Writes `count` samples of 1 from `position` on, as a family's block does.
template <class R>
void play(R& ring, int& position, int count, int block = 64) {
    for (int done = 0; done < count; done += block) {
        const int n = std::min(block, count - done);
        ring.beginBlock(position, n);
        for (int i = 0; i < n; ++i) ring[position++] = 1;
        position &= R::mask;
    }
}

template <class R>
int soundingSamples(const R& ring) {
    int found = 0;
    for (int i = 0; i < R::size; ++i) found += ring[i] != 0 ? 1 : 0;
    return found;
}

TEST(Ring, StartsSilent) { EXPECT_EQ(soundingSamples(Small()), 0); }

TEST(Ring, WrapsIndicesOnBothSides) {
    Small ring;
    ring[5] = 0.25f;
    EXPECT_EQ(ring[5 + Small::size], 0.25f);
    EXPECT_EQ(ring[5 - Small::size], 0.25f);
    ring[-1] = 0.5f;
    EXPECT_EQ(ring[Small::mask], 0.5f);
}

TEST(Ring, KeepsItsSamplesWhenItsMemoryIsTouched) {
    Small ring;
    int position = 0;
    play(ring, position, Small::size - 100);
    ring[0] = -0.0f;
    ring.touch();
    EXPECT_TRUE(std::signbit(ring[0]));
    EXPECT_EQ(soundingSamples(ring), Small::size - 101);
    ring.clear();
    ring.touch(1000);
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, ClearsWhatAShortPlayLeft) {
    Small ring;
    int position = 0;
    play(ring, position, 1000);
    EXPECT_EQ(soundingSamples(ring), 1000);
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, ClearsWhatALongPlayLeft) {
    Small ring;
    int position = 0;
    play(ring, position, 3 * Small::size);
    EXPECT_EQ(soundingSamples(ring), Small::size);
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, ClearsAcrossItsEnd) {
    Small ring;
    int position = Small::size - 300;
    play(ring, position, 3000);
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, AnOldSoundNeverComesBackHoweverClearsFollowOneAnother) {
    Ring<double, 12> ring;
    int position = 0;
    for (int round = 1; round < 60; ++round) {
        play(ring, position, round * 397 % 9000, 1 + round * 13 % 200);
        ring.clear();
        ASSERT_EQ(soundingSamples(ring), 0) << "round " << round;
        if (round % 3 == 0) position = 0;
    }
}

TEST(Ring, ClearsWritesThatJump) {
    Small ring;
    int position = 0;
    play(ring, position, 500);
    position = 20000;
    play(ring, position, 500);
    position = 100;
    play(ring, position, 100);
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, ClearingALongPlayOnlyChangesBuffers) {
    Small ring;
    int position = 0;
    play(ring, position, Small::size);
    const float* before = ring.data();
    ring.clear();
    EXPECT_NE(ring.data(), before);
    // The old buffer is wiped while the ring runs on, eight samples for each one written.
    play(ring, position, Small::size / 8);
    ring.clear();
    play(ring, position, Small::size);
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

TEST(Ring, ScatteredWritesAreAnnouncedWhole) {
    Small ring;
    ring.beginBlock(0, Small::size);
    for (int i = 0; i < Small::size; i += 777) ring[i] = 1;
    ring.clear();
    EXPECT_EQ(soundingSamples(ring), 0);
}

}  // namespace
}  // namespace vantoric
