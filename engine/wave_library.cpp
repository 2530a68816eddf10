#include "engine/wave_library.h"

#include <algorithm>
#include <bit>
#include <new>
#include <vector>

#include "base/thread_check.h"
#include "platform/native_path.h"
#include "sound/kernel_reads.h"

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
    const std::lock_guard touching(touching_);
    isLoaded_.store(false, std::memory_order_release);
    store_.clear();
    files_ = Files();
}

bool WaveLibrary::load(const std::string& folder, Messages& messages, const Flag& stop) {
    WaveLoad result = WaveLoad::loaded;
    {
        const std::lock_guard guard(loading_);
        if (!loaded() && !stop.isSet()) {
            result = loadBanks(folder, stop);
            isLoaded_.store(!stop.isSet(), std::memory_order_release);
        }
    }
    if (result == WaveLoad::outOfMemory) messages.post("Error WtoOs", notEnoughMemory);
    return !stop.isSet();
}

WaveLoad WaveLibrary::loadBanks(const std::string& folder, const Flag& stop) try {
    return store_.loadBanks(platform::nativePath(folder), stop,
                            [this](WaveStore&, int index, const std::filesystem::path& path, bool isSsList) {
                                return mapBank(index, path, isSsList);
                            });
} catch (const std::bad_alloc&) {
    return WaveLoad::outOfMemory;
}

WaveLoad WaveLibrary::mapBank(int index, const std::filesystem::path& path, bool isSsList) {
    using Result = platform::MappedFile::Result;
    const std::shared_ptr<platform::MappedFile> file = platform::MappedFile::open(platform::pathText(path));
    std::array<unsigned char, bankHeaderBytes> bytes;
    if (file == nullptr || !file->read(0, bytes.data(), bytes.size())) return WaveLoad::skipped;
    const auto header = parseBankHeader(bytes);
    if (!header) return WaveLoad::skipped;
    // What can't be read in place is turned or moved as it is read.
    if (std::endian::native != std::endian::little || header->dataOffset % alignof(std::int16_t) != 0)
        return store_.loadWaveFile(index, path, isSsList);
    const std::size_t count = static_cast<std::size_t>(header->frames) * bankFrameBytes;
    switch (file->take(header->dataOffset, count)) {
        case Result::unreadable: return WaveLoad::skipped;
        case Result::outOfMemory: return WaveLoad::outOfMemory;
        case Result::done: break;
    }
    const auto* samples = reinterpret_cast<const std::int16_t*>(file->data());
    const WaveLoad shown = store_.showWave(index, isSsList, samples, header->frames, file);
    if (shown != WaveLoad::loaded) return shown;
    const std::lock_guard guard(touching_);
    files_[isSsList][static_cast<std::size_t>(index)] = file;
    return shown;
}

void WaveLibrary::touch(std::span<const BankPart> parts) {
    notInsideAnyBlock();
    const std::lock_guard guard(touching_);
    for (const BankPart& part : parts) {
        const BankWave* const wave = store_.wave(part.index, part.isSsList);
        if (wave == nullptr) continue;
        platform::MappedFile* const file = files_[part.isSsList][static_cast<std::size_t>(part.index)].get();
        if (file == nullptr) continue;
        if (part.frame == BankPart::allFrames) {
            file->touch(0, static_cast<std::size_t>(wave->frames) * bankFrameBytes);
            continue;
        }
        for (int level = 0; level < mipLevels; ++level) {
            const std::size_t first = cycleOffset(wave->frames, std::min(part.frame, wave->frames - 1), level);
            file->touch(first * sizeof(std::int16_t), cycleSamples * sizeof(std::int16_t));
        }
    }
}

void WaveLibrary::prefetch() {
    std::vector<std::shared_ptr<platform::MappedFile>> files;
    {
        const std::lock_guard guard(touching_);
        for (const auto& list : files_)
            for (const auto& file : list)
                if (file != nullptr) files.push_back(file);
    }
    for (const auto& file : files) file->prefetch();  // without the lock: a slow disk holds up no load
}

}  // namespace vantoric
