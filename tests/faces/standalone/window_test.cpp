// The window as a user sees it: its place on the desktop, keys by pointer and board, what is kept.
#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "tests/faces/standalone/desktop.h"
#include "tests/faces/standalone/program.h"
#include "tests/window/compare_pictures.h"
#include "tests/window/installation.h"
#include "tests/window/x_server.h"

namespace {

using testhost::Desktop;
using testhost::Home;
using testhost::Picture;
using testhost::Program;

// Window units: the editor's width, its height, the bar and the keys below it.
constexpr double across = 1200, editorHeight = 660, barHeight = 32, keysHeight = 86;

class WindowTest : public testing::Test {
protected:
    WindowTest() { std::filesystem::copy_file(PROGRAM, program()); }
    void SetUp() override {
        if (!server_.isRunning()) GTEST_SKIP() << "no virtual X server here";
        setenv("JACK_NO_START_SERVER", "1", 1);
        setenv("JACK_DEFAULT_SERVER", "vantoric-test-none", 1);
        desktop_ = std::make_unique<Desktop>();
    }
    void TearDown() override { desktop_.reset(); }
    // In an installation of its own, as the size of the window is kept there.
    std::string program() const { return installation_.folder() / "vantoric"; }

    void open(std::vector<std::string> arguments = {"--device", "null"}) {
        arguments.insert(arguments.begin(), program());
        program_ = std::make_unique<Program>(arguments);
        window_ = desktop_->findWindow("Vantoric", 60);
        ASSERT_NE(window_, 0u) << program_->output();
        place_ = desktop_->placeOf(window_);
        testhost::pause(1);
    }
    void close() {
        desktop_->askToClose(window_);
        EXPECT_EQ(program_->finish(), 0) << program_->output();
    }
    double zoom() const { return place_.width / across; }
    // A place in the bar or the keys below the editor, in units from their left upper corner.
    struct Point {
        double x, y;
    };
    Point below(double x, double y) const { return {place_.x + x * zoom(), place_.y + (editorHeight + y) * zoom()}; }
    void click(double x, double y) {
        const Point at = below(x, y);
        desktop_->click(at.x, at.y);
        testhost::pause(0.3);
    }
    // Plays the white key at `x` at a height of the keys, 0 to 1 from the top.
    void hold(double x, double depth, double seconds) {
        const Point at = below(x, barHeight + depth * (keysHeight - 9));
        desktop_->move(at.x, at.y);
        desktop_->press();
        testhost::pause(seconds);
        desktop_->release();
        testhost::pause(0.5);
    }

    // Pixels of letters where the bar tells its news.
    int brightInTheBar() const {
        const Picture shown = desktop_->picture(place_);
        int count = 0;
        for (double x = 380; x < 780; x += 1 / zoom())
            for (double y = editorHeight + 10; y < editorHeight + 22; y += 1 / zoom()) {
                const unsigned colour = shown.at(static_cast<int>(x * zoom()), static_cast<int>(y * zoom()));
                count += (colour >> 8 & 255) > 100 ? 1 : 0;
            }
        return count;
    }
    void type(const char* key) {
        desktop_->keyDown(key);
        testhost::pause(0.1);
        desktop_->keyUp(key);
        testhost::pause(0.1);
    }
    Picture layerButtons() const {
        const auto pixels = [&](double units) { return static_cast<int>(units * zoom()); };
        return desktop_->picture({place_.x + pixels(406), place_.y + pixels(8), pixels(188), pixels(20)});
    }

    testhost::XServer server_{2000, 1300};
    testhost::Installation installation_{PLUGIN};
    Home home_;
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<Program> program_;
    std::uintptr_t window_ = 0;
    Desktop::Place place_;
};

TEST_F(WindowTest, IsAWindowOfTheDesktop) {
    open();
    EXPECT_NE(desktop_->titleOf(window_).find("Vantoric"), std::string::npos);
    EXPECT_GT(desktop_->iconSize(window_), 32u * 32 + 64 * 64);
    EXPECT_NEAR(place_.height, (editorHeight + barHeight + keysHeight) * zoom(), 2);
    Picture shown = desktop_->picture(place_);
    // White keys are bright, the editor above them is dark.
    const auto brightness = [](unsigned colour) { return (colour >> 16 & 255) + (colour >> 8 & 255) + (colour & 255); };
    const auto key = [&] {
        return brightness(shown.at(static_cast<int>(20 * zoom()), place_.height - static_cast<int>(25 * zoom())));
    };
    for (int looks = 0; looks < 50 && key() <= 400; ++looks) {  // a busy machine draws late
        testhost::pause(0.2);
        shown = desktop_->picture(place_);
    }
    EXPECT_GT(key(), 400u);
    EXPECT_LT(brightness(shown.at(static_cast<int>(4 * zoom()), static_cast<int>(600 * zoom()))), 150u);
    if (const char* folder = std::getenv("VANTORIC_PICTURES")) savePng(shown, std::string(folder) + "/standalone.png");
    close();
}

// What was to tell before there was a window is told in it.
TEST_F(WindowTest, AnIncompleteInstallationIsToldInABox) {
    const std::filesystem::path welcome = installation_.folder() / "Vantoric_sounds/ArpMultilayer/0Welcome.fxp";
    ASSERT_TRUE(std::filesystem::remove(welcome));
    open();
    const auto middle = [&] {
        const auto pixels = [&](double units) { return static_cast<int>(units * zoom()); };
        return desktop_->picture({place_.x + pixels(400), place_.y + pixels(270), pixels(400), pixels(120)});
    };
    const Picture box = middle();
    if (const char* folder = std::getenv("VANTORIC_PICTURES"))
        savePng(desktop_->picture(place_), std::string(folder) + "/incomplete.png");
    type("Return");
    EXPECT_TRUE(testhost::within(10, [&] { return !(middle() == box); })) << "there is no box";
    close();
    EXPECT_EQ(program_->output().find("factory sounds"), std::string::npos) << program_->output();
}

// Calls on a window that is gone are errors, by which the window system ends programs.
TEST_F(WindowTest, AWindowThatSomebodyDestroysEndsItInGoodOrder) {
    open();
    desktop_->destroy(window_);
    EXPECT_EQ(program_->finish(), 0) << program_->output();
    EXPECT_NE(program_->output().find("played "), std::string::npos) << program_->output();
    EXPECT_TRUE(std::filesystem::exists(home_.stateFile("standalone.patch")));
}

TEST_F(WindowTest, KeysSoundUnderThePointerTheLouderTheNearerToTheirFront) {
    const auto peakAt = [&](double depth) {
        open({"--device", "null", "--patch", PATCH, "--record", home_ / "take.wav"});
        hold(600, depth, 0.5);
        close();
        EXPECT_NE(program_->output().find(" 2 MIDI messages"), std::string::npos) << program_->output();
        return testhost::readRecording(home_ / "take.wav").peak();
    };
    const float soft = peakAt(0.66), loud = peakAt(0.97);
    EXPECT_GT(soft, 0.0005f);
    EXPECT_GT(loud, 1.05f * soft);
}

TEST_F(WindowTest, TheComputersKeysPlay) {
    open({"--device", "null", "--record", home_ / "take.wav"});
    for (const char* key : {"z", "g", "q"}) desktop_->keyDown(key);
    testhost::pause(0.4);
    for (const char* key : {"z", "g", "q"}) desktop_->keyUp(key);
    desktop_->keyDown("Page_Up");
    desktop_->keyUp("Page_Up");
    desktop_->keyDown("space");
    desktop_->keyUp("space");
    testhost::pause(0.4);
    close();
    EXPECT_NE(program_->output().find(" 8 MIDI messages"), std::string::npos) << program_->output();
    EXPECT_GT(testhost::readRecording(home_ / "take.wav").peak(), 0.001f);
    std::ifstream settings(home_.stateFile("standalone.settings"));
    const std::string kept{std::istreambuf_iterator<char>(settings), {}};
    EXPECT_NE(kept.find("octave=4"), std::string::npos) << kept;
}

// Whoever clicks beside a knob sees no focus anywhere, and goes on playing.
TEST_F(WindowTest, TheComputersKeysPlayAfterAClickOnTheGround) {
    open();
    desktop_->click(place_.x + 4 * zoom(), place_.y + 600 * zoom());
    testhost::pause(0.5);
    for (const char* key : {"z", "2", "3", "bracketright", "space"}) type(key);
    testhost::pause(1.5);  // until the layers' lamps are dark
    const Picture before = layerButtons();
    type("4");  // plays nothing, and is the window's
    EXPECT_TRUE(testhost::within(10, [&] { return !(layerButtons() == before); }));
    close();
    EXPECT_NE(program_->output().find(" 10 MIDI messages"), std::string::npos) << program_->output();
}

// A control that was reached by Tab shows that it has the keys.
TEST_F(WindowTest, AControlWithTheFocusHasTheComputersKeys) {
    open();
    type("Tab");
    testhost::pause(0.5);
    const Picture before = layerButtons();
    type("z");
    type("3");
    EXPECT_TRUE(testhost::within(10, [&] { return !(layerButtons() == before); }));
    type("Escape");
    testhost::pause(0.5);
    type("z");
    close();
    EXPECT_NE(program_->output().find(" 2 MIDI messages"), std::string::npos) << program_->output();
}

TEST_F(WindowTest, RecordsIntoTheMusicFolder) {
    open();
    click(40, 16);
    testhost::pause(0.5);
    click(40, 16);
    close();
    EXPECT_NE(program_->output().find("played"), std::string::npos);
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(home_ / "Music")) {
        EXPECT_GT(testhost::readRecording(entry.path()).frames(), 10000u) << entry.path();
        ++count;
    }
    EXPECT_EQ(count, 1);
}

TEST_F(WindowTest, WhatBecameOfARecordingGoesWhenTheNextOneBegins) {
    open();
    click(40, 16);
    EXPECT_EQ(brightInTheBar(), 0);
    click(40, 16);
    EXPECT_TRUE(testhost::within(5, [&] { return brightInTheBar() > 300; })) << "where it went";
    click(40, 16);
    EXPECT_TRUE(testhost::within(3, [&] { return brightInTheBar() == 0; })) << "long before the news would go by itself";
    click(40, 16);
    EXPECT_TRUE(testhost::within(5, [&] { return brightInTheBar() > 300; }));
    close();
}

// Of a server without a card, which a program that stands still makes wait.
TEST_F(WindowTest, AClickOnTheDropoutsCountsThemAnew) {
    if (std::system("command -v jackd >/dev/null 2>&1") != 0) GTEST_SKIP() << "no JACK server here";
    setenv("JACK_DEFAULT_SERVER", ("vantoric-window-" + std::to_string(getpid())).c_str(), 1);
    Program server(
        {"jackd", "-n", getenv("JACK_DEFAULT_SERVER"), "-r", "-t", "60000", "-d", "dummy", "-r", "48000", "-p", "256"});
    testhost::pause(1);
    ASSERT_TRUE(server.isRunning()) << server.output();
    open({"--sound", "jack"});
    const auto redAtTheCount = [&] {
        const auto pixels = [&](double units) { return static_cast<int>(units * zoom()); };
        const Desktop::Place place{place_.x + pixels(956), place_.y + pixels(editorHeight + 8), pixels(70), pixels(16)};
        const Picture shown = desktop_->picture(place);
        int count = 0;
        for (int y = 0; y < place.height; ++y)
            for (int x = 0; x < place.width; ++x) {
                const unsigned colour = shown.at(x, y);
                count += (colour >> 16 & 255) > 150 && (colour >> 8 & 255) < 120 ? 1 : 0;
            }
        return count;
    };
    program_->signal(SIGSTOP);
    testhost::pause(0.5);
    program_->signal(SIGCONT);
    ASSERT_TRUE(testhost::within(5, [&] { return redAtTheCount() > 20; })) << program_->output() << server.output();
    testhost::pause(0.5);
    click(991, 16);
    EXPECT_TRUE(testhost::within(5, [&] { return redAtTheCount() == 0; }));
    close();
    EXPECT_EQ(program_->output().find(", 0 dropouts"), std::string::npos) << "the end tells them all: " << program_->output();
    server.signal(SIGTERM);
    server.finish();
}

TEST_F(WindowTest, TheBarsPartsSayWhatTheyAreFor) {
    for (const bool areShown : {true, false}) {
        installation_.setTooltips(areShown);
        open();
        const auto above = [&](double x) {
            const auto pixels = [&](double units) { return static_cast<int>(units * zoom()); };
            return desktop_->picture({place_.x + pixels(x - 60), place_.y + pixels(editorHeight - 40), pixels(120), pixels(38)});
        };
        for (const double x : {70.0, 910.0, 1000.0}) {  // recorder, load, dropouts
            SCOPED_TRACE(x);
            const Picture before = above(x);
            const Point part = below(x, 16);
            desktop_->move(part.x, part.y);
            EXPECT_EQ(testhost::within(areShown ? 5 : 2, [&] { return !(above(x) == before); }), areShown);
            if (const char* folder = std::getenv("VANTORIC_PICTURES"); folder != nullptr && areShown)
                savePng(desktop_->picture(place_), std::string(folder) + "/tip" + std::to_string(static_cast<int>(x)) + ".png");
            const Point away = below(600, -200);
            desktop_->move(away.x, away.y);
            EXPECT_TRUE(testhost::within(5, [&] { return above(x) == before; })) << "and goes with the pointer";
        }
        close();
    }
}

TEST_F(WindowTest, TheSettingsChooseTheDevice) {
    open();
    const Picture before = desktop_->picture(place_);
    click(1110, 16);
    EXPECT_FALSE(desktop_->picture(place_) == before);
    click(488 + 280, -344 + 58 + 11);  // "None"
    close();
    std::ifstream settings(home_.stateFile("standalone.settings"));
    const std::string kept{std::istreambuf_iterator<char>(settings), {}};
    EXPECT_NE(kept.find("sound=none"), std::string::npos) << kept;
}

TEST_F(WindowTest, KeysCanBeHidden) {
    open();
    click(120, 16);
    EXPECT_TRUE(testhost::within(
        10, [&] { return std::abs(desktop_->placeOf(window_).height - (editorHeight + barHeight) * zoom()) < 2; }));
    close();
    open();
    EXPECT_NEAR(desktop_->placeOf(window_).height, (editorHeight + barHeight) * zoom(), 2);
    close();
}

TEST_F(WindowTest, FollowsTheEditorsSize) {
    open();
    const int before = place_.width;
    // The menu "Editor": its first row is another size.
    desktop_->click(place_.x + 328 * zoom(), place_.y + 18 * zoom());
    testhost::pause(0.5);
    desktop_->click(place_.x + 380 * zoom(), place_.y + 43 * zoom());
    ASSERT_TRUE(testhost::within(10, [&] { return desktop_->placeOf(window_).width != before; }));
    testhost::pause(0.5);
    place_ = desktop_->placeOf(window_);
    EXPECT_NEAR(place_.height, (editorHeight + barHeight + keysHeight) * zoom(), 3);
    if (const char* folder = std::getenv("VANTORIC_PICTURES"))
        savePng(desktop_->picture(place_), std::string(folder) + "/resized.png");
    hold(600, 0.9, 0.2);
    close();
    EXPECT_NE(program_->output().find(" 2 MIDI messages"), std::string::npos) << program_->output();
}

// Without layers and effects the editor is a bar of its own, and the settings open below.
TEST_F(WindowTest, HasRoomForItsPartsInEverySize) {
    installation_.setSize(5);
    open();
    constexpr double narrow = 802, low = 128;
    const double scale = place_.width / narrow;
    EXPECT_NEAR(place_.height, (low + barHeight + keysHeight) * scale, 3);
    desktop_->click(place_.x + (narrow - 80) * scale, place_.y + (low + 16) * scale);
    EXPECT_TRUE(testhost::within(10, [&] { return desktop_->placeOf(window_).height > place_.height + 300 * scale; }));
    testhost::pause(0.5);
    if (const char* folder = std::getenv("VANTORIC_PICTURES"))
        savePng(desktop_->picture(desktop_->placeOf(window_)), std::string(folder) + "/narrow.png");
    desktop_->click(place_.x + (narrow - 80) * scale, place_.y + (low + 16) * scale);
    EXPECT_TRUE(testhost::within(10, [&] { return desktop_->placeOf(window_).height == place_.height; }));
    desktop_->move(place_.x + 400 * scale, place_.y + (low + 90) * scale);
    desktop_->press();
    testhost::pause(0.2);
    desktop_->release();
    testhost::pause(0.5);
    close();
    EXPECT_NE(program_->output().find(" 2 MIDI messages"), std::string::npos) << program_->output();
}

TEST_F(WindowTest, WhatCannotBeKeptIsTold) {
    setenv("XDG_STATE_HOME", "/proc/nope", 1);
    open();
    desktop_->askToClose(window_);
    EXPECT_EQ(program_->finish(), 1);
    EXPECT_NE(program_->output().find("what was set could not be kept"), std::string::npos) << program_->output();
}

TEST_F(WindowTest, ALastPatchThatCannotBeReadIsToldAndSetAside) {
    const std::string kept = home_.stateFile("standalone.patch");
    std::filesystem::create_directories(std::filesystem::path(kept).parent_path());
    std::ofstream(kept) << std::string(5000, 'x');
    open();
    if (const char* folder = std::getenv("VANTORIC_PICTURES"))
        savePng(desktop_->picture(place_), std::string(folder) + "/set-aside.png");
    close();
    EXPECT_EQ(std::filesystem::file_size(kept + ".unreadable"), 5000u);
    EXPECT_GT(std::filesystem::file_size(kept), 50000u);
}

// Two programs that share what is kept: one that nobody has touched has nothing to keep.
TEST_F(WindowTest, WhoeverLeftAllAsItWasWritesOverNothing) {
    const auto kept = [this](const char* name) {
        std::ifstream file(home_.stateFile(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    open();
    Program other({program(), "--device", "null", "--patch", PATCH});
    ASSERT_TRUE(other.waitFor("MIDI: ")) << other.output();
    testhost::pause(1.5);
    other.signal(SIGTERM);
    ASSERT_EQ(other.finish(), 0) << other.output();
    const std::string patchOfTheOther = kept("standalone.patch"), octaveOfTheOther = "octave=6\n";
    ASSERT_GT(patchOfTheOther.size(), 50000u) << "one that the options named is kept";
    std::ofstream(home_.stateFile("standalone.settings")) << octaveOfTheOther;
    type("z");  // playing is no editing
    close();
    EXPECT_TRUE(kept("standalone.patch") == patchOfTheOther);
    EXPECT_EQ(kept("standalone.settings"), octaveOfTheOther);

    open();
    type("Page_Down");
    type("Tab");
    type("bracketright");  // the next patch of the category
    testhost::pause(1);
    close();
    EXPECT_FALSE(kept("standalone.patch") == patchOfTheOther);
    EXPECT_NE(kept("standalone.settings").find("octave=5"), std::string::npos);
}

TEST_F(WindowTest, StartsInASizeThatFitsTheScreen) {
    struct Start {
        int screenWidth, screenHeight, width, height;
        bool hasKeys;
    };
    constexpr Start starts[] = {{1024, 600, 900, 495, false},  {1280, 720, 900, 495, true},  {1280, 800, 1200, 660, false},
                                {1366, 768, 1200, 660, false}, {1440, 900, 1200, 660, true}, {1680, 1050, 1350, 742, true},
                                {1920, 1080, 1500, 825, true}};
    for (const Start& start : starts) {
        SCOPED_TRACE(std::to_string(start.screenWidth) + " x " + std::to_string(start.screenHeight));
        std::filesystem::remove(installation_.sizeFile());
        const testhost::XServer screen(start.screenWidth, start.screenHeight);
        desktop_ = std::make_unique<Desktop>();
        open();
        EXPECT_NEAR(place_.width, start.width, 1);
        EXPECT_NEAR(place_.height, start.height + (barHeight + (start.hasKeys ? keysHeight : 0)) * zoom(), 2);
        EXPECT_FALSE(std::filesystem::exists(installation_.sizeFile())) << "chosen by nobody";
        close();
        desktop_.reset();  // before its server ends
    }
    setenv("DISPLAY", server_.display().c_str(), 1);
}

// As tools/manual_pictures.sh takes it. The number of the load is another at each look.
TEST_F(WindowTest, TheManualShowsItAsItFirstOpens) {
    if (!std::filesystem::exists(installation_.folder() / "Vantoric_sounds")) GTEST_SKIP() << "the target patches is not built";
    std::filesystem::remove(installation_.sizeFile());
    const testhost::XServer screen(2000, 1200);
    desktop_ = std::make_unique<Desktop>();
    open({"--device", "null"});
    testhost::pause(5);
    const Picture stored = testhost::loadPng(std::string(MANUAL) + "/pictures/program.png");
    ASSERT_FALSE(stored.isEmpty()) << "it is missing: tools/manual_pictures.sh program";
    const Picture seen = desktop_->picture(place_);
    const testhost::Difference d = difference(seen, reduced(stored, seen.width / 4));
    if (const char* folder = std::getenv("VANTORIC_PICTURES")) savePng(seen, std::string(folder) + "/program.png");
    std::printf("program: %.1f at %d, %d\n", d.largest, 4 * d.x, 4 * d.y);
    EXPECT_LE(d.largest, testhost::tolerance) << "docs/manual/pictures/program.png no longer shows the program, " << 4 * d.x
                                              << ", " << 4 * d.y << " pixels from its corner: tools/manual_pictures.sh program";
    close();
    desktop_.reset();  // before its server ends
    setenv("DISPLAY", server_.display().c_str(), 1);
}

// With a size that was chosen in a host, where it fits.
TEST_F(WindowTest, SaysThatTheKeysDoNotFit) {
    installation_.setSize(17);  // 1575 x 866
    const testhost::XServer fullHd(1920, 1080);
    desktop_ = std::make_unique<Desktop>();
    open();
    EXPECT_NEAR(place_.height, (editorHeight + barHeight) * zoom(), 2);
    if (const char* folder = std::getenv("VANTORIC_PICTURES"))
        savePng(desktop_->picture(place_), std::string(folder) + "/no-keys.png");
    EXPECT_GT(brightInTheBar(), 500);
    EXPECT_TRUE(testhost::within(20, [&] { return brightInTheBar() == 0; })) << "and not for ever";
    close();
    desktop_.reset();  // before its server ends
    setenv("DISPLAY", server_.display().c_str(), 1);
}

TEST_F(WindowTest, StaysOpenWithoutSound) {
    open({"--sound", "jack"});
    EXPECT_TRUE(program_->isRunning());
    EXPECT_NE(program_->output().find("no sound: JACK"), std::string::npos) << program_->output();
    hold(600, 0.9, 0.2);
    close();
    EXPECT_NE(program_->output().find(" 2 MIDI messages"), std::string::npos) << program_->output();
}

// The display goes: the patch is kept, and nothing hangs.
TEST_F(WindowTest, SurvivesItsDisplayLongEnoughToKeepThePatch) {
    auto own = std::make_unique<testhost::XServer>(1400, 900);
    ASSERT_TRUE(own->isRunning());
    Program started({program(), "--device", "null"});
    ASSERT_TRUE(started.waitFor("MIDI: ")) << started.output();
    testhost::pause(1.5);
    own.reset();
    EXPECT_EQ(started.finish(), 4) << started.output();
    EXPECT_TRUE(std::filesystem::exists(home_.stateFile("standalone.patch")));
    setenv("DISPLAY", server_.display().c_str(), 1);
}

}  // namespace
