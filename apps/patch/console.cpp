#include "apps/patch/console.h"

#include <unistd.h>

#include <cstdio>

namespace vantoric::patch {

namespace {
bool isTerminal() { return isatty(STDERR_FILENO) != 0; }
}  // namespace

int Console::messages() const {
    const std::lock_guard guard(mutex_);
    return messages_;
}

void Console::message(const std::string& title, const std::string& text) {
    if (title == "Hint") return;
    const std::lock_guard guard(mutex_);
    ++messages_;
    print(title + ": " + text);
}

void Console::question(const std::string& title, const std::string& text, platform::OnAnswer then) {
    {
        const std::lock_guard guard(mutex_);
        print(title + ": " + text + (yes ? " Yes." : " No."));
    }
    then(yes);
}

void Console::print(const std::string& line) {
    if (busyShown_) std::fputs("\r\033[K", stderr);
    busyShown_ = false;
    std::fprintf(stderr, "%s: %s\n", program_.c_str(), line.c_str());
}

void Console::showBusy(const std::string& text) {
    const std::lock_guard guard(mutex_);
    if (!isTerminal()) {
        if (!text.empty()) std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    if (busyShown_ || !text.empty()) std::fprintf(stderr, "\r\033[K%s", text.c_str());
    busyShown_ = !text.empty();
    std::fflush(stderr);
}

Busy::Busy(Console& console, std::string text, std::chrono::milliseconds patience)
    : console_(console), text_(std::move(text)), patience_(patience), thread_([this] { run(); }) {}

Busy::~Busy() {
    {
        const std::lock_guard guard(mutex_);
        isOver_ = true;
    }
    ended_.notify_one();
    thread_.join();
}

void Busy::run() {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const std::chrono::milliseconds pause = isTerminal() ? std::chrono::milliseconds(200) : std::chrono::seconds(10);
    std::unique_lock lock(mutex_);
    for (auto next = start + patience_; !ended_.wait_until(lock, next, [this] { return isOver_; }); next += pause) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start).count();
        console_.showBusy(text_ + " ... " + std::to_string(seconds) + " s");
    }
    console_.showBusy("");
}

}  // namespace vantoric::patch
