#include "tests/window/window_host.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include <png.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace testhost {
namespace {

struct RectRecord {
    std::int16_t top, left, bottom, right;
};

KeySym keysymOf(char c) {
    switch (c) {
        case ' ': return XK_space;
        case '.': return XK_period;
        case '-': return XK_minus;
        case '/': return XK_slash;
        case '_': return XK_underscore;
        default: return static_cast<KeySym>(static_cast<unsigned char>(c));
    }
}

}  // namespace

struct WindowHost::Display {
    ::Display* x = XOpenDisplay(nullptr);
    ::Window window = 0;
    ~Display() {
        if (x != nullptr) XCloseDisplay(x);
    }
    void key(KeySym symbol, bool isDown) const { XTestFakeKeyEvent(x, XKeysymToKeycode(x, symbol), isDown ? True : False, 0), XFlush(x); }
};

WindowHost::WindowHost(const std::string& plugin, HostAnswers answers) : display_(std::make_unique<Display>()) {
    if (display_->x == nullptr) throw std::runtime_error("no display");
    plugin_ = std::make_unique<PluginHost>(plugin, answers);
    plugin_->start();
}

WindowHost::~WindowHost() { close(); }

WindowHost::Size WindowHost::size() {
    RectRecord* rect = nullptr;
    if (plugin_->call(wire::opEditRect, 0, 0, &rect) == 0 || rect == nullptr) return {};
    return {rect->right - rect->left, rect->bottom - rect->top};
}

bool WindowHost::open() {
    const Size wanted = size();
    ::Display* x = display_->x;
    display_->window = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, static_cast<unsigned>(std::max(wanted.width, 1)),
                                           static_cast<unsigned>(std::max(wanted.height, 1)), 0, 0, 0);
    XSelectInput(x, display_->window, StructureNotifyMask | KeyPressMask);
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;  // no window manager in between
    XChangeWindowAttributes(x, display_->window, CWOverrideRedirect, &attributes);
    XMapRaised(x, display_->window);
    XSync(x, False);
    const bool isOpen = plugin_->call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(display_->window)) != 0;
    if (isOpen) idle();
    return isOpen;
}

void WindowHost::close() {
    if (display_->window == 0) return;
    plugin_->call(wire::opEditClose);
    XDestroyWindow(display_->x, display_->window);
    XSync(display_->x, False);
    display_->window = 0;
}

void WindowHost::idle(int milliseconds, int period) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    do {
        while (XPending(display_->x) != 0) {
            XEvent event;
            XNextEvent(display_->x, &event);
        }
        plugin_->call(wire::opEditIdle);
        std::this_thread::sleep_for(std::chrono::milliseconds(period));
    } while (Clock::now() < end);
}

void WindowHost::move(double x, double y) {
    XTestFakeMotionEvent(display_->x, -1, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), 0);
    XFlush(display_->x);
    idle(12, 6);
}

void WindowHost::press(int button) {
    XTestFakeButtonEvent(display_->x, static_cast<unsigned>(button), True, 0);
    XFlush(display_->x);
    idle(12, 6);
}

void WindowHost::release(int button) {
    XTestFakeButtonEvent(display_->x, static_cast<unsigned>(button), False, 0);
    XFlush(display_->x);
    idle(12, 6);
}

void WindowHost::click(double x, double y, int button) {
    move(x, y);
    press(button);
    release(button);
    idle(30, 10);
}

void WindowHost::doubleClick(double x, double y) {
    click(x, y);
    click(x, y);
}

void WindowHost::drag(double x0, double y0, double x1, double y1, int button, int steps) {
    move(x0, y0);
    press(button);
    for (int i = 1; i <= steps; ++i) move(x0 + (x1 - x0) * i / steps, y0 + (y1 - y0) * i / steps);
    release(button);
}

void WindowHost::wheel(double x, double y, int turns) {
    move(x, y);
    for (int i = 0; i < std::abs(turns); ++i) {
        press(turns > 0 ? 4 : 5);
        release(turns > 0 ? 4 : 5);
    }
}

void WindowHost::keyDown(const std::string& name) {
    display_->key(XStringToKeysym(name.c_str()), true);
    idle(12, 6);
}

void WindowHost::keyUp(const std::string& name) {
    display_->key(XStringToKeysym(name.c_str()), false);
    idle(12, 6);
}

void WindowHost::key(const std::string& name) {
    keyDown(name);
    keyUp(name);
}

void WindowHost::type(const std::string& text) {
    for (const char c : text) {
        display_->key(keysymOf(c), true);
        display_->key(keysymOf(c), false);
        idle(12, 6);
    }
}

WindowHost::Picture WindowHost::picture() {
    idle(80);
    XWindowAttributes attributes{};
    XGetWindowAttributes(display_->x, display_->window, &attributes);
    Picture result{attributes.width, attributes.height, {}};
    XImage* image = XGetImage(display_->x, display_->window, 0, 0, static_cast<unsigned>(attributes.width),
                              static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
    if (image == nullptr) return {};
    result.rgb.reserve(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height) * 3);
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            for (const int shift : {16, 8, 0}) result.rgb.push_back(static_cast<std::uint8_t>(pixel >> shift & 255));
        }
    XDestroyImage(image);
    return result;
}

bool WindowHost::savePicture(const std::string& path) { return savePng(picture(), path); }

bool savePng(const WindowHost::Picture& picture, const std::string& path) {
    if (picture.rgb.empty()) return false;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, picture.rgb.data(), 0, nullptr) != 0;
}

}  // namespace testhost
