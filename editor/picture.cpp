#include "editor/picture.h"

#include <cmath>
#include <unordered_map>

#include "editor/gui_module.h"
#include "vstgui/lib/cgraphicstransform.h"
#include "vstgui/lib/coffscreencontext.h"
#include "vstgui/lib/platform/iplatformbitmap.h"
#include "vstgui/lib/platform/iplatformgraphicsdevice.h"
#include "vstgui/lib/platform/platformfactory.h"

namespace vantoric {
namespace {

using VSTGUI::CGraphicsTransform;
using VSTGUI::CPoint;
using VSTGUI::CRect;

std::unordered_map<std::string, Picture> sharedPictures;  // on the windows' one thread
std::size_t sharedBytes = 0;
constexpr std::size_t mostSharedBytes = 8 << 20;

std::size_t keptBytes = 0;
constexpr std::size_t mostKeptBytes = 32 << 20;  // all of a window at 300 % is 28 MB

constexpr int parts = 64;  // of a pixel by which places are told apart
int partOfPixel(double position) { return static_cast<int>(std::lround((position - std::floor(position)) * parts)); }

}  // namespace

std::size_t Picture::bytes() const { return bitmap_ ? static_cast<std::size_t>(pixels_.width * pixels_.height) * 4 : 0; }

void Picture::show(Pen& pen, const CRect& area, const Draw& draw) {
    const double scale = pen.scale();
    Pixels pixels;
    pixels.left = std::floor(area.left * scale);
    pixels.top = std::floor(area.top * scale);
    pixels.width = std::ceil(area.right * scale) - pixels.left;
    pixels.height = std::ceil(area.bottom * scale) - pixels.top;
    if (pixels.width < 1 || pixels.height < 1) return;
    if (!bitmap_ || scale != scale_ || pixels.width != pixels_.width || pixels.height != pixels_.height) {
        scale_ = scale;
        pixels_ = pixels;
        render(draw);
    }
    if (!bitmap_) return draw(pen);
    // The same number of pixels at whole pixels: nothing is interpolated.
    const CRect place(CPoint(pixels.left / scale, pixels.top / scale), CPoint(pixels.width / scale, pixels.height / scale));
    bitmap_->draw(&pen.context(), place);
}

void Picture::render(const Draw& draw) {
    const auto& factory = VSTGUI::getPlatformFactory();
    const CPoint size(pixels_.width, pixels_.height);
    bitmap_ = nullptr;
    VSTGUI::PlatformBitmapPtr bitmap =
        GuiModule::shared().displayBitmap(static_cast<int>(pixels_.width), static_cast<int>(pixels_.height), isOpaque_);
    if (!bitmap) bitmap = factory.createBitmap(size);
    const auto device = factory.getGraphicsDeviceFactory().getDeviceForScreen(VSTGUI::DefaultScreenIdentifier);
    const auto deviceContext = bitmap && device ? device->createBitmapContext(bitmap) : nullptr;
    if (!deviceContext) return;
    const auto offscreen = VSTGUI::makeOwned<VSTGUI::COffscreenContext>(deviceContext, CRect(CPoint(0, 0), size), bitmap);
    offscreen->beginDraw();
    {
        const VSTGUI::CDrawContext::Transform toPixels(
            *offscreen, CGraphicsTransform().scale(scale_, scale_).translate(-pixels_.left, -pixels_.top));
        offscreen->setClipRect(
            CRect(CPoint(pixels_.left / scale_, pixels_.top / scale_), CPoint(pixels_.width / scale_, pixels_.height / scale_)));
        Pen pen(*offscreen);
        draw(pen);
    }
    offscreen->endDraw();
    bitmap_ = offscreen->getBitmap();
    if (bitmap_) bitmap_->getPlatformBitmap()->setScaleFactor(scale_);
}

void KeptDrawing::show(Pen& pen, const CRect& area, const Picture::Draw& draw) {
    const Pen::WholePixels clip(pen);
    if (drawnScale_ != pen.scale()) {
        forget();
        drawnScale_ = pen.scale();
        return draw(pen);
    }
    if (picture_.bytes() == 0 && keptBytes > mostKeptBytes) return draw(pen);
    keptBytes -= picture_.bytes();
    picture_.show(pen, area, draw);
    keptBytes += picture_.bytes();
}

void KeptDrawing::forget() {
    keptBytes -= picture_.bytes();
    picture_.forget();
    drawnScale_ = 0;
}

void showShared(Pen& pen, const std::string& key, const CRect& area, const Picture::Draw& draw) {
    const double x = area.left * pen.scale(), y = area.top * pen.scale();
    const std::string whole =
        key + ' ' + std::to_string(pen.scale()) + ' ' + std::to_string(partOfPixel(x)) + ' ' + std::to_string(partOfPixel(y));
    Picture& picture = sharedPictures[whole];
    sharedBytes -= picture.bytes();
    picture.show(pen, area, draw);
    sharedBytes += picture.bytes();
    if (sharedBytes > mostSharedBytes) forgetSharedPictures();
}

void forgetSharedPictures() {
    sharedPictures.clear();
    sharedBytes = 0;
}

}  // namespace vantoric
