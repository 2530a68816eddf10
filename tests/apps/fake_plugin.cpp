// A plug-in for the player's tests: one sine, and a probe that puts what the host says into the right output.
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "apps/render/vst2_host.h"

namespace {

using namespace vantoric::vst2;

enum Parameter { volume, cutoffLayer1, cutoffLayer2, probe, wave, filter, parameterCount };
constexpr const char* names[parameterCount] = {"Volume", "Cutoff1", "Cutoff1", "Probe", "Wave", "FilSeria"};
constexpr const char* waves[] = {"Sine", "Pulse 1/", "Pulse 1/", "12"};  // cut to eight characters, as plug-ins do

struct FakePlugin {
    Plugin record{};
    HostCallback host = nullptr;
    float values[parameterCount] = {0.5f, 0.1f, 0.2f, 0.0f, 0.0f, 0.0f};
    float rate = 0.0f;
    bool on = false;
    int key = -1;
    double phase = 0.0;
    std::vector<MidiEvent> events;
    std::thread loader;
    std::atomic<bool> loading = false;

    ~FakePlugin() {
        if (loader.joinable()) loader.join();
    }

    void load(std::chrono::milliseconds time) {
        loading = true;
        loader = std::thread([this, time] {
            for (const auto end = std::chrono::steady_clock::now() + time; std::chrono::steady_clock::now() < end;) {
            }
            loading = false;
        });
    }

    float probed(int frame) {
        const auto* time = reinterpret_cast<const TimeInfo*>(host(&record, hostTime, 0, 0x600, nullptr, 0.0f));
        switch (static_cast<int>(values[probe] * 10.0f + 0.5f)) {
            case 1: return static_cast<float>(time->ppqPosition / 1000.0);
            case 2: return static_cast<float>(time->tempo / 1000.0);
            case 3: return static_cast<float>(time->barStart / 1000.0);
            case 4: return std::numeric_limits<float>::quiet_NaN();
            case 5: return frame == 0 ? static_cast<float>(events.size()) / 1000.0f : 0.0f;
            default: return 0.0f;
        }
    }

    void apply(const MidiEvent& event) {
        const int kind = event.data[0] & 0xf0;
        if (kind == 0x90 && event.data[2] > 0) key = event.data[1], phase = 0.0;
        if ((kind == 0x80 || (kind == 0x90 && event.data[2] == 0)) && key == event.data[1]) key = -1;
        if (kind == 0xb0 && event.data[1] == 7) values[volume] = static_cast<float>(event.data[2]) / 127.0f;
    }

    void render(float** outputs, int frames) {
        std::size_t next = 0;
        for (int i = 0; i < frames; ++i) {
            while (next < events.size() && events[next].frame <= i) apply(events[next++]);
            const bool sounds = on && key >= 0 && !loading;
            outputs[0][i] = sounds ? values[volume] * static_cast<float>(std::sin(phase)) : 0.0f;
            phase += 6.283185307179586 * 440.0 * std::exp2((key - 69) / 12.0) / rate;
            outputs[1][i] = values[probe] > 0.0f ? probed(i) : outputs[0][i];
        }
        events.clear();
    }

    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
        auto text = [pointer](const char* words) { std::strcpy(static_cast<char*>(pointer), words); };
        switch (opcode) {
            case callClose: delete this; return 1;
            case callParameterName: text(names[index]); return 1;
            case callParameterLabel: text(index == cutoffLayer1 ? "Hz" : ""); return 1;
            case callParameterDisplay:
                if (index == wave)
                    text(values[wave] < 4 / 128.0f ? waves[static_cast<int>(values[wave] * 128.0f + 0.00001f)] : "empty");
                else if (index == filter)
                    text(values[filter] > 0.5f ? "On" : "Off");
                else
                    std::snprintf(static_cast<char*>(pointer), 8, "%.1f", static_cast<double>(values[index]));
                return 1;
            case callSampleRate: rate = option; return 1;
            case callSwitch: on = value != 0; return 1;
            case callSetChunk:
                if (value >= 2 && *static_cast<char*>(pointer) == 'V')
                    values[volume] = static_cast<unsigned char*>(pointer)[1] / 255.0f;
                if (value >= 1 && *static_cast<char*>(pointer) == 'S') load(std::chrono::milliseconds(300));
                return value < 1 || *static_cast<char*>(pointer) != 'R';
            case callEvents:
                for (int i = 0; i < static_cast<EventList*>(pointer)->count; ++i)
                    events.push_back(*static_cast<EventList*>(pointer)->events[i]);
                return 1;
            case callEffectName: text("Fake"); return 1;
            default: return 0;
        }
    }
};

FakePlugin& self(Plugin* record) { return *static_cast<FakePlugin*>(record->object); }

}  // namespace

extern "C" __attribute__((visibility("default"))) Plugin* VSTPluginMain(HostCallback host) {
    auto* fake = new FakePlugin;
    fake->host = host;
    Plugin& record = fake->record;
    record.magic = pluginMagic;
    record.object = fake;
    record.parameters = parameterCount;
    record.outputs = 2;
    record.programs = 1;
    record.uniqueId = 0x46616b65;  // "Fake"
    record.flags = flagReplacing | flagChunks | flagSynth;
    record.dispatch = [](Plugin* p, std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
        return self(p).dispatch(opcode, index, value, pointer, option);
    };
    record.setParameter = [](Plugin* p, std::int32_t index, float value) { self(p).values[index] = value; };
    record.getParameter = [](Plugin* p, std::int32_t index) { return self(p).values[index]; };
    record.processReplacing = [](Plugin* p, float**, float** outputs, std::int32_t frames) { self(p).render(outputs, frames); };
    return &record;
}
