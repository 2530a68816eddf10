#include "platform/web_page.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
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

TEST(WebPage, GoesToTheDesktopsOpenerAsItIs) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nprintf '%s' \"$1\" > '" + desktop.folder.path() + "new' && mv '" + desktop.folder.path() +
                      "new' '" + desktop.folder.path() + "opened'\n");
    EXPECT_TRUE(openWebPage("https://www.vantoric.example/a?b=1&c='$HOME'"));
    EXPECT_EQ(desktop.opened(), "https://www.vantoric.example/a?b=1&c='$HOME'");
}

TEST(WebPage, AnOpenerThatTakesItsTimeHoldsNobodyUp) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nsleep 3\n");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(openWebPage("https://www.vantoric.example/"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST(WebPage, WithoutAnOpenerNothingIsSaidToBeOpened) {
    const ScratchFolder folder;
    const Environment path("PATH", folder.path().c_str());
    EXPECT_FALSE(openWebPage("https://www.vantoric.example/"));
    const std::string script = "#!/bin/sh\n";
    ASSERT_TRUE(writeFile(folder / "xdg-open", script.data(), script.size()));
    EXPECT_FALSE(openWebPage("https://www.vantoric.example/")) << "no program";
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    EXPECT_TRUE(openWebPage("https://www.vantoric.example/"));
}

TEST(WebPage, AHostThatTakesNoNoteOfItsChildrenHearsNoRefusal) {
    Desktop desktop;
    desktop.putOpener("#!/bin/sh\nexit 0\n");
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_TRUE(openWebPage("https://www.vantoric.example/"));
    std::signal(SIGCHLD, before);
}

TEST(WebPage, AFileHasAnAddressOfPlainLetters) {
    EXPECT_EQ(addressOfFile("/home/me/.vst/Vantoric/Manual.html"), "file:///home/me/.vst/Vantoric/Manual.html");
    EXPECT_EQ(addressOfFile("/a b/100%/Kl\xc3\xa4nge;#?'\"$"), "file:///a%20b/100%25/Kl%C3%A4nge%3B%23%3F%27%22%24");
}

}  // namespace
}  // namespace vantoric::platform
