// The program's own window on the desktop, which the editor and what lies below it are opened in.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>

namespace vantoric::standalone {

// A key of the computer's keyboard.
struct WindowKey {
    unsigned code = 0;         // its place on the board
    unsigned long symbol = 0;  // what the user's layout makes of it (X keysym)
    bool isShift = false, isControl = false, isAlt = false;
    bool isRepeated = false;  // it was down already
};

class WindowListener {
public:
    virtual void keyDown(const WindowKey& key) = 0;
    virtual void keyUp(const WindowKey& key) = 0;
    virtual void focusLost() = 0;
    virtual void closeWanted() = 0;

protected:
    ~WindowListener() = default;
};

// On the program's main thread.
class TopWindow {
public:
    explicit TopWindow(WindowListener& listener) : listener_(listener) {}
    ~TopWindow();
    TopWindow(const TopWindow&) = delete;
    TopWindow& operator=(const TopWindow&) = delete;

    // Whether there is a display.
    static bool hasDisplay();
    // Shows it in pixels. False if there is no display.
    bool open(int width, int height);
    // The user cannot: its content says how large it is.
    void resize(int width, int height);
    void setTitle(const std::string& title);
    // Serves what has come in; never waits.
    void service();
    // Waits until something comes in here or at another descriptor, so long at most.
    void wait(int otherDescriptor, int milliseconds);
    std::uintptr_t id() const { return window_; }
    // Whether the connection to the display has broken. Nothing of the window may be touched then.
    bool isLost() const { return isLost_; }
    // What the user's layout has printed on a key, for those that print one sign.
    std::string signOf(unsigned code) const;
    // Which keys are down at this moment, whoever gets their events.
    std::bitset<256> codesDown() const;
    struct Size {
        int width = 0, height = 0;
    };
    // Of the screen; 0 without a display.
    static Size screen();

private:
    struct Connection;

    void describe();
    void setHints(int width, int height);
    void setIcon();
    void take(const void* event);

    WindowListener& listener_;
    Connection* connection_ = nullptr;
    std::uintptr_t window_ = 0;
    bool isLost_ = false, hasFocused_ = false;
    bool down_[256] = {};
};

}  // namespace vantoric::standalone
