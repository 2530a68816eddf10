#include "platform/web_page.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "tests/platform/environment.h"

namespace vantoric::platform {
namespace {

// A desktop whose opener writes down what it is given.
struct Desktop {
    Desktop() : before_(std::getenv("PATH")) { setenv("PATH", (folder.path() + ":" + before_).c_str(), 1); }
    ~Desktop() { setenv("PATH", before_.c_str(), 1); }
    void putOpener(const std::string& script) {
        const std::string path = folder / "xdg-open";
        ASSERT_TRUE(writeFile(path, script.data(), script.size()));
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    std::string opened() {
        for (int i = 0; i < 500 && !exists(folder / "opened"); ++i) sleepMilliseconds(10);
        std::vector<std::uint8_t> bytes;
        readFile(folder / "opened", bytes);
        return {bytes.begin(), bytes.end()};
    }
    const ScratchFolder folder;

private:
    const std::string before_;
};

using State = PageOpening::State;

// How it ends, or stands after some seconds.
State endOf(PageOpening& opening, int tries = 500) {
    for (int i = 0; i < tries && opening.look() == State::underWay; ++i) sleepMilliseconds(10);
    return opening.look();
}

int openFiles() {
    const auto files = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<int>(std::distance(begin(files), end(files)));
}

constexpr char page[] = "https://www.vantoric.example/";

TEST(WebPage, GoesToTheDesktopsOpenerAsItIs) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nprintf '%s' \"$1\" > '" + desktop.folder.path() + "new' && mv '" + desktop.folder.path() +
                      "new' '" + desktop.folder.path() + "opened'\n");
    PageOpening opening = openWebPage("https://www.vantoric.example/a?b=1&c='$HOME'");
    EXPECT_EQ(desktop.opened(), "https://www.vantoric.example/a?b=1&c='$HOME'");
    EXPECT_EQ(endOf(opening), State::opened);
}

TEST(WebPage, AnOpenerThatTakesItsTimeHoldsNobodyUp) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nsleep 20\n");
    PageOpening opening = openWebPage(page);
    EXPECT_EQ(opening.look(), State::underWay);
}

TEST(WebPage, AnOpenerThatFailsIsFoundOut) {
    Desktop desktop;
    for (const char* script : {"#!/bin/sh\necho no >&2\nexit 3\n", "#!/bin/sh\nsleep 0.3\nexit 1\n", "#!/bin/sh\nkill -9 $$\n",
                               "#!/no/such/shell\n"}) {
        desktop.putOpener(script);
        PageOpening opening = openWebPage(page);
        EXPECT_EQ(endOf(opening), State::failed) << script;
        EXPECT_EQ(opening.look(), State::failed) << "asked again";
    }
}

// A browser that the opener has left behind, or that it is itself, is no failure and is not waited for.
TEST(WebPage, ABrowserThatStaysIsContent) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nsleep 20 &\nexit 0\n");
    PageOpening left = openWebPage(page);
    EXPECT_EQ(endOf(left), State::opened);
    desktop.putOpener("#!/bin/sh\nsleep 12\nexit 1\n");
    PageOpening itself = openWebPage(page);
    EXPECT_EQ(endOf(itself, 1100), State::opened);
}

TEST(WebPage, NoChildAndNoOpenFileStaysBehind) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nexit 4\n");
    const int before = openFiles();
    {
        std::vector<PageOpening> all;
        for (int i = 0; i < 5; ++i) all.push_back(openWebPage(page));
        for (PageOpening& one : all) EXPECT_EQ(endOf(one), State::failed);
        all.push_back(openWebPage(page));  // and is left alone
        all.front() = openWebPage(page);
    }
    EXPECT_EQ(openFiles(), before);
    errno = 0;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(WebPage, WithoutAnOpenerNothingIsSaidToBeOpened) {
    const ScratchFolder folder;
    const Environment path("PATH", folder.path().c_str());
    EXPECT_EQ(openWebPage(page).look(), State::failed);
    const std::string script = "#!/bin/sh\n";
    ASSERT_TRUE(writeFile(folder / "xdg-open", script.data(), script.size()));
    EXPECT_EQ(openWebPage(page).look(), State::failed) << "no program";
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    PageOpening opening = openWebPage(page);
    EXPECT_EQ(endOf(opening), State::opened);
}

TEST(WebPage, AHostThatTakesNoNoteOfItsChildrenHearsTheTruth) {
    Desktop desktop;
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    for (const State state : {State::opened, State::failed}) {
        desktop.putOpener(state == State::opened ? "#!/bin/sh\nexit 0\n" : "#!/bin/sh\nexit 3\n");
        PageOpening opening = openWebPage(page);
        EXPECT_EQ(endOf(opening), state);
    }
    std::signal(SIGCHLD, before);
}

TEST(WebPage, AFileHasAnAddressOfPlainLetters) {
    EXPECT_EQ(addressOfFile("/home/me/.vst/Vantoric/Manual.html"), "file:///home/me/.vst/Vantoric/Manual.html");
    EXPECT_EQ(addressOfFile("/a b/100%/Kl\xc3\xa4nge;#?'\"$"), "file:///a%20b/100%25/Kl%C3%A4nge%3B%23%3F%27%22%24");
}

}  // namespace
}  // namespace vantoric::platform
