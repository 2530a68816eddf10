// What a host has yet to hear of the parameters: gestures in the window, and values that it did not set itself.
#pragma once

#include <array>
#include <atomic>
#include <utility>

#include "base/parameters.h"
#include "parameters/parameter_model.h"

namespace vantoric {

// Gestures on parameters, from the window to whichever thread tells the host. Any number of movements between two looks are
// one, and none gets lost.
class Gestures {
public:
    // Any thread; never waits. Indices outside 0 to 1223 are ignored.
    void begin(int index) { mark(index, true); }
    void end(int index) { mark(index, false); }

    // One thread at a time. Calls `tell(index, isBegin)` for what has begun and ended since the last look; a gesture of which
    // nobody heard before it was over is told whole. Between a begin and its end `move(index)` may tell a value. Where one of
    // them throws, what was not told yet comes with the next look.
    template <class Tell, class Move>
    void take(Tell tell, Move move);
    // Whether a hand is on a parameter. Any thread.
    bool isHeld(int index) const { return gestures_[static_cast<std::size_t>(index)].isHeld.load(std::memory_order_relaxed); }
    // Whether there is anything to take. Any thread.
    bool any() const { return any_.load(std::memory_order_acquire); }

private:
    struct Gesture {
        std::atomic<bool> isHeld{false}, isTouched{false};
        bool isTold = false;
    };
    // Puts a gesture back unless it is let go.
    struct Kept {
        ~Kept() {
            if (gesture != nullptr) touch(*gesture), all.any_.store(true, std::memory_order_release);
        }
        Gestures& all;
        Gesture* gesture;
    };

    static void touch(Gesture& gesture) { gesture.isTouched.store(true, std::memory_order_release); }
    void mark(int index, bool isBegin) {
        if (index < 0 || index >= parameterCount) return;
        Gesture& gesture = gestures_[static_cast<std::size_t>(index)];
        gesture.isHeld.store(isBegin, std::memory_order_relaxed);
        touch(gesture);
        any_.store(true, std::memory_order_release);
    }

    std::array<Gesture, parameterCount> gestures_{};
    std::atomic<bool> any_{false};
};

// The values as a host believes them to be. One thread at a time.
class ToldValues {
public:
    // Begins with the values in force.
    explicit ToldValues(const ParameterModel& parameters) : parameters_(parameters), reader_(parameters.changes()) {
        acceptAll();
    }

    // The host has set a parameter, or read it: it knows what it is now.
    void accept(int index) { told_[static_cast<std::size_t>(index)] = parameters_.getParameter(index); }
    void acceptAll() {
        for (int i = 0; i < parameterCount; ++i) accept(i);
    }
    // Calls `tell(index, value)`, the stored value, for every parameter that is not what the host believes. Where it answers
    // false the host hears of it with the next look. Of a patch that was loaded the values are told as well, or, for hosts that
    // read them anew by themselves, taken as known.
    enum class Patches { told, known };
    template <class Tell>
    void take(Patches patches, Tell tell);

private:
    const ParameterModel& parameters_;
    ParameterChanges::Reader reader_;
    std::array<float, parameterCount> told_{};
    bool isBehind_ = false;
};

template <class Tell, class Move>
void Gestures::take(Tell tell, Move move) {
    if (!any_.exchange(false, std::memory_order_acq_rel)) return;
    for (int i = 0; i < parameterCount; ++i) {
        Gesture& gesture = gestures_[static_cast<std::size_t>(i)];
        if (!gesture.isTouched.exchange(false, std::memory_order_acq_rel)) continue;
        Kept kept{*this, &gesture};
        const bool isHeld = gesture.isHeld.load(std::memory_order_relaxed);
        if (!gesture.isTold) tell(i, true);
        gesture.isTold = true;
        move(i);
        if (!isHeld) tell(i, false);
        gesture.isTold = isHeld;
        kept.gesture = nullptr;
    }
}

template <class Tell>
void ToldValues::take(Patches patches, Tell tell) {
    const ParameterChanges::News news = reader_.take();
    if (!news.any() && !isBehind_) return;
    if (news.all && patches == Patches::known) return acceptAll();
    const bool wasBehind = std::exchange(isBehind_, true);  // until the end, should telling throw
    const bool all = news.all || wasBehind;
    bool isBehind = false;
    for (int i = 0; i < parameterCount; ++i) {
        if (!all && !news.has(i)) continue;
        const float value = parameters_.getParameter(i);
        float& told = told_[static_cast<std::size_t>(i)];
        if (value == told) continue;
        if (tell(i, value))
            told = value;
        else
            isBehind = true;
    }
    isBehind_ = isBehind;
}

}  // namespace vantoric
