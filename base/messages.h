// What a user is to be told, kept until somebody who has a user takes it.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "base/thread_check.h"

namespace vantoric {

struct Message {
    std::string title, text;
};

// Any thread but the audio thread, several at once.
class Messages {
public:
    // Where nobody takes them, the first ones are kept and the rest is lost.
    static constexpr std::size_t mostKept = 100;

    // Never throws: with short memory a message is lost.
    void post(std::string_view title, std::string_view text) noexcept try {
        notInsideAnyBlock();
        const std::lock_guard guard(mutex_);
        if (kept_.size() < mostKept) kept_.push_back({std::string(title), std::string(text)});
    } catch (...) {
        lost_.store(true, std::memory_order_relaxed);
    }

    // Posts what an outcome has to tell, if anything; returns whether it was done.
    bool post(const Outcome& outcome) noexcept {
        if (!outcome.text.empty()) post(outcome.title, outcome.text);
        return outcome.isDone;
    }

    // All in the order in which they came; none is left.
    std::vector<Message> take() {
        notInsideAnyBlock();
        std::vector<Message> taken;
        const std::lock_guard guard(mutex_);
        taken.swap(kept_);
        return taken;
    }

    // Whether memory was too short to keep one.
    bool lostSome() const { return lost_.load(std::memory_order_relaxed); }

private:
    std::mutex mutex_;
    std::vector<Message> kept_;
    std::atomic<bool> lost_{false};
};

}  // namespace vantoric
