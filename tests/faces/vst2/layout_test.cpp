// Places of fields as bytes: each record is filled by field and read back by offset.
#include <gtest/gtest.h>

#include <cstring>

#include "faces/vst2/interface.h"

using namespace vantoric;

namespace {

template <class Value, class Record>
Value at(const Record& record, std::size_t offset) {
    Value value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, sizeof value);
    return value;
}

}  // namespace

TEST(Layout, MagicNumbersReadAsCharactersFromTheHighestByte) {
    EXPECT_EQ(effectMagic, 0x56737450);
    EXPECT_EQ(identifyAnswer, 0x4E764566);
    EXPECT_EQ(fourCharacters('Q', '7', 'D', 'I'), 0x51374449);
}

TEST(Layout, EffectRecord) {
    AEffect e{};
    e.magic = 1;
    e.numPrograms = 2;
    e.numParams = 3;
    e.numInputs = 4;
    e.numOutputs = 5;
    e.flags = 6;
    e.initialDelay = 7;
    e.uniqueID = 8;
    e.version = 9;
    e.object = &e;
    EXPECT_EQ(sizeof e, 192u);
    EXPECT_EQ(at<int>(e, 0), 1);
    EXPECT_EQ(at<int>(e, 40), 2);
    EXPECT_EQ(at<int>(e, 44), 3);
    EXPECT_EQ(at<int>(e, 48), 4);
    EXPECT_EQ(at<int>(e, 52), 5);
    EXPECT_EQ(at<int>(e, 56), 6);
    EXPECT_EQ(at<int>(e, 80), 7);
    EXPECT_EQ(at<void*>(e, 96), &e);
    EXPECT_EQ(at<int>(e, 112), 8);
    EXPECT_EQ(at<int>(e, 116), 9);
}

TEST(Layout, MidiEvent) {
    VstMidiEvent e{};
    e.deltaFrames = 77;
    e.midiData[0] = 0x90;
    e.midiData[1] = 60;
    e.midiData[2] = 100;
    EXPECT_EQ(sizeof e, 32u);
    EXPECT_EQ(at<int>(e, 8), 77);
    EXPECT_EQ(at<int>(e, 24), 0x90 | 60 << 8 | 100 << 16);
}

TEST(Layout, EventListHoldsItsPointersAtSixteen) {
    VstEvent a{};
    VstEvents list{1, 0, {&a, nullptr}};
    EXPECT_EQ(at<int>(list, 0), 1);
    EXPECT_EQ(at<VstEvent*>(list, 16), &a);
}

TEST(Layout, TimeInfo) {
    VstTimeInfo t{};
    t.ppqPos = 1.5;
    t.tempo = 133.0;
    t.timeSigNumerator = 3;
    t.flags = timePpqPosValid | timeTempoValid;
    EXPECT_EQ(sizeof t, 88u);
    EXPECT_EQ(at<double>(t, 24), 1.5);
    EXPECT_EQ(at<double>(t, 32), 133.0);
    EXPECT_EQ(at<int>(t, 64), 3);
    EXPECT_EQ(at<int>(t, 84), 0x600);
}

TEST(Layout, PinProperties) {
    VstPinProperties p{};
    p.flags = pinIsActive | pinIsStereo;
    p.shortLabel[0] = 'V';
    EXPECT_EQ(sizeof p, 128u);
    EXPECT_EQ(at<int>(p, 64), 3);
    EXPECT_EQ(at<char>(p, 72), 'V');
}
