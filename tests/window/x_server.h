// A virtual X server of its own, so that a run moves nobody's pointer.
#pragma once

#include <string>

namespace testhost {

class XServer {
public:
    // Starts one on a free display with a screen of that size and lets DISPLAY name it. Look at `isRunning` for success.
    XServer(int width, int height);
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    bool isRunning() const { return !display_.empty(); }
    const std::string& display() const { return display_; }
    // The processor time that it has taken, in milliseconds.
    double processorMilliseconds() const;

private:
    int process_ = -1;
    std::string display_;
};

// A screen of another size, on which windows open while it stands.
class OtherScreen {
public:
    OtherScreen(int width, int height);
    OtherScreen(const OtherScreen&) = delete;
    OtherScreen& operator=(const OtherScreen&) = delete;
    ~OtherScreen();

private:
    const std::string before_;
    const XServer server_;
};

// What plug-ins of this process keep for their user lies in folders of its own, so that no test meets what another program left
// there. Those outlive the process's tests.
void useOwnUserFolders();

}  // namespace testhost
