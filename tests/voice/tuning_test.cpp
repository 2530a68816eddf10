#include "voice/tuning.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <random>

namespace vantoric {
namespace {

// Sixteen voices of a layer, as far as tuning sees them.
struct Voices {
    std::array<std::int8_t, voiceCount> note;
    std::array<Envelope, voiceCount> volume;
    std::array<double, voiceCount> offset{}, factor;
    std::array<TunedVoice, voiceCount> seen;
    Retuner retuner;

    explicit Voices(std::initializer_list<int> keys) {
        note.fill(60);
        factor.fill(1.0);
        std::size_t i = 0;
        for (int key : keys) {
            note[i] = static_cast<std::int8_t>(key);
            volume[i++].state = Envelope::Sustain;
        }
        for (std::size_t v = 0; v < seen.size(); ++v) seen[v] = {&note[v], &volume[v], &offset[v], &factor[v]};
    }
    void tick(int microtuning, bool oneVoice = false) { retuner.retune(seen, microtuning, oneVoice); }
};

constexpr int wellTempered = 0, fatClean = 4, justIntonation = 6, a432 = 7, a424 = 8;

TEST(Retuner, MajorTriadInJustIntonationLowersTheThirdByFourteenCents) {
    Voices voices({60, 64, 67});
    voices.tick(justIntonation);
    EXPECT_DOUBLE_EQ(voices.offset[0], 5.0);
    EXPECT_DOUBLE_EQ(voices.offset[1], -9.0);
    EXPECT_DOUBLE_EQ(voices.offset[2], 7.0);
    EXPECT_NEAR(1200.0 * std::log2(voices.factor[1] / voices.factor[0]), -14.0, 0.01);
}

TEST(Retuner, LoneNoteKeepsItsTuningAndASecondRetunesBothAtOnce) {
    Voices voices({60});
    voices.offset[0] = 2.5;
    voices.factor[0] = 1.0015;
    voices.tick(fatClean);
    EXPECT_EQ(voices.offset[0], 2.5);
    EXPECT_EQ(voices.factor[0], 1.0015);
    voices.note[1] = 64;
    voices.volume[1].state = Envelope::Attack;
    voices.tick(fatClean);
    EXPECT_DOUBLE_EQ(voices.offset[0], 0.8 * 7.0);
    EXPECT_DOUBLE_EQ(voices.offset[1], 0.8 * -7.0);
}

TEST(Retuner, ReleasedVoiceCountsForTheFirstFifthOfItsRelease) {
    Voices voices({60, 64, 67});
    voices.volume[1].state = Envelope::Release;
    voices.volume[1].phase = 0.81f;
    voices.tick(justIntonation);
    EXPECT_DOUBLE_EQ(voices.offset[0], 5.0);  // still a major triad
    voices.volume[1].phase = 0.79f;
    voices.tick(justIntonation);
    EXPECT_DOUBLE_EQ(voices.offset[0], -1.0);  // a bare fifth
}

TEST(Retuner, FourThirtyTwoStaysAtNormalPitchInOneVoiceModes) {
    Voices voices({60});
    voices.tick(a432, true);
    for (double factor : voices.factor) EXPECT_EQ(factor, 1.0);
    voices.tick(a432, false);
    for (double factor : voices.factor) EXPECT_EQ(factor, 0.9818181991577148);
}

TEST(Retuner, OtherFixedPitchesActInOneVoiceModesToo) {
    Voices voices({});
    voices.tick(a424, true);
    for (double factor : voices.factor) EXPECT_EQ(factor, 0.9621999859809875);
    voices.tick(99, true);  // held at the last row
    for (double factor : voices.factor) EXPECT_EQ(factor, 1.0392600297927856);
}

TEST(Retuner, WellTemperedChordIsNotRetuned) {
    Voices voices({60, 64, 67});
    voices.offset[1] = 4.0;
    voices.factor[1] = 1.002;
    voices.tick(wellTempered);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(voices.offset[i], 0.0);
        EXPECT_EQ(voices.factor[i], 1.0);
    }
}

TEST(Retuner, OctavesAreStretched) {
    Voices voices({48, 60});
    voices.tick(fatClean);
    EXPECT_DOUBLE_EQ(voices.offset[0], -1.0);
    EXPECT_DOUBLE_EQ(voices.offset[1], 1.0);
}

TEST(Retuner, DamagedVoicesAreRepaired) {
    Voices voices({60});
    voices.note[3] = -5;
    voices.offset[3] = 90.0;
    voices.factor[3] = std::nan("");
    voices.tick(wellTempered);
    EXPECT_EQ(voices.note[3], 0);
    EXPECT_EQ(voices.offset[3], 30.0);
    EXPECT_EQ(voices.factor[3], 0.9);
}

TEST(Retuner, OffsetsStayWithinTheLimitOfTheMode) {
    for (int mode = 1; mode <= 6; ++mode) {
        const double limit = mode == 4 ? 7.5 : mode == 6 ? 20.0 : 5.0;
        for (unsigned chord = 0; chord < 4096; ++chord) {
            Voices voices({});
            std::size_t count = 0;
            for (int c = 0; c < 12; ++c) {
                if ((chord >> c & 1) == 0) continue;
                voices.note[count] = static_cast<std::int8_t>(48 + c + 12 * (c & 1));
                voices.volume[count++].state = Envelope::Sustain;
            }
            voices.tick(mode);
            for (std::size_t i = 0; i < count; ++i) ASSERT_LE(std::fabs(voices.offset[i]), limit);
        }
    }
}

// Chords that stand or change, modes and voices that come and go: a pass never depends on the one before.
TEST(Retuner, AChordThatStandsIsTunedAsOneThatIsNew) {
    std::mt19937 chance(5);
    const auto below = [&](int end) { return std::uniform_int_distribution<int>(0, end - 1)(chance); };
    Voices voices({48, 52, 55, 60});
    int row = fatClean;
    for (int t = 0; t < 3000; ++t) {
        const auto v = static_cast<std::size_t>(below(voiceCount));
        switch (below(10)) {
            case 0: voices.note[v] = static_cast<std::int8_t>(24 + below(80)); break;
            case 1: voices.volume[v].state = below(2) == 0 ? Envelope::Sustain : Envelope::Idle; break;
            case 2:
                voices.volume[v].state = Envelope::Release, voices.volume[v].phase = 0.5f + 0.1f * static_cast<float>(below(5));
                break;
            case 3: voices.factor[v] = 1.0; break;  // a new note
            case 4: row = below(11); break;
            default: break;
        }
        Voices fresh(voices);
        fresh.retuner = Retuner();
        for (std::size_t k = 0; k < voiceCount; ++k)
            fresh.seen[k] = {&fresh.note[k], &fresh.volume[k], &fresh.offset[k], &fresh.factor[k]};
        voices.tick(row);
        fresh.tick(row);
        ASSERT_EQ(voices.offset, fresh.offset) << t;
        ASSERT_EQ(voices.factor, fresh.factor) << t;
    }
}

}  // namespace
}  // namespace vantoric
