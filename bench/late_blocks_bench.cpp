// How much longer than usual a block takes when something happens: sixteen keys at once on four layers, every change of
// effect, patches being loaded. Processor time of the playing thread, page faults included; the aim is twice the median.
//
//   bench-late [DATA_FOLDER]
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "bench/thread_time.h"
#include "effects/type_table.h"
#include "engine/instrument.h"
#include "platform/module_folder.h"
#include "platform/settings.h"
#include "platform/thread.h"
#include "sound/kernels.h"

namespace {

using namespace vantoric;
namespace par = parameter;

constexpr float hostRate = 48000.0f;
constexpr int blockFrames = 256;
constexpr int lowPass24 = 4;

class Stage {
public:
    Stage() {
        instrument.setSampleRate(hostRate);
        for (int i = 0; i < parameterCount; ++i) set(i, 0.0f);
        set(par::Volume, 0.5f);
        for (const int n : {par::EqLow, par::EqMid, par::EqHigh}) set(n, 0.5f);
        for (int layer = 0; layer < layerCount; ++layer) fullLayer(layer);
        instrument.resetEngine();
    }
    void set(int index, float value) { instrument.parameters().writeRaw(index, value); }

    // Three wavetables into two filters.
    void fullLayer(int layer) {
        const auto n = [&](int number) { return hostIndex(number, layer); };
        set(par::Layer1On + layer, 1.0f);
        for (int i = 0; i < oscillatorCount; ++i) {
            set(n(par::KeyEnd1 + i), listValue(127));
            for (const int number : {par::Oct1, par::Detune1, par::Pw1, par::Timbre1}) set(n(number + i), 0.5f);
            for (const int number : {par::KeyFol1, par::On1, par::Vol1}) set(n(number + i), 1.0f);
        }
        for (int f = 0; f < filterCount; ++f) {
            set(n(par::FilType1 + f), listValue(lowPass24));
            set(n(par::FilVol1 + f), 1.0f);
            set(n(par::Cutoff1 + f), 0.7f);
            for (const int number : {par::FilPan1, par::FilKey1, par::FilEnv1}) set(n(number + f), 0.5f);
        }
        for (const int number : {par::Pitch, par::Fine, par::LayerVol}) set(n(number), 0.5f);
        set(n(par::SusVol), 0.99f);
        set(n(par::PlayMode), listValue(15));
        for (int i = 0; i < 16; ++i) set(n(par::MatVal1 + i), 0.5f);
    }

    // In all nine slots, as the window does it.
    void chooseEffects(int type) {
        for (int layer = 0; layer < layerCount; ++layer)
            for (const int number : {par::FxInType, par::FxIn2Type})
                instrument.setParameter(hostIndex(number, layer), listValue(type), ChangeSource::window);
        instrument.setParameter(par::FxMaType, listValue(type), ChangeSource::window);
    }

    void keys(int status) {
        for (int key = 40; key < 56; ++key)
            instrument.receive({0, static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(key), 100});
    }
    double block() {
        const double begin = bench::threadSeconds();
        instrument.render(left_.data(), right_.data(), blockFrames, {});
        return bench::threadSeconds() - begin;
    }
    std::vector<double> blocks(int count) {
        std::vector<double> times(static_cast<std::size_t>(count));
        for (double& time : times) time = block();
        return times;
    }

    Instrument instrument;

private:
    std::vector<float> left_ = std::vector<float>(blockFrames), right_ = std::vector<float>(blockFrames);
};

double median(std::vector<double> times) {
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

void report(const char* what, double usual, double least, double worst) {
    std::printf("%-58s %5.2f x the median, worst %5.2f   (median %.0f us)\n", what, least / usual, worst / usual, usual * 1e6);
}

// All four layers get sixteen keys in one block; against blocks with all of them sounding.
void bursts(Stage& stage) {
    stage.keys(0x90);
    stage.blocks(50);
    const double usual = median(stage.blocks(300));
    double least = 1e9, worst = 0.0;
    for (int round = 0; round < 20; ++round) {
        stage.keys(0x80);
        stage.blocks(40);
        stage.keys(0x90);
        const double time = std::max(stage.block(), stage.block());
        least = std::min(least, time);
        worst = std::max(worst, time);
    }
    report("sixteen keys on four layers", usual, least, worst);
}

// Inserts of all layers and the master change at once, from one type to the next.
void effectChanges(Stage& stage) {
    stage.keys(0x90);
    for (const char* what : {"a new effect in nine slots, first time", "again, warm"}) {
        double least = 1e9, worst = 0.0;
        int dearest = 0;
        for (int type = 0; type < effectTypeCount; ++type) {
            std::thread([&] { stage.chooseEffects(type); }).join();
            const double time = stage.block();
            const double ratio = time / median(stage.blocks(40));
            least = std::min(least, ratio);
            if (ratio > worst) {
                worst = ratio;
                dearest = type;
            }
        }
        std::printf("%-58s %5.2f x the type's own median, worst %5.2f (type %d)\n", what, least, worst, dearest);
    }
}

// A thread loads a patch again and again while the block plays what there is; the block is silent meanwhile.
void patchLoads(Stage& stage) {
    stage.keys(0x90);
    stage.blocks(50);
    const double usual = median(stage.blocks(300));
    const ChunkBytes chunk = stage.instrument.patchChunk().getChunk();
    std::atomic<bool> end{false};
    std::thread loader([&] {
        while (!end) {
            stage.instrument.patchChunk().setChunk(chunk.data.get(), chunk.size);
            platform::sleepMilliseconds(5);
        }
    });
    std::vector<double> times;
    for (int i = 0; i < 1500; ++i) {
        if (i % 20 == 0) stage.keys(0x90);
        times.push_back(stage.block());
        platform::sleepMilliseconds(1);
    }
    end = true;
    loader.join();
    std::sort(times.begin(), times.end());
    report("while patches are loaded: 99th of a hundred, and the worst", usual, times[times.size() * 99 / 100], times.back());
}

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    Stage stage;
    std::printf("Blocks of %d frames at 48 kHz, four layers of three wavetables and two \"LP 24dB\".\n\n", blockFrames);
    bursts(stage);
    effectChanges(stage);
    patchLoads(stage);
    return 0;
}
