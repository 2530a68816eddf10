#include "patch/patch_reset.h"

#include <gtest/gtest.h>

#include "base/numbers.h"

namespace vantoric {
namespace {

namespace par = parameter;

struct PatchReset : testing::Test {
    PatchReset() {
        for (int i = 0; i < parameterCount; ++i) parameters.writeRaw(i, 0.9f);
    }
    float value(int number, int layer = 0) const { return parameters.getParameter(hostIndex(number, layer)); }
    int row(int number, int layer = 0) const { return parameters.getListIndex(hostIndex(number, layer)); }
    ParameterModel parameters;
};

TEST_F(PatchReset, LeavesOneLayerWithASingleOscillator) {
    resetAllParameters(parameters);
    EXPECT_EQ(value(par::Layer1On), 1.0f);
    for (int layer = 1; layer < 4; ++layer) EXPECT_EQ(parameters.getParameter(par::Layer1On + layer), 0.0f);
    EXPECT_EQ(value(par::On1), 1.0f);
    EXPECT_EQ(value(par::On1 + 1), 0.0f);
    EXPECT_EQ(value(par::On1 + 2), 0.0f);
}

TEST_F(PatchReset, SetsTheWholePatchsOwnValues) {
    resetAllParameters(parameters);
    EXPECT_FLOAT_EQ(value(par::Volume), 0.333f);
    for (int n : {par::EqLow, par::EqMid, par::EqHigh}) EXPECT_EQ(parameters.getParameter(n), 0.5f);
    EXPECT_EQ(parameters.getListIndex(par::SoundMod), 10);
    EXPECT_EQ(parameters.getListIndex(par::Microtun), 4);
    EXPECT_EQ(parameters.getListIndex(par::Quality), 2);
    EXPECT_EQ(parameters.getListIndex(par::PitchWhl), 6);
    EXPECT_EQ(parameters.getListIndex(par::FxMaType), 0);
}

TEST_F(PatchReset, SetsALayerAndNoOther) {
    resetSynthLayer(parameters, 2);
    EXPECT_EQ(row(par::PlayMode, 2), 8);
    EXPECT_EQ(row(par::FilType1, 2), 51);
    EXPECT_EQ(row(par::LfoWave1 + 2, 2), 3);
    EXPECT_EQ(row(par::LfoMode1 + 2, 2), 3);
    EXPECT_EQ(row(par::StepMode, 2), 2);
    EXPECT_EQ(value(par::Cutoff1 + 1, 2), 1.0f);
    EXPECT_EQ(value(par::Oct1 + 1, 2), 0.5f);
    EXPECT_EQ(value(par::Oct1 + 2, 2), 0.7f);
    EXPECT_EQ(value(par::AttAux2, 2), 0.0f);
    EXPECT_EQ(value(par::Step1 + 1, 2), 0.0f);
    EXPECT_EQ(value(par::Step1 + 15, 2), 0.0f);
    EXPECT_EQ(row(par::ArpVol1, 2), 9);
    EXPECT_EQ(row(par::ArpVol1 + 14, 2), 9);
    EXPECT_EQ(row(par::ArpRetri, 2), 1);
    for (int n = globalParameterCount; n < layerParameterEnd; ++n) ASSERT_EQ(value(n, 1), 0.9f) << n;
}

TEST_F(PatchReset, EmptiesTheMatrixAlone) {
    resetSynthMatrix(parameters, 1);
    EXPECT_EQ(value(par::MatSrc1 + 15, 1), 0.0f);
    EXPECT_EQ(value(par::MatDst1, 1), 0.0f);
    EXPECT_EQ(value(par::MatVal1 + 15, 1), 0.5f);
    EXPECT_EQ(value(par::MatSrc1 - 1, 1), 0.9f);
    EXPECT_EQ(value(par::MatVal1 + 16, 1), 0.9f);
}

}  // namespace
}  // namespace vantoric
