// A host with a window for tests: shows a plug-in's window in one of its own, moves the real pointer over it, presses real
// keys, and takes pictures. Needs an X server, a virtual one will do.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/host/plugin_host.h"

namespace testhost {

class WindowHost {
public:
    // Loads the plug-in. Throws std::runtime_error if there is no display.
    explicit WindowHost(const std::string& plugin, HostAnswers answers = {});
    ~WindowHost();
    WindowHost(const WindowHost&) = delete;
    WindowHost& operator=(const WindowHost&) = delete;

    PluginHost& plugin() { return *plugin_; }

    // Opens the plug-in's window in a new one of the host's, of the size that the plug-in tells.
    bool open();
    void close();
    // The size that the plug-in tells now; {0, 0} for none.
    struct Size {
        int width = 0, height = 0;
    };
    Size size();

    // Calls the plug-in's idle for so many milliseconds, every `period`.
    void idle(int milliseconds = 120, int period = 15);

    // The pointer, in pixels of the plug-in's window. Buttons: 1 left, 2 middle, 3 right, 4 and 5 wheel up and down.
    void move(double x, double y);
    void press(int button = 1);
    void release(int button = 1);
    void click(double x, double y, int button = 1);
    void doubleClick(double x, double y);
    void drag(double x0, double y0, double x1, double y1, int button = 1, int steps = 8);
    void wheel(double x, double y, int turns);
    // A key by its X name ("Tab", "Return", "a", "Shift_L"), pressed and let go of.
    void key(const std::string& name);
    void keyDown(const std::string& name);
    void keyUp(const std::string& name);
    // Types letters, digits, blanks and points.
    void type(const std::string& text);

    // The window's pixels as red, green, blue bytes, and as a PNG file. False if it cannot be written.
    struct Picture {
        int width = 0, height = 0;
        std::vector<std::uint8_t> rgb;
    };
    Picture picture();
    bool savePicture(const std::string& path);

private:
    struct Display;
    std::unique_ptr<Display> display_;
    std::unique_ptr<PluginHost> plugin_;
};

bool savePng(const WindowHost::Picture& picture, const std::string& path);

}  // namespace testhost
