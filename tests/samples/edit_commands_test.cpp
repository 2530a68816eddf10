#include "samples/edit_commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace vantoric {
namespace {

using Data = std::vector<std::int16_t>;

int indexOf(const std::string& label) {
    for (int i = 0; i < editCommandCount; ++i)
        if (editCommands[static_cast<std::size_t>(i)].label == label) return i;
    return -1;
}

EditSound soundOf(const Data& data) { return {data, 0, static_cast<std::int32_t>(data.size()), 44100}; }

EditSound edited(EditSound sound, const std::string& label) {
    LinearCongruence random{1};
    EXPECT_TRUE(applyEdit(sound, indexOf(label), random)) << label;
    return sound;
}
Data edited(const Data& data, const std::string& label) { return edited(soundOf(data), label).samples; }

Data noise(std::size_t count, std::uint32_t seed = 1) {
    LinearCongruence random{seed};
    Data data(count);
    for (auto& x : data) x = static_cast<std::int16_t>(std::max(-32767, static_cast<int>(random.next() >> 16) - 32768));
    return data;
}

TEST(EditCommands, AreFortyFiveWithSixSeparators) {
    EXPECT_EQ(editCommands.size(), 45u);
    for (const int i : {1, 4, 12, 16, 19, 27}) EXPECT_EQ(editCommands[static_cast<std::size_t>(i)].role, EditRole::separator);
    EXPECT_EQ(std::count_if(editCommands.begin(), editCommands.end(),
                            [](const EditCommand& row) { return row.role == EditRole::separator; }),
              6);
}

TEST(EditCommands, WorkUpToTheLoopsEndIfTheMarkersAreEqual) {
    EditSound sound = soundOf({1, 2, 3, 4, 5, 6});
    sound.loopStart = sound.loopEnd = 4;
    EXPECT_EQ(editRange(sound).size(), 4u);
    EXPECT_EQ(edited(sound, "Reverse").samples, Data({4, 3, 2, 1, 5, 6}));
}

TEST(EditCommands, WorkBetweenTheMarkers) {
    EditSound sound = soundOf({1, 2, 3, 4, 5, 6});
    sound.loopStart = 1;
    sound.loopEnd = 3;
    EXPECT_EQ(edited(sound, "Invert").samples, Data({1, -2, -3, 4, 5, 6}));
}

TEST(EditCommands, CutARangeBeyondTheData) {
    for (const auto& [start, end] :
         {std::pair{4, 900}, {-5, 2000000000}, {700, 900}, {-9, -3}, {2, 1}, {0, 0}, {5, 5}, {99, 99}}) {
        for (int command = 0; command < editCommandCount; ++command) {
            EditSound sound = soundOf(noise(6));
            sound.loopStart = start;
            sound.loopEnd = end;
            LinearCongruence random;
            applyEdit(sound, command, random);
            EXPECT_LE(sound.samples.size(), 6u);
        }
    }
}

TEST(EditCommands, LeaveTheLengthButForTrimCutAndClear) {
    for (int command = 0; command < editCommandCount; ++command) {
        EditSound sound = soundOf(noise(777));
        sound.loopStart = 100;
        LinearCongruence random;
        applyEdit(sound, command, random);
        if (command == 2)
            EXPECT_EQ(sound.samples.size(), 0u);
        else if (command == 17)
            EXPECT_EQ(sound.samples.size(), 677u);
        else if (command == 18)
            EXPECT_EQ(sound.samples.size(), 100u);
        else
            EXPECT_EQ(sound.samples.size(), 777u) << command;
        EXPECT_LE(sound.loopEnd, static_cast<std::int32_t>(sound.samples.size()));
    }
}

TEST(EditCommands, NeverFailOnTheExtremesOfSixteenBits) {
    for (int command = 0; command < editCommandCount; ++command) {
        for (const std::size_t count : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{5}}) {
            EditSound sound = soundOf(Data(count, -32768));
            LinearCongruence random;
            applyEdit(sound, command, random);
        }
    }
}

TEST(EditCommands, DoNothingToNothing) {
    for (int command = -1; command <= editCommandCount; ++command) {
        EditSound sound;
        LinearCongruence random{7};
        EXPECT_FALSE(applyEdit(sound, command, random));
        EXPECT_EQ(random.state, 7u);
    }
}

TEST(EditCommands, MaximizeLeavesDigitalSilence) { EXPECT_EQ(edited(Data(9, 0), "Maximize"), Data(9, 0)); }

TEST(EditCommands, MaximizeBringsThePeakOfTheRangeTo32760) {
    EditSound sound = soundOf({30000, 5, -10, 3});
    sound.loopStart = 1;
    EXPECT_EQ(edited(sound, "Maximize").samples, Data({30000, 16380, -32760, 9828}));
}

TEST(EditCommands, CrushTo2BitsTruncatesTowardsZero) {
    EXPECT_EQ(edited(Data{0, 16383, 16384, 32767, -16383, -16384, -32767, -32768}, "Crush 2bit"),
              Data({0, 0, 16383, 16383, 0, -16383, -16383, -32766}));
}

TEST(EditCommands, RemovingDcTwiceChangesNothingMore) {
    const Data once = edited(edited(noise(501), "Volume -6dB"), "Remove DC");
    const Data again = edited(once, "Remove DC");
    for (std::size_t i = 0; i < once.size(); ++i) EXPECT_NEAR(once[i], again[i], 1);
}

TEST(EditCommands, AutoloopOfAnOddLengthStaysInside) {
    for (const char* label : {"Autoloop 75%", "Autoloop 66%", "Autoloop 50%"}) {
        for (std::size_t count = 1; count < 40; ++count) {
            const EditSound sound = edited(soundOf(noise(count)), label);
            EXPECT_EQ(sound.loopEnd, static_cast<std::int32_t>(count));
            EXPECT_GE(sound.loopStart, 0);
            EXPECT_LT(sound.loopStart, sound.loopEnd);
        }
    }
}

// At its end the loop has faded to the sample in front of its start, so the jump back is a step of the sound.
TEST(EditCommands, AutoloopIsSeamless) {
    Data data(6000);
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<std::int16_t>(15000.0 * std::sin(0.0123 * static_cast<double>(i)));
    for (const char* label : {"Autoloop 75%", "Autoloop 66%", "Autoloop 50%"}) {
        const EditSound sound = edited(soundOf(data), label);
        EXPECT_LT(std::abs(sound.samples.back() - sound.samples[static_cast<std::size_t>(sound.loopStart)]), 1200) << label;
    }
}

TEST(EditCommands, LoopCommandsSetOnlyTheLoop) {
    const Data data = noise(10);
    for (const auto& [label, start] : {std::pair{"Loop all", 0}, {"Loop 50%", 5}, {"Loop 33%", 3}}) {
        EditSound sound = soundOf(data);
        sound.loopStart = 7;
        sound.loopEnd = 8;
        sound = edited(sound, label);
        EXPECT_EQ(sound.loopStart, start);
        EXPECT_EQ(sound.loopEnd, 10);
        EXPECT_EQ(sound.samples, data);
    }
}

TEST(EditCommands, RectifyIsAHardSquare) { EXPECT_EQ(edited(Data{5, 0, -5}, "Rectify"), Data({10000, -10000, -10000})); }

TEST(EditCommands, SinoidShaperFoldsFullScaleToAWholeSine) {
    const Data wave = edited(Data{0, 8192, 16384, -8192, 32767}, "Sinoid shaper");
    EXPECT_NEAR(wave[1], 32766, 20);
    EXPECT_NEAR(wave[2], 0, 150);
    EXPECT_NEAR(wave[3], -32766, 20);
    EXPECT_NEAR(wave[4], 0, 300);
}

TEST(EditCommands, QuadratureBringsFullScaleTo32735) {
    EXPECT_NEAR(edited(Data{32767}, "Quadrature")[0], 32735, 2);
    EXPECT_NEAR(edited(Data{-32767}, "Quadrature")[0], 32735, 2);
}

TEST(EditCommands, PhaseShifterSmearsAnImpulseAndBringsItToThePeak) {
    Data impulse(2000);
    impulse[0] = 20000;
    const Data shifted = edited(impulse, "Phase shifter");
    int peak = 0;
    for (const int x : shifted) peak = std::max(peak, std::abs(x));
    EXPECT_EQ(peak, 32760);
    EXPECT_GT(std::count_if(shifted.begin(), shifted.end(), [](int x) { return std::abs(x) > 3276; }), 10);
}

TEST(EditCommands, NoisifyDrawsOnceASample) {
    EditSound sound = soundOf(Data(10, 20000));
    sound.loopStart = 4;
    LinearCongruence random{99}, expected{99};
    applyEdit(sound, indexOf("Noisify 1"), random);
    expected.skip(6);
    EXPECT_EQ(random.state, expected.state);
    for (std::size_t i = 4; i < 10; ++i) {
        EXPECT_GE(sound.samples[i], 0);
        EXPECT_LE(sound.samples[i], 19014);
    }
}

}  // namespace
}  // namespace vantoric
