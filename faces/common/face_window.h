// The instrument's window as every format opens it, without a word of the window library.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "faces/common/plugged_instrument.h"

namespace vantoric {

// On the host's one thread for windows. Nothing thrown leaves it: a window that cannot be made is none.
class FaceWindow {
public:
    struct Size {
        int width, height;
    };
    // A key of the host's own window: a character, or the number of a key without one (those of VST, which the window
    // library has as well).
    struct Key {
        char32_t character = 0;
        int number = 0;
        bool shift = false, alt = false, control = false;
    };

    virtual ~FaceWindow() = default;
    // In pixels, for the size in force; also before it is open.
    virtual Size size() const = 0;
    // Builds it in the host's window: an X11 id. One that is open moves there. False if that is no window, or there is no
    // display.
    virtual bool open(std::uintptr_t parent) = 0;
    virtual void close() = 0;
    // Takes an open window off the screen, or puts it back.
    virtual void show(bool isShown) = 0;
    virtual bool isOpen() const = 0;
    // The X11 id of its own window inside the host's; 0 while it is closed.
    virtual std::uintptr_t ownWindow() const = 0;
    // The host's regular call, some twenty times a second or more. The window lives on nothing else.
    virtual void idle() = 0;
    // True if the key was used.
    virtual bool onKeyDown(const Key& key) = 0;
};

// How often a window wants its idle call, in milliseconds.
inline constexpr int idlePeriod = 30;

// The window of an instrument, which must outlive it; null where this build has none or the user wants none. The host's
// product string decides some rules of size.
std::unique_ptr<FaceWindow> makeFaceWindow(PluggedInstrument& plugged, const std::string& hostProduct);

}  // namespace vantoric
