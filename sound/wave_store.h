// The bank of band-limited waves that all instances of a process share, and the files it comes from.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "base/flag.h"
#include "sound/oscillator_state.h"

namespace vantoric {

// A wave of the WTWave or the SSWave list: its label and the stem of its bank file.
struct WaveFile {
    std::string_view label, stem;
};
inline constexpr int wtWaveCount = 36;
inline constexpr int ssWaveFileCount = 3;
extern const std::array<WaveFile, wtWaveCount> wtWaveFiles;
extern const std::array<WaveFile, ssWaveFileCount> ssWaveFiles;

// Entries of the WTWave list that the instrument itself reads.
enum BuiltInWave : int {
    vaTriangleSaw = 0,
    vaSquareImpulse = 1,
    fmWaveforms = 2,
    wtSine = 12,
    wtCombsaw = 16,
    fxBitnoise = 17,
    elAlpha2 = 21,
    noNoisySaw = 23,
    wtWaves8 = 35
};

// A row of the AnaWave list: one frame of one wave, its noise floor and its sign.
struct AnalogRow {
    std::string_view label;
    int wave;  // of the WTWave list
    int frame;
    int hiss;
    int polarity;  // +1 or -1
};
inline constexpr int analogRowCount = 20;
extern const std::array<AnalogRow, analogRowCount> analogRows;

// What the first 44 bytes of a bank file say, if they pass every test.
struct BankHeader {
    std::uint64_t dataOffset;  // bytes
    int frames;
};
inline constexpr int bankHeaderBytes = 44;
inline constexpr int bankFrameBytes = mipLevels * cycleSamples * 2;
std::optional<BankHeader> parseBankHeader(const std::array<unsigned char, bankHeaderBytes>& header);

enum class WaveLoad {
    loaded,
    skipped,     // missing, unreadable or failing a test: the entry stays as it was
    outOfMemory  // the buffer could not be allocated: the entry stays as it was
};

// A wave in the store: level-major, frames x 8 levels x 2048 samples.
struct BankWave {
    int frames = 1;
    const std::int16_t* samples = nullptr;
    std::shared_ptr<const void> keeper;  // the samples stay as long as it does
};

class WaveStore;

// How loadBanks() gets a file into an entry: WaveStore::loadWaveFile, or what knows another way.
using BankReader = std::function<WaveLoad(WaveStore&, int index, const std::filesystem::path&, bool isSsList)>;

// Filled by the first instance's worker while voices of other instances may already play. A wave is whole
// before its pointer is published, and stays where it is until clear(): readers need no lock and see either
// no wave or all of it.
class WaveStore {
public:
    static constexpr int listSize = 128;

    // Reads the bank file at `path` into entry `index` (0 to 127) of the WTWave list, or of the SSWave list.
    // Not for the audio thread; one loader at a time.
    WaveLoad loadWaveFile(int index, const std::filesystem::path& path, bool isSsList);
    // Loads every file of both lists from `dataFolder`, then builds the rows. Gives up between files when
    // `stop` is set. outOfMemory if any file met it. As above.
    WaveLoad loadBanks(const std::filesystem::path& dataFolder, const Flag& stop, const BankReader& read = readBank);
    // Puts a copy of a wave made in memory into an entry. As above.
    WaveLoad setWave(int index, bool isSsList, const std::int16_t* samples, int frames);
    // Lets an entry show samples that lie elsewhere and stay there as long as `keeper` does. As above.
    WaveLoad showWave(int index, bool isSsList, const std::int16_t* samples, int frames, std::shared_ptr<const void> keeper);
    // Points the analog rows into the loaded waves; a row whose wave is missing stays empty. A wave with
    // fewer frames than the row asks for gives its last one. As above.
    void buildWaveRows();
    // Frees everything; nobody may be reading.
    void clear();

    // A wave of a list; null until it is loaded, and for an index beyond the list. Any thread.
    const BankWave* wave(int index, bool isSsList = false) const {
        return index >= 0 && index < listSize ? entries_[isSsList][index].load(std::memory_order_acquire) : nullptr;
    }
    // One cycle of a WTWave entry at a level (0 to 7); null until loaded. A frame beyond the last reads as
    // the last. Any thread.
    const std::int16_t* cycle(int index, int frame, int level) const;
    // One cycle of an analog row (0 to 19) at a level; null until built. Any thread.
    const std::int16_t* rowCycle(int row, int level) const { return rows_[row][level].load(std::memory_order_acquire); }

private:
    static WaveLoad readBank(WaveStore& store, int index, const std::filesystem::path& path, bool isSsList) {
        return store.loadWaveFile(index, path, isSsList);
    }
    WaveLoad publish(int index, bool isSsList, std::unique_ptr<std::int16_t[]> samples, int frames);

    std::atomic<const BankWave*> entries_[2][listSize] = {};  // [isSsList]
    std::atomic<const std::int16_t*> rows_[analogRowCount][mipLevels] = {};
    std::vector<std::unique_ptr<BankWave>> waves_;  // every wave published since clear()
};

}  // namespace vantoric
