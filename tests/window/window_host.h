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

// Pixels as red, green, blue bytes, row by row.
struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint8_t> rgb;

    bool isEmpty() const { return rgb.empty(); }
    // 0xRRGGBB; 0 outside.
    unsigned at(int x, int y) const;
    Picture part(int x, int y, int width, int height) const;
    bool operator==(const Picture&) const = default;
};
// False if it cannot be written.
bool savePng(const Picture& picture, const std::string& path);
// Empty if it cannot be read.
Picture loadPng(const std::string& path);

// While it stands, a key that has no character has this one, of any alphabet. Windows learn of it when they open.
class SpareKey {
public:
    explicit SpareKey(char32_t character);
    ~SpareKey();
    SpareKey(const SpareKey&) = delete;
    SpareKey& operator=(const SpareKey&) = delete;
    unsigned code() const { return code_; }

private:
    unsigned code_ = 0;
};

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
    // The first half of `open`: the host's window alone.
    void makeWindow();
    // The host's window goes away with the plug-in's still open.
    void destroyWindow();
    // The number by which the window system knows the host's window; 0 for none.
    std::uintptr_t window() const;
    // The same of the plug-in's window inside; 0 for none.
    std::uintptr_t pluginWindow() const;
    // The size that the plug-in tells now; {0, 0} for none.
    struct Size {
        int width = 0, height = 0;
        bool operator==(const Size&) const = default;
    };
    Size size();
    // All of the window has to be drawn anew at the next idle calls, as when another window goes away from over it.
    void expose();
    // Gives the host's window another size, as a host does that grants one.
    void resize(Size wanted);

    // Calls the plug-in's idle for so many milliseconds, every `period`.
    void idle(int milliseconds = 120, int period = 15);
    // Calls it until the condition holds. False if that takes longer than `seconds`, which should be generous: the machine
    // may be busy.
    bool until(const std::function<bool()>& condition, double seconds = 20);

    // What the window has of every event that follows is worked off before the call returns. The pointer, in pixels of the
    // plug-in's window. Buttons: 1 left, 2 middle, 3 right, 4 and 5 wheel up and down.
    void move(double x, double y);
    void press(int button = 1);
    void release(int button = 1);
    void click(double x, double y, int button = 1);
    // Waits first, so that it counts alone.
    void doubleClick(double x, double y);
    void drag(double x0, double y0, double x1, double y1, int button = 1, int steps = 8);
    void wheel(double x, double y, int turns);
    // A key by its X name ("Tab", "Return", "a", "Shift_L"), pressed and let go of.
    void key(const std::string& name);
    void keyDown(const std::string& name);
    void keyUp(const std::string& name);
    // Types letters, digits, blanks and points.
    void type(const std::string& text);
    // A key with Control held, and with Shift too if wanted.
    void control(const std::string& name, bool isShifted = false);
    // A key by its number.
    void keyCode(unsigned code);
    // Files from a file manager are let go of over a point of the window. False if it took none.
    bool drop(const std::vector<std::string>& paths, double x, double y);
    // A key that the host hands over by its own call, with the numbers of the plug-in interface. True if it was used.
    bool hostKey(int character, int virtualKey, int modifiers = 0);

    // What the window shows once it has come to rest; empty if there is none.
    Picture picture();
    // What it shows now.
    Picture glance();
    bool savePicture(const std::string& path);
    // The pointer's own picture on the screen: equal for equal shapes.
    std::vector<unsigned long> pointer() const;

private:
    struct Display;
    void settle();

    std::unique_ptr<Display> display_;
    std::unique_ptr<PluginHost> plugin_;
};

}  // namespace testhost
