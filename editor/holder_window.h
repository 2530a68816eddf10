// The window system's side of an open window: a plain window of our own between the host's and the library's, keys, and what
// the library leaves to be mended from outside.
#pragma once

#include <cstdint>

namespace vantoric {

// On the thread of the window, while the GUI module is connected. All calls are harmless on windows that are gone. A host may
// keep its id: it stays the same for as long as the window is open, however often the library's inside is made anew.
class HolderWindow {
public:
    // Makes and shows the window inside the host's. The library's own window takes its depth from its parent but draws with
    // the screen's visual: inside a host window of another depth nothing would appear.
    HolderWindow(std::uint32_t parent, int width, int height);
    // Destroys it, and with it the library's window inside, which would linger in the host's.
    ~HolderWindow();
    HolderWindow(const HolderWindow&) = delete;
    HolderWindow& operator=(const HolderWindow&) = delete;

    std::uint32_t id() const { return id_; }
    void resize(int width, int height);
    void show(bool isShown);
    // To a place within the host's window, in pixels.
    void moveTo(int x, int y);

    // Takes over the library's window once it is open: shows it as embedded, and lets every motion through.
    void adopt(std::uint32_t inner);
    // Destroys the library's window, before the library closes it: there it would linger.
    void drop();

    // Gives the keys to the window or back to the host, which needs its space bar. To be called in idle time.
    void routeKeys(bool wantsKeys);

private:
    void markEmbedded(std::uint32_t window);
    void markSize(int width, int height);
    void setEventMask(bool withKeys);
    bool areModifiersHeld() const;

    std::uint32_t parent_, id_ = 0, inner_ = 0;
    bool hasKeys_ = false;
};

}  // namespace vantoric
