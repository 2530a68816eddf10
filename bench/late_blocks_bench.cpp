// How much longer than usual a block takes when something happens: sixteen keys at once on four layers, every change of
// effect, patches being loaded. Processor time of the playing thread, page faults included; the aim is twice the median.
//
//   bench-late [DATA_FOLDER]
//   bench-late DATA_FOLDER hour [SECONDS]   seconds of music at 64 frames and half a core: does any block take its period?
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "bench/full_patch.h"
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
constexpr double aim = 2;  // times the median

class Stage {
public:
    Stage() {
        instrument.setSampleRate(hostRate);
        bench::takePatchAlone(instrument.parameters(), bench::Patch::full);
        instrument.resetEngine();
    }

    // In all nine slots, as the window or a host does it.
    void chooseEffects(int type, ChangeSource source = ChangeSource::window) {
        for (int layer = 0; layer < layerCount; ++layer)
            for (const int number : {par::FxInType, par::FxIn2Type})
                instrument.setParameter(hostIndex(number, layer), listValue(type), source);
        instrument.setParameter(par::FxMaType, listValue(type), source);
    }

    void keys(int status) {
        for (int key = 40; key < 56; ++key)
            instrument.receive({0, static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(key), 100});
    }
    double block(int frames = blockFrames) {
        const double begin = bench::threadSeconds();
        instrument.render(left_.data(), right_.data(), frames, {});
        return bench::threadSeconds() - begin;
    }
    std::vector<double> blocks(int count) {
        std::vector<double> times(static_cast<std::size_t>(count));
        for (double& time : times) time = block();
        return times;
    }

    // Whether the last block of the full length was heard.
    bool isHeard() const {
        return std::any_of(left_.begin(), left_.end(), [](float x) { return std::fabs(x) > 1e-3f; });
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
    std::printf("%-58s %5.2f x the median, worst %5.2f   (median %.0f us)", what, least / usual, worst / usual, usual * 1e6);
    bench::printAim(worst / usual, aim, "");
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

// Inserts of all layers and the master change at once, from one type to the next. `choose(type)` sets them.
template <class Choose>
void effectChanges(Stage& stage, const char* what, Choose&& choose) {
    stage.keys(0x90);
    double least = 1e9, worst = 0.0;
    int dearest = 0;
    for (int type = 0; type < effectTypeCount; ++type) {
        choose(type);
        const double time = stage.block();
        const double ratio = time / median(stage.blocks(40));
        least = std::min(least, ratio);
        if (ratio > worst) {
            worst = ratio;
            dearest = type;
        }
    }
    std::printf("%-58s %5.2f x the type's own median, worst %5.2f (type %d)", what, least, worst, dearest);
    bench::printAim(worst, aim, "");
}

// Chosen by another thread, which touches the lines first, and by the thread that plays, as hosts automate, which does not.
void effectChanges(Stage& stage) {
    const auto elsewhere = [&](int type) { std::thread([&] { stage.chooseEffects(type); }).join(); };
    effectChanges(stage, "a new effect in nine slots, first time", elsewhere);
    effectChanges(stage, "again, warm", elsewhere);
    Stage fresh;
    const auto here = [&](int type) { fresh.chooseEffects(type, ChangeSource::host); };
    effectChanges(fresh, "automated on the playing thread, first time", here);
    effectChanges(fresh, "again, warm", here);
}

// The times of blocks that are heard, sorted, each some time after the one before, as a host asks for them.
std::vector<double> heardBlocks(Stage& stage) {
    constexpr std::size_t wanted = 1500;
    std::vector<double> times;
    for (std::size_t i = 0; times.size() < wanted && i < 20 * wanted; ++i) {
        const double time = stage.block();
        if (stage.isHeard()) times.push_back(time);
        platform::sleepMilliseconds(1);
    }
    std::sort(times.begin(), times.end());
    return times;
}
void reportBlocks(const char* what, double usual, const std::vector<double>& times) {
    if (times.empty()) return;
    report(what, usual, times[times.size() * 99 / 100], times.back());
    std::printf("    of %zu blocks that were heard, their median %.2f x the usual one\n", times.size(),
                times[times.size() / 2] / usual);
}

// A thread loads a patch again and again while the block plays; each load ends the notes, so they are struck anew behind it.
// Before that the same without loads: a thread that sleeps between its blocks meets late ones for the machine's own reasons.
void patchLoads(Stage& stage) {
    stage.keys(0x90);
    stage.blocks(50);
    const double usual = median(stage.blocks(300));
    reportBlocks("a pause after every block: 99th of a hundred, and the worst", usual, heardBlocks(stage));
    const ChunkBytes chunk = stage.instrument.patchChunk().getChunk();
    std::atomic<bool> end{false};
    std::atomic<int> loads{0};
    std::thread loader([&] {
        while (!end) {
            stage.instrument.patchChunk().setChunk(chunk.data.get(), chunk.size);
            stage.keys(0x90);
            ++loads;
            platform::sleepMilliseconds(25);
        }
    });
    const std::vector<double> times = heardBlocks(stage);
    end = true;
    loader.join();
    reportBlocks("the same while patches are loaded", usual, times);
    std::printf("    %d loads\n", loads.load());
}

// As many instances as take half a core play one after the other in blocks as short as hosts ask for. Sixteen keys of all layers
// are struck anew every two seconds, in each instance at another time; once in ten seconds one gets new effects in all slots and
// another its patch again. Whether a period is kept is told by processor time: how late a machine wakes its threads is its own.
void hour(int seconds) {
    constexpr int frames = 64;
    constexpr double period = frames / hostRate;
    constexpr int second = static_cast<int>(hostRate) / frames;
    std::vector<std::unique_ptr<Stage>> stages;
    for (double load = 0.0; load < 0.5;) {
        Stage& stage = *stages.emplace_back(std::make_unique<Stage>());
        stage.keys(0x90);
        for (int i = 0; i < second; ++i) stage.block(frames);
        double time = 0.0;
        for (int i = 0; i < second; ++i) time += stage.block(frames);
        load += time / (second * period);
        std::printf("%zu instances: %.0f %% of a core\n", stages.size(), 100 * load);
    }
    const int count = static_cast<int>(stages.size());
    const ChunkBytes chunk = stages[0]->instrument.patchChunk().getChunk();
    std::vector<int> tenths(20);  // blocks by tenths of the period; the last holds what is longer
    double worst = 0.0, sum = 0.0;
    for (long i = 0; i < static_cast<long>(seconds) * second; ++i) {
        double time = 0.0;
        for (int k = 0; k < count; ++k) {
            const long at = (i + static_cast<long>(k) * 2 * second / count) % (2 * second);
            if (at == 0) stages[static_cast<std::size_t>(k)]->keys(0x90);
            if (at == 2 * second * 9 / 10) stages[static_cast<std::size_t>(k)]->keys(0x80);
            time += stages[static_cast<std::size_t>(k)]->block(frames);
        }
        if (i % (10 * second) == 5 * second) {
            const int turn = static_cast<int>(i / (10 * second));
            std::thread([&] {
                stages[static_cast<std::size_t>(turn % count)]->chooseEffects(turn % effectTypeCount);
                stages[static_cast<std::size_t>((turn + 1) % count)]->instrument.patchChunk().setChunk(chunk.data.get(),
                                                                                                       chunk.size);
            }).join();
        }
        ++tenths[std::min(tenths.size() - 1, static_cast<std::size_t>(10 * time / period))];
        worst = std::max(worst, time);
        sum += time;
    }
    const long blocks = static_cast<long>(seconds) * second;
    long late = 0;
    for (std::size_t i = 0; i < tenths.size(); ++i) {
        if (i >= 10) late += tenths[i];
        if (tenths[i] > 0) std::printf("from %3zu %% of the period %10d blocks\n", 10 * i, tenths[i]);
    }
    std::printf("%d s in %ld blocks of %d frames: mean %.0f %%, longest %.0f %% of the period; %ld took longer than it\n",
                seconds, blocks, frames, 100 * sum / (static_cast<double>(blocks) * period), 100 * worst / period, late);
}

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    if (argc > 2 && argv[2] == std::string("hour")) {
        hour(argc > 3 ? std::max(1, std::atoi(argv[3])) : 3600);
        return 0;
    }
    Stage stage;
    std::printf("Blocks of %d frames at 48 kHz, four layers with everything in use.\n\n", blockFrames);
    bursts(stage);
    effectChanges(stage);
    patchLoads(stage);
    return 0;
}
