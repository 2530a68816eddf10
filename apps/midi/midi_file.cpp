#include "apps/midi/midi_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace vantoric::midi {

namespace {

constexpr std::int64_t longestSong = std::int64_t{1} << 40;  // ticks; anything above is nonsense

// Reads forward through a stretch of bytes. Past its end everything reads as 0 and `failed` is set.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool failed() const { return failed_; }
    std::size_t left() const { return bytes_.size() - at_; }

    std::uint8_t peek() { return left() > 0 ? bytes_[at_] : fail(); }
    std::uint8_t byte() { return left() > 0 ? bytes_[at_++] : fail(); }

    std::uint32_t number(int width) {
        std::uint32_t value = 0;
        while (width-- > 0) value = value << 8 | byte();
        return value;
    }

    // Variable-length quantity, at most four bytes.
    std::uint32_t variable() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const std::uint8_t next = byte();
            value = value << 7 | (next & 0x7f);
            if (!(next & 0x80)) return value;
        }
        fail();
        return 0;
    }

    std::span<const std::uint8_t> take(std::size_t count) {
        if (count > left()) {
            fail();
            count = left();
        }
        at_ += count;
        return bytes_.subspan(at_ - count, count);
    }

private:
    std::uint8_t fail() {
        failed_ = true;
        return 0;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    bool failed_ = false;
};

int dataBytes(std::uint8_t status) { return (status & 0xe0) == 0xc0 ? 1 : 2; }

// Reads the events of one track into the file.
class TrackReader {
public:
    TrackReader(std::span<const std::uint8_t> bytes, int track, std::int64_t start, bool keepTempo, File& file)
        : reader_(bytes), track_(track), tick_(start), keepTempo_(keepTempo), file_(file) {}

    // False with a reason if the track's bytes make no sense.
    bool run(std::string& problem) {
        while (reader_.left() > 0 && !ended_) {
            tick_ += reader_.variable();
            if (reader_.failed()) return problem = "it breaks off within an event", false;
            if (tick_ > longestSong) return problem = "it is impossibly long", false;
            if (!event(problem)) return false;
            if (reader_.failed()) return problem = "it breaks off within an event", false;
        }
        return true;
    }

    std::int64_t end() const { return tick_; }

private:
    bool event(std::string& problem) {
        std::uint8_t status = reader_.peek();
        if (status >= 0x80)
            reader_.byte();
        else if (!(status = running_))
            return problem = "it has data without a status byte", false;

        if (status == 0xff) {
            meta();
        } else if (status == 0xf0 || status == 0xf7) {
            reader_.take(reader_.variable());
            running_ = 0;
        } else if (status > 0xf0) {
            return problem = "it has a system message that cannot stand in a file", false;
        } else {
            running_ = status;
            Message message{status, reader_.byte(), 0};
            if (dataBytes(status) == 2) message.data2 = reader_.byte();
            if ((message.data1 | message.data2) & 0x80) return problem = "it has a data byte above 127", false;
            if (!reader_.failed()) file_.events.push_back({tick_, message, track_});
        }
        return true;
    }

    void meta() {
        const std::uint8_t type = reader_.byte();
        const auto data = reader_.take(reader_.variable());
        if (reader_.failed()) return;
        if (type == 0x2f) {
            ended_ = true;
        } else if (type == 0x03 && file_.title.empty()) {
            file_.title.assign(data.begin(), data.end());
        } else if (type == 0x51 && data.size() >= 3 && keepTempo_) {
            const std::uint32_t microseconds = data[0] << 16 | data[1] << 8 | data[2];
            if (microseconds > 0) file_.tempos.push_back({tick_, microseconds * 1e-6});
        } else if (type == 0x58 && data.size() >= 2 && data[0] > 0 && data[1] < 8) {
            file_.meters.push_back({tick_, data[0], 1 << data[1]});
        }
    }

    Reader reader_;
    int track_;
    std::int64_t tick_;
    bool keepTempo_;
    File& file_;
    std::uint8_t running_ = 0;
    bool ended_ = false;
};

bool isChunk(std::span<const std::uint8_t> id, const char* name) { return std::equal(id.begin(), id.end(), name); }

template <class List>
void sortByTick(List& list) {
    std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) { return a.tick < b.tick; });
}

}  // namespace

bool parse(std::span<const std::uint8_t> bytes, File& file, std::string& problem) {
    file = {};
    problem.clear();
    Reader reader(bytes);
    const auto id = reader.take(4);
    if (reader.failed() || !isChunk(id, "MThd")) return problem = "not a MIDI file", false;
    Reader header(reader.take(reader.number(4)));
    file.format = static_cast<int>(header.number(2));
    const std::uint32_t announced = header.number(2), division = header.number(2);
    if (reader.failed() || header.failed()) return problem = "truncated: the file ends within its header", false;
    if (file.format > 2) return problem = "MIDI file format " + std::to_string(file.format) + " is unknown", false;

    const bool filmFrames = (division & 0x8000) != 0;
    if (filmFrames) {
        const int perSecond = 256 - static_cast<int>(division >> 8);
        file.ticksPerQuarter = 0.5 * (perSecond == 29 ? 30000.0 / 1001.0 : perSecond) * (division & 0xff);
    } else {
        file.ticksPerQuarter = division;
    }
    if (!(file.ticksPerQuarter > 0.0)) return problem = "broken: the time division is 0", false;

    std::uint32_t tracks = 0;
    while (reader.left() > 0 && tracks < announced) {
        const auto chunk = reader.take(4);
        const auto body = reader.take(reader.number(4));
        const std::string name = "track " + std::to_string(tracks + 1);
        if (reader.failed()) return problem = "truncated: the file ends within " + name, false;
        if (!isChunk(chunk, "MTrk")) continue;
        TrackReader track(body, static_cast<int>(tracks), file.format == 2 ? file.length : 0, !filmFrames, file);
        if (!track.run(problem)) return problem = "broken: " + name + ": " + problem, false;
        file.length = std::max(file.length, track.end());
        ++tracks;
    }
    if (tracks == 0) return problem = "truncated: the file has no track", false;
    if (tracks < announced) problem = std::to_string(announced) + " tracks announced, " + std::to_string(tracks) + " found";
    sortByTick(file.events);
    sortByTick(file.tempos);
    sortByTick(file.meters);
    return true;
}

bool load(const std::string& path, File& file, std::string& problem) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return problem = "cannot be opened", false;
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    if (stream.bad()) return problem = "cannot be read", false;
    return parse(bytes, file, problem);
}

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, std::uint32_t value, int width) {
    while (width-- > 0) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * width)));
}

void appendVariable(Bytes& bytes, std::uint32_t value) {
    for (int shift = 21; shift > 0; shift -= 7)
        if (value >> shift) bytes.push_back(static_cast<std::uint8_t>(0x80 | (value >> shift & 0x7f)));
    bytes.push_back(value & 0x7f);
}

void appendText(Bytes& bytes, const std::string& text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

// One thing at one time, as it stands in a track.
struct Item {
    std::int64_t tick;
    Bytes bytes;
};

Bytes metaEvent(std::uint8_t type, const Bytes& data) {
    Bytes bytes = {0xff, type};
    appendVariable(bytes, static_cast<std::uint32_t>(data.size()));
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

Bytes nameEvent(const std::string& name) { return metaEvent(0x03, Bytes(name.begin(), name.end())); }

void appendTrack(Bytes& file, std::vector<Item> items, std::int64_t length) {
    sortByTick(items);
    if (!items.empty()) length = std::max(length, items.back().tick);
    items.push_back({length, metaEvent(0x2f, {})});
    Bytes body;
    std::int64_t before = 0;
    for (const Item& item : items) {
        appendVariable(body, static_cast<std::uint32_t>(item.tick - before));
        body.insert(body.end(), item.bytes.begin(), item.bytes.end());
        before = item.tick;
    }
    appendText(file, "MTrk");
    append(file, static_cast<std::uint32_t>(body.size()), 4);
    file.insert(file.end(), body.begin(), body.end());
}

}  // namespace

Bytes write(int ticksPerQuarter, const std::string& title, const std::vector<TempoChange>& tempos,
            const std::vector<MeterChange>& meters, const std::vector<Track>& tracks, std::int64_t length) {
    Bytes file;
    appendText(file, "MThd");
    append(file, 6, 4);
    append(file, 1, 2);
    append(file, static_cast<std::uint32_t>(tracks.size() + 1), 2);
    append(file, static_cast<std::uint32_t>(ticksPerQuarter), 2);

    std::vector<Item> conductor = {{0, nameEvent(title)}};
    for (const MeterChange& meter : meters) {
        std::uint8_t power = 0;
        while (1 << power < meter.denominator) ++power;
        conductor.push_back({meter.tick, metaEvent(0x58, {static_cast<std::uint8_t>(meter.numerator), power, 24, 8})});
    }
    for (const TempoChange& tempo : tempos) {
        Bytes data;
        append(data, static_cast<std::uint32_t>(std::clamp(tempo.secondsPerQuarter * 1e6 + 0.5, 1.0, 16777215.0)), 3);
        conductor.push_back({tempo.tick, metaEvent(0x51, data)});
    }
    appendTrack(file, std::move(conductor), length);

    for (const Track& track : tracks) {
        std::vector<Item> items = {{0, nameEvent(track.name)}};
        for (const Event& event : track.events) {
            Bytes bytes = {event.message.status, event.message.data1};
            if (dataBytes(event.message.status) == 2) bytes.push_back(event.message.data2);
            items.push_back({event.tick, bytes});
        }
        appendTrack(file, std::move(items), length);
    }
    return file;
}

}  // namespace vantoric::midi
