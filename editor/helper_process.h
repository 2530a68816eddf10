// A program of the desktop that is started beside the host and looked after from the window's timer.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vantoric {

// Nothing here waits for the program, but its end when it has to be cut short. On one thread.
class HelperProcess {
public:
    // What it wrote to its standard output, and how it ended: its exit code, or -1 if it was killed.
    using Done = std::function<void(int exitCode, const std::string& output)>;

    HelperProcess() = default;
    ~HelperProcess() { cancel(); }
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    // Starts the program `words[0]`, looked for in PATH. False if it can't be, or one is running. What hosts that are shipped
    // as bundles set for their own libraries does not reach it.
    bool start(const std::vector<std::string>& words, Done done);
    bool isRunning() const { return pid_ > 0; }

    // Reads what there is, and calls `done` once it has ended.
    void poll();
    // Ends it; `done` is not called.
    void cancel();

private:
    void forget();

    int pid_ = -1, pipe_ = -1;
    std::string output_;
    Done done_;
};

// Whether a program of that name is in PATH.
bool isInstalled(const std::string& program);

}  // namespace vantoric
