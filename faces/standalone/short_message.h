// MIDI as keyboards send it.
#pragma once

#include <cstdint>

namespace vantoric::standalone {

// A MIDI message of one to three bytes.
struct ShortMessage {
    std::uint8_t status = 0, data1 = 0, data2 = 0;
    bool operator==(const ShortMessage&) const = default;
};

}  // namespace vantoric::standalone
