// The line that tells what is pointed at and what it is set to: it never tells an old value.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
using vantoric::WindowPart;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr int tabKey = 2, escapeKey = 6, upKey = 12, deleteKey = 22;

Picture lineOf(WindowRig& rig) {
    const auto& line = vantoric::windowPart(WindowPart::HintLine).rect;
    const double u = rig.unit();
    constexpr double history = 90;  // buttons stand at its right end
    return rig.host().glance().part(static_cast<int>(line.x * u), static_cast<int>(line.y * u),
                                    static_cast<int>((line.width - history) * u), static_cast<int>(line.height * u));
}

bool areAlike(const Picture& a, const Picture& b) { return difference(a, b).largest <= tolerance; }

class HintLine : public testing::Test {
protected:
    void SetUp() override {
        rig.reset();
        pointAway();
    }

    Picture line() { return lineOf(rig); }
    void pointAway() { pointAt(rig.at(1195, 412)); }
    void pointAt(Point p) {
        host.move(p.x, p.y);
        host.idle(150);
    }
    void pointAt(const ControlEntry& entry) { pointAt(rig.middle(entry)); }
    // What the line tells now is what it tells of the control as it is.
    void expectTold(const ControlEntry& entry, const std::string& what) {
        host.idle(200);
        const Picture told = line();
        pointAt(controlNamed("EQ LOW"));
        EXPECT_FALSE(areAlike(line(), told)) << what << ": of another control it tells something else";
        pointAt(entry);
        EXPECT_TRUE(areAlike(line(), told)) << what;
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    const ControlEntry& resonance = controlNamed("FIL1 RESO");
    const ControlEntry& wave = controlNamed("LFO1 WAVE");
};

TEST_F(HintLine, TellsTheRowThatWasChosen) {
    rig.set(wave, 2.0f / 128);
    pointAt(wave);
    const Picture before = line();
    ASSERT_TRUE(rig.chooseFrom(wave, 5));
    host.idle(150);
    EXPECT_FALSE(areAlike(line(), before));
    expectTold(wave, "by the mouse");
    host.wheel(rig.middle(wave).x, rig.middle(wave).y, -1);
    EXPECT_EQ(rig.row(wave), 6);
    expectTold(wave, "by the wheel");
}

TEST_F(HintLine, TellsTheWaveThatWasChosen) {
    if (!std::filesystem::exists(rig.installation().folder() / "Vantoric_wavetables")) GTEST_SKIP() << "no waves to choose";
    const ControlEntry& list = controlWithTag(tag::waveMenu1);
    rig.set(controlWithTag(parameter::SynType1), 4.0f / 128);  // custom wave
    host.idle(150);
    pointAt(list);
    const Picture before = line();
    const auto menu = rig.openMenu(list);
    ASSERT_TRUE(menu);
    rig.click(rig.rowPlace(*menu, {"Load Wave", "Save Wave", "Random Wave", "-", "a wave"}, vantoric::wave_row::firstFile));
    EXPECT_TRUE(host.until([&] { return !areAlike(line(), before); }, 5));
    expectTold(list, "a row of its menu");
}

TEST_F(HintLine, TellsTheDefaultAfterADoubleClick) {
    for (const char* name : {"FIL1 RESO", "VOL ENV HOLD"}) {
        const ControlEntry& entry = controlNamed(name);
        rig.set(entry, 0.777f);
        pointAt(entry);
        host.doubleClick(rig.middle(entry).x, rig.middle(entry).y);
        EXPECT_TRUE(host.until([&] { return rig.value(entry) == entry.defaultValue; }, 3));
        expectTold(entry, name);
    }
}

TEST_F(HintLine, TellsTheDefaultAfterDelete) {
    rig.set(resonance, 0.777f);
    const auto knob = [&] {
        const Point corner = rig.at(resonance.x - 16, resonance.y - 16);
        return host.glance().part(static_cast<int>(corner.x), static_cast<int>(corner.y), static_cast<int>(32 * rig.unit()),
                                  static_cast<int>(32 * rig.unit()));
    };
    const Picture without = knob();
    for (int i = 0; i < 400 && areAlike(knob(), without); ++i) {  // until the ring of the focus is there
        host.hostKey(0, tabKey);
        host.idle(30);
    }
    host.hostKey(0, upKey);
    ASSERT_NEAR(rig.value(resonance), 0.787f, 0.001f);
    host.hostKey(0, deleteKey);
    EXPECT_EQ(rig.value(resonance), resonance.defaultValue);
    host.idle(150);
    const Picture told = line();
    host.hostKey(0, escapeKey);
    pointAt(resonance);
    EXPECT_TRUE(areAlike(line(), told));
}

// The host moves it too.
TEST_F(HintLine, FollowsWhatIsPointedAt) {
    rig.set(resonance, 0.2f);
    pointAt(resonance);
    const Picture before = line();
    rig.set(resonance, 0.8f);
    EXPECT_FALSE(areAlike(line(), before));
    expectTold(resonance, "automation");
}

TEST_F(HintLine, TellsThePitchWheelWhileItIsHeld) {
    const Point wheel = rig.middle(WindowPart::PitchWheel);
    pointAt(wheel);
    const Picture atRest = line();
    host.press();
    host.move(wheel.x, wheel.y - 20);
    host.idle(150);
    const Picture up = line();
    EXPECT_FALSE(areAlike(up, atRest));
    host.move(wheel.x, wheel.y + 20);
    host.idle(150);
    EXPECT_FALSE(areAlike(line(), up));
    EXPECT_FALSE(areAlike(line(), atRest));
    host.release();
    EXPECT_TRUE(host.until([&] { return areAlike(line(), atRest); }, 5)) << "it springs back";
}

// Of the patch that was there before the window was, too.
TEST(HintLineAtFirst, IsThatOfThePatchsCategory) {
    dropSharedRig();
    WindowRig rig;
    if (!std::filesystem::exists(rig.installation().folder() / "Vantoric_sounds" / "ArpMultilayer"))
        GTEST_SKIP() << "the target patches is not built";
    rig.host().idle(300);
    const Picture first = lineOf(rig);
    const Point knob = rig.middle(controlNamed("FIL1 RESO"));
    rig.host().move(knob.x, knob.y);
    rig.host().idle(150);
    EXPECT_FALSE(areAlike(lineOf(rig), first));
    rig.host().move(rig.at(1195, 412).x, rig.at(1195, 412).y);
    rig.host().idle(150);
    EXPECT_TRUE(areAlike(lineOf(rig), first));
}

}  // namespace
