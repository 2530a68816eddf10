// The hands and eyes of a user at an X server: the pointer, the keys, and what the screen shows.
#pragma once

#include <cstdint>
#include <string>

#include "tests/window/window_host.h"

namespace testhost {

class Desktop {
public:
    // At the server that DISPLAY names. Throws std::runtime_error if there is none.
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    // The first window on the screen of that class (WM_CLASS) that is shown; 0 after so many seconds without one.
    std::uintptr_t findWindow(const std::string& kind, double seconds);
    struct Place {
        int x = 0, y = 0, width = 0, height = 0;
    };
    Place placeOf(std::uintptr_t window);
    std::string titleOf(std::uintptr_t window);
    // Numbers of the icon property; 0 without one.
    std::size_t iconSize(std::uintptr_t window);
    // Asks it to close, as the button of its frame does.
    void askToClose(std::uintptr_t window);

    // Destroys it, as nobody should.
    void destroy(std::uintptr_t window);

    // The pointer on the screen, in pixels, and its left button.
    void move(double x, double y);
    void press();
    void release();
    void click(double x, double y);
    // A key by its X name.
    void keyDown(const std::string& name);
    void keyUp(const std::string& name);

    // Part of the screen as it is now.
    Picture picture(const Place& place);

private:
    struct Connection;
    void key(const std::string& name, bool isDown);
    Connection* connection_;
};

}  // namespace testhost
