// What has changed in the parameters, for those who want to follow: the window, the library, a face of a host. The
// one who changes a value notes it down and goes on; the readers come and look, each at its own pace.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <cstdint>

#include "base/parameters.h"

namespace vantoric {

// Who made a change.
enum class ChangeSource : std::uint8_t { host, midi, patch, window };
inline constexpr int changeSourceCount = 4;

class ParameterChanges {
public:
    // Notes that parameter `index` (0 to 1223; others are ignored) has a new value, after that was stored. Any
    // thread: never waits, never allocates.
    void note(int index, ChangeSource source);
    // Notes that all parameters may have new values, as after a patch was loaded. Any thread, in the same way.
    void noteAll(ChangeSource source);
    // Counts on with every change, in the order in which they become visible.
    std::uint32_t count() const { return count_.load(std::memory_order_acquire); }

    // What a reader has missed since it last looked.
    struct News {
        bool all = false;                        // all may have new values
        std::bitset<parameterCount> changed;     // those that changed one by one, by host index
        std::bitset<changeSourceCount> sources;  // of any of the changes, by ChangeSource
        bool any() const { return all || changed.any(); }
        bool has(int index) const { return all || changed.test(static_cast<std::size_t>(index)); }
        bool from(ChangeSource source) const { return sources.test(static_cast<std::size_t>(source)); }
    };

    // One reader, with its own memory of what it has seen. Any number of them may follow the same parameters,
    // each on one thread at a time. A change is told at least once; several of the same parameter between two
    // looks are one, with the last one's source.
    class Reader {
    public:
        // Begins with what changes from now on. `changes` must outlive it.
        explicit Reader(const ParameterChanges& changes);
        // What has changed since the last call.
        News take();

    private:
        const ParameterChanges& changes_;
        std::uint32_t seenCount_;
        std::uint32_t seenAll_;
        std::array<std::uint32_t, parameterCount> seen_;
    };

private:
    // A change's stamp: a number that no other change has, and its source in the two lowest bits.
    std::uint32_t stampOf(ChangeSource source) {
        return tickets_.fetch_add(4, std::memory_order_relaxed) + static_cast<std::uint32_t>(source);
    }
    static std::size_t sourceOf(std::uint32_t stamp) { return stamp & 3; }

    std::atomic<std::uint32_t> tickets_{4};
    std::atomic<std::uint32_t> count_{0};
    std::atomic<std::uint32_t> all_{0};
    std::array<std::atomic<std::uint32_t>, parameterCount> stamps_{};
};

}  // namespace vantoric
