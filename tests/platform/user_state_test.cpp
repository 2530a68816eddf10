#include "platform/user_state.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/environment.h"

namespace vantoric::platform {
namespace {

TEST(UserState, LiesWhereTheUserSaysOrInTheHomeFolder) {
    setStateFolder("");
    const Environment home("HOME", "/home/me");
    {
        const Environment state("XDG_STATE_HOME", "/var/me/state");
        EXPECT_EQ(stateFolder(), "/var/me/state/vantoric/");
    }
    {
        const Environment state("XDG_STATE_HOME", "relative");
        EXPECT_EQ(stateFolder(), "/home/me/.local/state/vantoric/") << "a relative path counts as none";
    }
    const Environment state("XDG_STATE_HOME", nullptr);
    const Environment nowhere("HOME", nullptr);
    EXPECT_EQ(stateFolder(), "");
}

TEST(UserState, CanBeElsewhere) {
    setStateFolder("/tmp/there");
    EXPECT_EQ(stateFolder(), "/tmp/there/");
    setStateFolder("");
}

TEST(UserState, AProcessIsKnownByItsStart) {
    const std::string own = processStart(processNumber());
    EXPECT_FALSE(own.empty());
    EXPECT_EQ(own, processStart(getpid()));
    EXPECT_EQ(own.find('\n'), std::string::npos);
    EXPECT_EQ(processStart(0), "");
    EXPECT_EQ(processStart(-5), "");
    EXPECT_EQ(processStart(2000000000), "");
}

TEST(UserState, AProcessThatHasEndedIsGone) {
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    EXPECT_FALSE(processStart(child).empty());
    kill(child, SIGKILL);
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
    EXPECT_EQ(processStart(child), "") << "also before its parent has looked";
    waitpid(child, nullptr, 0);
    EXPECT_EQ(processStart(child), "");
}

}  // namespace
}  // namespace vantoric::platform
