#include "faces/common/host_parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "parameters/parameter_table.h"
#include "parameters/parameter_text.h"
#include "tests/engine/engine_rig.h"

namespace vantoric {
namespace {

namespace par = parameter;
namespace hp = host_parameter;

constexpr int layer3 = 2;

TEST(HostParameters, NamesSayWhichLayer) {
    EXPECT_EQ(hp::name(par::Volume), "Volume");
    EXPECT_EQ(hp::name(hostIndex(par::FilSerial, layer3)), "3:FilSerial");
    EXPECT_STREQ(hp::group(par::Volume), "Global");
    EXPECT_STREQ(hp::group(hostIndex(par::Cutoff1, layer3)), "Layer 3");
    std::set<std::string> names;
    for (int i = 0; i < parameterCount; ++i) {
        if (!hp::exists(i)) continue;
        EXPECT_TRUE(names.insert(hp::name(i)).second) << hp::name(i);
        EXPECT_EQ(parameterIndex(hp::name(i)), i);
    }
}

TEST(HostParameters, StatesAreCounted) {
    EXPECT_EQ(hp::steps(par::Volume), 0);
    EXPECT_EQ(hp::steps(par::Layer1On), 1);
    EXPECT_EQ(hp::steps(par::Oct1), 8);
    EXPECT_EQ(hp::steps(par::Interv1), 6);
    EXPECT_EQ(hp::steps(par::PitchWhl), 7);
    EXPECT_EQ(hp::steps(par::KeyEnd1), 127);
    EXPECT_EQ(hp::defaultValue(par::KeyEnd1), 127.0);
    EXPECT_EQ(hp::defaultValue(par::Oct1), 4.0);
    EXPECT_FLOAT_EQ(static_cast<float>(hp::defaultValue(par::DecVol)), 0.695f);
}

TEST(HostParameters, EveryStateIsKeptAndHasItsText) {
    for (int i = 0; i < parameterCount; ++i) {
        EXPECT_LE(hp::defaultValue(i), hp::largest(i));
        for (int step = 0; step <= hp::steps(i); ++step) {
            const float stored = hp::stored(i, step);
            EXPECT_EQ(hp::plain(i, stored), hp::steps(i) == 0 ? stored : step) << hp::name(i) << " " << step;
            EXPECT_LE(stored, ParameterModel::parameterLimit(i));
        }
    }
    EXPECT_EQ(hp::stepText(par::Oct1, 0), "-4");
    EXPECT_EQ(hp::stepText(par::Layer1On, 1), "On");
}

TEST(HostParameters, AnyNumberIsHeldWithinTheRange) {
    for (const double wild :
         {-1.0, 1e300, -1e300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        for (int i = 0; i < parameterCount; ++i) {
            const float stored = hp::stored(i, wild);
            EXPECT_TRUE(stored >= 0.0f && stored <= 1.0f);
            const double plain = hp::plain(i, static_cast<float>(wild));
            EXPECT_TRUE(plain >= 0.0 && plain <= hp::largest(i));
        }
}

TEST(HostParameters, TextsReadBack) {
    test::EngineRig rig;
    const Instrument& instrument = rig.audio;
    EXPECT_EQ(hp::unit(instrument, par::Cutoff1), "Hz");
    EXPECT_EQ(hp::valueOfText(instrument, par::Layer1On, "On"), 1.0);
    EXPECT_EQ(hp::valueOfText(instrument, par::Oct1, hp::text(instrument, par::Oct1, 3.0)), 3.0);
    EXPECT_FALSE(hp::valueOfText(instrument, par::Layer1On, "perhaps"));
    EXPECT_FALSE(hp::valueOfText(instrument, par::Volume, ""));
}

// With the unit and without.
void expectTheTextBack(const Instrument& instrument, int index, double value) {
    const std::string shown = hp::text(instrument, index, value), unit = hp::unit(instrument, index);
    for (const std::string& typed : {shown, shown + (unit.empty() ? "" : " ") + unit}) {
        const auto back = hp::valueOfText(instrument, index, typed);
        ASSERT_TRUE(back) << hp::name(index) << " at " << value << ": " << typed;
        EXPECT_EQ(hp::text(instrument, index, *back), shown) << hp::name(index) << " at " << value << ": " << typed;
    }
}

// The layers are alike: of each parameter of a layer a value in each layer, and all values in one. A list's dividing lines are
// values as well.
TEST(HostParameters, EveryTextOfEveryParameterReadsBack) {
    test::EngineRig rig;
    const Instrument& instrument = rig.audio;
    for (int i = 0; i < parameterCount; ++i) {
        if (!hp::exists(i) || !hp::isShown(i)) continue;
        const bool isWhole = ParameterModel::parameterLayer(i) <= 1;
        if (!isWhole) {
            expectTheTextBack(instrument, i, hp::steps(i) > 0 ? hp::steps(i) / 2 : 0.3);
        } else if (hp::steps(i) > 0) {
            for (int step = 0; step <= hp::steps(i); ++step) expectTheTextBack(instrument, i, step);
        } else {
            for (const double value : {0.0, 0.05, 0.108, 0.3, 0.5, 0.77, 0.999, 1.0}) expectTheTextBack(instrument, i, value);
        }
    }
}

}  // namespace
}  // namespace vantoric
