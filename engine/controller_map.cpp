#include "engine/controller_map.h"

#include <vector>

#include "platform/files.h"
#include "platform/module_folder.h"

namespace vantoric {

std::string controllerMapPath() { return platform::bankFolder() + "Vantoricmidi.cfg"; }

void ControllerMap::set(int controller, int parameter) {
    const bool storable = parameter >= 0 && parameter < none;
    ccMap_[controller].store(storable ? parameter : none, std::memory_order_relaxed);
}

void ControllerMap::clear() {
    for (auto& entry : ccMap_) entry.store(none, std::memory_order_relaxed);
}

std::array<std::uint8_t, controllerMapBytes> ControllerMap::encode() const {
    std::array<std::uint8_t, controllerMapBytes> bytes{};
    for (int controller = 0; controller < 128; ++controller) {
        const int parameter = get(controller);
        bytes[2 * controller] = static_cast<std::uint8_t>(parameter >> 8);
        bytes[2 * controller + 1] = static_cast<std::uint8_t>(parameter);
    }
    return bytes;
}

void ControllerMap::decode(std::span<const std::uint8_t> bytes) {
    for (std::size_t controller = 0; controller < ccMap_.size(); ++controller) {
        const std::size_t at = 2 * controller;
        set(static_cast<int>(controller), at + 1 < bytes.size() ? bytes[at] << 8 | bytes[at + 1] : none);
    }
}

void ControllerMap::load(const std::string& path) {
    std::vector<std::uint8_t> bytes;
    platform::readFile(path, bytes);
    decode(bytes);
}

bool ControllerMap::save(const std::string& path) const {
    const auto bytes = encode();
    return platform::writeFile(path, bytes.data(), bytes.size());
}

}  // namespace vantoric
