#include "tests/faces/standalone/desktop.h"

#include <chrono>
#include <cmath>
#include <stdexcept>
#include <thread>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

namespace testhost {

struct Desktop::Connection {
    Display* x = XOpenDisplay(nullptr);

    bool isOfKind(Window window, const std::string& kind) const {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(x, window, &attributes) == 0 || attributes.map_state != IsViewable) return false;
        XClassHint hint{};
        if (XGetClassHint(x, window, &hint) == 0) return false;
        const bool isIt = hint.res_class != nullptr && kind == hint.res_class;
        XFree(hint.res_name);
        XFree(hint.res_class);
        return isIt;
    }

    Window search(Window below, const std::string& kind) const {
        Window root = 0, parent = 0, *children = nullptr, found = 0;
        unsigned count = 0;
        if (XQueryTree(x, below, &root, &parent, &children, &count) == 0) return 0;
        for (unsigned i = 0; i < count && found == 0; ++i)
            found = isOfKind(children[i], kind) ? children[i] : search(children[i], kind);
        if (children != nullptr) XFree(children);
        return found;
    }

    // A property's numbers or bytes; their count is left in `count`.
    std::string property(Window window, const char* name, std::size_t& count) const {
        Atom type = 0;
        int format = 0;
        unsigned long items = 0, rest = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(x, window, XInternAtom(x, name, False), 0, 1 << 20, False, AnyPropertyType, &type, &format, &items,
                           &rest, &data);
        count = items;
        const std::string bytes(reinterpret_cast<char*>(data), data != nullptr && format == 8 ? items : 0);
        if (data != nullptr) XFree(data);
        return bytes;
    }
};

Desktop::Desktop() : connection_(new Connection) {
    if (connection_->x != nullptr) {
        // What a test looks at may have gone meanwhile.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        return;
    }
    delete connection_;
    throw std::runtime_error("no display");
}

Desktop::~Desktop() {
    XCloseDisplay(connection_->x);
    delete connection_;
}

std::uintptr_t Desktop::findWindow(const std::string& kind, double seconds) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        if (const Window found = connection_->search(DefaultRootWindow(connection_->x), kind); found != 0) return found;
        if (Clock::now() > end) return 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

Desktop::Place Desktop::placeOf(std::uintptr_t window) {
    XWindowAttributes attributes;
    Window ignored = 0;
    Place place;
    if (XGetWindowAttributes(connection_->x, window, &attributes) == 0) return place;
    XTranslateCoordinates(connection_->x, window, DefaultRootWindow(connection_->x), 0, 0, &place.x, &place.y, &ignored);
    place.width = attributes.width;
    place.height = attributes.height;
    return place;
}

std::string Desktop::titleOf(std::uintptr_t window) {
    std::size_t count = 0;
    return connection_->property(window, "_NET_WM_NAME", count);
}

std::size_t Desktop::iconSize(std::uintptr_t window) {
    std::size_t count = 0;
    connection_->property(window, "_NET_WM_ICON", count);
    return count;
}

void Desktop::askToClose(std::uintptr_t window) {
    Display* const x = connection_->x;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(x, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(x, "WM_DELETE_WINDOW", False));
    XSendEvent(x, window, False, NoEventMask, &event);
    XSync(x, False);
}

void Desktop::destroy(std::uintptr_t window) {
    XDestroyWindow(connection_->x, window);
    XSync(connection_->x, False);
}

void Desktop::move(double x, double y) {
    XTestFakeMotionEvent(connection_->x, -1, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), 0);
    XSync(connection_->x, False);
}

void Desktop::press() {
    XTestFakeButtonEvent(connection_->x, 1, True, 0);
    XSync(connection_->x, False);
}

void Desktop::release() {
    XTestFakeButtonEvent(connection_->x, 1, False, 0);
    XSync(connection_->x, False);
}

void Desktop::click(double x, double y) {
    move(x, y);
    press();
    release();
}

void Desktop::key(const std::string& name, bool isDown) {
    const KeyCode code = XKeysymToKeycode(connection_->x, XStringToKeysym(name.c_str()));
    XTestFakeKeyEvent(connection_->x, code, isDown ? True : False, 0);
    XSync(connection_->x, False);
}

void Desktop::keyDown(const std::string& name) { key(name, true); }
void Desktop::keyUp(const std::string& name) { key(name, false); }

Picture Desktop::picture(const Place& place) {
    Picture picture;
    XImage* const image = XGetImage(connection_->x, DefaultRootWindow(connection_->x), place.x, place.y,
                                    static_cast<unsigned>(place.width), static_cast<unsigned>(place.height), AllPlanes, ZPixmap);
    if (image == nullptr) return picture;
    picture.width = place.width;
    picture.height = place.height;
    for (int y = 0; y < place.height; ++y)
        for (int x = 0; x < place.width; ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            for (const int shift : {16, 8, 0}) picture.rgb.push_back(static_cast<std::uint8_t>(pixel >> shift));
        }
    XDestroyImage(image);
    return picture;
}

}  // namespace testhost
