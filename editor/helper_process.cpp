#include "editor/helper_process.h"

#include <cstdlib>
#include <sstream>
#include <string_view>
#include <utility>

#ifndef _WIN32
#include <array>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;  // NOLINT(readability-redundant-declaration): not declared everywhere
#endif

namespace vantoric {

#ifndef _WIN32

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<char*> cleanEnvironment() {
    std::vector<char*> kept;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        if (!text.starts_with("LD_LIBRARY_PATH=") && !text.starts_with("LD_PRELOAD=")) kept.push_back(*variable);
    }
    kept.push_back(nullptr);
    return kept;
}

// How it is started: its output into a pipe, nothing to read, and no signal kept from it as host threads often do.
class SpawnSetup {
public:
    explicit SpawnSetup(int output) {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_adddup2(&files_, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    bool spawn(int& pid, std::vector<std::string> words) {
        const std::vector<char*> arguments = pointersTo(words), environment = cleanEnvironment();
        return posix_spawnp(&pid, arguments[0], &files_, &attributes_, arguments.data(), environment.data()) == 0;
    }

private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

}  // namespace

bool HelperProcess::start(const std::vector<std::string>& words, Done done) {
    if (isRunning() || words.empty()) return false;
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
    const bool hasStarted = SpawnSetup(ends[1]).spawn(pid_, words);
    ::close(ends[1]);
    pipe_ = ends[0];
    if (!hasStarted) {
        forget();
        return false;
    }
    fcntl(pipe_, F_SETFL, O_NONBLOCK);
    output_.clear();
    done_ = std::move(done);
    return true;
}

void HelperProcess::poll() {
    if (!isRunning()) return;
    constexpr std::size_t mostOutput = 65536;  // a path is shorter by far
    std::array<char, 1024> bytes{};
    ssize_t count = 0;
    while ((count = ::read(pipe_, bytes.data(), bytes.size())) > 0)
        if (output_.size() < mostOutput) output_.append(bytes.data(), static_cast<std::size_t>(count));
    if (count < 0) return;  // it has more to say
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, WNOHANG);
    if (ended == 0) return;
    int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (ended < 0) code = output_.empty() ? 1 : 0;  // the host waits for all children itself and has taken this one's end
    forget();
    const std::string output = std::exchange(output_, {});  // `done` may start the next one
    if (const auto done = std::exchange(done_, nullptr)) done(code, output);
}

void HelperProcess::cancel() {
    if (!isRunning()) return;
    constexpr int mostRounds = 40;
    kill(pid_, SIGTERM);
    pid_t ended = 0;
    for (int round = 0; round < mostRounds && (ended = waitpid(pid_, nullptr, WNOHANG)) == 0; ++round) usleep(1000);
    if (ended == 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    forget();
    done_ = nullptr;
}

void HelperProcess::forget() {
    if (pipe_ >= 0) ::close(pipe_);
    pid_ = pipe_ = -1;
}

bool isInstalled(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (!folder.empty() && access(folder.append("/").append(program).c_str(), X_OK) == 0) return true;
    return false;
}

#else

bool HelperProcess::start(const std::vector<std::string>&, Done) { return false; }
void HelperProcess::poll() {}
void HelperProcess::cancel() {}
void HelperProcess::forget() {}
bool isInstalled(const std::string&) { return false; }

#endif

}  // namespace vantoric
