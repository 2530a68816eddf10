// A host for tests: loads a plug-in module as a stranger, answers what it asks, keeps account of it, and renders into
// buffers that are poisoned, fenced to the byte and new on every call.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/host/abi.h"

namespace testhost {

// What the host answers. May be changed between calls.
struct HostAnswers {
    bool silent = false;  // 0 to everything
    std::string vendor = "Vantoric tests";
    std::string product = "Test host";
    int vendorVersion = 1000;
    int interfaceVersion = 2400;
    int canDo = 1;
    float rate = 48000.0f;
    int blockSize = 512;
    bool knowsTime = true;      // false: a null answer
    bool timeAdvances = false;  // the quarter-note position moves on with the rendered frames
    wire::Time time;
    bool resizes = false;                    // grants the sizes that the plug-in's window asks for
    std::function<void(int op)> heard = {};  // what the host does when it is asked something, on the asking thread
};

// `count` samples that end right before a page that cannot be touched; the bytes before them are a fence, the
// samples are NaN. The destructor takes the pages away, so that a write to an old buffer is seen as well.
template <class Sample>
class GuardedBuffer {
public:
    explicit GuardedBuffer(std::size_t count);
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer();

    Sample* data() const { return data_; }
    std::size_t size() const { return count_; }
    bool fenceIntact() const;

private:
    unsigned char* pages_;
    std::size_t bytes_;
    std::size_t count_;
    Sample* data_;
};

template <class Sample>
struct Stereo {
    std::vector<Sample> left, right;
    bool intact = true;  // nothing was written outside the buffers

    bool finite() const;  // no NaN, no infinity: also, every sample was written
    Sample peak() const;
    void append(const Stereo& more);
    bool operator==(const Stereo& other) const;  // the same bits
};
using Sound = Stereo<float>;
using DoubleSound = Stereo<double>;

struct Automation {
    int index;
    float value;
};

// A module held in memory.
class Module {
public:
    explicit Module(const std::string& path);  // throws std::runtime_error with the loader's words
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module();
    wire::EntryFunction entry(const char* name) const;  // null if there is none

private:
    void* handle_;
};

// Names that the ELF file at `path` exports, sorted.
std::vector<std::string> exportedSymbols(const std::string& path);

// One instance of a plug-in. The constructor calls the entry point; nothing else is called until asked for.
class PluginHost {
public:
    explicit PluginHost(const std::string& path, HostAnswers answers = {}, const char* entry = "VSTPluginMain");
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;
    ~PluginHost();  // closes

    wire::Effect* effect() const { return effect_; }  // null after close()
    HostAnswers& answers() { return answers_; }

    wire::word call(wire::i32 op, wire::i32 index = 0, wire::word value = 0, void* ptr = nullptr, float opt = 0.0f);
    // Open, rate, block size, on: what hosts do before the first block.
    void start();
    void open() { call(wire::opOpen); }
    void on() { call(wire::opMains, 0, 1); }
    void off() { call(wire::opMains, 0, 0); }
    void close();
    void setRate(float rate);
    void setBlockSize(int frames);

    // Queues a MIDI message for the next block.
    void midi(int status, int data1, int data2, int offset = 0);
    // Sends event records as they are, nulls included; `count` overrides the true number. They must live on until the
    // next block is rendered.
    wire::word sendEvents(const std::vector<void*>& events, int count);
    wire::word sendEvents(const std::vector<void*>& events) { return sendEvents(events, static_cast<int>(events.size())); }
    // Sends what is queued, if anything.
    void flushMidi();

    Sound render(int frames) { return renderBlock<float>(frames, effect_->render); }
    DoubleSound renderDouble(int frames) { return renderBlock<double>(frames, effect_->renderDouble); }
    // Many blocks in a row, of at most `blockSize` frames.
    Sound renderLong(int frames, int blockSize);

    void setParameter(int index, float value) { effect_->setParameter(effect_, index, value); }
    float parameter(int index) const { return effect_->getParameter(effect_, index); }
    std::string text(wire::i32 op, int index = 0);
    std::vector<unsigned char> chunk(bool isPreset = true);
    wire::word setChunk(const std::vector<unsigned char>& data, bool isPreset = true);

    // Frames rendered so far, from which the time given to the plug-in is counted.
    double position() const { return position_; }
    int timesEventsWanted() const { return eventsWanted_; }
    int timesTimeAsked() const { return timeAsked_; }
    int timesAsked(wire::i32 op) const { return op >= 0 && op < 64 ? asked_[op].load() : 0; }
    std::vector<Automation> automations() const;  // the first 1024 since `forgetAutomations`
    void forgetAutomations() { automationCount_ = 0; }
    // The window size that was asked for last; {0, 0} for none.
    struct WindowSize {
        int width = 0, height = 0;
    };
    WindowSize sizeWanted() const { return sizeWanted_; }

private:
    static wire::word hostFunction(wire::Effect*, wire::i32, wire::i32, wire::word, void*, float);
    wire::word answer(wire::i32 op, wire::i32 index, wire::word value, void* ptr, float opt);
    wire::word giveTime();
    template <class Sample>
    Stereo<Sample> renderBlock(int frames, void (*process)(wire::Effect*, Sample**, Sample**, wire::i32));

    HostAnswers answers_;
    Module module_;
    wire::Effect* effect_ = nullptr;
    std::vector<wire::Midi> queue_;
    std::vector<std::unique_ptr<std::vector<wire::Midi>>> sent_;  // alive until the block is rendered
    std::vector<std::unique_ptr<std::vector<void*>>> lists_;
    wire::Time time_;
    double position_ = 0;
    std::array<std::atomic<int>, 64> asked_{};
    std::atomic<int> eventsWanted_{0};
    std::atomic<int> timeAsked_{0};
    std::array<Automation, 1024> automations_{};
    std::atomic<int> automationCount_{0};
    WindowSize sizeWanted_;
};

}  // namespace testhost
