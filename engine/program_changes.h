// MIDI program changes, left by the audio thread for whoever loads patches: the window's thread or the library's.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace vantoric {

class ProgramChanges {
public:
    // A program change of `number` (0 to 127) came. The audio thread only: one store, nothing else.
    void post(int number) {
        const std::uint32_t count = (last_.load(std::memory_order_relaxed) >> 8) + 1;
        last_.store(count << 8 | static_cast<std::uint32_t>(number & 127), std::memory_order_release);
    }

    // A listener with its own memory of what it has taken; any number of them, each on one thread.
    class Reader {
    public:
        // Hears what comes from now on. `changes` must outlive it.
        explicit Reader(const ProgramChanges& changes)
            : changes_(changes), seen_(changes.last_.load(std::memory_order_acquire)) {}
        // The number of the last program change since the last call; nothing if there was none.
        std::optional<int> take() {
            const std::uint32_t last = changes_.last_.load(std::memory_order_acquire);
            if (last == seen_) return {};
            seen_ = last;
            return static_cast<int>(last & 127);
        }

    private:
        const ProgramChanges& changes_;
        std::uint32_t seen_;
    };

private:
    std::atomic<std::uint32_t> last_{0};  // the number below a count of all that came
};

}  // namespace vantoric
