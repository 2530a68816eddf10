#include "engine/wave_library.h"

#include "platform/thread.h"

namespace vantoric {

WaveLibrary& WaveLibrary::shared() {
    static WaveLibrary library;
    return library;
}

int WaveLibrary::addInstance() {
    const std::lock_guard guard(counting_);
    return ++instances_;
}

void WaveLibrary::removeInstance() {
    const std::lock_guard guard(counting_);
    if (--instances_ > 0) return;
    store_.clear();
    stage_.store(Stage::empty, std::memory_order_release);
}

bool WaveLibrary::load(const std::string& folder, Messages& messages, const Flag& stop) {
    while (!loaded()) {
        Stage expected = Stage::empty;
        if (stage_.compare_exchange_strong(expected, Stage::loading)) {
            const bool complete = loadAll(folder, messages, stop);
            stage_.store(complete ? Stage::loaded : Stage::empty, std::memory_order_release);
        } else {
            platform::sleepMilliseconds(1);
        }
        if (stop.isSet()) return false;
    }
    return true;
}

bool WaveLibrary::loadAll(const std::string& folder, Messages& messages, const Flag& stop) {
    if (store_.loadBanks(folder, stop) == WaveLoad::outOfMemory) messages.post("Error WtoOs", "Not enought memory.");
    return !stop.isSet();
}

}  // namespace vantoric
