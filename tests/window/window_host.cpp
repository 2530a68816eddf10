#include "tests/window/window_host.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <png.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xfixes.h>
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

void WindowHost::expose() {
    std::vector<Window> windows{display_->window};
    for (std::size_t i = 0; i < windows.size(); ++i) {
        Window root, above, *children = nullptr;
        unsigned count = 0;
        if (XQueryTree(display_->x, windows[i], &root, &above, &children, &count) == 0) continue;
        windows.insert(windows.end(), children, children + count);
        if (children != nullptr) XFree(children);
    }
    for (const Window window : windows) XClearArea(display_->x, window, 0, 0, 0, 0, True);
    XSync(display_->x, False);
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

void WindowHost::control(const std::string& name, bool isShifted) {
    keyDown("Control_L");
    if (isShifted) keyDown("Shift_L");
    key(name);
    if (isShifted) keyUp("Shift_L");
    keyUp("Control_L");
}

void WindowHost::keyCode(unsigned code) {
    for (const bool isDown : {true, false}) XTestFakeKeyEvent(display_->x, code, isDown ? True : False, 0);
    settle();
}

namespace {

void mapKey(unsigned code, KeySym symbol) {
    ::Display* const x = XOpenDisplay(nullptr);
    KeySym symbols[] = {symbol, symbol};
    XChangeKeyboardMapping(x, static_cast<int>(code), 2, symbols, 1);
    XSync(x, False);
    XCloseDisplay(x);
}

}  // namespace

SpareKey::SpareKey(char32_t character) {
    constexpr KeySym unicode = 0x01000000;
    constexpr unsigned fewest = 8, most = 255;
    ::Display* const x = XOpenDisplay(nullptr);
    int perKey = 0;
    KeySym* const map = XGetKeyboardMapping(x, fewest, static_cast<int>(most - fewest + 1), &perKey);
    for (unsigned code = fewest; code <= most; ++code)
        if (map[static_cast<std::ptrdiff_t>(code - fewest) * perKey] == NoSymbol) code_ = code;
    XFree(map);
    XCloseDisplay(x);
    mapKey(code_, unicode | character);
}

SpareKey::~SpareKey() { mapKey(code_, NoSymbol); }

namespace {

// The side of a drop that a file manager has (freedesktop.org, "Drag-and-Drop Protocol for the X Window System", version 5).
class DropSource {
public:
    DropSource(const std::vector<std::string>& paths) {
        for (const std::string& path : paths) list_ += "file://" + path + "\r\n";
        source_ = XCreateSimpleWindow(x_, DefaultRootWindow(x_), 0, 0, 1, 1, 0, 0, 0);
        XSetSelectionOwner(x_, atom("XdndSelection"), source_, CurrentTime);
    }
    ~DropSource() { XCloseDisplay(x_); }
    DropSource(const DropSource&) = delete;
    DropSource& operator=(const DropSource&) = delete;

    // The window under the pointer that takes drops; false if there is none.
    bool find() {
        const ::Window root = DefaultRootWindow(x_);
        ::Window unused = 0, child = root;
        int rx = 0, ry = 0, wx = 0, wy = 0;
        unsigned mask = 0;
        while (child != 0) {
            if (takesDrops(child)) target_ = child;
            const ::Window asked = child;
            XQueryPointer(x_, asked, &unused, &child, &rx, &ry, &wx, &wy, &mask);
        }
        place_ = static_cast<long>(rx) << 16 | ry;
        return target_ != 0;
    }
    void enter() { send("XdndEnter", {5L << 24, static_cast<long>(atom("text/uri-list")), 0, 0}); }
    void position() { send("XdndPosition", {0, place_, CurrentTime, static_cast<long>(atom("XdndActionCopy"))}); }
    void letGo() { send("XdndDrop", {0, CurrentTime, 0, 0}); }

    // Answers what has come; whether it was that message, and that it said yes.
    bool hasCome(const char* message) {
        bool isThere = false;
        while (XPending(x_) != 0) {
            XEvent event;
            XNextEvent(x_, &event);
            if (event.type == SelectionRequest) give(event.xselectionrequest);
            if (event.type == ClientMessage && event.xclient.message_type == atom(message))
                isThere = (event.xclient.data.l[1] & 1) != 0;
        }
        return isThere;
    }

private:
    Atom atom(const char* name) { return XInternAtom(x_, name, False); }
    bool takesDrops(::Window window) {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0, left = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(x_, window, atom("XdndAware"), 0, 1, False, AnyPropertyType, &type, &format, &count, &left, &data);
        if (data != nullptr) XFree(data);
        return type != 0;
    }
    void send(const char* name, const std::array<long, 4>& data) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = target_;
        event.xclient.message_type = atom(name);
        event.xclient.format = 32;
        event.xclient.data.l[0] = static_cast<long>(source_);
        for (std::size_t i = 0; i < data.size(); ++i) event.xclient.data.l[i + 1] = data[i];
        XSendEvent(x_, target_, False, NoEventMask, &event);
        XSync(x_, False);
    }
    void give(const XSelectionRequestEvent& request) {
        XChangeProperty(x_, request.requestor, request.property, request.target, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(list_.data()), static_cast<int>(list_.size()));
        XEvent event{};
        event.xselection.type = SelectionNotify;
        event.xselection.requestor = request.requestor;
        event.xselection.selection = request.selection;
        event.xselection.target = request.target;
        event.xselection.property = request.property;
        event.xselection.time = request.time;
        XSendEvent(x_, request.requestor, False, NoEventMask, &event);
        XSync(x_, False);
    }

    ::Display* x_ = XOpenDisplay(nullptr);
    ::Window source_ = 0, target_ = 0;
    std::string list_;
    long place_ = 0;
};

}  // namespace

bool WindowHost::drop(const std::vector<std::string>& paths, double x, double y) {
    move(x, y);
    DropSource source(paths);
    if (!source.find()) return false;
    source.enter();
    source.position();
    if (!until([&] { return source.hasCome("XdndStatus"); }, 5)) return false;
    source.letGo();
    return until([&] { return source.hasCome("XdndFinished"); }, 5);
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

std::vector<unsigned long> WindowHost::pointer() const {
    XFixesCursorImage* image = XFixesGetCursorImage(display_->x);
    if (image == nullptr) return {};
    const std::vector<unsigned long> result(image->pixels,
                                            image->pixels + static_cast<std::ptrdiff_t>(image->width) * image->height);
    XFree(image);
    return result;
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
