#include "faces/standalone/child_frame.h"

#include <utility>

#include "editor/gui_module.h"
#include "editor/style.h"
#include "vstgui/lib/platform/iplatformframe.h"

namespace vantoric::standalone {

using VSTGUI::CRect;

VSTGUI::CFrame* ChildFrame::open(std::uintptr_t parent, const Place& place, double zoom) {
    close();
    holder_ = std::make_unique<HolderWindow>(static_cast<std::uint32_t>(parent), place.width, place.height);
    holder_->moveTo(place.x, place.y);
    frame = new VSTGUI::CFrame(CRect(0, 0, place.width / zoom, place.height / zoom), this);
    frame->setBackgroundColor(style::window);
    VSTGUI::X11::FrameConfig config;
    config.runLoop = GuiModule::shared().loop();
    auto* const host = reinterpret_cast<void*>(static_cast<std::uintptr_t>(holder_->id()));
    if (!frame->open(host, VSTGUI::PlatformType::kX11EmbedWindowID, &config)) {
        frame->forget();
        frame = nullptr;
        holder_.reset();
        return nullptr;
    }
    const auto inner = reinterpret_cast<std::uintptr_t>(frame->getPlatformFrame()->getPlatformRepresentation());
    holder_->adopt(static_cast<std::uint32_t>(inner));
    frame->setZoom(zoom);
    return frame;
}

void ChildFrame::close() {
    if (frame == nullptr) return;
    VSTGUI::CFrame* const closing = std::exchange(frame, nullptr);
    holder_.reset();
    closing->close();
}

void ChildFrame::idle() {
    if (frame == nullptr) return;
    frame->idle();
    holder_->routeKeys(false);
}

}  // namespace vantoric::standalone
