#include "tests/window/window_host.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <png.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace testhost {
namespace {

// The window system tells of errors by ending the program; what a test does to windows may well be one.
int noteError(::Display*, XErrorEvent*) { return 0; }

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
    void key(KeySym symbol, bool isDown) const { XTestFakeKeyEvent(x, XKeysymToKeycode(x, symbol), isDown ? True : False, 0); }
};

WindowHost::WindowHost(const std::string& plugin, HostAnswers answers) : display_(std::make_unique<Display>()) {
    if (display_->x == nullptr) throw std::runtime_error("no display");
    XSetErrorHandler(noteError);
    plugin_ = std::make_unique<PluginHost>(plugin, answers);
    plugin_->start();
}

WindowHost::~WindowHost() { close(); }

WindowHost::Size WindowHost::size() {
    wire::Rect* rect = nullptr;
    if (plugin_->call(wire::opEditRect, 0, 0, &rect) == 0 || rect == nullptr) return {};
    return {rect->right - rect->left, rect->bottom - rect->top};
}

void WindowHost::makeWindow() {
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
}

bool WindowHost::open() {
    makeWindow();
    const bool isOpen = plugin_->call(wire::opEditOpen, 0, 0, reinterpret_cast<void*>(display_->window)) != 0;
    if (isOpen) idle();
    return isOpen;
}

void WindowHost::close() {
    plugin_->call(wire::opEditClose);
    destroyWindow();
}

void WindowHost::destroyWindow() {
    if (display_->window == 0) return;
    XDestroyWindow(display_->x, display_->window);
    XSync(display_->x, False);
    display_->window = 0;
}

std::uintptr_t WindowHost::window() const { return display_->window; }

std::uintptr_t WindowHost::pluginWindow() const {
    Window root, above, *children = nullptr;
    unsigned count = 0;
    if (XQueryTree(display_->x, display_->window, &root, &above, &children, &count) == 0) return 0;
    const Window first = count > 0 ? children[0] : 0;
    if (children != nullptr) XFree(children);
    return first;
}

void WindowHost::resize(Size wanted) {
    XResizeWindow(display_->x, display_->window, static_cast<unsigned>(wanted.width), static_cast<unsigned>(wanted.height));
    XSync(display_->x, False);
}

void WindowHost::idle(int milliseconds, int period) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    do {
        settle();
        std::this_thread::sleep_for(std::chrono::milliseconds(period));
    } while (Clock::now() < end);
}

bool WindowHost::until(const std::function<bool()>& condition, double seconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        if (Clock::now() > end) return false;
        idle(15, 5);
    }
    return true;
}

// The server has worked off all requests, so what came of them lies before the plug-in, which reads it in its idle. A second
// round draws what the first one marked.
void WindowHost::settle() {
    XSync(display_->x, False);
    while (XPending(display_->x) != 0) {
        XEvent event;
        XNextEvent(display_->x, &event);
    }
    for (int round = 0; round < 2; ++round) plugin_->call(wire::opEditIdle);
}

void WindowHost::move(double x, double y) {
    XTestFakeMotionEvent(display_->x, -1, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), 0);
    settle();
}

void WindowHost::press(int button) {
    XTestFakeButtonEvent(display_->x, static_cast<unsigned>(button), True, 0);
    settle();
}

void WindowHost::release(int button) {
    XTestFakeButtonEvent(display_->x, static_cast<unsigned>(button), False, 0);
    settle();
}

void WindowHost::click(double x, double y, int button) {
    move(x, y);
    press(button);
    release(button);
}

void WindowHost::doubleClick(double x, double y) {
    constexpr int longestPair = 500;  // milliseconds
    idle(longestPair);
    move(x, y);
    // Both at once: however busy the machine is, no time passes between them.
    for (const bool isDown : {true, false, true, false}) XTestFakeButtonEvent(display_->x, 1, isDown ? True : False, 0);
    settle();
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
    settle();
}

void WindowHost::keyUp(const std::string& name) {
    display_->key(XStringToKeysym(name.c_str()), false);
    settle();
}

void WindowHost::key(const std::string& name) {
    keyDown(name);
    keyUp(name);
}

void WindowHost::type(const std::string& text) {
    for (const char c : text) {
        display_->key(keysymOf(c), true);
        display_->key(keysymOf(c), false);
        settle();
    }
}

bool WindowHost::hostKey(int character, int virtualKey, int modifiers) {
    const bool isUsed = plugin_->call(wire::opKeyDown, character, virtualKey, nullptr, static_cast<float>(modifiers)) != 0;
    settle();
    return isUsed;
}

Picture WindowHost::glance() {
    if (display_->window == 0) return {};
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display_->x, display_->window, &attributes) == 0) return {};
    XImage* image = XGetImage(display_->x, display_->window, 0, 0, static_cast<unsigned>(attributes.width),
                              static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
    if (image == nullptr) return {};
    Picture result{attributes.width, attributes.height, {}};
    result.rgb.resize(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height) * 3);
    std::uint8_t* to = result.rgb.data();
    for (int y = 0; y < result.height; ++y) {
        const char* row = image->data + static_cast<std::ptrdiff_t>(y) * image->bytes_per_line;
        for (int x = 0; x < result.width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, row + 4 * x, sizeof pixel);
            for (const int shift : {16, 8, 0}) *to++ = static_cast<std::uint8_t>(pixel >> shift & 255);
        }
    }
    XDestroyImage(image);
    return result;
}

Picture WindowHost::picture() {
    constexpr int stillFor = 5;  // looks, each after one round of the displays at least
    Picture last = glance();
    for (int looks = 0, still = 0; looks < 40 && still < stillFor; ++looks) {  // what moves on for ever is taken as it is
        idle(110, 10);
        Picture now = glance();
        still = now == last ? still + 1 : 0;
        last = std::move(now);
    }
    return last;
}

bool WindowHost::savePicture(const std::string& path) { return savePng(picture(), path); }

unsigned Picture::at(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0;
    const std::uint8_t* p =
        rgb.data() + 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    return static_cast<unsigned>(p[0]) << 16 | static_cast<unsigned>(p[1]) << 8 | p[2];
}

Picture Picture::part(int x, int y, int partWidth, int partHeight) const {
    const int left = std::clamp(x, 0, width), top = std::clamp(y, 0, height);
    const int right = std::clamp(x + partWidth, left, width), bottom = std::clamp(y + partHeight, top, height);
    Picture result{right - left, bottom - top, {}};
    for (int row = top; row < bottom; ++row) {
        const auto begin = rgb.begin() + 3 * (static_cast<std::ptrdiff_t>(row) * width + left);
        result.rgb.insert(result.rgb.end(), begin, begin + 3 * result.width);
    }
    return result;
}

bool savePng(const Picture& picture, const std::string& path) {
    if (picture.isEmpty()) return false;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, picture.rgb.data(), 0, nullptr) != 0;
}

Picture loadPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return {};
    image.format = PNG_FORMAT_RGB;
    Picture result{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    result.rgb.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, result.rgb.data(), 0, nullptr) == 0) return {};
    return result;
}

}  // namespace testhost
