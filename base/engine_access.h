// How everybody who is not the audio thread takes the engine: loads, saves, edits, imports, rates, switching on and off.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "base/engine_state.h"
#include "base/thread_check.h"

namespace vantoric {

// One an instrument. It holds the lock by which those who are not the audio thread exclude each other (the audio thread and
// the wave worker never touch it), and what was replaced while somebody might still have been reading it.
class EngineAccess {
public:
    // The flags outlive it. `sleep` serves all waits.
    EngineAccess(EngineFlags& flags, SleepFunction sleep) : flags_(flags), sleep_(sleep) {}
    EngineAccess(const EngineAccess&) = delete;
    EngineAccess& operator=(const EngineAccess&) = delete;

    EngineFlags& flags() { return flags_; }
    SleepFunction sleepFunction() const { return sleep_; }
    // Which thread is inside the block. A turn from within it fails an assertion in debug and sanitizer builds.
    AudioThreadCheck& audioThread() { return audioThread_; }

    // Whether a hold that has ended left the engine locked, as a load that fails does: nobody is at work behind that lock, so
    // to wait for it is vain. Any thread.
    bool isLeftLocked() const { return isLeftLocked_; }

    // Takes memory over that the block or the worker may have been reading. Freed at once if neither is at work, else when
    // whoever was inside is out, looked at whenever the engine is taken. Under an EngineHold. Null does nothing.
    void retire(std::unique_ptr<std::int16_t[]> memory) noexcept;
    // How many pieces of memory are kept for a reader. With the turn.
    std::size_t retired() const { return retired_.size(); }

private:
    friend class EngineTurn;
    friend class EngineHold;

    struct Retired {
        std::unique_ptr<std::int16_t[]> memory;
        std::uint64_t blocks, steps;  // that had begun when it was replaced
    };
    bool isOut(const Retired& retired) const;
    void freeUnread();

    EngineFlags& flags_;
    SleepFunction sleep_;
    AudioThreadCheck audioThread_;
    std::recursive_mutex turn_;
    bool isHeld_ = false;
    std::atomic<bool> isLeftLocked_{false};
    std::vector<Retired> retired_;
};

// While it stands, its thread is the only one outside the audio thread and the worker that uses the engine; sound goes on.
// For what reads, and around commands of several steps. A thread may take several. Not on the audio thread.
class EngineTurn {
public:
    explicit EngineTurn(EngineAccess& access);
    EngineTurn(const EngineTurn&) = delete;
    EngineTurn& operator=(const EngineTurn&) = delete;

private:
    std::unique_lock<std::recursive_mutex> lock_;
};

// What the engine is held for.
enum class HoldFor : unsigned char {
    waves,     // samples and custom waves: the worker gives way, and begins anew afterwards if it had work
    patch,     // a whole patch: the worker is told when its waves are touched, by endRebuild
    settings,  // rates, switching on and off: the worker goes on; an engine that a failed load left locked stays so
};

// A turn in which the audio block is silent besides. Every wait is bounded and clears its flag by force at its end: 51 sleeps
// of 100 ms for the worker of `waves`, 1000 of 1 ms each for a lock that stands and for the block. The lock and the cancel that
// a failed load left are taken over at once. A hold within a hold leaves the flags to the outer one, and so its silence.
class EngineHold {
public:
    EngineHold(EngineAccess& access, HoldFor purpose);
    ~EngineHold();
    EngineHold(const EngineHold&) = delete;
    EngineHold& operator=(const EngineHold&) = delete;

    // Whether the engine stays locked, and silent, behind this hold.
    void setStaysLocked(bool staysLocked) { staysLocked_ = staysLocked; }
    // Cancels a rebuild that runs and waits for its end: 1000 sleeps of 1 ms, then by force.
    void endRebuild();

private:
    void makeWorkerGiveWay();

    const EngineTurn turn_;
    EngineAccess& access_;
    EngineFlags& flags_;
    bool isOuter_;
    bool staysLocked_ = false;
    bool rebuildWasDue_ = false;
};

}  // namespace vantoric
