#include "tests/faces/standalone/program.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

namespace testhost {

void pause(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

Home::Home() {
    setenv("HOME", folder_.path().c_str(), 1);
    setenv("XDG_STATE_HOME", (folder_ / "state").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
}

// Beyond the limit a write fails, as on a full disk; the signal that would end the process is not wanted.
FileSizeLimit::FileSizeLimit(rlim_t bytes) : signalBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
}

FileSizeLimit::~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signalBefore_);
}

Program::Program(const std::vector<std::string>& arguments) {
    std::vector<char*> texts;
    for (const std::string& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
    texts.push_back(nullptr);
    const std::string output = folder_ / "output";
    process_ = fork();
    if (process_ != 0) return;
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(file, 1);
    dup2(file, 2);
    execvp(texts[0], texts.data());
    _exit(127);
}

Program::~Program() {
    if (!isRunning()) return;
    kill(process_, SIGKILL);
    waitpid(process_, &status_, 0);
}

bool Program::isRunning() {
    if (process_ > 0 && waitpid(process_, &status_, WNOHANG) == process_) process_ = -1;
    return process_ > 0;
}

bool Program::waitFor(const std::string& text, double seconds) {
    within(seconds, [&] { return output().find(text) != std::string::npos || !isRunning(); });
    return output().find(text) != std::string::npos;
}

void Program::signal(int number) const {
    if (process_ > 0) kill(process_, number);
}

int Program::finish(double seconds) {
    if (!within(seconds, [this] { return !isRunning(); })) return -1;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
}

std::string Program::output() const {
    std::ifstream file(folder_ / "output", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int run(const std::vector<std::string>& arguments, std::string& output) {
    Program program(arguments);
    const int code = program.finish();
    output = program.output();
    return code;
}

float Recording::peak(std::size_t from) const {
    float most = 0;
    for (std::size_t i = 2 * from; i < samples.size(); ++i) most = std::max(most, std::fabs(samples[i]));
    return most;
}

std::size_t Recording::onset() const {
    const auto first = std::find_if(samples.begin(), samples.end(), [](float sample) { return std::fabs(sample) > 1e-4f; });
    return static_cast<std::size_t>(first - samples.begin()) / 2;
}

Recording readRecording(const std::string& path) {
    Recording recording;
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) return recording;
    if (info.channels == 2) {
        recording.rate = info.samplerate;
        recording.samples.resize(2 * static_cast<std::size_t>(info.frames));
        sf_readf_float(file, recording.samples.data(), info.frames);
    }
    sf_close(file);
    return recording;
}

}  // namespace testhost
