#include "editor/frame_dialogs.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "layer_picture.h"
#include "open_layers.h"
#include "platform/scratch_folder.h"

namespace vantoric {
namespace {

namespace fs = std::filesystem;
using VSTGUI::VirtualKey;

struct Talking {
    WithGui gui;
    OpenLayers window{1200, 660};
    FrameDialogs dialogs;

    Talking() {
        dialogs.setUsesDesktop(false);
        dialogs.setHost(&window);
    }
    ~Talking() { dialogs.setHost(nullptr); }
    void answer(VirtualKey key = VirtualKey::Return) { press(window.top(), key); }
};

TEST(FrameDialogs, ShowsOneBoxAfterTheOtherInTheOrderOfTheCalls) {
    Talking talking;
    talking.dialogs.message("Error", "first");
    talking.dialogs.message("Info", "second");
    EXPECT_EQ(talking.dialogs.openCount(), 2);
    EXPECT_EQ(talking.window.count(), 1);
    EXPECT_EQ(talking.dialogs.box()->box().text, "first");
    talking.answer();
    EXPECT_EQ(talking.dialogs.box()->box().text, "second");
    talking.answer();
    EXPECT_EQ(talking.dialogs.openCount(), 0);
    EXPECT_EQ(talking.window.count(), 0);
}

TEST(FrameDialogs, AnswersAQuestionByItsButtons) {
    Talking talking;
    std::vector<bool> answers;
    const auto then = [&](bool yes) { answers.push_back(yes); };
    talking.dialogs.question("Warning", "Sure?", then);
    talking.answer();
    talking.dialogs.question("Warning", "Sure?", then);
    talking.answer(VirtualKey::Tab);
    talking.answer();
    talking.dialogs.question("Warning", "Sure?", then);
    talking.answer(VirtualKey::Escape);
    EXPECT_EQ(answers, (std::vector<bool>{false, true, false}));
}

TEST(FrameDialogs, AChoiceCanBeCalledOff) {
    Talking talking;
    using Answer = std::optional<bool>;
    std::vector<Answer> answers;
    const auto ask = [&] { talking.dialogs.choice("Autotune", "Tune it?", [&](Answer yes) { answers.push_back(yes); }); };
    ask();
    talking.answer();
    ask();
    talking.answer(VirtualKey::Tab);
    talking.answer();
    ask();
    talking.answer(VirtualKey::Escape);
    ask();
    ask();
    EXPECT_EQ(talking.dialogs.openCount(), 2);
    talking.dialogs.setHost(nullptr);
    EXPECT_EQ(answers, (std::vector<Answer>{false, true, {}, {}, {}}));
    ask();
    EXPECT_EQ(answers.back(), false) << "without a window the answer is No";
}

TEST(FrameDialogs, TheSameMessageIsCountedAndNotShownAgain) {
    Talking talking;
    for (int time = 0; time < 20; ++time) talking.dialogs.message("Error", "The file can't be read.");
    talking.dialogs.message("Error", "Another one.");
    EXPECT_EQ(talking.dialogs.openCount(), 2);
    talking.answer();
    EXPECT_EQ(talking.dialogs.box()->box().text, "Another one.");
}

TEST(FrameDialogs, AnAnswerMayAskTheNextQuestion) {
    Talking talking;
    bool isDone = false;
    talking.dialogs.question("Warning", "One?",
                             [&](bool) { talking.dialogs.question("Warning", "Two?", [&](bool) { isDone = true; }); });
    talking.answer();
    EXPECT_EQ(talking.dialogs.box()->box().text, "Two?");
    talking.answer();
    EXPECT_TRUE(isDone);
    EXPECT_EQ(talking.window.count(), 0);
}

TEST(FrameDialogs, SavingOverAFileAsksFirst) {
    Talking talking;
    const platform::ScratchFolder scratch;
    std::ofstream(scratch / "mine.fxp") << "x";
    std::vector<std::optional<std::string>> chosen;
    for (const VirtualKey answer : {VirtualKey::Escape, VirtualKey::Tab}) {
        platform::askFilePath(talking.dialogs, scratch.path(), true, platform::FileKind::Patch,
                              [&](auto path) { chosen.push_back(path); });
        ASSERT_NE(talking.dialogs.chooser(), nullptr);
        type(*talking.dialogs.chooser(), "mine");
        talking.answer();
        ASSERT_NE(talking.dialogs.box(), nullptr);
        EXPECT_EQ(talking.dialogs.box()->box().text, "Are you sure that you want to overwrite this file?");
        talking.answer(answer);
        if (talking.dialogs.box() != nullptr) talking.answer();
        if (answer == VirtualKey::Tab) break;
        ASSERT_NE(talking.dialogs.chooser(), nullptr) << "another name may be chosen";
        EXPECT_EQ(talking.dialogs.chooser()->folder() + "/", scratch / "");
        talking.answer(VirtualKey::Escape);
        EXPECT_EQ(talking.window.count(), 0);
    }
    EXPECT_EQ(chosen, (std::vector<std::optional<std::string>>{std::nullopt, scratch / "mine.fxp"}));
}

TEST(FrameDialogs, TheNextChooserOfAKindBeginsWhereTheLastOneEnded) {
    Talking talking;
    const platform::ScratchFolder scratch;
    fs::create_directory(scratch / "here");
    const auto ignore = [](const std::optional<std::string>&) {};
    talking.dialogs.choosePath(platform::fileRequest(platform::FileKind::Sfz, true, scratch / "here"), ignore);
    type(*talking.dialogs.chooser(), "a.sfz");
    talking.answer();
    talking.dialogs.choosePath(platform::fileRequest(platform::FileKind::Sfz, false, ""), ignore);
    EXPECT_EQ(talking.dialogs.chooser()->folder(), scratch / "here");
    const auto places = chooserPlaces();
    EXPECT_TRUE(
        std::ranges::any_of(places, [&](const auto& place) { return place.isRecent && place.folder == scratch / "here"; }));
}

TEST(FrameDialogs, ClosingTheWindowAnswersAllWithNoOrNothing) {
    Talking talking;
    int refused = 0, none = 0;
    talking.dialogs.question("Warning", "One?", [&](bool yes) { refused += yes ? 0 : 1; });
    talking.dialogs.question("Warning", "Two?", [&](bool yes) {
        refused += yes ? 0 : 1;
        talking.dialogs.question("Warning", "Three?", [&](bool again) { refused += again ? 0 : 1; });
    });
    talking.dialogs.choosePath({}, [&](const auto& path) { none += path ? 0 : 1; });
    EXPECT_EQ(talking.dialogs.openCount(), 3);
    talking.dialogs.setHost(nullptr);
    EXPECT_EQ(refused, 3);
    EXPECT_EQ(none, 1);
    EXPECT_EQ(talking.dialogs.openCount(), 0);
    EXPECT_EQ(talking.window.count(), 0);
}

TEST(FrameDialogs, WithoutAWindowAnswersAreNoAtOnce) {
    FrameDialogs dialogs;
    int refused = 0;
    dialogs.question("Warning", "Sure?", [&](bool yes) { refused += yes ? 0 : 1; });
    dialogs.choosePath({}, [&](const auto& path) { refused += path ? 0 : 1; });
    EXPECT_EQ(refused, 2);
    EXPECT_EQ(dialogs.openCount(), 0);
}

TEST(FrameDialogs, WhatOtherThreadsSayShowsAtTheNextIdleRound) {
    Talking talking;
    std::thread other([&] { talking.dialogs.message("Error", "from afar"); });
    other.join();
    EXPECT_EQ(talking.dialogs.openCount(), 1);
    EXPECT_EQ(talking.window.count(), 0);
    talking.dialogs.poll();
    ASSERT_NE(talking.dialogs.box(), nullptr);
    EXPECT_EQ(talking.dialogs.box()->box().text, "from afar");
}

// ---- with a chooser of the desktop, which a script stands in for

class DesktopStandIn {
public:
    explicit DesktopStandIn(const std::string& commands) : path_(std::getenv("PATH")) {
        std::ofstream(folder_ / "zenity") << "#!/bin/sh\n" << commands << "\n";
        fs::permissions(folder_ / "zenity", fs::perms::owner_all);
        setenv("PATH", (folder_.path() + ":" + path_).c_str(), 1);
        const char* display = std::getenv("DISPLAY");
        hadDisplay_ = display != nullptr;
        if (!hadDisplay_) setenv("DISPLAY", ":none", 1);
    }
    ~DesktopStandIn() {
        setenv("PATH", path_.c_str(), 1);
        if (!hadDisplay_) unsetenv("DISPLAY");
    }
    DesktopStandIn(const DesktopStandIn&) = delete;
    DesktopStandIn& operator=(const DesktopStandIn&) = delete;

private:
    platform::ScratchFolder folder_;
    std::string path_;
    bool hadDisplay_ = false;
};

struct TalkingDesktop : Talking {
    int answers = 0;
    std::optional<std::string> path;

    TalkingDesktop() { dialogs.setUsesDesktop(true); }
    void choose() {
        dialogs.choosePath(platform::fileRequest(platform::FileKind::Wave, false, "/tmp"),
                           [this](std::optional<std::string> chosen) {
                               ++answers;
                               path = std::move(chosen);
                           });
    }
    template <class Until>
    void pollUntil(const Until& until) {
        for (int round = 0; round < 3000 && !until(); ++round) {
            dialogs.poll();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
};

TEST(DesktopDialogs, TheDesktopsChooserAnswersWhileTheWindowLives) {
    const DesktopStandIn desktop("sleep 0.5; echo '/music/a b.wav'");
    TalkingDesktop talking;
    talking.choose();
    EXPECT_EQ(talking.dialogs.openCount(), 1);
    ASSERT_NE(talking.dialogs.box(), nullptr) << "the window says where to look";
    talking.pollUntil([&] { return talking.answers > 0; });
    EXPECT_EQ(talking.path, "/music/a b.wav");
    EXPECT_EQ(talking.window.count(), 0);
}

TEST(DesktopDialogs, OneThatCannotShowAnythingIsReplacedByTheWindowsOwn) {
    const DesktopStandIn desktop("exit 1");
    TalkingDesktop talking;
    talking.choose();
    talking.pollUntil([&] { return talking.dialogs.chooser() != nullptr; });
    ASSERT_NE(talking.dialogs.chooser(), nullptr);
    EXPECT_EQ(talking.answers, 0);
    talking.answer(VirtualKey::Escape);
    EXPECT_EQ(talking.answers, 1);
}

TEST(DesktopDialogs, TheWindowTakesItAwayOrDoesItItself) {
    const DesktopStandIn desktop("exec sleep 60");
    TalkingDesktop talking;
    talking.choose();
    talking.answer(VirtualKey::Escape);
    EXPECT_EQ(talking.answers, 1);
    EXPECT_FALSE(talking.path);
    talking.choose();
    talking.answer(VirtualKey::Tab);
    talking.answer();
    EXPECT_NE(talking.dialogs.chooser(), nullptr);
    EXPECT_EQ(talking.answers, 1);
}

TEST(DesktopDialogs, ClosingTheWindowEndsIt) {
    const DesktopStandIn desktop("exec sleep 60");
    TalkingDesktop talking;
    talking.choose();
    const auto before = std::chrono::steady_clock::now();
    talking.dialogs.setHost(nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(30));
    EXPECT_EQ(talking.answers, 1);
}

// Work that goes on until it may end or is cancelled.
struct LongWork {
    std::atomic<bool> mayEnd{false}, isCancelled{false};
    std::atomic<int> ended{0};
    std::vector<bool> answers;

    void begin(FrameDialogs& dialogs) {
        dialogs.work({"Loading", "Long.wav",
                      [this] {
                          while (!mayEnd && !isCancelled) std::this_thread::sleep_for(std::chrono::milliseconds(1));
                          ++ended;
                      },
                      [] { return 0.4; }, [this] { isCancelled = true; }},
                     [this](bool isDone) { answers.push_back(isDone); });
    }
};

void pollFor(FrameDialogs& dialogs, int milliseconds, const std::function<bool()>& isThere) {
    for (int waited = 0; waited < milliseconds && !isThere(); waited += 5) {
        dialogs.poll();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

TEST(FrameDialogs, WorkRunsBesideTheWindowAndShowsIfItTakesLong) {
    LongWork work;
    Talking talking;
    work.begin(talking.dialogs);
    EXPECT_EQ(talking.window.count(), 0) << "nothing flashes up";
    EXPECT_EQ(talking.dialogs.openCount(), 0) << "and the host is not told of a dialog";
    pollFor(talking.dialogs, 3000, [&] { return talking.dialogs.box() != nullptr; });
    ASSERT_NE(talking.dialogs.box(), nullptr);
    EXPECT_EQ(talking.dialogs.box()->box().text, "Long.wav");
    EXPECT_TRUE(work.answers.empty());
    work.mayEnd = true;
    pollFor(talking.dialogs, 3000, [&] { return !work.answers.empty(); });
    EXPECT_EQ(work.answers, std::vector<bool>{true});
    EXPECT_EQ(talking.window.count(), 0);
}

TEST(FrameDialogs, WorkIsCancelledByItsButtonAndTheNextOneFollows) {
    LongWork work, next;
    Talking talking;
    work.begin(talking.dialogs);
    next.mayEnd = true;
    next.begin(talking.dialogs);
    pollFor(talking.dialogs, 3000, [&] { return talking.dialogs.box() != nullptr; });
    ASSERT_NE(talking.dialogs.box(), nullptr);
    EXPECT_EQ(next.ended, 0) << "one after the other";
    talking.answer(VirtualKey::Escape);
    EXPECT_EQ(work.answers, std::vector<bool>{false});
    pollFor(talking.dialogs, 3000, [&] { return !next.answers.empty() && work.ended == 1; });
    EXPECT_EQ(next.answers, std::vector<bool>{true});
    EXPECT_EQ(work.ended, 1);
}

TEST(FrameDialogs, AWindowThatGoesCancelsWorkWithoutWaitingForIt) {
    LongWork work, waiting;
    {
        Talking talking;
        work.begin(talking.dialogs);
        waiting.begin(talking.dialogs);
        talking.dialogs.setHost(nullptr);
        EXPECT_EQ(work.answers, std::vector<bool>{false});
        EXPECT_EQ(waiting.answers, std::vector<bool>{false});
        EXPECT_TRUE(work.isCancelled);
    }
    EXPECT_EQ(work.ended, 1) << "its thread has ended with the dialogs";
    EXPECT_EQ(waiting.ended, 0) << "it never began";
}

TEST(FrameDialogs, WorkOutlivesAWindowThatIsBuiltAnew) {
    LongWork work;
    Talking talking;
    work.begin(talking.dialogs);
    pollFor(talking.dialogs, 3000, [&] { return talking.dialogs.box() != nullptr; });
    talking.dialogs.leaveHost();
    EXPECT_EQ(talking.window.count(), 0);
    OpenLayers other{1800, 990};
    talking.dialogs.moveTo(other);
    talking.dialogs.poll();
    EXPECT_EQ(other.count(), 1) << "the bar stands in the new one";
    work.mayEnd = true;
    pollFor(talking.dialogs, 3000, [&] { return !work.answers.empty(); });
    EXPECT_EQ(work.answers, std::vector<bool>{true});
    talking.dialogs.setHost(nullptr);
}

}  // namespace
}  // namespace vantoric
