#include "faces/standalone/top_window.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "faces/standalone/icon.h"

namespace vantoric::standalone {

struct TopWindow::Connection {
    Display* display = nullptr;
    Atom closing = 0;

    Atom atom(const char* name) const { return XInternAtom(display, name, False); }
    void setText(Window window, const char* property, const std::string& text) const {
        XChangeProperty(display, window, atom(property), atom("UTF8_STRING"), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    }
    void setNumbers(Window window, const char* property, Atom type, const std::vector<unsigned long>& numbers) const {
        XChangeProperty(display, window, atom(property), type, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(numbers.data()), static_cast<int>(numbers.size()));
    }
};

namespace {

int sayError(Display* display, XErrorEvent* error) {
    char text[128] = {};
    XGetErrorText(display, error->error_code, text, sizeof text);
    std::fprintf(stderr, "vantoric: the display refused request %d: %s\n", error->request_code, text);
    return 0;
}

bool isViewable(Display* display, Window window) {
    XWindowAttributes facts{};
    return XGetWindowAttributes(display, window, &facts) != 0 && facts.map_state == IsViewable;
}

// Kept open until the window has its own: a server whose last client leaves may start anew.
Display* trial = nullptr;

}  // namespace

bool TopWindow::hasDisplay() {
    if (trial == nullptr) trial = XOpenDisplay(nullptr);
    return trial != nullptr;
}

TopWindow::~TopWindow() {
    if (connection_ == nullptr) return;
    if (!isLost_) {
        if (window_ != 0) XDestroyWindow(connection_->display, window_);
        XCloseDisplay(connection_->display);
    }
    delete connection_;
}

bool TopWindow::open(int width, int height) {
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    connection_ = new Connection{display};
    if (Display* const tried = std::exchange(trial, nullptr)) XCloseDisplay(tried);
    // A display that goes away would end the program, and the patch with it; so would a call that the display refuses.
    XSetErrorHandler(&sayError);
    XSetIOErrorHandler([](Display*) { return 0; });
    XSetIOErrorExitHandler(display, [](Display*, void* self) { static_cast<TopWindow*>(self)->isLost_ = true; }, this);
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    constexpr unsigned long ground = 0x0E1113;  // of the editor's window, seen beside the parts
    window_ = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, static_cast<unsigned>(width),
                                  static_cast<unsigned>(height), 0, 0, ground);
    describe();
    setHints(width, height);
    setIcon();
    XSelectInput(display, window_, KeyPressMask | KeyReleaseMask | FocusChangeMask | StructureNotifyMask);
    XMapWindow(display, window_);
    XSync(display, False);
    return true;
}

// For the desktop: what it is, whose it is, and that it wants to be asked before it is closed.
void TopWindow::describe() {
    Display* const display = connection_->display;
    char name[] = "vantoric", kind[] = "Vantoric";
    XClassHint about{name, kind};
    XSetClassHint(display, window_, &about);
    setTitle("Vantoric");
    connection_->setNumbers(window_, "_NET_WM_PID", XA_CARDINAL, {static_cast<unsigned long>(getpid())});
    connection_->setNumbers(window_, "_NET_WM_WINDOW_TYPE", XA_ATOM, {connection_->atom("_NET_WM_WINDOW_TYPE_NORMAL")});
    connection_->closing = connection_->atom("WM_DELETE_WINDOW");
    XSetWMProtocols(display, window_, &connection_->closing, 1);
    XWMHints hints{};
    hints.flags = InputHint | StateHint;
    hints.input = True;
    hints.initial_state = NormalState;
    XSetWMHints(display, window_, &hints);
}

void TopWindow::setHints(int width, int height) {
    XSizeHints size{};
    size.flags = PMinSize | PMaxSize | PSize;
    size.width = size.min_width = size.max_width = width;
    size.height = size.min_height = size.max_height = height;
    XSetWMNormalHints(connection_->display, window_, &size);
}

void TopWindow::setIcon() {
    std::vector<unsigned long> numbers;
    for (const int size : {32, 64, 128}) {
        numbers.insert(numbers.end(), {static_cast<unsigned long>(size), static_cast<unsigned long>(size)});
        for (const std::uint32_t pixel : iconPixels(size)) numbers.push_back(pixel);
    }
    connection_->setNumbers(window_, "_NET_WM_ICON", XA_CARDINAL, numbers);
}

void TopWindow::setTitle(const std::string& title) {
    if (isLost_ || window_ == 0) return;
    XStoreName(connection_->display, window_, title.c_str());
    connection_->setText(window_, "_NET_WM_NAME", title);
    XFlush(connection_->display);
}

void TopWindow::resize(int width, int height) {
    if (isLost_ || window_ == 0) return;
    setHints(width, height);
    XResizeWindow(connection_->display, window_, static_cast<unsigned>(width), static_cast<unsigned>(height));
    XFlush(connection_->display);
}

TopWindow::Size TopWindow::screen() {
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr) return {};
    const int number = DefaultScreen(display);
    const Size size{DisplayWidth(display, number), DisplayHeight(display, number)};
    XCloseDisplay(display);
    return size;
}

std::string TopWindow::signOf(unsigned code) const {
    const KeySym symbol = XkbKeycodeToKeysym(connection_->display, static_cast<KeyCode>(code), 0, 0);
    const unsigned long letter = symbol >= 'a' && symbol <= 'z' ? symbol - 'a' + 'A' : symbol;
    if (letter > ' ' && letter < 127) return std::string(1, static_cast<char>(letter));
    if (letter >= 0xc0 && letter < 0x100) {  // letters of Western Europe, as UTF-8
        const unsigned long capital = letter >= 0xe0 && letter != 0xf7 && letter != 0xff ? letter - 0x20 : letter;
        return {static_cast<char>(0xc0 | capital >> 6), static_cast<char>(0x80 | (capital & 0x3f))};
    }
    return {};
}

std::bitset<256> TopWindow::codesDown() const {
    std::bitset<256> down;
    char bits[32] = {};
    if (!isLost_) XQueryKeymap(connection_->display, bits);
    for (std::size_t code = 0; code < down.size(); ++code) down[code] = (bits[code / 8] >> code % 8 & 1) != 0;
    return down;
}

// ---- events -------------------------------------------------------------------------------------------------

void TopWindow::wait(int otherDescriptor, int milliseconds) {
    if (isLost_ || XPending(connection_->display) > 0) return;
    pollfd waiting[] = {{ConnectionNumber(connection_->display), POLLIN, 0}, {otherDescriptor, POLLIN, 0}};
    poll(waiting, 2, milliseconds);
}

void TopWindow::service() {
    while (!isLost_ && XPending(connection_->display) > 0) {
        XEvent event;
        XNextEvent(connection_->display, &event);
        if (!isLost_) take(&event);
    }
}

void TopWindow::take(const void* what) {
    const XEvent& event = *static_cast<const XEvent*>(what);
    switch (event.type) {
        case KeyPress:
        case KeyRelease: {
            const unsigned code = event.xkey.keycode & 255, state = event.xkey.state;
            WindowKey key{code,
                          XkbKeycodeToKeysym(connection_->display, static_cast<KeyCode>(code), 0, 0),
                          (state & ShiftMask) != 0,
                          (state & ControlMask) != 0,
                          (state & Mod1Mask) != 0,
                          down_[code]};
            down_[code] = event.type == KeyPress;
            if (event.type == KeyPress) return listener_.keyDown(key);
            return listener_.keyUp(key);
        }
        case FocusOut:
            if (event.xfocus.detail == NotifyInferior) return;  // to a part of ours, which passes most keys on
            for (bool& isDown : down_) isDown = false;
            return listener_.focusLost();
        case MapNotify:
            // Without a window manager nobody else does it. With one its frame around us may not show yet.
            if (!std::exchange(hasFocused_, true) && isViewable(connection_->display, window_))
                XSetInputFocus(connection_->display, window_, RevertToParent, CurrentTime);
            return;
        case DestroyNotify:  // by somebody else
            if (event.xdestroywindow.window == window_) {
                window_ = 0;
                listener_.closeWanted();
            }
            return;
        case ClientMessage:
            if (static_cast<Atom>(event.xclient.data.l[0]) == connection_->closing) listener_.closeWanted();
            return;
        default: return;
    }
}

}  // namespace vantoric::standalone
