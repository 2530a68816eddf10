// What became of something that a user asked for, and what to tell.
#pragma once

#include <string>
#include <utility>

namespace vantoric {

// What every failed allocation is told by, in the spelling that players know.
inline constexpr char notEnoughMemory[] = "Not enought memory.";

// Nobody is told anything by who makes one: that is for whoever has a user. Contextually true if it was done.
struct Outcome {
    bool isDone = false;
    std::string title, text;  // of a box; without a text there is nothing to tell

    static Outcome success() { return {true, {}, {}}; }
    static Outcome failure(std::string title, std::string text) { return {false, std::move(title), std::move(text)}; }
    // One that is passed over in silence.
    static Outcome silentFailure() { return {}; }

    explicit operator bool() const { return isDone; }
};

}  // namespace vantoric
