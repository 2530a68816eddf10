#include "platform/web_page.h"

#include <string_view>
#include <utility>

#ifdef _WIN32
#include <windows.h>
// After windows.h: it needs its types.
#include <shellapi.h>

#include "platform/wide_text.h"
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
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

PageOpening::PageOpening(PageOpening&& other) noexcept
    : state_(other.state_), answer_(std::exchange(other.answer_, -1)), since_(other.since_) {}

PageOpening& PageOpening::operator=(PageOpening&& other) noexcept {
    end(other.state_);
    answer_ = std::exchange(other.answer_, -1);
    since_ = other.since_;
    return *this;
}

PageOpening::~PageOpening() { end(state_); }

#ifdef _WIN32

void PageOpening::end(State state) { state_ = state; }
PageOpening::State PageOpening::look() { return state_; }

PageOpening openWebPage(const std::string& address) {
    const auto answer =
        reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", wide(address).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    return answer > 32 ? PageOpening::opened() : PageOpening::failed();
}

#else

namespace {

constexpr std::chrono::seconds longest(10);  // that an opener takes to find that it cannot

// A shell that starts the opener in the background and is gone at once, so that no child is left for the host to wait for; it
// fails where there is no opener. What is left of it in the background tells the opener's exit code, if anybody still listens;
// the opener itself, which may become a browser, does not keep the line.
constexpr char starter[] =
    "opener=$(command -v xdg-open) && [ -f \"$opener\" ] && [ -x \"$opener\" ] || exit 1\n"
    "{ \"$opener\" \"$1\" >/dev/null </dev/null 3>&-; echo $? >&3; } 2>/dev/null &";

// The two ends of a pipe, closed with it.
struct Pipe {
    Pipe() { isOpen = pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0; }
    ~Pipe() {
        for (const int end : ends)
            if (end >= 0) close(end);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int ends[2] = {-1, -1};  // to read, to write
    bool isOpen;
};

// Whether the shell was started, with the pipe as its third stream.
bool startShell(const std::string& address, int pipe, pid_t& child) {
    std::string shell = "sh", option = "-c", script = starter, text = address;
    char* const arguments[] = {shell.data(), option.data(), script.data(), shell.data(), text.data(), nullptr};
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
    if (posix_spawnattr_init(&attributes) != 0) return false;
    if (posix_spawn_file_actions_init(&files) != 0) {
        posix_spawnattr_destroy(&attributes);
        return false;
    }
    sigset_t none, usual;
    sigemptyset(&none);  // hosts may hold signals back on their threads, or take no note of children that end
    sigemptyset(&usual);
    sigaddset(&usual, SIGCHLD);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const bool isStarted = posix_spawn_file_actions_adddup2(&files, pipe, 3) == 0 &&
                           posix_spawn(&child, "/bin/sh", &files, &attributes, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return isStarted;
}

// Where the host has taken the answer away it is believed to be good.
bool hasEndedWell(pid_t child) {
    int status = 0;
    pid_t ended = 0;
    do ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended != child || status == 0;
}

}  // namespace

void PageOpening::end(State state) {
    state_ = state;
    if (const int answer = std::exchange(answer_, -1); answer >= 0) close(answer);
}

PageOpening::State PageOpening::look() {
    if (answer_ < 0) return state_;
    char code = '0';  // that of an opener that cannot be asked
    const bool isOver = std::chrono::steady_clock::now() - since_ > longest;
    const ssize_t count = isOver ? 0 : read(answer_, &code, 1);
    if (count >= 0 || (errno != EAGAIN && errno != EINTR)) end(code == '0' ? State::opened : State::failed);
    return state_;
}

PageOpening openWebPage(const std::string& address) {
    Pipe pipe;
    pid_t child = 0;
    if (!pipe.isOpen || !startShell(address, pipe.ends[1], child) || !hasEndedWell(child)) return PageOpening::failed();
    PageOpening opening(PageOpening::State::underWay);
    opening.answer_ = std::exchange(pipe.ends[0], -1);
    opening.since_ = std::chrono::steady_clock::now();
    return opening;
}

#endif

}  // namespace vantoric::platform
