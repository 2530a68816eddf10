// The desktop's own file chooser, where it has a program for that.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "editor/helper_process.h"
#include "platform/dialogs.h"

namespace vantoric {

// Runs beside the window; nobody waits for it. On one thread.
class DesktopChooser {
public:
    // What came of it; `failed` if the program could not show anything, so that another chooser has to.
    struct Outcome {
        std::optional<std::string> path;
        bool failed = false;
    };
    using Done = std::function<void(const Outcome& outcome)>;

    // Whether there is such a program, and a display for it.
    static bool isThere();

    // False if it can't be started. `done` is called from `poll`, once.
    bool open(const platform::FileRequest& request, Done done);
    bool isOpen() const { return process_.isRunning(); }
    void poll() { process_.poll(); }
    // Takes it off the screen; `done` is not called.
    void close() { process_.cancel(); }

private:
    HelperProcess process_;
};

// The words that start the program, "zenity" or "kdialog", for a request.
std::vector<std::string> chooserCommand(const std::string& program, const platform::FileRequest& request);
// What its end means, so long after its start.
DesktopChooser::Outcome chooserOutcome(int exitCode, const std::string& output, std::chrono::milliseconds after);

}  // namespace vantoric
