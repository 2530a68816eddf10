// Time of voices, ticks, whole blocks and the slow operations: bench-voice [FOLDER]. FOLDER holds Vantoric_data
// with the wave banks; without it the folder dist-data beside the program. Times are processor time of the thread,
// so that a busy machine does not spoil them.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/q7audio.h"
#include "engine/wave_library.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/settings.h"
#include "platform/thread.h"

using namespace vantoric;
namespace par = parameter;

namespace {

constexpr float hostRate = 48000.0f;
constexpr int blockFrames = 256;
constexpr int highQuality = 2;

double seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}
double threadSeconds() { return seconds(CLOCK_THREAD_CPUTIME_ID); }

// Best of several rounds, in seconds a call.
double timed(int calls, const std::function<void()>& work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const double start = threadSeconds();
        for (int i = 0; i < calls; ++i) work();
        best = std::min(best, (threadSeconds() - start) / calls);
    }
    return best;
}

struct Rig {
    platform::RecordedDialogs dialogs;
    Q7Audio audio{nullptr, dialogs};
    std::vector<float> left = std::vector<float>(blockFrames), right = std::vector<float>(blockFrames);

    Rig() {
        audio.setSampleRate(hostRate);
        while (audio.flags().audioMuted.isSet()) platform::sleepMilliseconds(1);
        for (int i = 0; i < parameterCount; ++i) set(i, 0.0f);
        set(par::Volume, 0.5f);
        for (const int n : {par::EqLow, par::EqMid, par::EqHigh}) set(n, 0.5f);
        setList(par::Quality, highQuality);
        for (int layer = 0; layer < layerCount; ++layer) plainLayer(layer);
    }
    void set(int index, float value) { audio.parameters().writeRaw(index, value); }
    void setList(int index, int row) { set(index, listValue(row)); }

    // Three oscillators into two open low-passes.
    void plainLayer(int layer) {
        const auto n = [&](int number) { return hostIndex(number, layer); };
        set(par::Layer1On + layer, 1.0f);
        for (int i = 0; i < oscillatorCount; ++i) {
            setList(n(par::KeyEnd1 + i), 127);
            for (const int number : {par::Oct1, par::Detune1, par::Pw1}) set(n(number + i), 0.5f);
            set(n(par::Timbre1 + i), 0.5f);
            set(n(par::KeyFol1 + i), 1.0f);
            set(n(par::On1 + i), 1.0f);
            set(n(par::Vol1 + i), 0.5f);
            setList(n(par::WTWave1 + i), i);
        }
        for (int f = 0; f < filterCount; ++f) {
            set(n(par::FilVol1 + f), 1.0f);
            for (const int number : {par::FilPan1, par::FilKey1, par::FilEnv1}) set(n(number + f), 0.5f);
            set(n(par::Cutoff1 + f), 0.8f);
        }
        set(n(par::LayerVol), 0.4f);
        set(n(par::SusVol), 0.99f);
        setList(n(par::PlayMode), 8);
        for (int i = 0; i < 16; ++i) set(n(par::MatVal1 + i), 0.5f);
    }

    void start() {
        audio.resetEngine();
        block();
    }
    void block() {
        float* outputs[2] = {left.data(), right.data()};
        audio.processReplacing(nullptr, outputs, blockFrames);
    }
    // Starts `count` voices, spread over the layers, past the allocation that would fade one of sixteen.
    void hold(int count) {
        for (int i = 0; i < count; ++i)
            audio.layer(i % layerCount).voice(voiceCount - 1 - i / layerCount).noteOn(36 + i % 48, 100);
    }
    std::vector<double> blockTimes(int blocks) {
        std::vector<double> times;
        for (int i = 0; i < blocks; ++i) {
            const double begin = threadSeconds();
            block();
            times.push_back(threadSeconds() - begin);
        }
        return times;
    }
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}
double percentile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

constexpr double blockSeconds = blockFrames / static_cast<double>(hostRate);

void kernelCosts(Rig& rig) {
    struct Row {
        const char* name;
        int synType, quality;
        float fm;
    };
    constexpr Row rows[] = {{"no oscillator", -1, 0, 0},  {"wavetable, draft", 0, 0, 0},       {"wavetable, middle", 0, 1, 0},
                            {"wavetable, high", 0, 2, 0}, {"wavetable, high, FM", 0, 2, 0.4f}, {"hypersaw", 1, 2, 0},
                            {"noise", 2, 2, 0},           {"custom wave, high", 4, 2, 0},      {"analog", 5, 2, 0}};
    std::puts("voice by kernel of its three oscillators, per internal sample");
    double base = 0.0;
    for (const Row& row : rows) {
        rig.setList(par::Quality, row.quality);
        for (int i = 0; i < oscillatorCount; ++i) {
            rig.setList(par::SynType1 + i, std::max(row.synType, 0));
            rig.setList(par::SSWave1 + i, 9);
            rig.set(par::Vol1 + i, row.synType < 0 ? 0.0f : 0.5f);
        }
        rig.set(par::Fm1, row.fm);
        rig.set(par::Fm1 + 1, row.fm);
        rig.start();
        Layer& layer = rig.audio.layer(0);
        for (int v = 0; v < voiceCount; ++v) layer.voice(v).noteOn(36 + 3 * v, 100);
        layer.tick();
        const int count = rig.audio.state().tickSamples;
        const double voice =
            timed(300, [&] { layer.renderBlock(rig.left.data(), rig.right.data(), count); }) / (voiceCount * count);
        if (row.synType < 0) base = voice;
        std::printf("  %-22s %7.2f ns   of it each oscillator %6.2f ns\n", row.name, voice * 1e9, (voice - base) / 3 * 1e9);
    }
    rig.setList(par::Quality, highQuality);
}

void tickCosts(Rig& rig) {
    std::puts("voice tick (a voice of sixteen)");
    for (const int slots : {0, 5, 15}) {
        rig.plainLayer(0);
        for (int s = 0; s < slots; ++s) {
            rig.setList(par::MatSrc1 + s, 2 + s);
            rig.setList(par::MatDst1 + s, 32 + s % 6);
        }
        rig.start();
        Layer& layer = rig.audio.layer(0);
        for (int v = 0; v < voiceCount; ++v) layer.voice(v).noteOn(36 + 3 * v, 100);
        const double tick = timed(1000, [&] { layer.tick(); }) / voiceCount;
        std::printf("  %2d slots               %7.1f ns   %5.2f ns an internal sample\n", slots, tick * 1e9,
                    tick * 1e9 / rig.audio.state().tickSamples);
    }
    for (int s = 0; s < 15; ++s) rig.setList(par::MatSrc1 + s, 0);
}

void polyphony(Rig& rig) {
    std::puts("voices of three high quality wavetables, host rate 48 kHz, one core");
    double silent = 0.0;
    for (const int voices : {0, 4, 8, 16, 32, 64}) {
        for (int layer = 0; layer < layerCount; ++layer) rig.plainLayer(layer);
        rig.start();
        rig.hold(voices);
        rig.blockTimes(20);
        const std::vector<double> times = rig.blockTimes(400);
        const double middle = median(times);
        if (voices == 0) silent = middle;
        std::printf("  %2d voices  %6.1f x real time   %6.2f us a voice and block   99%% / median %.2f   worst / median %.2f\n",
                    voices, blockSeconds / middle, voices > 0 ? (middle - silent) / voices * 1e6 : 0.0,
                    percentile(times, 0.99) / middle, percentile(times, 1.0) / middle);
    }
}

void noteBurst(Rig& rig) {
    rig.start();
    rig.hold(48);
    rig.blockTimes(20);
    const double middle = median(rig.blockTimes(200));
    double worst = 0.0, best = 1e9;
    for (int round = 0; round < 10; ++round) {
        rig.audio.layer(0).reset();
        for (int v = 0; v < voiceCount; ++v) rig.audio.midi().enqueueMidi(0x90, static_cast<std::uint8_t>(40 + v), 100, 0);
        const double time = percentile(rig.blockTimes(2), 1.0);
        worst = std::max(worst, time);
        best = std::min(best, time);
    }
    std::printf("burst of sixteen keys on four layers: block / median of 48 voices %.2f, worst of ten %.2f\n", best / middle,
                worst / middle);
}

void slowOperations() {
    for (const char* name : {"first instance, until it sounds", "second instance, until it sounds"}) {
        static std::unique_ptr<Rig> first;
        const double begin = seconds(CLOCK_MONOTONIC);
        auto rig = std::make_unique<Rig>();
        std::printf("%-34s %7.1f ms\n", name, (seconds(CLOCK_MONOTONIC) - begin) * 1e3);
        if (first == nullptr)
            first = std::move(rig);
        else
            first.reset();
    }
    Rig rig;
    void* data = nullptr;
    const std::int32_t size = rig.audio.getChunk(&data, false);
    double best = 1e9;
    for (int i = 0; i < 10; ++i) {
        const double begin = seconds(CLOCK_MONOTONIC);
        rig.audio.setChunk(data, size, false);
        best = std::min(best, seconds(CLOCK_MONOTONIC) - begin);
    }
    std::printf("%-34s %7.1f ms\n", "setChunk without samples", best * 1e3);
    std::free(data);
}

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    slowOperations();
    Rig rig;
    if (WaveLibrary::shared().store().wave(0) == nullptr) std::puts("no wave banks: wavetable figures are of silent kernels");
    kernelCosts(rig);
    tickCosts(rig);
    polyphony(rig);
    noteBurst(rig);
    return 0;
}
