// A hand without a plan, with notes playing. VANTORIC_RANDOM_EVENTS says how many events a page gets, VANTORIC_RANDOM_SEED
// with which numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "tests/window/window_rig.h"

using namespace testhost;
namespace page = vantoric::page;

namespace {

int environmentNumber(const char* name, int otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

// Notes, controllers and blocks on a thread of their own for as long as it stands, as a host has it.
class RandomPlayer {
public:
    RandomPlayer(PluginHost& plugin, unsigned seed) : plugin_(plugin), numbers_(seed), thread_([this] { play(); }) {}
    ~RandomPlayer() {
        isOver_ = true;
        thread_.join();
        EXPECT_TRUE(isFinite_);
    }
    RandomPlayer(const RandomPlayer&) = delete;
    RandomPlayer& operator=(const RandomPlayer&) = delete;

private:
    int upTo(int count) { return std::uniform_int_distribution<int>(0, count - 1)(numbers_); }
    void play() {
        constexpr std::chrono::milliseconds pause(4);
        constexpr int frames = 256;
        for (; !isOver_; std::this_thread::sleep_for(pause)) {
            if (upTo(8) == 0) plugin_.midi(upTo(2) == 0 ? 0x90 : 0x80, 30 + upTo(70), 1 + upTo(127));
            if (upTo(32) == 0) plugin_.midi(0xB0, upTo(128), upTo(128));
            if (upTo(256) == 0) plugin_.midi(0xC0, upTo(20), 0);
            if (upTo(48) == 0) plugin_.midi(0xE0, upTo(128), upTo(128));
            if (!plugin_.render(frames).finite()) isFinite_ = false;
        }
    }

    PluginHost& plugin_;
    std::mt19937 numbers_;
    std::atomic<bool> isOver_{false}, isFinite_{true};
    std::thread thread_;
};

class RandomHand {
public:
    RandomHand(WindowRig& rig, unsigned seed) : rig_(rig), host_(rig.host()), numbers_(seed) {}

    void doSomething() {
        if (upTo(40) == 0) return drop();
        switch (upTo(10)) {
            case 0:
            case 1:
            case 2: return host_.click(x(), y(), 1);
            case 3: return host_.click(x(), y(), 3);
            case 4:
            case 5: return host_.drag(x(), y(), x(), y(), upTo(6) == 0 ? 3 : 1, 1 + upTo(4));
            case 6: return host_.wheel(x(), y(), upTo(7) - 3);
            case 7: {
                const double px = x(), py = y();
                host_.click(px, py);
                return host_.click(px, py);
            }
            case 8: return key();
            default: return host_.move(x(), y());
        }
    }

private:
    int upTo(int count) { return std::uniform_int_distribution<int>(0, count - 1)(numbers_); }
    // Now and then beside the window.
    double x() { return upTo(std::max(host_.size().width, 1) + 20); }
    double y() { return upTo(std::max(host_.size().height, 1) + 20); }

    void key() {
        static const char* const keys[] = {"Escape",  "Return",    "Tab",  "Up",      "Down",   "Left",      "Right",
                                           "Page_Up", "Page_Down", "Home", "End",     "Delete", "BackSpace", "space",
                                           "a",       "s",         "1",    "Shift_L", "F1",     "period"};
        if (upTo(4) == 0) {
            static const char* const letters[] = {"z", "y", "c", "v", "t", "a", "x", "n", "h"};
            return host_.control(letters[static_cast<std::size_t>(upTo(std::size(letters)))], upTo(3) == 0);
        }
        if (upTo(2) == 0) return host_.key(keys[static_cast<std::size_t>(upTo(std::size(keys)))]);
        host_.hostKey(upTo(3) == 0 ? 32 + upTo(90) : 0, upTo(24), upTo(8));
    }

    // Patches, waves, instruments, and what is none of them by its content.
    void drop() {
        static const char* const names[] = {"hand.fxp", "hand.wav", "hand.sfz", "hand.txt", "none.wav"};
        const std::string name = names[static_cast<std::size_t>(upTo(std::size(names)))];
        const auto path = rig_.installation().folder() / name;
        if (name == "hand.sfz") std::ofstream(path) << "<region> sample=hand.wav key=60\n";
        if (name == "hand.wav" || name == "hand.txt")
            std::ofstream(path) << std::string(static_cast<std::size_t>(upTo(900)), 'R');
        if (name == "hand.fxp" && !std::filesystem::exists(path)) {
            for (const auto& entry :
                 std::filesystem::recursive_directory_iterator(rig_.installation().folder() / "Vantoric_sounds"))
                if (entry.path().extension() == ".fxp") return static_cast<void>(std::filesystem::copy_file(entry.path(), path));
        }
        host_.drop({path.string()}, x(), y());
    }

    WindowRig& rig_;
    WindowHost& host_;
    std::mt19937 numbers_;
};

class RandomInput : public testing::TestWithParam<int> {};

constexpr int wholeWindow = 3;  // a size that has all pages

void showPage(WindowRig& rig, int wanted) {
    for (int i = 0; i < vantoric::controlCount(); ++i)
        if (vantoric::controlEntry(i).page == wanted) return rig.show(vantoric::controlEntry(i));
}

// Nothing is held, and the window opens anew in its whole size.
void openAnew(WindowRig& rig) {
    for (int button = 1; button <= 3; ++button) rig.host().release(button);
    for (const char* key : {"Shift_L", "Control_L", "Alt_L"}) rig.host().keyUp(key);
    rig.host().close();
    rig.installation().setSize(wholeWindow);
    ASSERT_TRUE(rig.host().open());
}

TEST_P(RandomInput, LeavesAWindowThatWorks) {
    dropSharedRig();
    HostAnswers answers;
    answers.product = "Glaigail";
    WindowRig rig(wholeWindow, answers);
    showPage(rig, GetParam());
    const auto seed = static_cast<unsigned>(environmentNumber("VANTORIC_RANDOM_SEED", 1) + GetParam());
    RandomHand hand(rig, seed);
    const int events = environmentNumber("VANTORIC_RANDOM_EVENTS", 60);
    constexpr int stretch = 400;  // after so many the hand has found its way to another page, or to a size that has none
    for (int done = 0; done < events; done += stretch) {
        {
            const RandomPlayer player(rig.plugin(), seed + static_cast<unsigned>(done));
            for (int i = 0; i < std::min(stretch, events - done) && !HasFatalFailure(); ++i) hand.doSomething();
            // Whatever it did, a fresh window of the same plug-in works.
            ASSERT_NO_FATAL_FAILURE(openAnew(rig));
        }
        if (done + stretch >= events) break;
        rig.reset();
        showPage(rig, GetParam());
    }
    const auto gestures = rig.gestures();
    EXPECT_EQ(gestures.begun, gestures.ended);
    EXPECT_FALSE(rig.plugin().chunk().empty());
    EXPECT_TRUE(rig.plugin().render(512).finite());
}

INSTANTIATE_TEST_SUITE_P(Pages, RandomInput,
                         testing::Values(page::always, page::sample1, page::custom1, page::noise1, page::wavetable1,
                                         page::hypersaw1, page::analog1, page::envelope1, page::envelope2, page::envelope3,
                                         page::envelope4, page::lfo1, page::lfo2, page::lfo3, page::stepLfo, page::matrix1,
                                         page::matrix2, page::matrix3, page::insert1, page::insert2));

}  // namespace
