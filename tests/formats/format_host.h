// A small host for a plug-in of any format: what the formats have in common, so that the same tests run on each.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/base/failing_allocation.h"
#include "tests/host/plugin_host.h"

namespace testhost {

struct Event {
    enum Kind { midi, value, modulation, ending } kind = midi;
    int frame = 0;
    std::uint8_t status = 0, data1 = 0, data2 = 0;
    int index = 0;         // of a parameter
    double plain = 0;      // its value, from 0 to `largest`
    double largest = 1.0;  // plain value of the parameter
    int noteId = -1;       // of a note: where it is not -1, formats that have numbers name the note by it alone

    int channel = -1, key = -1;  // of an ending, with the number; -1 leaves it open
    bool isChoke = false;

    static Event note(int frame, int key, bool isOn = true) {
        return {midi, frame, static_cast<std::uint8_t>(isOn ? 0x90 : 0x80), static_cast<std::uint8_t>(key), 100};
    }
    static Event controller(int frame, int number, int to) {
        return {midi, frame, 0xb0, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(to)};
    }
    static Event set(int frame, int index, double plain, double largest = 1.0) {
        return {value, frame, 0, 0, 0, index, plain, largest};
    }
    static Event modulate(int frame, int index, double by) { return {modulation, frame, 0, 0, 0, index, by}; }
    static Event numbered(int frame, int id, int key, bool isOn) {
        Event made = note(frame, key, isOn);
        made.noteId = id;
        return made;
    }
    // Ends all notes that it describes, in a format that can say so.
    static Event end(int id, int channel, int key, bool isChoke) {
        Event made;
        made.kind = ending;
        made.noteId = id;
        made.channel = channel;
        made.key = key;
        made.isChoke = isChoke;
        return made;
    }
    // Of the first channel: the wheel from 0 to 16383, the pressure of all keys and of one.
    static Event wheel(int frame, int to) {
        return {midi, frame, 0xe0, static_cast<std::uint8_t>(to & 127), static_cast<std::uint8_t>(to >> 7)};
    }
    static Event pressure(int frame, int to) { return {midi, frame, 0xd0, static_cast<std::uint8_t>(to)}; }
    static Event keyPressure(int frame, int key, int to) {
        return {midi, frame, 0xa0, static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(to)};
    }
};

// What a plug-in told of a parameter: a gesture's begin, a plain value, a gesture's end.
struct Told {
    enum Kind { begin, value, end } kind = value;
    int index = 0;
    double plain = 0;
};

// The song as the host plays it, at a frame of the block.
struct Song {
    double tempo = 120, beats = 0;
    int frame = 0;
};

// A parameter as the format tells it.
struct ParameterFacts {
    std::string name, group, unit, textOfDefault;
    int steps = 0;
    double largest = 1, defaultValue = 0;  // plain
    bool isAutomatable = false, isModulatable = false, isHidden = false;
    std::optional<double> defaultByText;  // what the default's text means, plain
};

using Bytes = std::vector<std::uint8_t>;

// How a host's stream may misbehave, once so many bytes have gone through it.
struct StreamFault {
    enum Kind { none, error, tooMuch, early, badType } kind = none;
    std::size_t at = 0;          // bytes
    Bytes pieces;                // what goes through at once, in turn: so many bytes and one; empty for the call's own size
    std::optional<Bytes> ports;  // LV2: what the state says of the ports
    int type = 0;                // LV2: of the wrong ones

    // Whether a stream is broken that has moved so many bytes.
    bool hasBegun(std::size_t moved) const { return kind != none && moved >= at; }
    // How many bytes may go through at once, as the turn counts.
    std::size_t most(std::size_t piece, std::size_t turn) const {
        return pieces.empty() ? piece : pieces[turn % pieces.size()] + std::size_t{1};
    }
};

// One instance of the plug-in.
class FormatHost {
public:
    enum Outputs { both, left, none };

    virtual ~FormatHost() = default;
    // Samples of 64 bits from the next start on, rounded to a `Sound`; false where the format has none.
    virtual bool useDoubles() { return false; }
    virtual void start(double rate, int mostFrames) = 0;
    virtual void stop() = 0;
    // Whether it can be set to a rate; asked while it is off.
    virtual bool takesRate(double rate) = 0;
    // A block with these events, in this order.
    virtual Sound render(int frames, const std::vector<Event>& events = {}, Outputs outputs = both) = 0;
    // The state, in pieces of at most so many bytes; empty if the plug-in fails.
    virtual Bytes save(std::size_t piece) = 0;
    virtual bool load(const Bytes& state, std::size_t piece) = 0;
    // What is wrong with the streams of the loads and saves that follow.
    void setFault(StreamFault fault) { fault_ = std::move(fault); }
    // The stored value of a parameter without states, as the format tells it; below 0 where it does not.
    virtual double parameter(int) { return -1; }
    // Sets a parameter beside the blocks, where the format has a way.
    virtual void setBesideBlocks(int, double) {}
    // Nothing where the format does not tell.
    virtual std::optional<ParameterFacts> facts(int) { return {}; }
    virtual int parameterCount() { return 0; }
    // Whether it has a text for the lowest value of a parameter by its number, of which there may be none.
    virtual bool hasText(std::uint32_t) { return false; }
    // All sound ends, where the format has such a call. On the thread that renders.
    virtual void reset() {}

    // What the plug-in told of its parameters since last asked.
    std::vector<Told> takeTold() {
        const std::lock_guard guard(mutex_);
        return std::exchange(told_, {});
    }
    // How often it has called its state a new one since last asked.
    int takeDirtyMarks() {
        const std::lock_guard guard(mutex_);
        return std::exchange(dirtyMarks_, 0);
    }
    // Which sizes it wanted for its window.
    std::vector<std::pair<int, int>> takeSizes() { return std::exchange(sizes_, {}); }
    // Ids of notes that it called over.
    std::vector<int> takeEnds() { return std::exchange(ends_, {}); }

    // What the following blocks are told of the song; the first entry is the block's begin. Empty: nothing.
    void setSong(std::vector<Song> song) { song_ = std::move(song); }
    void setOffline(bool isOffline) { isOffline_ = isOffline; }
    // Whether the format lets a host say either.
    virtual bool tellsOffline() const { return true; }

    // The window in an X11 window of the host's; false if the plug-in has none to open.
    virtual bool openWindow(std::uintptr_t parent) = 0;
    virtual void idle() = 0;
    // Of several the one opened first.
    virtual void closeWindow() = 0;
    // Whether the format lets a host open a window while it has one.
    virtual bool mayOpenTwice() const { return false; }
    // The host's loop between two calls, without a window too.
    virtual void loop() {}

    // Makes another instance and ends it; false if it could not be made.
    virtual bool makesAnother() { return true; }

    // How many allocations succeed inside each of the calls that make sound, stop and start it, that move states, and that make
    // and end instances and windows; below 0: all. They fail in the plug-in, in its threads, and in the host that it calls. The
    // program links failing_allocation.cpp.
    void setAllocationsLeft(long count) { allocationsLeft_ = count; }

protected:
    template <class Call>
    void called(Call&& call) const {
        struct Enough {
            ~Enough() { vantoric::test::allocationsLeft = -1; }
        } const afterwards;  // whatever the call throws
        vantoric::test::allocationsLeft = allocationsLeft_;
        call();
    }
    void note(const Told& told) {
        const std::lock_guard guard(mutex_);
        told_.push_back(told);
    }
    void noteDirty() {
        const std::lock_guard guard(mutex_);
        ++dirtyMarks_;
    }

    StreamFault fault_;
    std::vector<std::pair<int, int>> sizes_;
    std::vector<int> ends_;
    std::vector<Song> song_;
    bool isOffline_ = false;
    long allocationsLeft_ = -1;

private:
    std::mutex mutex_;
    std::vector<Told> told_;
    int dirtyMarks_ = 0;
};

struct Format {
    std::string name;
    std::unique_ptr<FormatHost> (*make)();
    bool hasFramesOfParameters;  // values are heard at their frame
};

// Those that this build has. Each is loaded from where it was built.
std::vector<Format> formats();

std::unique_ptr<FormatHost> makeClapHost();
std::unique_ptr<FormatHost> makeClapHostWithoutTimers();
std::unique_ptr<FormatHost> makeLv2Host();
std::unique_ptr<FormatHost> makeVst3Host();

// Opens a module; throws std::runtime_error with the loader's words. It stays for ever.
void* loadModule(const char* path, const char* symbol);

}  // namespace testhost
