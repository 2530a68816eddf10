#include "tests/window/x_server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/scratch_folder.h"

namespace testhost {

XServer::XServer(int width, int height) {
    int ends[2];
    if (pipe(ends) != 0) return;
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    const std::string end = std::to_string(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        unsetenv("LD_PRELOAD");  // a sanitizer's library is for the plug-in alone
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, 1);
        dup2(nowhere, 2);
        execlp("Xvfb", "Xvfb", "-displayfd", end.c_str(), "-screen", "0", screen.c_str(), "-noreset", "-nolisten", "tcp",
               static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    // It tells its number once it is ready; the pipe's end says that it could not start.
    std::string number;
    for (char c = 0; process_ > 0 && c != '\n';) {
        pollfd waiting{ends[0], POLLIN, 0};
        constexpr int patience = 60'000;  // milliseconds, for a loaded machine
        if (poll(&waiting, 1, patience) != 1 || read(ends[0], &c, 1) != 1) {
            number.clear();
            break;
        }
        if (c != '\n') number += c;
    }
    close(ends[0]);
    if (number.empty()) return;
    display_ = ":" + number;
    setenv("DISPLAY", display_.c_str(), 1);
}

XServer::~XServer() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

double XServer::processorMilliseconds() const {
    std::ifstream file("/proc/" + std::to_string(process_) + "/schedstat");
    double nanoseconds = 0;
    file >> nanoseconds;
    return 1e-6 * nanoseconds;
}

OtherScreen::OtherScreen(int width, int height) : before_(std::getenv("DISPLAY")), server_(width, height) {}

OtherScreen::~OtherScreen() { setenv("DISPLAY", before_.c_str(), 1); }

void useOwnUserFolders() {
    static const vantoric::platform::ScratchFolder home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"})
        setenv(name, (std::filesystem::path(home.path()) / name).c_str(), 1);
}

}  // namespace testhost
