#include "faces/standalone/recorder.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/thread.h"

namespace vantoric::standalone {

Recorder::Recorder() : ring_(2 * ringFrames) {}

Recorder::~Recorder() { stop(); }

void Recorder::listen(int rate) {
    if (thread_.joinable()) return;
    rate_ = rate;
    first_ = heard_.load(std::memory_order_acquire);
    written_ = first_;
    lost_ = 0;
    isActive_ = true;
}

bool Recorder::start(const std::string& path, int rate, std::string& problem) {
    if (thread_.joinable()) return problem = "a recording runs", false;
    file_ = WaveWriter::make(path, rate, problem);
    if (!file_) return isActive_ = false;
    if (!isActive_ || rate != rate_) listen(rate);
    path_ = path;
    trouble_.clear();
    hasFailed_ = false;
    isEnding_ = false;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::exception& error) {
        file_.reset();
        problem = error.what();
        return isActive_ = false;
    }
    return true;
}

bool Recorder::stop() {
    isActive_ = false;
    while (isHearing_) platform::sleepMilliseconds(1);
    isEnding_ = true;
    if (thread_.joinable()) thread_.join();
    if (lost_ > 0 && trouble_.empty()) trouble_ = std::to_string(lost_) + " frames were lost: the disk is too slow";
    hasFailed_ = false;
    return trouble_.empty();
}

void Recorder::expectRate(int rate) {
    if (!isRecording() || rate == rate_) return;
    if (!thread_.joinable()) return listen(rate);
    const bool isEmpty = heard_ == first_;
    stop();
    if (isEmpty && start(std::string(path_), rate, trouble_)) return;
    if (trouble_.empty()) trouble_ = "the sample rate changed";
    hasFailed_ = true;
}

double Recorder::seconds() const {
    return rate_ > 0 ? static_cast<double>(heard_.load(std::memory_order_relaxed) - first_) / rate_ : 0.0;
}

std::string Recorder::trouble() const {
    const std::lock_guard guard(mutex_);
    return trouble_;
}

// ---- the audio thread

void Recorder::hear(const float* left, const float* right, int frames) noexcept {
    isHearing_ = true;
    if (isActive_) {
        const std::uint64_t from = heard_.load(std::memory_order_relaxed);
        const std::uint64_t room = ringFrames - (from - written_.load(std::memory_order_acquire));
        const auto taken = std::min<std::uint64_t>(static_cast<std::uint64_t>(frames), room);
        for (std::uint64_t i = 0; i < taken; ++i) {
            const std::size_t at = 2 * ((from + i) % ringFrames);
            ring_[at] = left[i];
            ring_[at + 1] = right[i];
        }
        heard_.store(from + taken, std::memory_order_release);
        lost_.fetch_add(static_cast<std::uint64_t>(frames) - taken, std::memory_order_relaxed);
    }
    isHearing_ = false;
}

// ---- the writing thread

void Recorder::run() noexcept try {
    while (!isEnding_) {
        if (!writeWaiting()) return;
        platform::sleepMilliseconds(20);
    }
    if (!writeWaiting()) return;
    file_.reset();
} catch (...) {
    fail("no memory left");  // words that a string holds without any
}

bool Recorder::writeWaiting() {
    const std::uint64_t end = heard_.load(std::memory_order_acquire);
    for (std::uint64_t at = written_.load(std::memory_order_relaxed); at < end;) {
        const std::size_t place = at % ringFrames;
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(end - at, ringFrames - place));
        if (std::string why; !file_->write(&ring_[2 * place], count, why)) {
            fail(std::move(why));
            return false;
        }
        at += count;
        written_.store(at, std::memory_order_release);
    }
    // What is on disk is a whole file at any moment, should the machine go down.
    if (file_->update()) return true;
    fail("the file could not be completed");
    return false;
}

void Recorder::fail(std::string why) noexcept {
    {
        const std::lock_guard guard(mutex_);
        trouble_ = std::move(why);
    }
    file_.reset();
    hasFailed_ = true;
    isActive_ = false;
}

}  // namespace vantoric::standalone
