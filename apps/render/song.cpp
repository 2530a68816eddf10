#include "apps/render/song.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace vantoric::render {

Song::Song(midi::File file) : file_(std::move(file)) {
    tempos_.push_back({0.0, 0.0, 0.5 / file_.ticksPerQuarter});
    for (const midi::TempoChange& change : file_.tempos) {
        const double tick = static_cast<double>(change.tick), seconds = secondsAt(tick);
        if (tempos_.back().tick == tick) tempos_.pop_back();
        tempos_.push_back({tick, seconds, change.secondsPerQuarter / file_.ticksPerQuarter});
    }
    meters_.push_back({0.0, 4, 4});
    for (const midi::MeterChange& change : file_.meters)
        meters_.push_back({static_cast<double>(change.tick), change.numerator, change.denominator});
}

int Song::notes() const {
    return static_cast<int>(
        std::count_if(file_.events.begin(), file_.events.end(), [](const auto& e) { return e.message.startsNote(); }));
}

double Song::secondsAt(double tick) const {
    auto span = std::upper_bound(tempos_.begin(), tempos_.end(), tick, [](double t, const TempoSpan& s) { return t < s.tick; });
    if (span != tempos_.begin()) --span;
    return span->seconds + (tick - span->tick) * span->secondsPerTick;
}

double Song::tickAt(double seconds) const {
    auto span =
        std::upper_bound(tempos_.begin(), tempos_.end(), seconds, [](double t, const TempoSpan& s) { return t < s.seconds; });
    if (span != tempos_.begin()) --span;
    return span->tick + (seconds - span->seconds) / span->secondsPerTick;
}

Transport Song::transportAt(double seconds) const {
    const double tick = tickAt(seconds);
    auto tempo =
        std::upper_bound(tempos_.begin(), tempos_.end(), seconds, [](double t, const TempoSpan& s) { return t < s.seconds; });
    if (tempo != tempos_.begin()) --tempo;
    auto meter = std::upper_bound(meters_.begin(), meters_.end(), tick, [](double t, const MeterSpan& s) { return t < s.tick; });
    if (meter != meters_.begin()) --meter;
    const double bar = meter->ticksPerBar(file_.ticksPerQuarter);
    Transport result;
    result.ppq = tick / file_.ticksPerQuarter;
    result.tempo = 60.0 / (tempo->secondsPerTick * file_.ticksPerQuarter);
    result.barStart = (meter->tick + std::floor((tick - meter->tick) / bar) * bar) / file_.ticksPerQuarter;
    result.numerator = meter->numerator;
    result.denominator = meter->denominator;
    return result;
}

namespace {

// What has to be sent at the start to stand where the song stands: one message for every thing that can be set.
class Chase {
public:
    void take(const midi::Message& message) {
        const bool perKey = message.kind() == 0xa0 || message.kind() == 0xb0;
        if (message.kind() >= 0xa0) last_[{message.status, perKey ? message.data1 : 0}] = message;
    }
    void send(Performance& performance) const {
        for (const auto& [what, message] : last_) performance.messages.push_back({0, message});
    }

private:
    std::map<std::pair<int, int>, midi::Message> last_;
};

// Keeps the book of sounding notes and held pedals.
class Sounding {
public:
    void take(const midi::Message& message) {
        const std::pair<int, int> key{message.channel(), message.data1};
        if (message.startsNote()) keys_.insert(key);
        if (message.endsNote()) keys_.erase(key);
        if (message.kind() == 0xb0 && message.data1 == 64) {
            if (message.data2 >= 64)
                pedals_.insert(message.channel());
            else
                pedals_.erase(message.channel());
        }
    }
    bool holds(const midi::Message& message) const { return keys_.contains({message.channel(), message.data1}); }
    void letGo(Performance& performance) const {
        for (const int channel : pedals_)
            performance.messages.push_back({performance.frames, {static_cast<std::uint8_t>(0xb0 | channel), 64, 0}});
        for (const auto& [channel, key] : keys_)
            performance.messages.push_back(
                {performance.frames, {static_cast<std::uint8_t>(0x80 | channel), static_cast<std::uint8_t>(key), 64}});
    }

private:
    std::set<std::pair<int, int>> keys_;
    std::set<int> pedals_;
};

}  // namespace

Performance perform(const Song& song, double rate, double start, double end) {
    start = std::max(0.0, start);
    end = std::min(end, song.length());
    Performance result;
    result.frames = std::max<std::int64_t>(0, std::llround((end - start) * rate));
    Chase chase;
    Sounding sounding;
    bool started = false;
    for (const midi::Event& event : song.file().events) {
        const double seconds = song.secondsAt(static_cast<double>(event.tick));
        const std::int64_t frame = std::llround((seconds - start) * rate);
        if (frame < 0) {
            chase.take(event.message);
            continue;
        }
        if (frame > result.frames || (frame == result.frames && event.message.startsNote())) continue;
        if (!std::exchange(started, true)) chase.send(result);
        if (event.message.endsNote() && !sounding.holds(event.message)) continue;
        result.messages.push_back({frame, event.message});
        sounding.take(event.message);
    }
    sounding.letGo(result);
    return result;
}

}  // namespace vantoric::render
