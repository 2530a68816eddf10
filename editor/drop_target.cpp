#include "editor/drop_target.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>

#include <xcb/xcb.h>

#include "editor/gui_module.h"
#include "vstgui/lib/cframe.h"
#include "vstgui/lib/idatapackage.h"
#include "vstgui/lib/platform/iplatformframe.h"

namespace vantoric {
namespace {

// Where the pointer is in the frame's window. The library would tell too, but never frees the display's answer.
VSTGUI::CPoint pointerIn(VSTGUI::IPlatformFrame& frame) {
    const auto window = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(frame.getPlatformRepresentation()));
    xcb_connection_t* const display = GuiModule::shared().connection();
    const std::unique_ptr<xcb_query_pointer_reply_t, void (*)(void*)> pointer(
        xcb_query_pointer_reply(display, xcb_query_pointer(display, window), nullptr), std::free);
    return pointer ? VSTGUI::CPoint(pointer->win_x, pointer->win_y) : VSTGUI::CPoint();
}

std::string decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCoded = text[i] == '%' && i + 2 < text.size() &&
                             std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
                             std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0;
        if (isCoded) {
            result += static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace

std::string pathOfDrop(const std::string& text) {
    constexpr std::string_view scheme = "file://";
    if (text.starts_with(scheme)) {
        const std::size_t slash = text.find('/', scheme.size());  // past a host's name
        return slash == std::string::npos ? "" : decoded(text.substr(slash));
    }
    return text.starts_with('/') ? text : "";
}

DropContainer::DropContainer(const VSTGUI::CRect& size) : CViewContainer(size) {}

VSTGUI::SharedPointer<VSTGUI::IDropTarget> DropContainer::getDropTarget() {
    return VSTGUI::shared<VSTGUI::IDropTarget>(static_cast<VSTGUI::IDropTarget*>(&target_));
}

bool DropContainer::Target::onDrop(VSTGUI::DragEventData data) {
    std::vector<std::string> paths;
    for (std::uint32_t i = 0; i < data.drag->getCount(); ++i) {
        const void* buffer = nullptr;
        VSTGUI::IDataPackage::Type type{};
        const std::uint32_t size = data.drag->getData(i, buffer, type);
        if (buffer == nullptr) continue;
        std::istringstream lines(std::string(static_cast<const char*>(buffer), size));
        for (std::string line; std::getline(lines, line);) {
            while (!line.empty() && (line.back() == '\r' || line.back() == '\0')) line.pop_back();
            if (const std::string path = pathOfDrop(line); !path.empty()) paths.push_back(path);
        }
    }
    VSTGUI::CFrame* const frame = container_.getFrame();
    if (paths.empty() || frame == nullptr || !container_.dropped_) return false;
    VSTGUI::CPoint where = pointerIn(*frame->getPlatformFrame());
    frame->getTransform().inverse().transform(where);
    container_.dropped_(paths, where);
    return true;
}

}  // namespace vantoric
