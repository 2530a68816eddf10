// Time of voices, ticks, whole blocks and the slow operations: bench-voice [FOLDER [PART [SECONDS]]]. FOLDER holds
// Vantoric_data with the wave banks; without it the folder dist-data beside the program. PART is one of the parts below,
// or "64", "16" or "note" with SECONDS: just so much sound of so many voices, or of one note on four layers, with
// everything in use, for a profiler.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "engine/instrument.h"
#include "engine/wave_library.h"
#include "platform/module_folder.h"
#include "platform/settings.h"
#include "platform/thread.h"
#include "sound/filters/wide_loops.h"
#include "sound/kernels.h"

#include "full_patch.h"
#include "thread_time.h"

using namespace vantoric;
using bench::bestTime;
using bench::Patch;
using bench::threadSeconds;
namespace par = parameter;

namespace {

constexpr float hostRate = 48000.0f;
constexpr int blockFrames = 256;

// What everything in use is to cost at most, in processor time of one core near 3.5 GHz.
constexpr double aimOf64 = 20, aimOf16 = 24, aimOfNote = 250;  // ns a voice and frame; ns a frame in all
constexpr double aimOfTick = 260, aimOfTone = 2;               // ns a voice and tick; ns a voice and internal sample

// All that this program asks of the engine.
class Engine {
public:
    Engine() {
        audio_.setSampleRate(hostRate);
        while (audio_.flags().audioMuted.isSet()) platform::sleepMilliseconds(1);
    }
    ParameterModel& parameters() { return audio_.parameters(); }
    void set(int index, float value) { parameters().writeRaw(index, value); }
    void start() {
        audio_.resetEngine();
        block();
    }
    void block() { audio_.render(left.data(), right.data(), blockFrames, Transport{}); }
    // Voices without a key sound on.
    void holdPedal() { audio_.midi().enqueueMidi(0xb0, 64, 127, 0); }
    void press(int key) { audio_.midi().enqueueMidi(0x90, static_cast<std::uint8_t>(key), 100, 0); }
    Layer& layer(int index) { return audio_.layer(index); }
    int tickSamples() { return audio_.state().tickSamples; }
    // Takes its own patch back in.
    double loadTime() {
        const ChunkBytes chunk = audio_.patchChunk().getChunk();
        const double begin = bench::seconds(CLOCK_MONOTONIC);
        audio_.patchChunk().setChunk(chunk.data.get(), chunk.size);
        return bench::seconds(CLOCK_MONOTONIC) - begin;
    }

    std::vector<float> left = std::vector<float>(blockFrames), right = std::vector<float>(blockFrames);

private:
    Instrument audio_;
};

struct Rig : Engine {
    Rig() { bench::takePatchAlone(parameters(), Patch::plain); }
    void setList(int index, int row) { set(index, listValue(row)); }
    void takePatch(int layer, Patch patch = Patch::plain) { bench::takePatch(parameters(), layer, patch); }

    // Layers on, and as many voices on each.
    void hold(int layers, int voices, Patch patch) {
        for (int i = 0; i < layerCount; ++i) {
            takePatch(i, patch);
            set(par::Layer1On + i, i < layers ? 1.0f : 0.0f);
        }
        start();
        holdPedal();
        for (int i = 0; i < layers * voices; ++i) layer(i / voices).voice(voiceCount - 1 - i % voices).noteOn(36 + i % 48, 100);
    }
    // As many layers on as `count` voices need, and those voices held, past the allocation that would fade one of
    // sixteen.
    void hold(int count, Patch patch) { hold((count + voiceCount - 1) / voiceCount, std::min(count, voiceCount), patch); }
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
    Layer& layer = rig.layer(0);
    for (int v = 0; v < voiceCount; ++v) layer.voice(v).noteOn(36 + 3 * v, 100);
    layer.tick();
    return layer;
}
double renderTime(Rig& rig, Layer& layer) {
    const int count = rig.tickSamples();
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

double printTick(Rig& rig, const char* name) {
    const double tick = tickTime(wholeLayer(rig));
    std::printf("  %-22s %7.1f ns   %5.2f ns an internal sample", name, tick * 1e9, tick * 1e9 / rig.tickSamples());
    return tick * 1e9;
}

void tickCosts(Rig& rig) {
    std::puts("voice tick (a voice of sixteen)");
    for (const int slots : {0, 5, 15}) {
        rig.takePatch(0);
        for (int s = 0; s < slots; ++s) {
            rig.setList(par::MatSrc1 + s, 2 + s);
            rig.setList(par::MatDst1 + s, 32 + s % 6);
        }
        char name[32];
        std::snprintf(name, sizeof name, "%d slots", slots);
        printTick(rig, name);
        std::puts("");
    }
    for (int s = 0; s < 15; ++s) rig.setList(par::MatSrc1 + s, 0);
    rig.takePatch(0, Patch::full);
    bench::printAim(printTick(rig, "everything in use"), aimOfTick, " ns");
}

void layerCosts(Rig& rig) {
    std::puts("a layer of sixteen voices, three High quality wavetables each, per voice and internal sample");
    double open = 0.0;
    for (const Patch patch : {Patch::plain, Patch::filters, Patch::full}) {
        rig.takePatch(0, patch);
        Layer& layer = wholeLayer(rig);
        const double render = renderTime(rig, layer), tick = tickTime(layer) / rig.tickSamples();
        constexpr const char* names[] = {"no filter", "two LP 24dB", "everything in use"};
        std::printf("  %-22s %7.2f ns   of it ticks %.2f ns", names[static_cast<int>(patch)], (render + tick) * 1e9, tick * 1e9);
        if (patch == Patch::plain) open = render;
        if (patch == Patch::filters) std::printf(", each filter %.2f ns", (render - open) / 2 * 1e9);
        std::puts("");
    }
}

// The tone stages of a voice's three oscillators: a layer with them beside the same without.
void toneCosts(Rig& rig) {
    std::puts("tone stage of all three oscillators, per voice and internal sample");
    for (const int voices : {1, 4, 16}) {
        double times[2] = {};
        for (const bool on : {false, true}) {
            rig.takePatch(0);
            for (int i = 0; i < oscillatorCount; ++i) rig.set(par::Timbre1 + i, on ? 0.3f : 0.5f);
            rig.start();
            Layer& layer = rig.layer(0);
            for (int v = 0; v < voices; ++v) layer.voice(voiceCount - 1 - v).noteOn(36 + 3 * v, 100);
            layer.tick();
            times[on ? 1 : 0] = renderTime(rig, layer) * voiceCount / voices;
        }
        const double tone = (times[1] - times[0]) * 1e9;
        std::printf("  %2d voices %30.2f ns", voices, tone);
        if (voices == voiceCount)
            bench::printAim(tone, aimOfTone, " ns");
        else
            std::puts("");
    }
    rig.takePatch(0);
}

// Voices fill one layer after the other.
void polyphony(Rig& rig, const char* title, int quality, Patch patch) {
    std::printf("%s, host rate 48 kHz, one core\n", title);
    for (const int voices : {4, 8, 16, 32, 64}) {
        rig.hold(0, patch);
        rig.setList(par::Quality, quality);
        const double silent = median(rig.blockTimes(50));
        rig.hold(voices, patch);
        rig.blockTimes(20);
        const std::vector<double> times = rig.blockTimes(400);
        const double middle = median(times), each = (middle - silent) / voices;
        std::printf(
            "  %2d voices  %6.1f x real time   %6.2f us a voice and block, %5.1f ns a voice and frame (best %.1f)   "
            "99%% / median %.2f   worst / median %.2f",
            voices, blockSeconds / middle, each * 1e6, each * 1e9 / blockFrames,
            (percentile(times, 0.0) - silent) / voices * 1e9 / blockFrames, percentile(times, 0.99) / middle,
            percentile(times, 1.0) / middle);
        if (patch == Patch::full && (voices == 16 || voices == 64))
            bench::printAim(each * 1e9 / blockFrames, voices == 16 ? aimOf16 : aimOf64, " ns");
        else
            std::puts("");
    }
    rig.setList(par::Quality, highQuality);
}

// One note that sounds on all four layers, and the engine around it.
void oneNote(Rig& rig, const char* title, Patch patch) {
    rig.hold(layerCount, 1, patch);
    rig.blockTimes(20);
    const std::vector<double> times = rig.blockTimes(800);
    const double each = median(times) * 1e9 / blockFrames;
    std::printf("one note on four layers, %s: %.0f ns a frame in all (best %.0f)", title, each,
                percentile(times, 0.0) * 1e9 / blockFrames);
    if (patch == Patch::full)
        bench::printAim(each, aimOfNote, " ns");
    else
        std::puts("");
}

void noteBurst(Rig& rig, const char* title, Patch patch) {
    rig.hold(64, patch);
    rig.layer(0).reset();
    rig.blockTimes(20);
    const double middle = median(rig.blockTimes(200));
    double worst = 0.0, best = 1e9;
    for (int round = 0; round < 10; ++round) {
        rig.layer(0).reset();
        for (int v = 0; v < voiceCount; ++v) rig.press(40 + v);
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
    double best = 1e9;
    for (int i = 0; i < 10; ++i) best = std::min(best, rig.loadTime());
    std::printf("%-34s %7.1f ms\n", "setChunk without samples", best * 1e3);
}

void everythingInUse(Rig& rig) {
    polyphony(rig, "everything in use: three High quality wavetables, tone, drift, matrix, two LP 24dB", highQuality,
              Patch::full);
    oneNote(rig, "everything in use", Patch::full);
}

void polyphonies(Rig& rig) {
    polyphony(rig, "three High quality wavetables", highQuality, Patch::plain);
    polyphony(rig, "three High quality wavetables and two LP 24dB", highQuality, Patch::filters);
    oneNote(rig, "two LP 24dB", Patch::filters);
    if (filters::wideLoopsInUse()) {
        filters::useWideLoops(false);
        polyphony(rig, "the same with registers of four lanes", highQuality, Patch::filters);
        filters::useWideLoops(true);
    }
    polyphony(rig, "three Crossblend PW wavetables and two LP 24dB", crossblendPw, Patch::filters);
}

void bursts(Rig& rig) {
    noteBurst(rig, "no filter", Patch::plain);
    noteBurst(rig, "two LP 24dB", Patch::filters);
    noteBurst(rig, "everything in use", Patch::full);
}

void playFor(Rig& rig, const char* what, double seconds) {
    if (std::strcmp(what, "note") == 0)
        rig.hold(layerCount, 1, Patch::full);
    else
        rig.hold(std::clamp(std::atoi(what), 1, layerCount * voiceCount), Patch::full);
    rig.blockTimes(static_cast<int>(seconds / blockSeconds));
}

struct Part {
    const char* name;
    void (*run)(Rig&);
};
constexpr Part parts[] = {{"full", everythingInUse}, {"kernels", kernelCosts}, {"tone", toneCosts},       {"ticks", tickCosts},
                          {"layers", layerCosts},    {"bursts", bursts},       {"polyphony", polyphonies}};

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    if (argc < 3) slowOperations();
    Rig rig;
    if (argc > 3) {
        playFor(rig, argv[2], std::atof(argv[3]));
        return 0;
    }
    if (WaveLibrary::shared().store().wave(0) == nullptr) std::puts("no wave banks: wavetable figures are of silent kernels");
    for (const Part& part : parts)
        if (argc < 3 || std::strcmp(argv[2], part.name) == 0) part.run(rig);
    return 0;
}
