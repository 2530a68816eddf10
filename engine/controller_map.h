// Which controller moves which parameter, and the file that keeps it.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vantoric {

inline constexpr std::size_t controllerMapBytes = 258;

// The file of the map below the data folder, as that is at the time of the call.
std::string controllerMapPath();

// The map is written by the window and by MIDI learn and read by whoever delivers events, so its entries
// are atomics; each stands alone. The file is that of all instances: each writes into it what was changed in it, and
// leaves to the others what they changed.
class ControllerMap {
public:
    static constexpr int none = 65535;  // a controller without a parameter

    ControllerMap() { decode({}); }

    // The parameter of a controller (0 to 127), or `none`. Any thread.
    int get(int controller) const { return ccMap_[controller].load(std::memory_order_relaxed); }
    // Sets it; a parameter outside 0 to 65535 counts as none. Any thread.
    void set(int controller, int parameter);
    // Removes all assignments. Any thread.
    void clear();
    // Whether an entry was set or cleared since the map was last loaded or saved. Any thread.
    bool isChanged() const;

    // Two bytes for each controller, the high one first, then two reserved bytes, written 0.
    std::array<std::uint8_t, controllerMapBytes> encode() const;
    // Entries that are not wholly in `bytes` become none; what follows the last one is ignored. None is changed then.
    void decode(std::span<const std::uint8_t> bytes);

    // Reads the file; a missing or unreadable one gives an empty map. Not for the audio thread.
    void load(const std::string& path);

    // Writes the file whole. Entries that were not changed here since the map was loaded or saved take what the file
    // holds by now; without a file they are those of this map, which itself stays as it is. False, with the entries
    // still changed, if the file cannot be written, or is there and cannot be read. Any thread but the audio thread.
    bool save(const std::string& path);

    // The same if an entry was changed, and otherwise nothing: for right after a learn.
    bool saveChanges(const std::string& path) { return !isChanged() || save(path); }

private:
    using Changes = std::array<bool, 128>;

    Changes takeChanges();
    void giveBack(const Changes& changes);

    std::array<std::atomic<std::int32_t>, 128> ccMap_;
    std::array<std::atomic<bool>, 128> isChanged_{};
};

}  // namespace vantoric
