#include "editor/gui_module.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <cairo/cairo-xcb.h>
#include <dlfcn.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include "editor/lettering.h"
#include "editor/picture.h"
#include "vstgui/lib/platform/linux/cairobitmap.h"
#include "vstgui/lib/platform/linux/linuxfactory.h"
#include "vstgui/lib/platform/platformfactory.h"
#include "vstgui/lib/vstguidebug.h"
#include "vstgui/lib/vstguiinit.h"

namespace vantoric {
namespace {

// The packaged library is a debug build, and a check of its own that fails would end the host.
void noteFailedCheck(const char* file, const char* line, const char* condition, const char* description) {
    std::fprintf(stderr, "Vantoric: a check of the window library failed: %s:%s %s %s\n", file, line, condition,
                 description != nullptr ? description : "");
}

xcb_screen_t* firstScreen(xcb_connection_t* connection) { return xcb_setup_roots_iterator(xcb_get_setup(connection)).data; }

xcb_visualtype_t* rootVisual(xcb_screen_t* screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem != 0; xcb_depth_next(&depth))
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem != 0; xcb_visualtype_next(&visual))
            if (visual.data->visual_id == screen->root_visual) return visual.data;
    return nullptr;
}

// A surface of the display; null without one.
VSTGUI::Cairo::SurfaceHandle displaySurface(xcb_connection_t* connection) {
    xcb_screen_t* screen = firstScreen(connection);
    xcb_visualtype_t* visual = rootVisual(screen);
    if (visual == nullptr) return {};
    return VSTGUI::Cairo::SurfaceHandle(cairo_xcb_surface_create(connection, screen->root, visual, 1, 1));
}

// The library drops its connection at the end but not what cairo keeps of it, which a later connection would trip over.
void finishCairoDevice(xcb_connection_t* connection) {
    VSTGUI::Cairo::SurfaceHandle surface = displaySurface(connection);
    if (!surface) return;
    cairo_device_t* device = cairo_device_reference(cairo_surface_get_device(surface));
    surface.reset();
    cairo_device_finish(device);
    cairo_device_destroy(device);
}

// The library that holds `code` stays in memory when this module goes.
template <class Function>
void keepLoaded(Function* code) {
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(code), &library) != 0 && library.dli_fname != nullptr)
        dlopen(library.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// The text libraries register types by name in one that never leaves, and cannot do so twice: a host that unloads the plug-in
// and loads it again would hang at the first text.
void keepTextLibraries() {
    keepLoaded(pango_font_map_get_type);
    keepLoaded(pango_cairo_font_map_get_type);
    keepLoaded(pango_fc_font_map_get_type);
}

struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

Connection tryDisplay() {
    Connection trial(xcb_connect(nullptr, nullptr));
    if (trial && xcb_connection_has_error(trial.get()) != 0) trial.reset();
    return trial;
}

}  // namespace

GuiModule& GuiModule::shared() {
    static GuiModule module;
    return module;
}

void GuiModule::enter(const std::string& resources) {
    if (users_ != 0) return static_cast<void>(++users_);
    const auto loop = VSTGUI::makeOwned<IdleRunLoop>();
    VSTGUI::setAssertionHandler(noteFailedCheck);
    keepTextLibraries();
    VSTGUI::init(nullptr);  // with the module's handle it would look for a bundle of folders
    VSTGUI::getPlatformFactory().asLinuxFactory()->setResourcePath(resources + "/");
    lettering::useFontsOf(resources + "/Fonts");
    loop_ = loop;
    users_ = 1;
}

void GuiModule::leave() {
    if (--users_ != 0) return;
    forgetSharedPictures();
    lettering::forget();
    if (holdsConnection_) {
        finishCairoDevice(connection());
        VSTGUI::X11::RunLoop::exit();
        holdsConnection_ = false;
    }
    loop_ = nullptr;
    VSTGUI::exit();
}

bool GuiModule::connect() {
    if (holdsConnection_) return true;
    // Kept open until the library has its own: a server whose last client leaves may start anew.
    const Connection trial = tryDisplay();
    if (!trial) return false;
    VSTGUI::X11::RunLoop::init(loop_);
    holdsConnection_ = true;
    return true;
}

xcb_connection_t* GuiModule::connection() const { return VSTGUI::X11::RunLoop::instance().getXcbConnection(); }

VSTGUI::SharedPointer<VSTGUI::IPlatformBitmap> GuiModule::displayBitmap(int width, int height, bool isOpaque) const {
    if (!holdsConnection_) return nullptr;
    const VSTGUI::Cairo::SurfaceHandle display = displaySurface(connection());
    if (!display) return nullptr;
    const cairo_content_t content = isOpaque ? CAIRO_CONTENT_COLOR : CAIRO_CONTENT_COLOR_ALPHA;
    const VSTGUI::Cairo::SurfaceHandle surface(cairo_surface_create_similar(display, content, width, height));
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return nullptr;
    return VSTGUI::makeOwned<VSTGUI::Cairo::Bitmap>(surface);
}

bool GuiModule::isMenuKeyHeld() const {
    if (!holdsConnection_) return false;
    constexpr xcb_keysym_t menuKey = 0xff67;
    const std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)> symbols(xcb_key_symbols_alloc(connection()),
                                                                                      xcb_key_symbols_free);
    if (!symbols) return false;
    const std::unique_ptr<xcb_keycode_t, decltype(&std::free)> codes(xcb_key_symbols_get_keycode(symbols.get(), menuKey),
                                                                     std::free);
    const std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)> keys(
        xcb_query_keymap_reply(connection(), xcb_query_keymap(connection()), nullptr), std::free);
    if (!codes || !keys) return false;
    for (const xcb_keycode_t* code = codes.get(); *code != XCB_NO_SYMBOL; ++code)
        if ((keys->keys[*code / 8] >> (*code % 8) & 1) != 0) return true;
    return false;
}

GuiModule::Size GuiModule::screenSize() {
    const Connection trial = tryDisplay();
    if (!trial) return {};
    const xcb_screen_t* screen = firstScreen(trial.get());
    return {screen->width_in_pixels, screen->height_in_pixels};
}

}  // namespace vantoric
