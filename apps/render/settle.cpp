#include "apps/render/settle.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace vantoric::render {

namespace {

namespace fs = std::filesystem;

// Whether any thread but this one runs, waits for a processor or waits for the disk.
bool othersBusy(const fs::path& tasks) {
    const std::string self = std::to_string(gettid());
    std::error_code trouble;
    for (fs::directory_iterator entry(tasks, trouble), end; !trouble && entry != end; entry.increment(trouble)) {
        if (entry->path().filename() == self) continue;
        std::ifstream file(entry->path() / "stat");
        std::string line;
        std::getline(file, line);
        const auto name = line.rfind(')');  // the state letter stands two places behind the name
        if (name == std::string::npos || name + 2 >= line.size()) continue;
        if (line[name + 2] == 'R' || line[name + 2] == 'D') return true;
    }
    return false;
}

}  // namespace

bool waitUntilSettled(double limit, const std::function<void()>& waiting) {
    using namespace std::chrono;
    constexpr auto step = milliseconds(10);
    constexpr int quietSteps = 25;
    if (limit <= 0.0) return true;
    const fs::path tasks = "/proc/self/task";
    const auto end = steady_clock::now() + duration<double>(limit);
    std::error_code ignored;
    if (!fs::is_directory(tasks, ignored)) {
        std::this_thread::sleep_for(duration<double>(std::min(limit, 1.0)));
        return true;
    }
    // A look that meets a short waking costs some steps, not all of them.
    for (int quiet = 0; quiet < quietSteps;) {
        if (steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(step);
        if (waiting) waiting();
        quiet = othersBusy(tasks) ? std::max(0, quiet - 8) : quiet + 1;
    }
    return true;
}

}  // namespace vantoric::render
