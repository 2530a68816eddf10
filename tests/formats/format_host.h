// A small host for a plug-in of any format: what the formats have in common, so that the same tests run on each.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/plugin_host.h"

namespace testhost {

struct Event {
    enum Kind { midi, value, modulation } kind = midi;
    int frame = 0;
    std::uint8_t status = 0, data1 = 0, data2 = 0;
    int index = 0;         // of a parameter
    double plain = 0;      // its value, from 0 to `largest`
    double largest = 1.0;  // plain value of the parameter

    static Event note(int frame, int key, bool isOn = true) {
        return {midi, frame, static_cast<std::uint8_t>(isOn ? 0x90 : 0x80), static_cast<std::uint8_t>(key), 100};
    }
    static Event controller(int frame, int number, int to) {
        return {midi, frame, 0xb0, static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(to)};
    }
    static Event set(int frame, int index, double plain, double largest = 1.0) {
        return {value, frame, 0, 0, 0, index, plain, largest};
    }
};

using Bytes = std::vector<std::uint8_t>;

// One instance of the plug-in.
class FormatHost {
public:
    enum Outputs { both, left, none };

    virtual ~FormatHost() = default;
    virtual void start(double rate, int mostFrames) = 0;
    virtual void stop() = 0;
    // A block with these events, in this order.
    virtual Sound render(int frames, const std::vector<Event>& events = {}, Outputs outputs = both) = 0;
    // The state, in pieces of at most so many bytes; empty if the plug-in fails.
    virtual Bytes save(std::size_t piece) = 0;
    virtual bool load(const Bytes& state, std::size_t piece) = 0;
    // The stored value of a parameter without states, as the format tells it; below 0 where it does not.
    virtual double parameter(int) { return -1; }
    // What the plug-in told of its parameters since last asked: index and plain value.
    virtual std::vector<std::pair<int, double>> takeNews() { return {}; }

    // The window in an X11 window of the host's; false if the plug-in has none to open.
    virtual bool openWindow(std::uintptr_t parent) = 0;
    virtual void idle() = 0;
    virtual void closeWindow() = 0;
};

struct Format {
    std::string name;
    std::unique_ptr<FormatHost> (*make)();
    bool hasFramesOfParameters;  // values are heard at their frame
};

// Those that this build has. Each is loaded from where it was built.
std::vector<Format> formats();

std::unique_ptr<FormatHost> makeClapHost();
std::unique_ptr<FormatHost> makeLv2Host();
std::unique_ptr<FormatHost> makeVst3Host();

// Opens a module; throws std::runtime_error with the loader's words. It stays for ever.
void* loadModule(const char* path, const char* symbol);

}  // namespace testhost
