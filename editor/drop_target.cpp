#include "editor/drop_target.h"

#include <cctype>
#include <cstdlib>
#include <sstream>

#include "vstgui/lib/cframe.h"
#include "vstgui/lib/idatapackage.h"
#include "vstgui/lib/platform/iplatformframe.h"

namespace vantoric {
namespace {

std::string decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCoded = text[i] == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
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
    VSTGUI::CPoint where;
    frame->getPlatformFrame()->getCurrentMousePosition(where);
    frame->getTransform().inverse().transform(where);
    container_.dropped_(paths, where);
    return true;
}

}  // namespace vantoric
