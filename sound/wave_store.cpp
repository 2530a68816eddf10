#include "sound/wave_store.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "sound/kernel_reads.h"

namespace vantoric {

const std::array<WaveFile, wtWaveCount> wtWaveFiles = {{
    {"VA Tri Saw", "VA_Triangle_Saw"},
    {"VA Square Imp", "VA_Square_Impulse"},
    {"FM Waveforms", "FM_Waveforms"},
    {"PD Sine Saw", "PD_Sine_Saw"},
    {"PD Sine Square", "PD_Sine_Square"},
    {"PD Parabolids", "PD_Parabol_Double"},
    {"PD RES 1", "PD_RES_Asym"},
    {"PD RES 2", "PD_RES_Sym"},
    {"RES Filter", "RES_Analogfilter"},
    {"RES Laser", "RES_Laser"},
    {"SNC Saw", "SNC_Saw"},
    {"SNC Square", "SNC_Square"},
    {"WT Sine", "WT_Sine"},
    {"WT NSquare", "WT_NSquare"},
    {"WT Organ", "WT_Organ"},
    {"WT Bell", "WT_Bell"},
    {"WT Combssaw", "WT_Combsaw"},
    {"FX Bitnoise", "FX_Bitnoise"},
    {"EL DoubleSaw", "EL_DoubleSaw"},
    {"EL SquareSaw", "EL_SquareSaw"},
    {"EL Alpha1", "EL_Alpha1"},
    {"EL Alpha2", "EL_Alpha2"},
    {"EL NoisySquare", "NO_NoisySquare"},
    {"EL NoisySaw", "NO_NoisySaw"},
    {"FM SawAdd", "FM_SawAdd"},
    {"FM SquareAdd", "FM_SquareAdd"},
    {"FM ImpulseAdd", "FM_ImpulseAdd"},
    {"FM PrimePairs", "FM_PrimePairs"},
    {"WT Waves1", "WT_Waves1"},
    {"WT Waves2", "WT_Waves2"},
    {"WT Waves3", "WT_Waves3"},
    {"WT Waves4", "WT_Waves4"},
    {"WT Waves5", "WT_Waves5"},
    {"WT Waves6", "WT_Waves6"},
    {"WT Waves7", "WT_Waves7"},
    {"WT Waves8", "WT_Waves8"},
}};

const std::array<WaveFile, ssWaveFileCount> ssWaveFiles = {{
    {"Saw 3x", "SS_3Saws"},
    {"Multinoise", "SS_NoisySaws"},
    {"Pulse 6x", "SS_6Pulses"},
}};

const std::array<AnalogRow, analogRowCount> analogRows = {{
    {"Saw", vaTriangleSaw, 63, 80, 1},
    {"Square", vaSquareImpulse, 0, 80, 1},
    {"Tri", vaTriangleSaw, 0, 24, 1},
    {"Sine", wtSine, 0, 18, 1},
    {"Half Sine", fmWaveforms, 1, 24, 1},
    {"Comb", wtCombsaw, 1, 80, 1},
    {"Pulse Invert", vaSquareImpulse, 64, 80, 1},
    {"Pulse PW", vaTriangleSaw, 63, 60, 1},
    {"Pulse 1/2", vaSquareImpulse, 0, 80, -1},
    {"Pulse 2/5", vaSquareImpulse, 25, 80, -1},
    {"Pulse 1/3", vaSquareImpulse, 43, 80, -1},
    {"Pulse 1/4", vaSquareImpulse, 64, 80, -1},
    {"Pulse 1/5", vaSquareImpulse, 77, 80, -1},
    {"Pulse 1/6", vaSquareImpulse, 85, 80, -1},
    {"Pulse 1/8", vaSquareImpulse, 96, 80, -1},
    {"Saw Invert", vaTriangleSaw, 63, 80, -1},
    {"Sine Flip", fmWaveforms, 2, 24, 1},
    {"Comb 2", fxBitnoise, 8, 80, 1},
    {"Comb 3", elAlpha2, 64, 80, 1},
    {"Impulse", wtWaves8, 0, 100, 1},
}};

namespace {

std::uint32_t littleEndian(const unsigned char* bytes, int count) {
    std::uint32_t value = 0;
    for (int k = count - 1; k >= 0; --k) value = value << 8 | bytes[k];
    return value;
}

// Bank samples are little-endian; on other machines they are turned here.
void toNativeOrder(std::int16_t* samples, std::size_t count) {
    if constexpr (std::endian::native == std::endian::big)
        for (std::size_t i = 0; i < count; ++i) {
            const auto word = static_cast<std::uint16_t>(samples[i]);
            samples[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(word << 8 | word >> 8));
        }
}

// Joined as texts: libstdc++'s joining of paths leaves a broken one behind where memory ends in it.
std::filesystem::path placeIn(const std::filesystem::path& folder, std::string_view name) {
    auto place = folder.native();
    if (!place.empty() && place.back() != '/') place += '/';
    place.append(name.begin(), name.end());
    return place;
}

std::size_t sampleCount(int frames) { return static_cast<std::size_t>(frames) * mipLevels * cycleSamples; }

}  // namespace

std::optional<BankHeader> parseBankHeader(const std::array<unsigned char, bankHeaderBytes>& header) {
    const std::uint64_t dataOffset = std::uint64_t{littleEndian(&header[16], 4)} + 28;
    const std::uint32_t dataBytes = littleEndian(&header[40], 4);
    if (littleEndian(&header[20], 2) != 1 || header[22] != 1 || header[34] != 16) return std::nullopt;
    if (dataBytes == 0 || dataBytes % bankFrameBytes != 0) return std::nullopt;
    return BankHeader{dataOffset, static_cast<int>(dataBytes / bankFrameBytes)};
}

WaveLoad WaveStore::loadWaveFile(int index, const std::filesystem::path& path, bool isSsList) {
    std::error_code error;
    if (index < 0 || index >= listSize || !std::filesystem::is_regular_file(path, error)) return WaveLoad::skipped;
    std::ifstream file(path, std::ios::binary);
    std::array<unsigned char, bankHeaderBytes> bytes;
    if (!file.read(reinterpret_cast<char*>(bytes.data()), bankHeaderBytes)) return WaveLoad::skipped;
    const auto header = parseBankHeader(bytes);
    if (!header) return WaveLoad::skipped;
    // A file that is shorter than it says costs no memory.
    const std::uint64_t dataBytes = sampleCount(header->frames) * sizeof(std::int16_t);
    const auto size = std::filesystem::file_size(path, error);
    if (error || size < header->dataOffset + dataBytes) return WaveLoad::skipped;
    std::unique_ptr<std::int16_t[]> buffer(new (std::nothrow) std::int16_t[sampleCount(header->frames)]);
    if (buffer == nullptr) return WaveLoad::outOfMemory;
    file.seekg(static_cast<std::streamoff>(header->dataOffset));
    if (!file.read(reinterpret_cast<char*>(buffer.get()), static_cast<std::streamsize>(dataBytes))) return WaveLoad::skipped;
    toNativeOrder(buffer.get(), sampleCount(header->frames));
    return publish(index, isSsList, std::move(buffer), header->frames);
}

WaveLoad WaveStore::loadBanks(const std::filesystem::path& dataFolder, const Flag& stop, const BankReader& read) {
    WaveLoad result = WaveLoad::loaded;
    const auto load = [&](const WaveFile& file, int index, bool isSsList) {
        if (stop.isSet()) return;
        if (read(*this, index, placeIn(dataFolder, std::string(file.stem) + ".va"), isSsList) == WaveLoad::outOfMemory)
            result = WaveLoad::outOfMemory;
    };
    for (int i = 0; i < wtWaveCount; ++i) load(wtWaveFiles[i], i, false);
    for (int i = 0; i < ssWaveFileCount; ++i) load(ssWaveFiles[i], i, true);
    buildWaveRows();
    return result;
}

WaveLoad WaveStore::setWave(int index, bool isSsList, const std::int16_t* samples, int frames) {
    if (index < 0 || index >= listSize || frames < 1) return WaveLoad::skipped;
    std::unique_ptr<std::int16_t[]> buffer(new (std::nothrow) std::int16_t[sampleCount(frames)]);
    if (buffer == nullptr) return WaveLoad::outOfMemory;
    std::copy_n(samples, sampleCount(frames), buffer.get());
    return publish(index, isSsList, std::move(buffer), frames);
}

WaveLoad WaveStore::publish(int index, bool isSsList, std::unique_ptr<std::int16_t[]> samples, int frames) try {
    const std::int16_t* const first = samples.get();
    return showWave(index, isSsList, first, frames, std::shared_ptr<std::int16_t[]>(std::move(samples)));
} catch (const std::bad_alloc&) {
    return WaveLoad::outOfMemory;
}

// A wave that was there before stays allocated, since a voice may be reading it.
WaveLoad WaveStore::showWave(int index, bool isSsList, const std::int16_t* samples, int frames,
                             std::shared_ptr<const void> keeper) try {
    if (index < 0 || index >= listSize || samples == nullptr || frames < 1) return WaveLoad::skipped;
    waves_.push_back(std::make_unique<BankWave>(BankWave{frames, samples, std::move(keeper)}));
    entries_[isSsList][index].store(waves_.back().get(), std::memory_order_release);
    return WaveLoad::loaded;
} catch (const std::bad_alloc&) {
    return WaveLoad::outOfMemory;
}

void WaveStore::buildWaveRows() {
    for (int row = 0; row < analogRowCount; ++row)
        for (int level = 0; level < mipLevels; ++level)
            rows_[row][level].store(cycle(analogRows[row].wave, analogRows[row].frame, level), std::memory_order_release);
}

const std::int16_t* WaveStore::cycle(int index, int frame, int level) const {
    const BankWave* found = wave(index);
    if (found == nullptr) return nullptr;
    return found->samples + cycleOffset(found->frames, std::min(frame, found->frames - 1), level);
}

void WaveStore::clear() {
    for (auto& list : entries_)
        for (auto& entry : list) entry.store(nullptr, std::memory_order_release);
    for (auto& row : rows_)
        for (auto& cycle : row) cycle.store(nullptr, std::memory_order_release);
    waves_.clear();
}

}  // namespace vantoric
