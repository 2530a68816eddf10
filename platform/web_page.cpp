#include "platform/web_page.h"

#include <string_view>

#ifdef _WIN32
#include <windows.h>
// After windows.h: it needs its types.
#include <shellapi.h>

#include "platform/wide_text.h"
#else
#include <spawn.h>
#include <sys/wait.h>
#include <cerrno>
#include <csignal>

extern char** environ;
#endif

namespace vantoric::platform {

// RFC 8089, with what RFC 3986 leaves unreserved. A path of Windows begins with a drive, whose colon stays.
std::string addressOfFile(const std::string& path) {
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr char digits[] = "0123456789ABCDEF";
    std::string address = path.starts_with('/') ? "file://" : "file:///";
    for (std::size_t i = 0; i < path.size(); ++i) {
#ifdef _WIN32
        const char c = path[i] == '\\' ? '/' : path[i];
        const bool isDrive = i == 1 && c == ':';
#else
        const char c = path[i];
        constexpr bool isDrive = false;
#endif
        const auto byte = static_cast<unsigned char>(c);
        if (isDrive || plain.find(c) != std::string_view::npos)
            address += c;
        else
            address.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return address;
}

#ifdef _WIN32

bool openWebPage(const std::string& address) {
    return reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", wide(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL)) >
           32;
}

#else

// The shell starts the opener in the background and is gone at once, so that no child is left for the host to wait for. It fails
// where there is no opener.
bool openWebPage(const std::string& address) {
    std::string shell = "sh", option = "-c", text = address;
    std::string script =
        "opener=$(command -v xdg-open) && [ -f \"$opener\" ] && [ -x \"$opener\" ] || exit 1\n"
        "\"$opener\" \"$1\" >/dev/null 2>&1 </dev/null &";
    char* const arguments[] = {shell.data(), option.data(), script.data(), shell.data(), text.data(), nullptr};
    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) return false;
    sigset_t none, usual;
    sigemptyset(&none);  // hosts may hold signals back on their threads, or take no note of children that end
    sigemptyset(&usual);
    sigaddset(&usual, SIGCHLD);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    const int failure = posix_spawn(&child, "/bin/sh", nullptr, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    if (failure != 0) return false;
    int status = 0;
    pid_t ended = 0;
    do ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended != child || status == 0;  // where the host has taken the answer away it is believed to be good
}

#endif

}  // namespace vantoric::platform
