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
// are relaxed atomics; each stands alone.
class ControllerMap {
public:
    static constexpr int none = 65535;  // a controller without a parameter

    ControllerMap() { clear(); }

    // The parameter of a controller (0 to 127), or `none`. Any thread.
    int get(int controller) const { return ccMap_[controller].load(std::memory_order_relaxed); }
    // Sets it; a parameter outside 0 to 65535 counts as none. Any thread.
    void set(int controller, int parameter);
    // Removes all assignments. Any thread.
    void clear();

    // Two bytes for each controller, the high one first, then two reserved bytes, written 0.
    std::array<std::uint8_t, controllerMapBytes> encode() const;
    // Entries that are not wholly in `bytes` become none; what follows the last one is ignored.
    void decode(std::span<const std::uint8_t> bytes);

    // Reads or writes the file; a missing or unreadable one gives an empty map, a failed write false.
    void load(const std::string& path);
    bool save(const std::string& path) const;

private:
    std::array<std::atomic<std::int32_t>, 128> ccMap_;
};

}  // namespace vantoric
