#include "apps/render/settle.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace vantoric::render {

namespace {

#ifdef _WIN32

// Whether this process has used a processor since the last look.
class Others {
public:
    bool canBeWatched() const { return true; }
    bool areBusy() {
        FILETIME made, ended, kernel, user;
        if (!GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user)) return false;
        const auto ticks = [](const FILETIME& time) { return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime; };
        const std::uint64_t used = ticks(kernel) + ticks(user);
        return std::exchange(used_, used) != used;
    }

private:
    std::uint64_t used_ = 0;  // of 100 ns
};

#else

namespace fs = std::filesystem;

// Whether any thread but this one runs, waits for a processor or waits for the disk.
class Others {
public:
    bool canBeWatched() const {
        std::error_code ignored;
        return fs::is_directory(tasks_, ignored);
    }

    bool areBusy() const {
        const std::string self = std::to_string(gettid());
        std::error_code trouble;
        for (fs::directory_iterator entry(tasks_, trouble), end; !trouble && entry != end; entry.increment(trouble)) {
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

private:
    const fs::path tasks_ = "/proc/self/task";
};

#endif

}  // namespace

bool waitUntilSettled(double limit, const std::function<void()>& waiting) {
    using namespace std::chrono;
    constexpr auto step = milliseconds(10);
    constexpr int quietSteps = 25;
    if (limit <= 0.0) return true;
    Others others;
    const auto end = steady_clock::now() + duration<double>(limit);
    if (!others.canBeWatched()) {
        std::this_thread::sleep_for(duration<double>(std::min(limit, 1.0)));
        return true;
    }
    // A look that meets a short waking costs some steps, not all of them.
    for (int quiet = 0; quiet < quietSteps;) {
        if (steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(step);
        if (waiting) waiting();
        quiet = others.areBusy() ? std::max(0, quiet - 8) : quiet + 1;
    }
    return true;
}

}  // namespace vantoric::render
