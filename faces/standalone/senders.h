// Who of many keyboards holds what.
#pragma once

#include <map>
#include <utility>

#include "faces/standalone/held_keys.h"

namespace vantoric::standalone {

// The keyboards at one port, each known by two numbers. One thread, not the audio thread: it allocates. Nothing is thrown.
class Senders {
public:
    using Name = std::pair<int, int>;

    // One has sent a message. False, with nothing done, if memory is too short for a sender that is new: nobody would let go
    // of what it holds.
    bool follow(const Name& sender, const ShortMessage& message) noexcept try {
        held_[sender].follow(message);
        return true;
    } catch (...) {
        return false;
    }
    // One has gone: calls `send(message)` with what lets go of what it holds.
    template <class Send>
    void leave(const Name& sender, Send&& send) {
        const auto found = held_.find(sender);
        if (found == held_.end()) return;
        found->second.release(send);
        held_.erase(found);
    }
    // Messages were lost: the same for all of them.
    template <class Send>
    void leaveAll(Send&& send) {
        for (auto& [name, held] : held_) held.release(send);
        held_.clear();
    }

private:
    std::map<Name, HeldKeys> held_;
};

}  // namespace vantoric::standalone
