// What a host sends for one block, brought to the instrument at its frame.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "engine/instrument.h"

namespace vantoric {

// Collected on the audio thread, which nothing here keeps waiting, and played with the block. A parameter is heard from its
// frame on: the block is rendered in parts there. Notes come as they would without the parts.
class BlockEvents {
public:
    // Of one block; what comes beyond is dropped, and if there were messages among it all notes end with the block.
    static constexpr std::size_t most = 16384;

    BlockEvents();

    // In any order; frames before the block count as its first, frames behind it as its last. Of equal frames the order stays.
    void addMidi(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2);
    // `value` as the instrument stores it. An index outside 0 to 1223 is ignored.
    void addParameter(std::int64_t frame, int index, float value);
    // What is added to a parameter's value; see ParameterModel.
    void addModulation(std::int64_t frame, int index, float amount);
    // The transport from this frame on, its position that of the frame. More than 64 of a block are ignored.
    void addTransport(std::int64_t frame, const Transport& transport);
    bool isEmpty() const { return events_.empty() && transports_.empty(); }
    // Forgets what was added, and what earlier blocks have left.
    void clear();

    // Renders `frames` (0 or more) frames into the channels, of which null ones are left out, with all that was added, and
    // forgets it; `transport` is that of the block's begin. Of more notes at once than the instrument queues, some come a tick
    // late, or with the next block.
    void play(Instrument& instrument, float* left, float* right, int frames, const Transport& transport);
    void play(Instrument& instrument, double* left, double* right, int frames, const Transport& transport);

private:
    enum class Kind : std::uint8_t { midi, value, modulation };
    static constexpr int spareFrames = 1024;
    static constexpr std::size_t mostTransports = 64;

    struct Event {
        std::int32_t frame;
        std::int32_t order;  // of arrival
        Kind kind;
        std::int16_t parameter;
        float value;
        std::uint8_t status, data1, data2;
    };

    struct TimedTransport {
        std::int32_t frame;
        Transport transport;
    };

    void add(std::int64_t frame, Event event);
    void sortInto(int frames);
    std::size_t setValues(Instrument& instrument, std::size_t next, int frame) const;
    template <class Sample>
    Sample* channelAt(Sample* channel, int frame);
    int frameOfValue(std::size_t next, int frames) const;
    void keepNotesFrom(std::size_t next);
    template <class Sample>
    void playParts(Instrument& instrument, Sample* left, Sample* right, int frames, const Transport& transport);

    std::vector<Event> events_;
    std::vector<TimedTransport> transports_;
    bool isFlooded_ = false;                   // a message was dropped
    int queued_ = 0, roomAt_ = 0;              // messages in the queue, and the frame at which it has taken them
    std::array<double, spareFrames> spare_{};  // for channels that nobody wants
};

}  // namespace vantoric
