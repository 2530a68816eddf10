#include "layer_picture.h"

#include <cmath>
#include <filesystem>
#include <fstream>

#include "editor/pen.h"
#include "vstgui/lib/cbitmap.h"
#include "vstgui/lib/cframe.h"
#include "vstgui/lib/cgraphicstransform.h"
#include "vstgui/lib/coffscreencontext.h"
#include "vstgui/lib/platform/iplatformbitmap.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {

using VSTGUI::CPoint;
using VSTGUI::CRect;

namespace {

int pixelsUnlike(VSTGUI::IPlatformBitmap& bitmap, const Color& ground) {
    const auto access = bitmap.lockPixels(true);
    int count = 0;
    for (int y = 0; y < static_cast<int>(bitmap.getSize().y); ++y) {
        const std::uint8_t* row = access->getAddress() + static_cast<std::size_t>(y) * access->getBytesPerRow();
        for (int x = 0; x < static_cast<int>(bitmap.getSize().x); ++x, row += 4)
            if (row[0] != ground.blue || row[1] != ground.green || row[2] != ground.red) ++count;
    }
    return count;
}

}  // namespace

WithGui::WithGui() { GuiModule::shared().enter("."); }

WithGui::~WithGui() { GuiModule::shared().leave(); }

int keepPicture(const std::string& name, VSTGUI::CView* view, double width, double height, double zoom) {
    const CRect area(0, 0, width, height);
    auto* frame = new VSTGUI::CFrame(area, nullptr);
    frame->setBackgroundColor(style::window);
    frame->addView(view);
    frame->attached(frame);
    frame->setZoom(zoom);
    const CPoint pixels(width * zoom, height * zoom);
    const auto context = VSTGUI::COffscreenContext::create(pixels);
    context->beginDraw();
    frame->drawRect(context, CRect(CPoint(0, 0), pixels));
    context->endDraw();
    const auto bitmap = context->getBitmap()->getPlatformBitmap();
    const auto png = VSTGUI::getPlatformFactory().createBitmapMemoryPNGRepresentation(bitmap);
    std::filesystem::create_directories(VANTORIC_PICTURES);
    std::ofstream file(std::string(VANTORIC_PICTURES) + "/" + name + ".png", std::ios::binary);
    file.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    const int drawn = pixelsUnlike(*bitmap, style::window);
    frame->forget();
    return drawn;
}

std::vector<std::uint32_t> pixelsOf(double zoom, double width, double height,
                                    const std::function<void(VSTGUI::CDrawContext&)>& draw) {
    const auto context = VSTGUI::COffscreenContext::create(CPoint(std::round(width * zoom), std::round(height * zoom)));
    context->beginDraw();
    {
        const VSTGUI::CDrawContext::Transform scaled(*context, VSTGUI::CGraphicsTransform().scale(zoom, zoom));
        context->setClipRect(CRect(0, 0, width, height));
        Pen(*context).rect(0, 0, width, height, style::window);
        draw(*context);
    }
    context->endDraw();
    const auto bitmap = context->getBitmap()->getPlatformBitmap();
    const auto access = bitmap->lockPixels(true);
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < static_cast<int>(bitmap->getSize().y); ++y) {
        const auto* row =
            reinterpret_cast<const std::uint32_t*>(access->getAddress() + static_cast<std::size_t>(y) * access->getBytesPerRow());
        pixels.insert(pixels.end(), row, row + static_cast<int>(bitmap->getSize().x));
    }
    return pixels;
}

VSTGUI::KeyboardEvent typedKey(char32_t character) {
    VSTGUI::KeyboardEvent event;
    event.type = VSTGUI::EventType::KeyDown;
    event.character = character;
    return event;
}

VSTGUI::KeyboardEvent virtualKey(VSTGUI::VirtualKey key, bool withShift) {
    VSTGUI::KeyboardEvent event;
    event.type = VSTGUI::EventType::KeyDown;
    event.virt = key;
    if (withShift) event.modifiers.add(VSTGUI::ModifierKey::Shift);
    return event;
}

void press(LayerView& view, VSTGUI::VirtualKey key, bool withShift) {
    auto event = virtualKey(key, withShift);
    view.onKey(event);
}

void type(LayerView& view, const std::string& text) {
    for (const char c : text) {
        auto event = c == ' ' ? virtualKey(VSTGUI::VirtualKey::Space) : typedKey(static_cast<char32_t>(c));
        view.onKey(event);
    }
}

void movePointer(VSTGUI::CView& view, CPoint where) {
    VSTGUI::MouseMoveEvent move(where, VSTGUI::MouseButton::None);
    view.onMouseMoveEvent(move);
}

void click(VSTGUI::CView& view, CPoint where) {
    const auto alive = VSTGUI::shared(&view);
    movePointer(view, where);
    VSTGUI::MouseDownEvent down(where, VSTGUI::MouseButton::Left);
    view.onMouseDownEvent(down);
    VSTGUI::MouseUpEvent up(where, VSTGUI::MouseButton::Left);
    view.onMouseUpEvent(up);
}

void turnWheel(VSTGUI::CView& view, CPoint where, double up) {
    VSTGUI::MouseWheelEvent wheel;
    wheel.mousePosition = where;
    wheel.deltaY = up;
    view.onMouseWheelEvent(wheel);
}

}  // namespace vantoric
