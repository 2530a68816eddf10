#include "apps/render/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include "apps/render/settle.h"
#include "base/random.h"

namespace vantoric::render {

namespace {

constexpr std::size_t eventsPerBlock = 200;  // event queues of 256 places are common

// Walks through the performance and cuts it into blocks.
class Cursor {
public:
    Cursor(const Performance& performance, const RenderSettings& settings)
        : messages_(performance.messages), settings_(settings) {}

    // Frames of the next block, at most `limit`, and its events.
    int next(std::int64_t position, std::int64_t limit, std::vector<BlockEvent>& events) {
        int frames = settings_.randomBlocks ? 1 + static_cast<int>(random_.next() >> 8) % settings_.block : settings_.block;
        frames = static_cast<int>(std::min<std::int64_t>(frames, limit));
        events.clear();
        while (at_ < messages_.size() && messages_[at_].frame < position + frames) {
            const int frame = static_cast<int>(std::max<std::int64_t>(0, messages_[at_].frame - position));
            if (events.size() >= eventsPerBlock && frame > events.back().frame) {
                frames = frame;
                break;
            }
            events.push_back({frame, messages_[at_++].message});
        }
        return frames;
    }

private:
    const std::vector<TimedMessage>& messages_;
    const RenderSettings& settings_;
    LinearCongruence random_{1};
    std::size_t at_ = 0;
};

// Decides when the tail is over.
class Tail {
public:
    explicit Tail(const RenderSettings& settings) : settings_(settings) {}

    // Frames that the tail may last at most.
    std::int64_t limit() const { return std::llround((settings_.tail < 0.0 ? longestTail : settings_.tail) * settings_.rate); }

    void hear(const std::vector<float>& samples, int frames) {
        for (int i = 0; i < frames; ++i)
            quiet_ = std::max(std::fabs(samples[2 * i]), std::fabs(samples[2 * i + 1])) < silence ? quiet_ + 1 : 0;
    }
    bool over() const { return settings_.tail < 0.0 && static_cast<double>(quiet_) >= silentSeconds * settings_.rate; }

private:
    const RenderSettings& settings_;
    std::int64_t quiet_ = 0;
};

// Interleaves with gain; returns how many samples were no numbers.
int interleave(const std::vector<float>& left, const std::vector<float>& right, int frames, float gain, std::vector<float>& out) {
    int bad = 0;
    for (int i = 0; i < frames; ++i)
        for (int side = 0; side < 2; ++side) {
            const float sample = (side == 0 ? left : right)[static_cast<std::size_t>(i)] * gain;
            const bool good = std::isfinite(sample);
            out[static_cast<std::size_t>(2 * i + side)] = good ? sample : 0.0f;
            bad += !good;
        }
    return bad;
}

}  // namespace

RenderResult render(PluginHost& plugin, const Song& song, const RenderSettings& settings, double settle, const Sink& sink,
                    const Progress& progress, const Waiting& waiting) {
    using Clock = std::chrono::steady_clock;
    const Performance performance = perform(song, settings.rate, settings.start, settings.end);
    Cursor cursor(performance, settings);
    Tail tail(settings);
    const auto room = static_cast<std::size_t>(settings.block);
    std::vector<float> left(room), right(room), stereo(2 * room);
    std::vector<BlockEvent> events;

    plugin.prepare(settings.rate, settings.block);
    waitUntilSettled(settle, waiting);
    plugin.switchOn();
    RenderResult result;
    const std::int64_t total = performance.frames + tail.limit();
    const double expectedTail = settings.tail < 0.0 ? 2.0 * settings.rate : static_cast<double>(tail.limit());
    const std::int64_t expected = performance.frames + static_cast<std::int64_t>(expectedTail);
    while (result.frames < total && !tail.over()) {
        const double seconds = settings.start + static_cast<double>(result.frames) / settings.rate;
        Transport transport = song.transportAt(seconds);
        transport.samplePosition = std::floor(seconds * settings.rate + 0.5);
        transport.changed = result.frames == 0;
        // The last note's end gets a block of its own start, so that the tail is counted from it.
        const std::int64_t limit = (result.frames < performance.frames ? performance.frames : total) - result.frames;
        const int frames = cursor.next(result.frames, limit, events);

        const auto before = Clock::now();
        plugin.process(transport, events, frames, left.data(), right.data());
        result.seconds += std::chrono::duration<double>(Clock::now() - before).count();

        result.badSamples += interleave(left, right, frames, static_cast<float>(settings.gain), stereo);
        if (result.frames >= performance.frames) tail.hear(stereo, frames);
        result.frames += frames;
        if (!sink(stereo.data(), frames)) {
            result.written = false;
            break;
        }
        progress(result.frames, expected);
    }
    plugin.switchOff();
    return result;
}

}  // namespace vantoric::render
