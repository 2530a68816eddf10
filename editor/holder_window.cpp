#include "editor/holder_window.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

#include "editor/gui_module.h"

namespace vantoric {
namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply) {
    return std::unique_ptr<Reply, Free>(reply);
}

xcb_connection_t* display() { return GuiModule::shared().connection(); }

}  // namespace

HolderWindow::HolderWindow(std::uint32_t parent, int width, int height) : parent_(parent) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display())).data;
    id_ = xcb_generate_id(display());
    const std::uint32_t values[] = {screen->black_pixel, 0, screen->default_colormap};
    xcb_create_window(display(), screen->root_depth, id_, parent, 0, 0, static_cast<std::uint16_t>(std::max(width, 1)),
                      static_cast<std::uint16_t>(std::max(height, 1)), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values);
    markEmbedded(id_);
    markSize(width, height);
    xcb_map_window(display(), id_);
    xcb_flush(display());
}

HolderWindow::~HolderWindow() {
    xcb_destroy_window(display(), id_);
    xcb_flush(display());
}

void HolderWindow::resize(int width, int height) {
    const std::uint32_t values[] = {static_cast<std::uint32_t>(std::max(width, 1)),
                                    static_cast<std::uint32_t>(std::max(height, 1))};
    markSize(width, height);
    xcb_configure_window(display(), id_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    xcb_flush(display());
}

void HolderWindow::show(bool isShown) {
    isShown ? xcb_map_window(display(), id_) : xcb_unmap_window(display(), id_);
    xcb_flush(display());
}

void HolderWindow::moveTo(int x, int y) {
    const std::uint32_t values[] = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
    xcb_configure_window(display(), id_, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    xcb_flush(display());
}

void HolderWindow::adopt(std::uint32_t inner) {
    inner_ = inner;
    hasKeys_ = false;
    markEmbedded(inner);
    setEventMask(false);
    xcb_map_window(display(), inner);
    xcb_flush(display());
}

void HolderWindow::drop() {
    if (inner_ != 0) xcb_destroy_window(display(), inner_);
    inner_ = 0;
    xcb_flush(display());
}

// Version 1, mapped: some hosts show a child with nothing less.
void HolderWindow::markEmbedded(std::uint32_t window) {
    constexpr char name[] = "_XEMBED_INFO";
    const auto atom = owned(xcb_intern_atom_reply(display(), xcb_intern_atom(display(), 0, sizeof name - 1, name), nullptr));
    if (!atom) return;
    const std::uint32_t info[] = {1, 1};
    xcb_change_property(display(), XCB_PROP_MODE_REPLACE, window, atom->atom, atom->atom, 32, 2, info);
}

// The one size that it has, as a window of its own would tell it: some hosts read the least size of the frame there, and cut
// the window off without.
void HolderWindow::markSize(int width, int height) {
    enum Flag : std::uint32_t { minimum = 1u << 4, maximum = 1u << 5, base = 1u << 8 };
    enum Word { flags, minimumSize = 5, maximumSize = 7, baseSize = 15, words = 18 };
    std::array<std::uint32_t, words> hints{};
    hints[flags] = minimum | maximum | base;
    for (const int place : {minimumSize, maximumSize, baseSize}) {
        hints[static_cast<std::size_t>(place)] = static_cast<std::uint32_t>(std::max(width, 1));
        hints[static_cast<std::size_t>(place + 1)] = static_cast<std::uint32_t>(std::max(height, 1));
    }
    xcb_change_property(display(), XCB_PROP_MODE_REPLACE, id_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, words,
                        hints.data());
}

// Motion as it comes: the library would ask for hints, whose place is that of an earlier moment.
void HolderWindow::setEventMask(bool withKeys) {
    std::uint32_t mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_ENTER_WINDOW |
                         XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_EXPOSURE |
                         XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE;
    if (withKeys) mask |= XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    xcb_change_window_attributes(display(), inner_, XCB_CW_EVENT_MASK, &mask);
}

bool HolderWindow::areModifiersHeld() const {
    const auto pointer = owned(xcb_query_pointer_reply(display(), xcb_query_pointer(display(), inner_), nullptr));
    return pointer && (pointer->mask & (XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1)) != 0;
}

void HolderWindow::routeKeys(bool wantsKeys) {
    // A modifier that is let go of elsewhere would stay down in the library's idea of the keyboard.
    if (hasKeys_ && !wantsKeys && areModifiersHeld()) wantsKeys = true;
    if (wantsKeys != hasKeys_) {
        hasKeys_ = wantsKeys;
        setEventMask(wantsKeys);
        if (wantsKeys) xcb_set_input_focus(display(), XCB_INPUT_FOCUS_PARENT, inner_, XCB_CURRENT_TIME);
    }
    if (!wantsKeys) {  // every click takes the focus
        const auto focus = owned(xcb_get_input_focus_reply(display(), xcb_get_input_focus(display()), nullptr));
        if (focus && focus->focus == inner_) xcb_set_input_focus(display(), XCB_INPUT_FOCUS_PARENT, parent_, XCB_CURRENT_TIME);
    }
    xcb_flush(display());
}

}  // namespace vantoric
