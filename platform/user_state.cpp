#include "platform/user_state.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/user_folders.h"

#ifdef _WIN32
#include <process.h>
#include <windows.h>
#else
#include <unistd.h>

#include <cstdio>
#endif

namespace vantoric::platform {

namespace {

std::string& chosenFolder() {
    static std::string folder;
    return folder;
}

}  // namespace

std::string stateFolder() { return chosenFolder().empty() ? userStateFolder() : chosenFolder(); }
void setStateFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

#ifdef _WIN32

long processNumber() { return _getpid(); }

std::string processStart(long number) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(number));
    // One that may not be asked is there all the same.
    if (process == nullptr) return GetLastError() == ERROR_ACCESS_DENIED ? "unknown" : "";
    FILETIME made{}, ended{}, kernel{}, user{};
    DWORD code = 0;
    const bool runs =
        GetExitCodeProcess(process, &code) && code == STILL_ACTIVE && GetProcessTimes(process, &made, &ended, &kernel, &user);
    CloseHandle(process);
    return runs ? std::to_string(made.dwHighDateTime) + ":" + std::to_string(made.dwLowDateTime) : "";
}

#else

namespace {

// Files of the kernel have no size to be asked for.
std::string kernelFile(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return {};
    char text[4096];
    const std::size_t count = std::fread(text, 1, sizeof text, file);
    std::fclose(file);
    return {text, count};
}

// Field `n` of a process's line, from 3 on: the program's name before it may hold blanks and brackets (proc(5)).
std::string fieldOf(const std::string& line, int n) {
    std::size_t at = line.rfind(')');
    for (int i = 2; i < n && at != std::string::npos; ++i) at = line.find(' ', at + 1);
    return at == std::string::npos ? "" : line.substr(at + 1, line.find(' ', at + 1) - at - 1);
}

constexpr int stateField = 3, startField = 22;

}  // namespace

long processNumber() { return getpid(); }

std::string processStart(long number) {
    const std::string line = kernelFile("/proc/" + std::to_string(number) + "/stat");
    const std::string state = fieldOf(line, stateField);
    // One that has ended and that nobody has asked for is no more.
    if (number <= 0 || line.empty() || state == "Z" || state == "X") return {};
    std::string boot = kernelFile("/proc/sys/kernel/random/boot_id");
    boot.resize(std::min(boot.find('\n'), boot.size()));
    return boot + ":" + fieldOf(line, startField);
}

#endif

}  // namespace vantoric::platform
