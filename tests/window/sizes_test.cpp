// The sizes of the window: each from its file and from the menu, the first start, and what a host, a screen or a disk says
// that does not want one.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/parameters.h"
#include "editor/model/menu_rows.h"
#include "editor/model/window_size.h"
#include "tests/window/window_rig.h"
#include "tests/window/x_server.h"

using namespace testhost;
namespace fs = std::filesystem;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

constexpr char needsNoTelling[] = "Glaigail";  // the host that is known to grant sizes

class Sizes : public testing::TestWithParam<int> {
protected:
    void SetUp() override { dropSharedRig(); }
};

class SizeMenu : public testing::Test {
protected:
    void SetUp() override { dropSharedRig(); }
};

// The control stands where the table says at every size: the mouse finds it.
void expectKnobWorks(WindowRig& rig) {
    const auto& volume = controlNamed("MASTER VOLUME");
    const auto& eq = controlNamed("EQ LOW");
    const auto& knob = rig.middle(eq).x < rig.host().size().width ? eq : volume;
    const float before = rig.value(knob);
    rig.drag(knob, 0, before < 0.5f ? 30 : -30);
    EXPECT_NE(rig.value(knob), before);
}

// What the label says: "(1500 x 825)". One tells a height that is not its own.
WindowHost::Size labelledSize(int index) {
    constexpr int mislabelled = 9, itsHeight = 1650;
    const std::string label = vantoric::sizeRow(index).label;
    WindowHost::Size size;
    EXPECT_EQ(std::sscanf(label.c_str() + label.find('('), "(%d x %d", &size.width, &size.height), 2) << label;
    if (index == mislabelled) size.height = itsHeight;
    return size;
}

int storedSize(const WindowRig& rig) { return std::ifstream(rig.installation().sizeFile(), std::ios::binary).get(); }

TEST_P(Sizes, OpenFromTheSizeFile) {
    WindowRig rig(GetParam());
    EXPECT_EQ(rig.host().size(), labelledSize(GetParam()));
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    expectKnobWorks(rig);
}

// As a host does that grants sizes: the window follows at once.
TEST_P(Sizes, AreTakenFromTheMenuByAHostThatResizes) {
    HostAnswers answers;
    answers.resizes = true;
    answers.product = needsNoTelling;
    WindowRig rig(GetParam() == 0 ? 3 : 0, answers);
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), GetParam()));
    const WindowHost::Size wanted = labelledSize(GetParam());
    EXPECT_TRUE(rig.host().until([&] { return rig.plugin().sizeWanted().width == wanted.width; }));
    EXPECT_EQ(rig.plugin().sizeWanted().height, wanted.height);
    rig.host().resize(wanted);
    EXPECT_TRUE(rig.host().until([&] { return rig.host().size() == wanted; }));
    EXPECT_EQ(storedSize(rig), GetParam());
    rig.setUnit(GetParam());
    rig.host().idle(200);
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    expectKnobWorks(rig);
}

INSTANTIATE_TEST_SUITE_P(Window, Sizes, testing::Range(0, 18));

// Hosts keep its number, and end over one that is gone.
TEST_F(SizeMenu, TheWindowInTheHostsIsTheSameInEverySize) {
    HostAnswers answers;
    answers.resizes = true;
    answers.product = needsNoTelling;
    WindowRig rig(0, answers);
    const std::uintptr_t window = rig.host().pluginWindow();
    ASSERT_NE(window, 0u);
    for (const int size : {3, 0}) {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), size));
        const int width = static_cast<int>(vantoric::sizeRow(size).width * vantoric::zoomOfSize(size));
        EXPECT_TRUE(rig.host().until([&] { return rig.host().size().width == width; }));
        rig.host().resize(rig.host().size());
        rig.setUnit(size);
        EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
        EXPECT_EQ(rig.host().pluginWindow(), window);
        expectKnobWorks(rig);
    }
}

// The browser in which its patch was to be chosen is gone: the next patch replaces them all.
TEST_F(SizeMenu, AnotherSizeCallsALoadToALayerOff) {
    HostAnswers answers;
    answers.resizes = true;
    answers.product = needsNoTelling;
    WindowRig rig(0, answers);
    if (!fs::exists(rig.installation().folder() / "Vantoric_sounds" / "Bass")) GTEST_SKIP() << "no patches to load";
    const int second = parameter::Layer1On + 1;
    const auto arm = [&] {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::fileMenu), vantoric::file_row::loadToLayer1 + 1));
        rig.host().idle(400);
        rig.click(controlWithTag(tag::browser));
        rig.host().idle(200);
    };
    const auto reso = [&] { return rig.plugin().parameter(vantoric::hostIndex(parameter::Reso1, 0)); };
    const float mark = 0.123f;
    rig.plugin().setParameter(vantoric::hostIndex(parameter::Reso1, 0), mark);
    rig.plugin().setParameter(second, 0);
    arm();
    rig.click(controlWithTag(tag::nextPatch));
    EXPECT_TRUE(rig.host().until([&] { return rig.plugin().parameter(second) == 1.0f; }, 10)) << "it waited";
    EXPECT_EQ(reso(), mark);
    arm();
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 3));
    EXPECT_TRUE(rig.host().until([&] { return rig.host().size().width == 1800; }));
    rig.host().resize(rig.host().size());
    rig.setUnit(3);
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    rig.click(controlWithTag(tag::nextPatch));
    EXPECT_TRUE(rig.host().until([&] { return reso() != mark; }, 10)) << "it waits no more";
}

TEST_F(SizeMenu, AHostThatRefusesASizeKeepsAWorkingWindow) {
    HostAnswers answers;
    answers.product = needsNoTelling;
    WindowRig rig(3, answers);
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 0));
    EXPECT_TRUE(rig.host().until([&] { return rig.host().size().width == 1200; }));
    rig.host().close();
    ASSERT_TRUE(rig.host().open());
    rig.setUnit(0);
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    expectKnobWorks(rig);
}

TEST_F(SizeMenu, AnyByteIsASize) {
    const Installation installation(pluginUnderTest());
    for (const int byte : {18, 100, 127, 128, 255}) {
        installation.setSize(byte);
        WindowHost host(installation.plugin());
        EXPECT_EQ(host.size(), (WindowHost::Size{1575, 866})) << byte;
        EXPECT_TRUE(host.open());
    }
}

// ---- what is told and asked

HostAnswers hostCalled(const std::string& product) {
    HostAnswers answers;
    answers.product = product;
    return answers;
}

bool asks(WindowRig& rig) {
    return rig.host().until([&] { return rig.isCovered(); }, 10);
}

// One box after the other, each left by Enter: how many there were.
int boxesLeft(WindowRig& rig) {
    rig.host().idle(300);
    int boxes = 0;
    for (; boxes < 9 && rig.isCovered(); ++boxes) {
        rig.host().key("Return");
        rig.host().idle(150);
    }
    return boxes;
}

bool isAskedOfTheHost(WindowRig& rig, int size) {
    const WindowHost::Size wanted = labelledSize(size);
    return rig.host().until([&] { return rig.plugin().sizeWanted().width == wanted.width; }, 10) &&
           rig.plugin().sizeWanted().height == wanted.height;
}

TEST_F(SizeMenu, TellsOnEveryChoiceThatNotAllHostsCanDoIt) {
    WindowRig rig(3, hostCalled("Some host"));
    for (const int size : {0, 3, 3}) {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), size));
        rig.setUnit(size);
        ASSERT_TRUE(asks(rig)) << size;
        EXPECT_TRUE(isAskedOfTheHost(rig, size));
        EXPECT_EQ(storedSize(rig), size) << "it is taken at once, whatever the host makes of it";
        EXPECT_EQ(boxesLeft(rig), 1);
        expectKnobWorks(rig);
    }
    EXPECT_TRUE(rig.chooseFrom(controlWithTag(tag::zoomMenu), 0)) << "the other list of sizes does the same";
    rig.setUnit(0);
    EXPECT_TRUE(asks(rig));
    EXPECT_EQ(storedSize(rig), 0);
    EXPECT_EQ(boxesLeft(rig), 1);
}

TEST_F(SizeMenu, TellsNothingInTheHostThatIsKnownToDoIt) {
    WindowRig rig(3, hostCalled(needsNoTelling));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 0));
    EXPECT_TRUE(isAskedOfTheHost(rig, 0));
    rig.setUnit(0);
    EXPECT_EQ(boxesLeft(rig), 0);
}

TEST_F(SizeMenu, AsksBeforeItTakesASizeThatIsTooLargeForTheScreen) {
    const OtherScreen screen(1800, 990);  // as large as the size itself is too small
    WindowRig rig(0, hostCalled(needsNoTelling));
    const auto chooseTooLarge = [&] {
        ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 3));
        ASSERT_TRUE(asks(rig));
    };
    for (const char* refusal : {"Return", "Escape"}) {  // Enter presses No
        chooseTooLarge();
        rig.host().key(refusal);
        ASSERT_TRUE(rig.host().until([&] { return !rig.isCovered(); }, 5));
        rig.host().idle(200);
        EXPECT_EQ(rig.plugin().sizeWanted().width, 0) << "the host is asked for nothing";
        EXPECT_EQ(storedSize(rig), 0);
        expectKnobWorks(rig);
    }
    chooseTooLarge();
    rig.host().key("Tab");
    rig.host().key("Return");
    EXPECT_TRUE(isAskedOfTheHost(rig, 3));
    EXPECT_EQ(storedSize(rig), 3);
}

TEST_F(SizeMenu, AsksNothingForASizeThatFits) {
    const OtherScreen screen(1801, 991);
    WindowRig rig(0, hostCalled(needsNoTelling));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 3));
    EXPECT_TRUE(isAskedOfTheHost(rig, 3));
    rig.setUnit(3);
    EXPECT_EQ(boxesLeft(rig), 0);
}

TEST_F(SizeMenu, TellsFirstAndAsksThen) {
    const OtherScreen screen(1280, 800);
    WindowRig rig(0, hostCalled("Some host"));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 3));
    EXPECT_EQ(boxesLeft(rig), 2) << "what not all hosts can do, and the question";
    EXPECT_EQ(storedSize(rig), 0) << "which was answered with No";
    EXPECT_EQ(rig.plugin().sizeWanted().width, 0);
}

TEST_F(SizeMenu, GivesTheHostThatCannotZoomTheNormalSizeAndTellsIt) {
    WindowRig rig(0, hostCalled("Orion"));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 8));
    EXPECT_TRUE(isAskedOfTheHost(rig, 3));
    rig.host().resize(labelledSize(3));
    rig.setUnit(3);
    EXPECT_EQ(boxesLeft(rig), 2) << "what not all hosts can do, and what this one cannot";
    EXPECT_EQ(storedSize(rig), 3);
    expectKnobWorks(rig);
}

TEST_F(SizeMenu, ASizeThatCannotBeStoredIsTakenAllTheSame) {
    const int atFirst = 11;  // no file that could be read: a first start, on this screen
    WindowRig rig(atFirst, hostCalled(needsNoTelling), [](const Installation& installation) {
        fs::remove(installation.sizeFile());
        fs::create_directory(installation.sizeFile());
    });
    ASSERT_EQ(rig.host().size(), labelledSize(atFirst));
    ASSERT_TRUE(rig.chooseFrom(controlWithTag(tag::editorMenu), 0));
    EXPECT_TRUE(isAskedOfTheHost(rig, 0));
    rig.setUnit(0);
    ASSERT_TRUE(asks(rig)) << "what could not be stored";
    EXPECT_EQ(boxesLeft(rig), 1);
    expectKnobWorks(rig);
    EXPECT_TRUE(fs::is_directory(rig.installation().sizeFile()));
}

// ---- the first start

struct FirstStart {
    int width, height;  // of the screen
    const char* product;
    int size;
};
void PrintTo(const FirstStart& start, std::ostream* out) { *out << start.width << "x" << start.height << " " << start.product; }

class FirstStarts : public testing::TestWithParam<FirstStart> {
protected:
    void SetUp() override { dropSharedRig(); }
};

TEST_P(FirstStarts, OpenInTheLargestSizeThatSuitsTheScreen) {
    const auto& [width, height, product, size] = GetParam();
    const OtherScreen screen(width, height);
    WindowRig rig(size, hostCalled(product), [](const Installation& installation) { fs::remove(installation.sizeFile()); });
    EXPECT_EQ(rig.host().size(), labelledSize(size));
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    EXPECT_FALSE(rig.isCovered()) << "nothing is told";
    expectKnobWorks(rig);
}

INSTANTIATE_TEST_SUITE_P(Window, FirstStarts,
                         testing::Values(FirstStart{1280, 1024, "Some host", 0}, FirstStart{1920, 1080, "Some host", 0},
                                         FirstStart{1920, 1080, needsNoTelling, 3}, FirstStart{2000, 1400, "Some host", 0},
                                         FirstStart{2001, 1401, "Some host", 3}, FirstStart{2560, 1440, "Some host", 3},
                                         FirstStart{2560, 1760, "Some host", 6}, FirstStart{2880, 1900, "Some host", 7},
                                         FirstStart{3840, 2160, "Some host", 7}, FirstStart{3840, 2160, needsNoTelling, 11},
                                         FirstStart{3840, 2160, "Orion", 3}));

}  // namespace
