#include "parameters/parameter_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "base/numbers.h"

namespace vantoric {
namespace {

namespace p = parameter;

std::string nameOf(const ParameterModel& model, int index) {
    char text[9];
    model.getParameterName(index, text);
    return text;
}

std::string displayOf(const ParameterModel& model, int index) {
    char text[9];
    model.getParameterDisplay(index, text);
    return text;
}

std::string labelOf(const ParameterModel& model, int index) {
    char text[9];
    model.getParameterLabel(index, text);
    return text;
}

TEST(ParameterModel, AnIndexBeyondTheLastIsIgnoredAndReadsZero) {
    ParameterModel model;
    ParameterChanges::Reader reader(model.changes());
    for (const int index : {1224, 1225, 100000, -1, std::numeric_limits<int>::min()}) {
        model.setParameter(index, 0.7f);
        EXPECT_EQ(model.getParameter(index), 0.0f);
        EXPECT_EQ(nameOf(model, index), "");
        EXPECT_EQ(displayOf(model, index), "");
        EXPECT_EQ(labelOf(model, index), "");
    }
    EXPECT_FALSE(reader.take().any());
}

TEST(ParameterModel, ValuesStartAtZero) {
    const ParameterModel model;
    for (int i = 0; i < parameterCount; ++i) EXPECT_EQ(model.getParameter(i), 0.0f);
}

TEST(ParameterModel, AContinuousValueIsClamped) {
    ParameterModel model;
    const int index = hostIndex(p::Cutoff1, 2);
    model.setParameter(index, 2.0f);
    EXPECT_EQ(model.getParameter(index), 1.0f);
    model.setParameter(index, -1.0f);
    EXPECT_EQ(model.getParameter(index), 0.0f);
    model.setParameter(index, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(model.getParameter(index), 0.0f);
    model.setParameter(index, std::numeric_limits<float>::infinity());
    EXPECT_EQ(model.getParameter(index), 1.0f);
}

TEST(ParameterModel, AGuardedListFallsBackToItsFirstEntry) {
    ParameterModel model;
    model.setParameter(p::Quality, 2.0f);
    EXPECT_EQ(model.getParameter(p::Quality), 0.0f);
    model.setParameter(p::Quality, 127.0f / 128.0f);
    EXPECT_EQ(model.getListIndex(p::Quality), 0);
    model.setParameter(p::Quality, listValue(2));
    EXPECT_EQ(model.getListIndex(p::Quality), 2);
    model.setParameter(p::Quality, listValue(3));
    EXPECT_EQ(model.getListIndex(p::Quality), 3) << "one past the last label stays: the guard is strict";
    EXPECT_EQ(displayOf(model, p::Quality), "empty");
}

TEST(ParameterModel, AnUnguardedListKeepsAnyIndexAndShowsItAsEmpty) {
    ParameterModel model;
    model.setParameter(p::FilType1, 127.0f / 128.0f);
    EXPECT_EQ(model.getListIndex(p::FilType1), 127);
    EXPECT_EQ(displayOf(model, p::FilType1), "empty");
}

TEST(ParameterModel, EveryListIndexReadsBackAsItWasWritten) {
    ParameterModel model;
    for (int k = 0; k < 128; ++k) {
        model.setParameter(hostIndex(p::KeyEnd1, 3), static_cast<float>(k) / 128.0f);
        EXPECT_EQ(model.getListIndex(hostIndex(p::KeyEnd1, 3)), k);
    }
}

TEST(ParameterModel, TheGuardsAreTheSameInAllLayersAndNowhereElse) {
    const std::set<int> unguarded = {111, 112, 89,  207, 221, 222, 258, 275, 276, 277,
                                     278, 279, 281, 282, 291, 292, 293, 294, 297};
    for (int i = 0; i < parameterCount; ++i) {
        const int n = numberOfParameter(i);
        const ParameterInfo& info = parameterInfo(n);
        const bool guarded = info.kind == ControlKind::List && unguarded.count(n) == 0;
        const float expected = guarded ? static_cast<float>(info.labels.size()) / 128.0f : 1.0f;
        EXPECT_EQ(ParameterModel::parameterLimit(i), expected) << i;
    }
}

TEST(ParameterModel, Layer3sSecondCutoffIsHostIndex698) {
    const ParameterModel model;
    EXPECT_EQ(hostIndex(p::Cutoff1 + 1, 2), 698);
    EXPECT_EQ(ParameterModel::parameterLayer(698), 3);
    EXPECT_EQ(nameOf(model, 698), "Cutoff2");
    EXPECT_EQ(labelOf(model, 698), "Hz");
}

TEST(ParameterModel, LayersAreCountedFromOneAndGlobalsAreZero) {
    EXPECT_EQ(ParameterModel::parameterLayer(0), 0);
    EXPECT_EQ(ParameterModel::parameterLayer(23), 0);
    EXPECT_EQ(ParameterModel::parameterLayer(24), 1);
    EXPECT_EQ(ParameterModel::parameterLayer(323), 1);
    EXPECT_EQ(ParameterModel::parameterLayer(324), 2);
    EXPECT_EQ(ParameterModel::parameterLayer(1223), 4);
    EXPECT_EQ(ParameterModel::parameterLayer(1224), -1);
}

TEST(ParameterModel, NamesAreCutToEightCharacters) {
    const ParameterModel model;
    EXPECT_EQ(nameOf(model, p::FilSerial), "FilSeria");
    EXPECT_EQ(nameOf(model, p::FxIn2Par1 + 3), "ArpVol32");
    EXPECT_EQ(nameOf(model, hostIndex(p::RelVol + 3, 1)), "RelAux2");
    EXPECT_EQ(nameOf(model, 323), "-");
}

TEST(ParameterModel, OnlyTheLoudSetterNotesAChange) {
    ParameterModel model;
    ParameterChanges::Reader reader(model.changes());
    model.setParameter(0, 0.25f, ChangeSource::window);
    model.setParameterQuiet(1, 0.5f);
    const auto news = reader.take();
    EXPECT_TRUE(news.changed.test(0));
    EXPECT_EQ(news.changed.count(), 1u);
    EXPECT_TRUE(news.from(ChangeSource::window));
    EXPECT_EQ(model.getParameter(1), 0.5f);
}

TEST(ParameterModel, ALayersSnapshotIsItsOwnBlockByNumber) {
    ParameterModel model;
    for (int i = 0; i < parameterCount; ++i) model.writeRaw(i, static_cast<float>(i) / 2048.0f);
    float block[layerParameterEnd];
    for (int layer = 0; layer < 4; ++layer) {
        model.snapshotLayer(layer, block);
        for (int n = 0; n < globalParameterCount; ++n) EXPECT_EQ(block[n], 0.0f);
        for (int n = globalParameterCount; n < layerParameterEnd; ++n)
            EXPECT_EQ(block[n], model.getParameter(hostIndex(n, layer)));
    }
}

TEST(ParameterModel, EveryValueWrittenCounts) {
    ParameterModel model;
    std::uint32_t before = model.writes();
    const auto grew = [&] { return std::exchange(before, model.writes()) != model.writes(); };
    EXPECT_FALSE(grew());
    model.setParameter(p::Cutoff1, 0.5f, ChangeSource::midi);
    EXPECT_TRUE(grew());
    model.setParameterQuiet(p::Cutoff1, 0.5f);
    EXPECT_TRUE(grew()) << "also one that changes nothing";
    model.writeRaw(parameterCount - 1, 0.5f);
    EXPECT_TRUE(grew());
    model.writeRaw(parameterCount, 0.5f);
    EXPECT_FALSE(grew());
    model.setDefaults();
    EXPECT_TRUE(grew());
}

TEST(ParameterModel, AnLfosSpeedReadsAsBeatsInTheModesOfItsOwnLayer) {
    ParameterModel model;
    const int speed = hostIndex(p::LfoSpd1 + 1, 2), mode = hostIndex(p::LfoMode1 + 1, 2);
    model.setParameter(speed, 0.5f);
    for (int k = 0; k < 10; ++k) {
        model.setParameter(mode, listValue(k));
        const bool beats = k == 1 || k == 2 || k == 9;
        EXPECT_EQ(labelOf(model, speed), beats ? "BPM" : "Hz");
        EXPECT_EQ(displayOf(model, speed), beats ? "1" : "5.29");
    }
    model.setParameter(mode, listValue(1));
    EXPECT_EQ(labelOf(model, hostIndex(p::LfoSpd1 + 1, 1)), "Hz");
}

TEST(ParameterModel, TheSecondInsertsMixIsShownDifferentlyFromTheFirsts) {
    ParameterModel model;
    model.setParameter(p::FxInMix, 0.25f);
    model.setParameter(p::FxIn2Mix, 0.25f);
    EXPECT_EQ(displayOf(model, p::FxInMix), "25");
    EXPECT_EQ(displayOf(model, p::FxIn2Mix), "-50");
}

TEST(ParameterModel, NothingIsShownWithoutControlOrOutsideTheRange) {
    ParameterModel model;
    for (const int n : {15, 23, 75, 90, 118, 132, 156, 199, 227, 268, 290, 306, 322, 323})
        EXPECT_EQ(displayOf(model, n), "") << n;
    model.writeRaw(p::Volume, 1.5f);
    EXPECT_EQ(displayOf(model, p::Volume), "");
    EXPECT_EQ(model.getParameter(p::Volume), 1.0f) << "readers clamp";
    model.setParameter(p::Volume, 0.5f);
    EXPECT_EQ(displayOf(model, p::Volume), "50");
    model.setControlsPresent(false);
    EXPECT_EQ(displayOf(model, p::Volume), "");
}

TEST(ParameterModel, StepCommandsHaveWordsForTheHost) {
    ParameterModel model;
    const std::pair<int, const char*> words[] = {{0, "."}, {2, "1"}, {11, "Release"}, {13, "Loop"}, {14, "End"}, {16, "S"}};
    for (const auto& [k, word] : words) {
        model.setParameter(p::ArpVol1 + 4, listValue(k));
        EXPECT_EQ(displayOf(model, p::ArpVol1 + 4), word);
    }
}

TEST(ParameterModel, TheMastersTrancegateReadsOff) {
    ParameterModel model;
    model.setParameter(p::FxMaType, listValue(17));
    model.setParameter(p::FxInType, listValue(17));
    EXPECT_EQ(displayOf(model, p::FxMaType), "off");
    EXPECT_EQ(displayOf(model, p::FxInType), "Trancega");
    EXPECT_EQ(model.displayText(p::FxInType), "Trancegate");
}

TEST(ParameterModel, OffersTheControlsOfAPerformanceForAutomation) {
    EXPECT_TRUE(ParameterModel::isAutomatable(698));
    EXPECT_TRUE(ParameterModel::isAutomatable(p::Volume));
    for (const int index : {static_cast<int>(p::FilType1), static_cast<int>(p::MatVal1), 5, 1224, -1})
        EXPECT_FALSE(ParameterModel::isAutomatable(index)) << index;
}

TEST(ParameterModel, DefaultsAreThoseOfTheControls) {
    ParameterModel model;
    model.setDefaults();
    EXPECT_EQ(model.getParameter(p::Volume), 0.5f);
    EXPECT_EQ(model.getParameter(hostIndex(p::DecVol + 1, 3)), 0.695f);
    EXPECT_EQ(model.getParameter(p::ShapVol), 0.75f);
    EXPECT_EQ(model.getParameter(p::ShapVol + 1), 0.5f);
    EXPECT_EQ(model.getParameter(p::KeyFol1), 1.0f);
    EXPECT_EQ(model.getListIndex(hostIndex(p::KeyEnd1 + 2, 1)), 127);
    EXPECT_EQ(model.getParameter(p::MatVal1 + 15), 0.5f);
    EXPECT_EQ(model.getParameter(p::Modwheel), 0.0f);
}

TEST(ParameterModel, ThreadsWriteAndReadAtOnce) {
    ParameterModel model;
    std::thread writer([&] {
        for (int k = 0; k < 20000; ++k) model.setParameter(24 + k % 1200, static_cast<float>(k % 2));
    });
    float block[layerParameterEnd];
    for (int k = 0; k < 200; ++k) {
        model.snapshotLayer(k % 4, block);
        for (const float value : block) ASSERT_TRUE(value == 0.0f || value == 1.0f);
    }
    writer.join();
}

}  // namespace
}  // namespace vantoric
