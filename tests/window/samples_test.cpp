// Samples by the mouse: loading, the markers in the display, the rows of their menus.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include <unistd.h>

#include "base/parameters.h"
#include "editor/model/window_layout.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::ControlEntry;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr float sampleType = 3.0f / 128, customWaveType = 4.0f / 128;

// Half a second of a decaying sine, 16 bits, 44.1 kHz.
void writeWave(const std::filesystem::path& path) {
    constexpr std::uint32_t rate = 44100, frames = 22050;
    std::ofstream file(path, std::ios::binary);
    const auto number = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) file.put(static_cast<char>(value >> (8 * i) & 255));
    };
    file << "RIFF";
    number(36 + 2 * frames, 4);
    file << "WAVEfmt ";
    number(16, 4), number(1, 2), number(1, 2), number(rate, 4), number(2 * rate, 4), number(2, 2), number(16, 2);
    file << "data";
    number(2 * frames, 4);
    for (std::uint32_t i = 0; i < frames; ++i)
        number(static_cast<std::uint16_t>(std::lround(2e4 * std::sin(0.0314 * i) * std::exp(-1e-4 * i))), 2);
}

class Samples : public testing::Test {
protected:
    void SetUp() override { rig.reset(); }
    void TearDown() override { std::filesystem::remove(wave); }

    // Through the button and the chooser, as a hand does.
    void loadWave() {
        writeWave(wave);
        const std::size_t empty = rig.plugin().chunk().size();
        rig.set(type, sampleType);
        host.idle(150);
        rig.click(controlWithTag(tag::sampleLoad1));
        ASSERT_TRUE(host.until([&] { return rig.isCovered(); }, 10)) << "a chooser opens";
        host.idle(300);  // the keys come to the window
        host.type(wave.string());
        host.key("Return");
        host.idle(600);  // the file is read beside the window
        ASSERT_TRUE(host.until([&] { return rig.isCovered(); }, 10)) << "whether it is to be tuned";
        host.key("Return");  // to C
        constexpr std::size_t leastOfAWave = 8192;
        const auto has = [&] { return rig.plugin().chunk().size() > empty + leastOfAWave; };
        ASSERT_TRUE(host.until(has, 10)) << "the sample is part of the patch";
        host.idle(150);
    }
    void undo() {
        rig.click(rig.at(hintLine.x + hintLine.width - 30, hintLine.y + hintLine.height / 2.0));
        host.idle(200);
    }
    // A point of the display, as a fraction of its width.
    Point inDisplay(double fraction) const {
        return rig.at(display.x + fraction * display.width, display.y + display.height / 2.0);
    }
    void dragMarkers(double from, double to, int button = 1) {
        const Point a = inDisplay(from), b = inDisplay(to);
        host.drag(a.x, a.y, b.x, b.y, button);
        host.idle(250);
    }

    WindowRig& rig = sharedRig();
    WindowHost& host = rig.host();
    // Small letters only, as it is typed without Shift.
    const std::filesystem::path wave =
        std::filesystem::temp_directory_path() / ("vantoric-tone-" + std::to_string(getpid()) + ".wav");
    const ControlEntry& type = controlNamed("SYNTHESIS OSC1");
    const ControlEntry& display = controlNamed("WAVE 1");
    const vantoric::LayoutRect& hintLine = vantoric::windowPart(vantoric::WindowPart::HintLine).rect;
};

TEST_F(Samples, ADragInTheDisplaySetsTheLoopAndIsOneStepBack) {
    loadWave();
    const auto before = rig.plugin().chunk();
    dragMarkers(0.2, 0.7);
    const auto after = rig.plugin().chunk();
    EXPECT_NE(after, before);
    EXPECT_EQ(after.size(), before.size()) << "the sample itself stays";
    undo();
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(Samples, ArrowsMoveTheLoopOfTheFocusedDisplay) {
    loadWave();
    host.click(3, 400);
    host.idle(150);
    const auto around = [&] {
        const double u = rig.unit();
        return host.glance().part(static_cast<int>((display.x - 5) * u), static_cast<int>((display.y + display.height / 2.0) * u),
                                  static_cast<int>(4 * u), static_cast<int>(10 * u));
    };
    const Picture without = around();
    for (int i = 0; i < 200 && around() == without; ++i) {
        host.hostKey(0, 2);  // Tab
        host.idle(30);
    }
    const int start = vantoric::hostIndex(parameter::LoopSta1, rig.layer());
    for (int i = 0; i < 10; ++i) host.key("Up");  // there may be no loop yet
    host.idle(200);
    const float before = rig.plugin().parameter(start);
    for (int i = 0; i < 5; ++i) host.key("Right");
    EXPECT_TRUE(host.until([&] { return std::fabs(rig.plugin().parameter(start) - before - 0.05f) < 0.002f; }, 5));
    host.key("Escape");
}

TEST_F(Samples, MarkersThatCrossEachOtherSwap) {
    loadWave();
    const auto before = rig.plugin().chunk();
    dragMarkers(0.3, 0.8);
    const auto forward = rig.plugin().chunk();
    undo();
    ASSERT_EQ(rig.plugin().chunk(), before);
    dragMarkers(0.8, 0.3);
    EXPECT_EQ(rig.plugin().chunk(), forward);
}

TEST_F(Samples, EscapeCallsADragOfAMarkerOff) {
    loadWave();
    dragMarkers(0.2, 0.7);
    const auto before = rig.plugin().chunk();
    for (const int button : {1, 3}) {
        host.move(inDisplay(0.4).x, inDisplay(0.4).y);
        host.press(button);
        host.move(inDisplay(0.5).x, inDisplay(0.5).y);
        host.key("Escape");
        host.release(button);
        host.idle(250);
        EXPECT_EQ(rig.plugin().chunk(), before) << "button " << button;
    }
    dragMarkers(0.4, 0.5, 2);
    EXPECT_EQ(rig.plugin().chunk(), before) << "the middle button drags nothing";
}

TEST_F(Samples, TheRightButtonSetsTheStart) {
    loadWave();
    const int start = vantoric::hostIndex(parameter::Start1, rig.layer());
    dragMarkers(0.1, 0.5, 3);
    EXPECT_NEAR(rig.plugin().parameter(start), 0.5f, 0.02f);
    dragMarkers(0.25, 0.25, 3);
    EXPECT_NEAR(rig.plugin().parameter(start), 0.25f, 0.02f);
}

TEST_F(Samples, ADisplayOfAWaveTakesNoDrag) {
    rig.set(type, 0);
    host.idle(150);
    const auto before = rig.plugin().chunk();
    dragMarkers(0.2, 0.7);
    EXPECT_EQ(rig.plugin().chunk(), before);
}

TEST_F(Samples, EveryRowOfTheEditMenuDoesSomethingToTheSample) {
    loadWave();
    const ControlEntry* menu = nullptr;
    for (int i = 0; i < vantoric::controlCount() && menu == nullptr; ++i) {
        const ControlEntry& entry = vantoric::controlEntry(i);
        if (entry.tag == tag::sampleEdit1 && entry.kind == vantoric::WidgetKind::SmallList) menu = &entry;
    }
    ASSERT_NE(menu, nullptr);
    const auto labels = labelsOf(*menu);
    const auto choose = [&](int row) { ASSERT_TRUE(rig.chooseFrom(*menu, row)) << labels[static_cast<std::size_t>(row)]; };
    constexpr int undoRow = 0, clearRow = 2, exportRow = 3;
    const auto before = rig.plugin().chunk();
    const auto arrow = rig.at(hintLine.x + hintLine.width - 30, hintLine.y + hintLine.height / 2.0);
    std::vector<std::string> idle;
    for (int row = clearRow; row < static_cast<int>(labels.size()); ++row) {
        if (labels[static_cast<std::size_t>(row)] == "-" || row == exportRow) continue;
        choose(row);
        EXPECT_FALSE(rig.isCovered()) << labels[static_cast<std::size_t>(row)];
        if (host.until([&] { return rig.plugin().chunk() != before; }, 0.6))
            rig.click(arrow);
        else
            idle.push_back(labels[static_cast<std::size_t>(row)]);
        ASSERT_TRUE(host.until([&] { return rig.plugin().chunk() == before; }, 5)) << labels[static_cast<std::size_t>(row)];
    }
    EXPECT_LE(idle.size(), 3u) << testing::PrintToString(idle);  // as a tone has neither an offset nor silence
    choose(clearRow);
    ASSERT_TRUE(host.until([&] { return rig.plugin().chunk() != before; }, 5));
    const auto cleared = rig.plugin().chunk();
    choose(undoRow);
    EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != cleared; }, 5)) << "what was cleared is there again";
}

TEST_F(Samples, AWaveByChanceAndOneOfTheListAreChosenByTheMouse) {
    rig.set(type, customWaveType);
    host.idle(150);
    const std::vector<std::string> firstRows{"Load Wave", "Save Wave", "Random Wave", "-", "a wave"};
    for (const int row : {2, 4}) {
        const auto before = rig.plugin().chunk();
        const auto menu = rig.openMenu(controlWithTag(tag::waveMenu1));
        ASSERT_TRUE(menu);
        rig.click(rig.rowPlace(*menu, firstRows, row));
        EXPECT_TRUE(host.until([&] { return rig.plugin().chunk() != before; }, 5)) << firstRows[static_cast<std::size_t>(row)];
    }
}

}  // namespace
