// Showing a page of the web to the user.
#pragma once

#include <chrono>
#include <string>

namespace vantoric::platform {

// A page that was given to the desktop's opener. One thread at a time, not the audio thread.
class PageOpening {
public:
    // opened: the opener is content, or has been at it for ten seconds, as it is where it runs the browser itself.
    enum class State { underWay, opened, failed };

    // One that is over.
    static PageOpening opened() { return PageOpening(State::opened); }
    static PageOpening failed() { return PageOpening(State::failed); }
    PageOpening(PageOpening&& other) noexcept;
    PageOpening& operator=(PageOpening&& other) noexcept;
    // The opener goes on by itself.
    ~PageOpening();

    // How it stands by now. Never waits.
    State look();

private:
    friend PageOpening openWebPage(const std::string& address);

    explicit PageOpening(State state) : state_(state) {}
    void end(State state);

    State state_;
    int answer_ = -1;  // while it is under way: where the opener's exit code arrives
    std::chrono::steady_clock::time_point since_;
};

// Hands an address to the desktop's own opener and does not wait for it. Failed at once if there is none or it could not be
// started. Any thread but the audio thread. `address` should be one of our own, never a user's text.
PageOpening openWebPage(const std::string& address);

// The address of a file, "file:///...", for a path from the root; all bytes but plain letters, digits and "-._~/" are coded.
std::string addressOfFile(const std::string& path);

}  // namespace vantoric::platform
