#include "engine/controller_map.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "base/thread_check.h"
#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/own_files.h"

namespace vantoric {

std::string controllerMapPath() {
    return platform::ownPath(std::string("Vantoric_data") + platform::pathSeparator + "Vantoricmidi.cfg");
}

namespace {

int entryOf(std::span<const std::uint8_t> bytes, std::size_t controller) {
    const std::size_t at = 2 * controller;
    return at + 1 < bytes.size() ? bytes[at] << 8 | bytes[at + 1] : ControllerMap::none;
}

void putEntry(std::span<std::uint8_t> bytes, std::size_t controller, int parameter) {
    bytes[2 * controller] = static_cast<std::uint8_t>(parameter >> 8);
    bytes[2 * controller + 1] = static_cast<std::uint8_t>(parameter);
}

}  // namespace

// The mark comes behind the entry, and is taken before the entry is read.
void ControllerMap::set(int controller, int parameter) {
    const auto index = static_cast<std::size_t>(controller);
    const bool storable = parameter >= 0 && parameter < none;
    ccMap_[index].store(storable ? parameter : none, std::memory_order_relaxed);
    isChanged_[index].store(true, std::memory_order_release);
}

void ControllerMap::clear() {
    for (int controller = 0; controller < 128; ++controller) set(controller, none);
}

bool ControllerMap::isChanged() const {
    return std::any_of(isChanged_.begin(), isChanged_.end(),
                       [](const std::atomic<bool>& mark) { return mark.load(std::memory_order_relaxed); });
}

std::array<std::uint8_t, controllerMapBytes> ControllerMap::encode() const {
    std::array<std::uint8_t, controllerMapBytes> bytes{};
    for (int controller = 0; controller < 128; ++controller)
        putEntry(bytes, static_cast<std::size_t>(controller), get(controller));
    return bytes;
}

void ControllerMap::decode(std::span<const std::uint8_t> bytes) {
    for (std::size_t controller = 0; controller < ccMap_.size(); ++controller) {
        isChanged_[controller].store(false, std::memory_order_relaxed);
        ccMap_[controller].store(entryOf(bytes, controller), std::memory_order_relaxed);
    }
}

void ControllerMap::load(const std::string& path) {
    notInsideAnyBlock();
    std::vector<std::uint8_t> bytes;
    platform::readFile(path, bytes);
    decode(bytes);
}

ControllerMap::Changes ControllerMap::takeChanges() {
    Changes changes{};
    for (std::size_t controller = 0; controller < changes.size(); ++controller)
        changes[controller] = isChanged_[controller].exchange(false, std::memory_order_acquire);
    return changes;
}

void ControllerMap::giveBack(const Changes& changes) {
    for (std::size_t controller = 0; controller < changes.size(); ++controller)
        if (changes[controller]) isChanged_[controller].store(true, std::memory_order_relaxed);
}

bool ControllerMap::save(const std::string& path) {
    notInsideAnyBlock();
    static std::mutex oneAtATime;  // instances of a process do not write over each other's changes
    const std::lock_guard guard(oneAtATime);
    std::vector<std::uint8_t> there;
    const platform::FileRead read = platform::tryReadFile(path, there);
    if (read != platform::FileRead::done && read != platform::FileRead::missing) return false;
    const Changes changes = takeChanges();
    auto bytes = encode();
    if (read == platform::FileRead::done) {
        for (std::size_t controller = 0; controller < changes.size(); ++controller)
            if (!changes[controller]) putEntry(bytes, controller, entryOf(there, controller));
        if (std::equal(bytes.begin(), bytes.end(), there.begin(), there.end())) return true;
    }
    const bool isWritten = platform::writeFile(path, bytes.data(), bytes.size());
    if (!isWritten) giveBack(changes);
    return isWritten;
}

}  // namespace vantoric
