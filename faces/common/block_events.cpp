#include "faces/common/block_events.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

#include "base/numbers.h"

namespace vantoric {

namespace {

std::int32_t heldFrame(std::int64_t frame) {
    return static_cast<std::int32_t>(clampTo<std::int64_t>(frame, 0, std::numeric_limits<std::int32_t>::max()));
}

// The instrument's queue holds 256 events until the ticks that reach them; some room is left for those from elsewhere.
constexpr int queuedAtOnce = 192;

// A millisecond and a frame: at least one tick falls into so many frames.
int framesOfTick(const Instrument& instrument) {
    return truncateTo(static_cast<double>(instrument.hostRate()) * 0.001, 0, 4096) + 1;
}

}  // namespace

BlockEvents::BlockEvents() {
    events_.reserve(most);
    transports_.reserve(mostTransports);
}

void BlockEvents::clear() {
    events_.clear();
    transports_.clear();
    isFlooded_ = false;
    queued_ = roomAt_ = 0;
}

void BlockEvents::addTransport(std::int64_t frame, const Transport& transport) {
    if (transports_.size() < mostTransports) transports_.push_back({heldFrame(frame), transport});
}

void BlockEvents::add(std::int64_t frame, Event event) {
    if (events_.size() == most) {
        isFlooded_ = isFlooded_ || event.kind == Kind::midi;
        return;
    }
    event.frame = heldFrame(frame);
    event.order = static_cast<std::int32_t>(events_.size());
    events_.push_back(event);
}

void BlockEvents::addMidi(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) {
    add(frame, {0, 0, Kind::midi, 0, 0.0f, status, data1, data2});
}

void BlockEvents::addParameter(std::int64_t frame, int index, float value) {
    if (index >= 0 && index < parameterCount) add(frame, {0, 0, Kind::value, static_cast<std::int16_t>(index), value, 0, 0, 0});
}

void BlockEvents::addModulation(std::int64_t frame, int index, float amount) {
    if (index >= 0 && index < parameterCount)
        add(frame, {0, 0, Kind::modulation, static_cast<std::int16_t>(index), amount, 0, 0, 0});
}

void BlockEvents::sortInto(int frames) {
    for (Event& event : events_) event.frame = std::min(event.frame, std::max(frames - 1, 0));
    const auto earlier = [](const Event& a, const Event& b) { return std::tie(a.frame, a.order) < std::tie(b.frame, b.order); };
    if (!std::is_sorted(events_.begin(), events_.end(), earlier)) std::sort(events_.begin(), events_.end(), earlier);
    // By insertion, as they are few and those of one frame keep their order.
    for (std::size_t i = 1; i < transports_.size(); ++i)
        for (std::size_t j = i; j > 0 && transports_[j].frame < transports_[j - 1].frame; --j)
            std::swap(transports_[j], transports_[j - 1]);
}

void BlockEvents::play(Instrument& instrument, float* left, float* right, int frames, const Transport& transport) {
    playParts(instrument, left, right, frames, transport);
}

void BlockEvents::play(Instrument& instrument, double* left, double* right, int frames, const Transport& transport) {
    playParts(instrument, left, right, frames, transport);
}

// A tick takes events of up to a millisecond ahead, so notes are queued before the part that they fall into: all of the block,
// as far as the queue holds them. What it does not hold is queued once a tick has made room, at the latest in the next block.
// Parameters are set when their frame has come.
template <class Sample>
void BlockEvents::playParts(Instrument& instrument, Sample* left, Sample* right, int frames, const Transport& transport) {
    sortInto(frames);
    std::size_t nextNote = 0, nextValue = 0, nextTransport = 0;
    int begin = 0;
    Transport inForce = transport;
    do {
        for (; nextTransport < transports_.size() && transports_[nextTransport].frame <= begin; ++nextTransport)
            inForce = transports_[nextTransport].transport;
        nextValue = setValues(instrument, nextValue, begin);
        if (begin >= roomAt_) queued_ = 0;
        while (queued_ < queuedAtOnce && nextNote < events_.size()) {
            const Event& event = events_[nextNote++];
            if (event.kind != Kind::midi) continue;
            instrument.receive({event.frame, event.status, event.data1, event.data2});
            roomAt_ = std::max(event.frame, begin) + framesOfTick(instrument);
            ++queued_;
        }
        int end = std::min({frames, frameOfValue(nextValue, frames), queued_ == queuedAtOnce ? roomAt_ : frames});
        if (nextTransport < transports_.size()) end = std::min(end, transports_[nextTransport].frame);
        if (left == nullptr || right == nullptr) end = std::min(end, begin + spareFrames);
        instrument.renderPart(channelAt(left, begin), channelAt(right, begin), end - begin, begin, inForce);
        begin = end;
    } while (begin < frames);
    roomAt_ = std::max(roomAt_ - frames, 0);
    keepNotesFrom(nextNote);
    transports_.clear();
    constexpr std::uint8_t controller = 0xb0, allNotesOff = 123;
    if (std::exchange(isFlooded_, false)) addMidi(0, controller, allNotesOff, 0);
}

template <class Sample>
Sample* BlockEvents::channelAt(Sample* channel, int frame) {
    return channel != nullptr ? channel + frame : reinterpret_cast<Sample*>(spare_.data());
}

std::size_t BlockEvents::setValues(Instrument& instrument, std::size_t next, int frame) const {
    for (; next < events_.size(); ++next) {
        const Event& event = events_[next];
        if (event.kind == Kind::midi) continue;
        if (event.frame > frame) break;
        if (event.kind == Kind::value)
            instrument.setParameter(event.parameter, event.value);
        else
            instrument.parameters().setModulation(event.parameter, event.value);
    }
    return next;
}

int BlockEvents::frameOfValue(std::size_t next, int frames) const { return next < events_.size() ? events_[next].frame : frames; }

void BlockEvents::keepNotesFrom(std::size_t next) {
    std::size_t kept = 0;
    for (; next < events_.size(); ++next) {
        if (events_[next].kind != Kind::midi) continue;
        events_[kept] = events_[next];
        events_[kept].frame = 0;
        events_[kept].order = static_cast<std::int32_t>(kept);
        ++kept;
    }
    events_.resize(kept);
}

}  // namespace vantoric
