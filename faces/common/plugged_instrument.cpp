#include "faces/common/plugged_instrument.h"

#include <limits>

#include "library/show_messages.h"
#include "patch/chunk_layout.h"

namespace vantoric {

namespace {

constexpr int mostForWaves = 2000;  // milliseconds

}  // namespace

PluggedInstrument::PluggedInstrument(HostPort& port, platform::Dialogs& dialogs, Telling telling)
    : dialogs_(dialogs), telling_(telling) {
    instrument_.setHostPort(&port);
    programs_ = std::make_unique<ProgramLoader>(instrument_, dialogs_);
    tell();
}

PluggedInstrument::~PluggedInstrument() {
    programs_.reset();
    instrument_.setHostPort(nullptr);
}

void PluggedInstrument::showMessages() { vantoric::showMessages(instrument_.messages(), dialogs_); }

ChunkBytes PluggedInstrument::patch() {
    ChunkBytes bytes = instrument_.patchChunk().getChunk();
    tell();
    return bytes;
}

bool PluggedInstrument::setPatch(const void* bytes, std::size_t size) {
    if (bytes == nullptr || size > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return false;
    const int isLoaded =
        instrument_.patchChunk().setChunk(static_cast<const std::uint8_t*>(bytes), static_cast<std::int32_t>(size));
    tell();
    return isLoaded != 0;
}

bool PluggedInstrument::restore(const void* bytes, std::size_t size) {
    if (bytes == nullptr || size < chunk::fixedSize) return false;
    const Outcome sound = chunk::check({static_cast<const std::uint8_t*>(bytes), size});
    if (!sound) {
        if (!sound.text.empty()) instrument_.messages().post(sound.title, sound.text);
        tell();
        return false;
    }
    if (!setPatch(bytes, size)) return false;
    // Formats that do not say when they render faster than time would hear waves that are not there yet.
    instrument_.waveWorker().waitForWaves(mostForWaves);
    return true;
}

}  // namespace vantoric
