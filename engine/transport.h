// What a host says of its transport, and what it sends: plain records that every face fills in.
#pragma once

#include <cstdint>

namespace vantoric {

// The transport as it stands at the first frame of a block.
struct Transport {
    bool known = false;    // whether the host told anything: without, tempo is 120 and the song stands
    double tempo = 120.0;  // quarter notes per minute; a number out of range reads as 120
    double ppqPos = 0.0;   // quarter notes; the same number as last time means that the host stands
    bool offline = false;  // the host renders faster than time and would rather wait than hear a wave unfinished
};

// A MIDI message of up to three bytes.
struct MidiEvent {
    std::int32_t frame = 0;  // from the start of the block that follows
    std::uint8_t status = 0, data1 = 0, data2 = 0;
};

}  // namespace vantoric
