// What a crash of the host left is offered again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tests/window/window_rig.h"

using namespace testhost;
namespace fs = std::filesystem;
namespace tag = vantoric::tag;

namespace {

class Recovery : public testing::Test {
protected:
    Recovery() {
        dropSharedRig();
        setenv("XDG_STATE_HOME", state.path().c_str(), 1);
    }
    ~Recovery() override { setenv("XDG_STATE_HOME", before.c_str(), 1); }

    fs::path folder() const { return fs::path(state.path()) / "vantoric/autosave"; }
    // What a process of a number that none has was working on.
    fs::path leave(const WindowRig& rig) const {
        fs::create_directories(folder());
        fs::path left = folder() / "99999999-1.fxp";
        for (const auto& entry : fs::directory_iterator(rig.installation().folder() / "Vantoric_sounds/Bass"))
            if (entry.path().extension() == ".fxp") return fs::copy_file(entry.path(), left), left;
        return left;
    }
    static bool asks(WindowRig& rig) {
        return rig.host().until([&] { return rig.isCovered(); }, 5);
    }

    const std::string before = std::getenv("XDG_STATE_HOME");
    const vantoric::platform::ScratchFolder state;
};

TEST_F(Recovery, IsOfferedUntilItIsAnsweredAndKeptAfterANo) {
    WindowRig rig;
    rig.host().close();
    const fs::path left = leave(rig);
    WindowHost host(rig.installation().plugin());
    const auto covered = [&] {
        const auto mark = rig.box(controlWithTag(tag::shop));
        return host.until(
            [&] {
                const Picture picture = host.glance().part(mark.left, mark.top, mark.width(), mark.height());
                return std::none_of(picture.rgb.begin(), picture.rgb.end(), [](std::uint8_t channel) { return channel > 0xC0; });
            },
            5);
    };
    ASSERT_TRUE(host.open());
    ASSERT_TRUE(covered());
    host.close();
    EXPECT_TRUE(fs::exists(left)) << "a window that closes answers nothing";
    ASSERT_TRUE(host.open());
    ASSERT_TRUE(covered()) << "it is offered again";
    host.key("Escape");
    EXPECT_TRUE(host.until([&] { return !fs::exists(left); }, 5));
    EXPECT_FALSE(fs::is_empty(folder() / "declined")) << "what was declined is not lost";
}

TEST_F(Recovery, AYesBringsThePatchBack) {
    WindowRig rig;
    rig.host().close();
    const fs::path left = leave(rig);
    WindowHost host(rig.installation().plugin());
    const auto unsaved = host.plugin().chunk();
    ASSERT_TRUE(host.open());
    host.idle(300);
    host.key("Tab");
    host.key("Return");
    EXPECT_TRUE(host.until([&] { return host.plugin().chunk() != unsaved; }, 5));
    EXPECT_TRUE(host.until([&] { return !fs::exists(left); }, 5));
}

}  // namespace
