// Assertions on which thread runs what. They cost nothing in a release build, where they are empty.
#pragma once

#include <atomic>
#include <cassert>
#include <thread>

namespace vantoric {

#ifdef NDEBUG

inline void notInsideAnyBlock() {}

class AudioThreadCheck {
public:
    struct Scope {
        explicit Scope(AudioThreadCheck&) {}
    };
    void onOwnThreadOrIdle() const {}
    void onOwnThreadOrSilent(bool) const {}
    void notInsideBlock() const {}
};

#else

inline thread_local int blocksOfThisThread = 0;

// For what may wait, allocate or show something and knows no instrument: not called from within anyone's block.
inline void notInsideAnyBlock() { assert(blocksOfThisThread == 0 && "not from within a block"); }

// Knows which thread is inside the block of one instrument.
class AudioThreadCheck {
public:
    // Stands while a thread is inside the block; one at a time.
    class Scope {
    public:
        explicit Scope(AudioThreadCheck& check) : check_(check) {
            check_.inside_.store(std::this_thread::get_id());
            ++blocksOfThisThread;
        }
        ~Scope() {
            --blocksOfThisThread;
            check_.inside_.store({});
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        AudioThreadCheck& check_;
    };

    // For what belongs to the audio thread: no other thread is inside the block.
    void onOwnThreadOrIdle() const {
        const std::thread::id inside = inside_.load();
        assert((inside == std::thread::id{} || inside == std::this_thread::get_id()) && "belongs to the audio thread");
    }
    // The same where whoever holds the engine may come too: `isSilent` tells whether a block would render nothing.
    void onOwnThreadOrSilent(bool isSilent) const {
        if (!isSilent) onOwnThreadOrIdle();
    }
    // For what may wait, allocate or show something: not called from within the block.
    void notInsideBlock() const { assert(inside_.load() != std::this_thread::get_id() && "not from within the block"); }

private:
    std::atomic<std::thread::id> inside_{};
};

#endif

}  // namespace vantoric
