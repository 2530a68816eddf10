// A plug-in module as a host holds it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "apps/midi/midi_file.h"
#include "apps/render/vst2_host.h"

namespace vantoric::render {

// A message and the frame at which it is due, counted from the start of the block that it is sent with.
struct BlockEvent {
    int frame = 0;
    midi::Message message;
};

// Where the transport stands at the start of a block.
struct Transport {
    double samplePosition = 0.0;
    double ppq = 0.0;       // quarter notes
    double tempo = 120.0;   // beats a minute
    double barStart = 0.0;  // quarter notes
    int numerator = 4, denominator = 4;
    bool changed = false;  // the transport has just started
};

// One instance of a plug-in. All calls from one thread.
class PluginHost {
public:
    // Loads the module and makes an instance. Null with a reason if that fails.
    static std::unique_ptr<PluginHost> load(const std::string& path, std::string& problem);
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    std::string name();
    std::string vendor();
    int outputs() const { return plugin_->outputs; }
    int parameters() const { return plugin_->parameters; }

    // For index 0 to parameters() - 1.
    std::string parameterName(int index) { return text(vst2::callParameterName, index); }
    std::string parameterDisplay(int index) { return text(vst2::callParameterDisplay, index); }
    std::string parameterLabel(int index) { return text(vst2::callParameterLabel, index); }
    float parameter(int index) { return plugin_->getParameter(plugin_, index); }
    void setParameter(int index, float value) { plugin_->setParameter(plugin_, index, value); }

    std::int32_t uniqueId() const { return plugin_->uniqueId; }
    bool takesChunks() const { return (plugin_->flags & vst2::flagChunks) != 0; }
    // Hands over the chunk of a program. False if the plug-in keeps no chunks or refuses this one.
    bool setChunk(std::span<const std::uint8_t> chunk);

    // Rate in Hz, longest block in frames. To be called while switched off.
    void prepare(double rate, int maxBlock);
    void switchOn();
    void switchOff();

    // Sends the events, then renders `frames` (1 to maxBlock) into the two buffers. A plug-in with one output
    // fills both; outputs beyond the second are dropped.
    void process(const Transport& transport, std::span<const BlockEvent> events, int frames, float* left, float* right);

private:
    PluginHost() = default;

    static std::intptr_t callback(vst2::Plugin*, std::int32_t, std::int32_t, std::intptr_t, void*, float);
    std::intptr_t answer(std::int32_t opcode, void* pointer);
    std::string text(std::int32_t opcode, int index);
    std::intptr_t call(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0, void* pointer = nullptr,
                       float option = 0) {
        return plugin_->dispatch(plugin_, opcode, index, value, pointer, option);
    }
    void sendEvents(std::span<const BlockEvent> events);

    void* module_ = nullptr;
    vst2::Plugin* plugin_ = nullptr;
    vst2::TimeInfo time_{};
    double rate_ = 44100.0;
    int maxBlock_ = 1;
    bool on_ = false, processing_ = false;
    std::vector<vst2::MidiEvent> events_;
    std::vector<std::intptr_t> eventList_;  // an EventList with as many pointers as needed
    std::vector<std::vector<float>> buffers_;
    std::vector<float*> inputs_, outputs_;
};

}  // namespace vantoric::render
