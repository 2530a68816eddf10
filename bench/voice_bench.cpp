// Time of voices, ticks, whole blocks and the slow operations: bench-voice [FOLDER [SECONDS]]. FOLDER holds Vantoric_data
// with the wave banks; without it the folder dist-data beside the program. With SECONDS just so much sound of 64 voices
// with two filters, for a profiler.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/instrument.h"
#include "engine/wave_library.h"
#include "platform/module_folder.h"
#include "platform/recorded_dialogs.h"
#include "platform/settings.h"
#include "platform/thread.h"
#include "sound/filters/wide_loops.h"
#include "sound/kernels.h"

#include "thread_time.h"

using namespace vantoric;
using bench::bestTime;
using bench::threadSeconds;
namespace par = parameter;

namespace {

constexpr float hostRate = 48000.0f;
constexpr int blockFrames = 256;

// Rows of the list of filter types.
constexpr int openPass = 0, lowPass24 = 4;

struct Rig {
    platform::RecordedDialogs dialogs;
    Instrument audio{dialogs};
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

    // Three wavetable oscillators into two filters of a type.
    void plainLayer(int layer, int filterType = openPass) {
        const auto n = [&](int number) { return hostIndex(number, layer); };
        set(par::Layer1On + layer, 1.0f);
        for (int i = 0; i < oscillatorCount; ++i) {
            setList(n(par::KeyEnd1 + i), 127);
            for (const int number : {par::Oct1, par::Detune1, par::Pw1}) set(n(number + i), 0.5f);
            set(n(par::Timbre1 + i), 0.5f);
            set(n(par::KeyFol1 + i), 1.0f);
            set(n(par::On1 + i), 1.0f);
            set(n(par::Vol1 + i), 0.5f);
            setList(n(par::SynType1 + i), wavetableType);
            setList(n(par::WTWave1 + i), i);
            if (i > 0) set(n(par::Fm1 + i - 1), 0.0f);
        }
        for (int f = 0; f < filterCount; ++f) {
            set(n(par::FilVol1 + f), 1.0f);
            for (const int number : {par::FilPan1, par::FilKey1, par::FilEnv1}) set(n(number + f), 0.5f);
            setList(n(par::FilType1 + f), filterType);
            set(n(par::Cutoff1 + f), 0.7f);
            set(n(par::Reso1 + f), 0.5f);
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
    void block() { audio.render(left.data(), right.data(), blockFrames, Transport{}); }
    // As many layers on as `count` voices need, and those voices held, past the allocation that would fade one of
    // sixteen.
    void hold(int count, int filterType) {
        for (int layer = 0; layer < layerCount; ++layer) {
            plainLayer(layer, filterType);
            set(par::Layer1On + layer, layer * voiceCount < count ? 1.0f : 0.0f);
        }
        start();
        for (int i = 0; i < count; ++i)
            audio.layer(i / voiceCount).voice(voiceCount - 1 - i % voiceCount).noteOn(36 + i % 48, 100);
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

// Sixteen voices on the first layer, ticked once.
Layer& wholeLayer(Rig& rig) {
    rig.start();
    Layer& layer = rig.audio.layer(0);
    for (int v = 0; v < voiceCount; ++v) layer.voice(v).noteOn(36 + 3 * v, 100);
    layer.tick();
    return layer;
}
double renderTime(Rig& rig, Layer& layer) {
    const int count = rig.audio.state().tickSamples;
    return bestTime(5, 300, [&] { layer.renderBlock(rig.left.data(), rig.right.data(), count); }) / (voiceCount * count);
}
double tickTime(Layer& layer) {
    return bestTime(5, 1000, [&] { layer.tick(); }) / voiceCount;
}

void kernelCosts(Rig& rig) {
    struct Row {
        const char* name;
        int synType, quality;
        float fm;
    };
    constexpr Row rows[] = {{"no oscillator", -1, lowCpu, 0},
                            {"wavetable, Low CPU", wavetableType, lowCpu, 0},
                            {"wavetable, High quality", wavetableType, highQuality, 0},
                            {"wavetable, Crossblend PW", wavetableType, crossblendPw, 0},
                            {"wavetable, High, FM", wavetableType, highQuality, 0.4f},
                            {"hypersaw", hypersawType, highQuality, 0},
                            {"noise", noiseType, highQuality, 0},
                            {"custom wave, High", customWaveType, highQuality, 0},
                            {"analog", analogType, highQuality, 0}};
    std::puts("voice by kernel of its three oscillators, without filters and tick, per internal sample");
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
        const double voice = renderTime(rig, wholeLayer(rig));
        if (row.synType < 0) base = voice;
        std::printf("  %-25s %7.2f ns   of it each oscillator %6.2f ns\n", row.name, voice * 1e9, (voice - base) / 3 * 1e9);
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
        const double tick = tickTime(wholeLayer(rig));
        std::printf("  %2d slots               %7.1f ns   %5.2f ns an internal sample\n", slots, tick * 1e9,
                    tick * 1e9 / rig.audio.state().tickSamples);
    }
    for (int s = 0; s < 15; ++s) rig.setList(par::MatSrc1 + s, 0);
}

void layerCosts(Rig& rig) {
    std::puts("a layer of sixteen voices, three High quality wavetables each, per voice and internal sample");
    double open = 0.0;
    for (const int type : {openPass, lowPass24}) {
        rig.plainLayer(0, type);
        Layer& layer = wholeLayer(rig);
        const double render = renderTime(rig, layer), tick = tickTime(layer) / rig.audio.state().tickSamples;
        std::printf("  %-22s %7.2f ns   of it ticks %.2f ns", type == openPass ? "no filter" : "two LP 24dB",
                    (render + tick) * 1e9, tick * 1e9);
        if (type == openPass)
            open = render;
        else
            std::printf(", each filter %.2f ns", (render - open) / 2 * 1e9);
        std::puts("");
    }
}

// Voices fill one layer after the other.
void polyphony(Rig& rig, const char* title, int quality, int filterType) {
    std::printf("%s, host rate 48 kHz, one core\n", title);
    rig.setList(par::Quality, quality);
    for (const int voices : {4, 8, 16, 32, 64}) {
        rig.hold(0, filterType);
        const double silent = median(rig.blockTimes(50));
        rig.hold(voices, filterType);
        rig.blockTimes(20);
        const std::vector<double> times = rig.blockTimes(400);
        const double middle = median(times), each = (middle - silent) / voices;
        std::printf(
            "  %2d voices  %6.1f x real time   %6.2f us a voice and block, %5.1f ns a voice and frame   "
            "99%% / median %.2f   worst / median %.2f\n",
            voices, blockSeconds / middle, each * 1e6, each * 1e9 / blockFrames, percentile(times, 0.99) / middle,
            percentile(times, 1.0) / middle);
    }
    rig.setList(par::Quality, highQuality);
}

void noteBurst(Rig& rig, const char* title, int filterType) {
    rig.hold(64, filterType);
    rig.audio.layer(0).reset();
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
    std::printf("burst of sixteen keys on four layers, %s: block / median of 48 voices %.2f, worst of ten %.2f\n", title,
                best / middle, worst / middle);
}

void slowOperations() {
    for (const char* name : {"first instance, until it sounds", "second instance, until it sounds"}) {
        static std::unique_ptr<Rig> first;
        const double begin = bench::seconds(CLOCK_MONOTONIC);
        auto rig = std::make_unique<Rig>();
        std::printf("%-34s %7.1f ms\n", name, (bench::seconds(CLOCK_MONOTONIC) - begin) * 1e3);
        if (first == nullptr)
            first = std::move(rig);
        else
            first.reset();
    }
    Rig rig;
    const ChunkBytes chunk = rig.audio.patchChunk().getChunk();
    double best = 1e9;
    for (int i = 0; i < 10; ++i) {
        const double begin = bench::seconds(CLOCK_MONOTONIC);
        rig.audio.patchChunk().setChunk(chunk.data.get(), chunk.size);
        best = std::min(best, bench::seconds(CLOCK_MONOTONIC) - begin);
    }
    std::printf("%-34s %7.1f ms\n", "setChunk without samples", best * 1e3);
}

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    if (argc > 2) {
        Rig rig;
        rig.hold(64, lowPass24);
        rig.setList(par::Quality, highQuality);
        rig.blockTimes(static_cast<int>(std::atof(argv[2]) / blockSeconds));
        return 0;
    }
    slowOperations();
    Rig rig;
    if (WaveLibrary::shared().store().wave(0) == nullptr) std::puts("no wave banks: wavetable figures are of silent kernels");
    kernelCosts(rig);
    tickCosts(rig);
    layerCosts(rig);
    polyphony(rig, "three High quality wavetables", highQuality, openPass);
    polyphony(rig, "three High quality wavetables and two LP 24dB", highQuality, lowPass24);
    if (filters::wideLoopsInUse()) {
        filters::useWideLoops(false);
        polyphony(rig, "the same with registers of four lanes", highQuality, lowPass24);
        filters::useWideLoops(true);
    }
    polyphony(rig, "three Crossblend PW wavetables and two LP 24dB", crossblendPw, lowPass24);
    noteBurst(rig, "no filter", openPass);
    noteBurst(rig, "two LP 24dB", lowPass24);
    return 0;
}
