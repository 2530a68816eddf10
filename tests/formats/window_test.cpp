// The window of every format in a window of the host's, and a real pointer over it.
#include <algorithm>
#include <cmath>

#include "editor/model/control_table.h"
#include "editor/model/window_layout.h"
#include "tests/formats/formats_fixture.h"
#include "tests/window/x_server.h"

// Last, as it takes plain words for its own.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

namespace testhost {
namespace {

// A window of the host's on a virtual screen, and the pointer. Null without a server to start.
class Desk {
public:
    static std::unique_ptr<Desk> open() {
        useOwnUserFolders();
        static const XServer server(1600, 1000);
        if (!server.isRunning()) return nullptr;
        return std::unique_ptr<Desk>(new Desk);
    }
    ~Desk() {
        XDestroyWindow(display_, window_);
        XCloseDisplay(display_);
    }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    std::uintptr_t window() const { return window_; }
    std::vector<Window> children() const {
        Window root, above, *found = nullptr;
        unsigned count = 0;
        XQueryTree(display_, window_, &root, &above, &found, &count);
        std::vector<Window> all(found, found + count);
        if (found != nullptr) XFree(found);
        return all;
    }
    int widthOf(Window window) const {
        XWindowAttributes facts{};
        XGetWindowAttributes(display_, window, &facts);
        return facts.width;
    }
    // The least size that a window wants of those around it, and its own; 0 where it tells none.
    std::pair<int, int> leastAndOwnWidth(Window window) const {
        XSizeHints hints{};
        long told = 0;
        const bool isTold = XGetWMNormalHints(display_, window, &hints, &told) != 0 && (hints.flags & PMinSize) != 0;
        return {isTold ? hints.min_width : 0, widthOf(window)};
    }
    bool isShown(Window window) const {
        XWindowAttributes facts{};
        return XGetWindowAttributes(display_, window, &facts) != 0 && facts.map_state == IsViewable;
    }
    void move(FormatHost& host, double x, double y) {
        XTestFakeMotionEvent(display_, -1, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), 0);
        settle(host);
    }
    void button(FormatHost& host, bool isDown, unsigned number = 1) {
        XTestFakeButtonEvent(display_, number, isDown ? True : False, 0);
        settle(host);
    }
    // What the plug-in's window has of it is worked off.
    void settle(FormatHost& host) {
        XSync(display_, False);
        for (int i = 0; i < 6; ++i) {
            host.idle();
            timespec pause{0, 15000000};
            nanosleep(&pause, nullptr);
        }
    }

private:
    Desk() : display_(XOpenDisplay(nullptr)) {
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1590, 900, 0, 0, 0);
        XMapWindow(display_, window_);
        XSync(display_, False);
    }
    ::Display* display_;
    Window window_;
};

struct Place {
    double x, y;
};

Place placeOf(const char* control, const Desk& desk) {
    const auto& entry = vantoric::controlEntry(vantoric::controlIndexForName(control));
    const double unit = desk.widthOf(desk.children().at(0)) / static_cast<double>(vantoric::layoutWidth);
    const vantoric::LayoutRect r = vantoric::controlRect(entry);
    return {(r.x + r.width / 2.0) * unit, (r.y + r.height / 2.0) * unit};
}

TEST_P(Formats, TheWindowOpensBeforeAndAfterEverything) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = make(false);
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(host->openWindow(desk->window()));
        for (int i = 0; i < 5; ++i) host->idle();
        ASSERT_EQ(desk->children().size(), 1u);
        const auto [least, own] = desk->leastAndOwnWidth(desk->children()[0]);
        EXPECT_EQ(least, own) << "hosts cut it off";
        host->start(rate, block);
        host->render(block, {Event::note(0, 60)});
        host->idle();
        host->closeWindow();
        host->stop();
    }
}

// Pressed, dragged in two steps, and let go of: one gesture around at least one value, of this parameter alone.
void expectGesture(const std::vector<Told>& told, int index) {
    ASSERT_GE(told.size(), 3u);
    for (const Told& one : told) EXPECT_EQ(one.index, index);
    EXPECT_EQ(told.front().kind, Told::begin);
    EXPECT_EQ(told.back().kind, Told::end);
    for (std::size_t i = 1; i + 1 < told.size(); ++i) EXPECT_EQ(told[i].kind, Told::value) << i;
}

// What the host hears once the window and the blocks have worked off what was done.
std::vector<Told> toldAfterwards(FormatHost& host, Desk& desk) {
    host.render(block);
    desk.settle(host);
    host.render(block);
    return host.takeTold();
}

TEST_P(Formats, AHandInTheWindowIsTold) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = make();
    host->render(block, {Event::set(0, par::EqLow, 0.5)});
    ASSERT_TRUE(host->openWindow(desk->window()));
    toldAfterwards(*host, *desk);
    const Place knob = placeOf("EQ LOW", *desk);
    for (const bool isPlaying : {true, false}) {
        desk->move(*host, knob.x, knob.y);
        desk->button(*host, true);
        for (const double by : {-12.0, -24.0}) {
            desk->move(*host, knob.x, knob.y + (isPlaying ? by : -1.6 * by));
            if (isPlaying) host->render(block);
        }
        desk->button(*host, false);
        const auto told = toldAfterwards(*host, *desk);
        expectGesture(told, par::EqLow);
        // The last value is the one in force, and the host that sends it back changes nothing.
        ASSERT_GE(told.size(), 2u);
        const double last = told[told.size() - 2].plain;
        EXPECT_NE(last, 0.5);
        const Bytes state = host->save(1u << 20);
        host->render(block, {Event::set(0, par::EqLow, last)});
        EXPECT_EQ(host->save(1u << 20), state);
        EXPECT_TRUE(toldAfterwards(*host, *desk).empty()) << "told twice";
    }
    // After it all the host's hand moves the knob again.
    host->render(block, {Event::set(0, par::EqLow, 0.125)});
    Reference reference;
    ASSERT_TRUE(reference.host.setChunk(host->save(1u << 20)));
    EXPECT_EQ(reference.host.parameter(par::EqLow), 0.125f);
    host->closeWindow();
}

TEST_P(Formats, AWindowThatThereIsNoMemoryForIsNone) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = make();
    int failures = 0;
    bool isOpen = false;
    for (long rest = 0; rest < 1000000; rest += 1 + rest / 6, ++failures) {
        host->setAllocationsLeft(rest);
        isOpen = host->openWindow(desk->window());
        host->setAllocationsLeft(-1);
        if (isOpen) break;
        desk->settle(*host);
        EXPECT_TRUE(desk->children().empty()) << rest;
    }
    ASSERT_TRUE(isOpen);
    EXPECT_GT(failures, 20);
    for (int round = 0; round < 2; ++round) {
        desk->settle(*host);
        EXPECT_EQ(desk->children().size(), 1u);
        host->closeWindow();
        desk->settle(*host);
        EXPECT_TRUE(desk->children().empty());
        ASSERT_TRUE(host->openWindow(desk->window()));
    }
    // It hears the pointer as ever.
    host->render(block, {Event::set(0, par::EqLow, 0.5)});
    toldAfterwards(*host, *desk);
    const Place knob = placeOf("EQ LOW", *desk);
    desk->move(*host, knob.x, knob.y);
    desk->button(*host, true, 4);
    desk->button(*host, false, 4);
    expectGesture(toldAfterwards(*host, *desk), par::EqLow);
    host->closeWindow();
}

// Neither what a hand has moved nor the window itself is lost by rounds in which nothing can be told, and it closes without
// memory.
TEST_P(Formats, ShortMemoryEndsNoWindow) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = make();
    host->render(block, {Event::set(0, par::EqLow, 0.5)});
    ASSERT_TRUE(host->openWindow(desk->window()));
    toldAfterwards(*host, *desk);
    const Place knob = placeOf("EQ LOW", *desk);
    desk->move(*host, knob.x, knob.y);
    desk->button(*host, true);
    desk->move(*host, knob.x, knob.y - 12);
    for (const long rest : {0, 0, 1, 2, 3, 5, 8, 13, 21, 34}) {
        host->setAllocationsLeft(rest);
        for (int i = 0; i < 3; ++i) host->idle();
        host->setAllocationsLeft(-1);
    }
    desk->move(*host, knob.x, knob.y - 24);
    desk->button(*host, false);
    const auto told = toldAfterwards(*host, *desk);
    expectGesture(told, par::EqLow);
    host->setAllocationsLeft(0);
    host->closeWindow();
    host->setAllocationsLeft(-1);
    EXPECT_TRUE(desk->children().empty());
    ASSERT_TRUE(host->openWindow(desk->window()));
    desk->settle(*host);
    EXPECT_EQ(desk->children().size(), 1u);
    host->closeWindow();
}

// A turn of the wheel is begun, moved and ended within one event, so between two blocks.
TEST_P(Formats, AGestureBetweenTwoBlocksIsToldOnce) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = make();
    ASSERT_TRUE(host->openWindow(desk->window()));
    host->render(block, {Event::set(0, par::EqLow, 0.5)});
    toldAfterwards(*host, *desk);
    const Place knob = placeOf("EQ LOW", *desk);
    desk->move(*host, knob.x, knob.y);
    desk->button(*host, true, 4);
    desk->button(*host, false, 4);
    const auto told = toldAfterwards(*host, *desk);
    expectGesture(told, par::EqLow);
    EXPECT_EQ(told.size(), 3u);
    host->closeWindow();
}

#ifdef CLAP_MODULE
// The plug-in asks for turns on the main thread, and has what timers would have given.
TEST(ClapWithoutTimers, TheWindowLives) {
    const auto desk = Desk::open();
    if (!desk) GTEST_SKIP() << "no X server to start";
    const auto host = makeClapHostWithoutTimers();
    host->start(rate, block);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(host->openWindow(desk->window()));
        host->render(block, {Event::set(0, par::EqLow, 0.5)});
        toldAfterwards(*host, *desk);
        const Place knob = placeOf("EQ LOW", *desk);
        desk->move(*host, knob.x, knob.y);
        desk->button(*host, true, 4);
        desk->button(*host, false, 4);
        expectGesture(toldAfterwards(*host, *desk), par::EqLow);
        host->closeWindow();
        desk->settle(*host);
        EXPECT_TRUE(desk->children().empty());
    }
}
#endif

// A host that makes its next window before it has closed the last.
TEST_P(Formats, AWindowOpenedTwiceIsWhereItWasOpenedLast) {
    const auto first = Desk::open(), second = Desk::open();
    if (!first) GTEST_SKIP() << "no X server to start";
    const auto host = make();
    if (!host->mayOpenTwice()) GTEST_SKIP() << "the format has one window";
    ASSERT_TRUE(host->openWindow(first->window()));
    first->settle(*host);
    ASSERT_TRUE(host->openWindow(second->window()));
    second->settle(*host);
    EXPECT_TRUE(first->children().empty());
    ASSERT_EQ(second->children().size(), 1u);
    host->closeWindow();
    second->settle(*host);
    ASSERT_EQ(second->children().size(), 1u) << "closed with the first";
    const Place knob = placeOf("EQ LOW", *second);
    toldAfterwards(*host, *second);
    second->move(*host, knob.x, knob.y);
    second->button(*host, true, 4);
    second->button(*host, false, 4);
    expectGesture(toldAfterwards(*host, *second), par::EqLow);
    host->closeWindow();
    second->settle(*host);
    EXPECT_TRUE(second->children().empty());
    ASSERT_TRUE(host->openWindow(first->window()));
    first->settle(*host);
    EXPECT_EQ(first->children().size(), 1u);
    host->closeWindow();
}

}  // namespace
}  // namespace testhost
