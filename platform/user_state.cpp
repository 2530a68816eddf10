#include "platform/user_state.h"

#include <algorithm>
#include <cstdlib>

#include "platform/files.h"
#include "platform/module_folder.h"

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

std::string withSeparator(std::string folder) {
    if (!folder.empty() && folder.back() != pathSeparator) folder += pathSeparator;
    return folder;
}

}  // namespace

void setStateFolder(const std::string& folder) { chosenFolder() = withSeparator(folder); }

#ifdef _WIN32

std::string stateFolder() {
    if (!chosenFolder().empty()) return chosenFolder();
    char text[32768];
    const DWORD length = GetEnvironmentVariableA("LOCALAPPDATA", text, sizeof text);
    if (length == 0 || length >= sizeof text) return {};
    return withSeparator(text) + "Vantoric\\State\\";
}

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

std::string environmentFolder(const char* name) {
    const char* text = std::getenv(name);
    return text != nullptr && text[0] == '/' ? withSeparator(text) : "";
}

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

std::string stateFolder() {
    if (!chosenFolder().empty()) return chosenFolder();
    if (const std::string folder = environmentFolder("XDG_STATE_HOME"); !folder.empty()) return folder + "vantoric/";
    const std::string home = environmentFolder("HOME");
    return home.empty() ? home : home + ".local/state/vantoric/";
}

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
