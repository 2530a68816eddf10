// What a patch holds of an oscillator, read from the bytes that a host keeps.
#pragma once

#include <cstdint>
#include <vector>

#include "base/engine_state.h"
#include "patch/chunk_layout.h"

namespace testhost {

// As it is saved: of an oscillator that plays no sample there is none.
struct SavedSample {
    std::vector<std::int16_t> samples;
    int loopStart = 0, loopEnd = 0;
    std::uint32_t rate = 0;
    bool operator==(const SavedSample&) const = default;
};

class SavedPatch {
public:
    // A chunk as the plug-in writes it; empty for any other.
    explicit SavedPatch(std::vector<unsigned char> chunk) : chunk_(std::move(chunk)) {}

    // Layers and oscillators count from 0.
    SavedSample sample(int oscillator, int layer = 0) const {
        namespace layout = vantoric::chunk;
        SavedSample result;
        if (chunk_.size() < static_cast<std::size_t>(layout::fixedSize)) return result;
        std::size_t data = layout::sampleDataOffset;
        for (int i = 0; i <= index(oscillator, layer); ++i) {
            const std::uint8_t* header = chunk_.data() + layout::sampleHeaderOffset + i * layout::sampleHeaderBytes;
            const std::size_t length = layout::readLong(header);
            if (i == index(oscillator, layer)) {
                result.samples = words(data, length);
                result.loopStart = static_cast<int>(layout::readLong(header + 4));
                result.loopEnd = static_cast<int>(layout::readLong(header + 8));
                result.rate = layout::readLong(header + 12);
            }
            data += 2 * length;
        }
        return result;
    }

    // The cycle of its custom wave.
    std::vector<std::int16_t> customWave(int oscillator, int layer = 0) const {
        namespace layout = vantoric::chunk;
        const std::size_t at =
            static_cast<std::size_t>(layout::customWaveOffset + index(oscillator, layer) * layout::waveSamples * 2);
        return words(at, layout::waveSamples);
    }

private:
    static int index(int oscillator, int layer) { return layer * vantoric::oscillatorCount + oscillator; }
    std::vector<std::int16_t> words(std::size_t at, std::size_t count) const {
        std::vector<std::int16_t> result;
        for (std::size_t i = 0; i < count && at + 2 * i + 1 < chunk_.size(); ++i)
            result.push_back(static_cast<std::int16_t>(vantoric::chunk::readWord(chunk_.data() + at + 2 * i)));
        return result;
    }

    std::vector<unsigned char> chunk_;
};

}  // namespace testhost
