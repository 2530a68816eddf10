// The window's life: opened, closed and left in every order that a host may think of, and never heard.
#include <gtest/gtest.h>

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "base/parameters.h"
#include "tests/window/window_rig.h"

using namespace testhost;
using vantoric::WindowPart;
namespace parameter = vantoric::parameter;
namespace tag = vantoric::tag;

namespace {

int environmentNumber(const char* name, int otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

std::size_t residentKib(const std::string& process) {
    std::ifstream file("/proc/" + process + "/statm");
    std::size_t pages = 0, resident = 0;
    file >> pages >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

// What the X server holds: windows, pixmaps and pictures that nobody freed stay there. 0 if it is none of our children.
std::size_t serverKib() {
    std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
    for (std::string child; children >> child;) {
        std::string name;
        std::getline(std::ifstream("/proc/" + child + "/comm"), name);
        if (name == "Xvfb") return residentKib(child);
    }
    return 0;
}

int openDescriptors() {
    DIR* folder = opendir("/proc/self/fd");
    int count = 0;
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
}

class Life : public testing::Test {
protected:
    void SetUp() override { dropSharedRig(); }
};

// VANTORIC_WINDOW_OPENINGS says how often; 25 by default.
TEST_F(Life, OpensAndClosesWithoutGrowth) {
    WindowRig rig;
    const int times = environmentNumber("VANTORIC_WINDOW_OPENINGS", 25), early = times / 4;
    std::size_t memory = 0, serverMemory = 0;
    int descriptors = 0;
    for (int i = 0; i < times; ++i) {
        rig.host().close();
        ASSERT_TRUE(rig.host().open());
        ASSERT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
        rig.drag(controlNamed("FIL1 RESO"), 0, i % 2 == 0 ? 20 : -20);
        if (i != early) continue;
        memory = residentKib("self");
        serverMemory = serverKib();
        descriptors = openDescriptors();
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    const double growth = static_cast<double>(residentKib("self")) - static_cast<double>(memory);
    RecordProperty("KibibytesAnOpening", std::to_string(growth / (times - early)));
    const double serverGrowth = static_cast<double>(serverKib()) - static_cast<double>(serverMemory);
    std::printf("%d openings: %.1f KiB each, the server %.1f\n", times, growth / (times - early), serverGrowth / (times - early));
    // A ground alone that was left behind would be 7 MiB each time.
    EXPECT_LT(serverGrowth, 16384);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(growth, 4096);
#endif
}

TEST_F(Life, TheHostsWindowMayGoFirst) {
    WindowRig rig;
    rig.host().destroyWindow();
    rig.host().idle(200);
    rig.host().close();
    ASSERT_TRUE(rig.host().open());
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
    rig.drag(controlNamed("FIL1 RESO"), 0, 20);
    rig.host().destroyWindow();  // and the plug-in goes with it open
}

TEST_F(Life, OpenedTwiceClosedTwice) {
    WindowRig rig;
    rig.plugin().call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(rig.host().window()));
    rig.host().idle(100);
    const float before = rig.value(controlNamed("FIL1 RESO"));
    rig.drag(controlNamed("FIL1 RESO"), 0, before < 0.5f ? 40 : -40);
    EXPECT_NE(rig.value(controlNamed("FIL1 RESO")), before);
    rig.host().close();
    rig.host().close();
    rig.plugin().call(wire::opEditIdle);
    ASSERT_TRUE(rig.host().open());
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
}

TEST_F(Life, NoParentNoWindow) {
    WindowRig rig;
    rig.host().close();
    EXPECT_EQ(rig.plugin().call(wire::opEditOpen, 0, 0, nullptr), 0);
    rig.plugin().call(wire::opEditIdle);
    EXPECT_GT(rig.host().size().width, 0);
    ASSERT_TRUE(rig.host().open());
}

TEST_F(Life, AParentThatIsNoneDoesNoHarm) {
    WindowRig rig;
    rig.host().close();
    rig.plugin().call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(0x1234567));
    for (int i = 0; i < 10; ++i) rig.plugin().call(wire::opEditIdle);
    rig.plugin().call(wire::opEditClose);
    ASSERT_TRUE(rig.host().open());
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
}

TEST_F(Life, WithoutADisplayThePluginPlaysWithoutAWindow) {
    const std::string display = std::getenv("DISPLAY");
    const Installation installation(pluginUnderTest());
    unsetenv("DISPLAY");
    {
        PluginHost plugin(installation.plugin());
        plugin.start();
        wire::Rect* rect = nullptr;
        plugin.call(wire::opEditRect, 0, 0, &rect);
        EXPECT_EQ(plugin.call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(0x400001)), 0);
        plugin.call(wire::opEditIdle);
        EXPECT_TRUE(plugin.render(512).finite());
        plugin.call(wire::opEditClose);
    }
    setenv("DISPLAY", ":987", 1);  // there is none of that number
    {
        PluginHost plugin(installation.plugin());
        plugin.start();
        EXPECT_EQ(plugin.call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(0x400001)), 0);
        EXPECT_TRUE(plugin.render(512).finite());
    }
    setenv("DISPLAY", display.c_str(), 1);
}

TEST_F(Life, TwoInstancesHaveTwoWindows) {
    WindowRig first;
    WindowHost second(first.installation().plugin());
    ASSERT_TRUE(second.open());  // over the first one
    EXPECT_TRUE(second.until([&] { return isDrawn(second); }));
    const Point p = first.middle(controlNamed("FIL1 RESO"));
    const float one = first.plugin().parameter(parameter::Reso1), other = second.plugin().parameter(parameter::Reso1);
    second.drag(p.x, p.y, p.x, p.y + (other < 0.5f ? -40 : 40));
    EXPECT_NE(second.plugin().parameter(parameter::Reso1), other);
    EXPECT_EQ(first.plugin().parameter(parameter::Reso1), one);
    second.close();
    first.drag(controlNamed("FIL1 RESO"), 0, one < 0.5f ? 40 : -40);
    EXPECT_NE(first.plugin().parameter(parameter::Reso1), one) << "the one below works on";
}

TEST_F(Life, IdleMayComeFromAnotherThread) {
    WindowRig rig;
    std::atomic<bool> ends = false;
    std::thread other([&] {
        while (!ends) {
            rig.plugin().call(wire::opEditIdle);
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
    });
    // The host's own thread renders meanwhile, and leaves the window alone.
    for (int i = 0; i < 300; ++i) rig.plugin().render(256);
    ends = true;
    other.join();
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
}

TEST_F(Life, IdleMayNeverCome) {
    WindowRig rig;
    rig.host().close();
    for (int i = 0; i < 5; ++i) {
        const auto parent = reinterpret_cast<void*>(rig.host().window());
        rig.plugin().call(wire::opEditOpen, 0, 0, parent);
        for (int block = 0; block < 20; ++block) rig.plugin().render(512);
        rig.plugin().call(wire::opEditClose);
    }
    ASSERT_TRUE(rig.host().open());
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
}

TEST_F(Life, ClosingInTheMidstOfADragOrMenuDoesNoHarm) {
    WindowRig rig;
    const auto& knob = controlNamed("FIL1 RESO");
    const Point p = rig.middle(knob), area = rig.middle(WindowPart::DragLfo);
    const auto reopen = [&] {
        rig.host().close();
        rig.host().release(1);
        ASSERT_TRUE(rig.host().open());
    };
    const auto gestures = rig.gestures();
    rig.host().move(p.x, p.y);
    rig.host().press();
    rig.host().move(p.x, p.y - 20);
    reopen();
    EXPECT_EQ(rig.gestures().begun - gestures.begun, rig.gestures().ended - gestures.ended) << "the gesture ends with the window";
    rig.host().move(area.x, area.y);
    rig.host().press();
    rig.host().move(p.x, p.y);
    reopen();
    ASSERT_TRUE(rig.openMenu(knob, 3));
    reopen();
    EXPECT_FALSE(rig.hasMenu());
}

// ---- what lies on the disk

// Big categories, names of any bytes and alphabets, links in a circle, what cannot be read, star files of any bytes.
void spoilLibrary(const Installation& installation) {
    namespace fs = std::filesystem;
    const fs::path sounds = installation.folder() / "Vantoric_sounds";
    fs::create_directories(sounds / "Bass");
    for (int i = 0; i < 5000; ++i) std::ofstream(sounds / "Bass" / (std::to_string(i) + ".fxp")) << "no patch";
    for (const std::string& name : {std::string(251, 'x'), std::string("Ночной город"), std::string("夜の港"),
                                    std::string("broken \xff\xfe"), std::string("two\nlines"), std::string(" ")}) {
        fs::create_directories(sounds / name);
        std::ofstream(sounds / name / (name.substr(0, 251) + ".fxp")) << "no patch";
        std::ofstream(sounds / (name.substr(0, 251) + ".rnk")) << "\xff\n9\n\n-3\nx";
    }
    fs::create_directory_symlink(sounds, sounds / "circle");
    fs::create_symlink(sounds / "self", sounds / "self");
    fs::create_symlink("nowhere", sounds / "Bass/0 dangling.fxp");
    std::ofstream(sounds / "Bass/0 closed.fxp") << "no patch";
    fs::permissions(sounds / "Bass/0 closed.fxp", fs::perms::none);
    fs::create_directories(sounds / "closed");
    fs::permissions(sounds / "closed", fs::perms::none);
    std::ofstream(sounds / "Bass.rnk") << std::string("\xff\0\n\n99999999999999999999", 24);
    fs::permissions(sounds, fs::perms::owner_read | fs::perms::owner_exec);  // nothing can be written here
}

TEST_F(Life, ALibraryOfAnyBytesIsShownAndSteppedThrough) {
    WindowRig rig(3, {}, spoilLibrary);
    const auto sounds = rig.installation().folder() / "Vantoric_sounds";
    const Picture closed = rig.host().picture();
    rig.click(controlWithTag(tag::browser));
    EXPECT_TRUE(
        rig.host().until([&] { return rig.host().glance().part(300, 300, 600, 300) != closed.part(300, 300, 600, 300); }, 10));
    for (const char* key : {"n", "o", "BackSpace", "BackSpace", "Down", "F2", "Escape", "5", "Right", "bracketright", "Tab",
                            "Down", "End", "Return"}) {
        rig.host().key(key);
        for (int i = 0; i < 4; ++i) rig.host().key("Return");  // a patch that is none is told in a box
        rig.host().idle(60);
    }
    std::filesystem::permissions(sounds, std::filesystem::perms::owner_all);
    std::error_code none;
    std::filesystem::remove_all(sounds, none);
    for (const char* key : {"Escape", "Escape", "bracketright", "slash", "x", "Down", "Return"}) {
        rig.host().key(key);
        rig.host().idle(60);
    }
    rig.host().close();
    ASSERT_TRUE(rig.host().open());
    EXPECT_TRUE(rig.host().until([&] { return isDrawn(rig.host()); }));
}

// ---- not heard

// The same notes and wheels from a fresh start; `meanwhile` is called between blocks.
Sound played(PluginHost& plugin, const std::function<void(int)>& meanwhile) {
    constexpr int blocks = 240, frames = 256;
    Sound sound;
    for (int block = 0; block < blocks; ++block) {
        if (block % 12 == 0) plugin.midi(0x90, 48 + block / 12 * 5 % 36, 90, block % 200);
        if (block % 12 == 9) plugin.midi(0x80, 48 + block / 12 * 5 % 36, 0, 17);
        if (block % 7 == 3) plugin.midi(0xB0, 1, block % 128, 5);
        meanwhile(block);
        sound.append(plugin.render(frames));
    }
    return sound;
}

Sound playedWith(bool isOpen, const std::function<void(WindowRig&, int)>& meanwhile) {
    WindowRig rig;
    if (!isOpen) rig.host().close();
    // Until the waves are there: then nothing depends on when the worker came.
    rig.host().idle(3000);
    for (int i = 0; i < 200; ++i) rig.plugin().render(512);
    rig.plugin().off();
    rig.plugin().on();
    return played(rig.plugin(), [&](int block) { meanwhile(rig, block); });
}

TEST_F(Life, TheWindowIsNotHeard) {
    const Sound closed = playedWith(false, [](WindowRig&, int) {});
    ASSERT_GT(closed.peak(), 0.01f);
    const Sound again = playedWith(false, [](WindowRig&, int) {});
    ASSERT_TRUE(closed == again) << "the notes alone sound the same each time";

    const Sound open = playedWith(true, [](WindowRig& rig, int) { rig.plugin().call(wire::opEditIdle); });
    EXPECT_TRUE(closed == open);

    // All that moves no parameter: tabs, menus, drags that are called off, the window closed and opened.
    const Sound dragged = playedWith(true, [](WindowRig& rig, int block) {
        WindowHost& host = rig.host();
        const Point lfo = rig.middle(WindowPart::DragLfo);
        switch (block % 24) {
            case 1: return rig.click(controlWithTag(tag::lfoPage1 + block / 24 % 4));
            case 3: return host.move(lfo.x, lfo.y);
            case 4: return host.press();
            case 5:
            case 6:
            case 7:
            case 8: return host.move(lfo.x - 60.0 * (block % 24 - 4), lfo.y - 40.0 * (block % 24 - 4));
            case 9: return host.key("Escape");
            case 10: return host.release();
            case 12: return rig.click(controlNamed("FILTER1 TYPE"));
            case 14: return host.wheel(rig.middle(controlNamed("FILTER1 TYPE")).x, 500, -4);
            case 16: return host.key("Escape");
            case 18: return host.close();
            case 20: EXPECT_TRUE(host.open()); return;
            default: return host.idle(1, 1);
        }
    });
    EXPECT_TRUE(closed == dragged);
}

}  // namespace
