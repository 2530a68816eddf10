// What the factory's patches cost to play, and where it goes: each one with a chord of four.
//
//   bench-patches [DATA_FOLDER [TEXT]]     only patches whose path holds TEXT
//
// DATA_FOLDER holds Vantoric_data and Vantoric_sounds; default: dist-data/ beside the program.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "base/parameters.h"
#include "bench/thread_time.h"
#include "engine/instrument.h"
#include "platform/module_folder.h"
#include "platform/settings.h"
#include "platform/thread.h"

namespace {

using namespace vantoric;
namespace fs = std::filesystem;
namespace par = parameter;

constexpr float hostRate = 48000.0f;
constexpr int blockFrames = 256;
constexpr double blockSeconds = blockFrames / hostRate;
constexpr double tempo = 120.0;
constexpr int chord[] = {48, 55, 60, 64};
constexpr int attackBlocks = 150, measuredBlocks = 150;  // 0.8 s each

class Player {
public:
    Player() {
        instrument_.setSampleRate(hostRate);
        instrument_.start();
    }

    bool load(const std::string& path) {
        const bool taken = instrument_.patchFiles().loadPatchFile(path);
        const EngineFlags& flags = instrument_.flags();
        for (int i = 0; i < 20000; ++i) {
            if (!flags.audioMuted.isSet() && !flags.rebuildRequested.isSet() && !flags.rebuildRunning.isSet()) break;
            platform::sleepMilliseconds(1);
        }
        return taken;
    }

    // Share of a core that the held chord takes, from its second second on; the best of three tries.
    double cost() {
        double best = 1e9;
        for (int round = 0; round < 3; ++round) {
            instrument_.stop();
            instrument_.start();
            ppqPos_ = 0.0;
            for (const int key : chord) instrument_.receive({0, 0x90, static_cast<std::uint8_t>(key), 100});
            render(attackBlocks);
            const double begin = bench::threadSeconds();
            render(measuredBlocks);
            best = std::min(best, (bench::threadSeconds() - begin) / (measuredBlocks * blockSeconds));
        }
        return best;
    }

    // The cost with some numbers of all layers at a value; they get back what they had.
    double costWith(std::initializer_list<int> numbers, float value) {
        std::vector<std::pair<int, float>> before;
        for (int layer = 0; layer < layerCount; ++layer)
            for (const int number : numbers) {
                const int index = hostIndex(number, number < globalParameterCount ? 0 : layer);
                before.emplace_back(index, instrument_.parameters().getParameter(index));
                instrument_.parameters().writeRaw(index, value);
            }
        const double with = cost();
        for (auto entry = before.rbegin(); entry != before.rend(); ++entry)
            instrument_.parameters().writeRaw(entry->first, entry->second);
        return with;
    }

private:
    void render(int blocks) {
        for (int i = 0; i < blocks; ++i) {
            instrument_.render(left_.data(), right_.data(), blockFrames, {true, tempo, ppqPos_, false});
            ppqPos_ += blockSeconds * tempo / 60.0;
        }
    }

    Instrument instrument_;
    std::vector<float> left_ = std::vector<float>(blockFrames), right_ = std::vector<float>(blockFrames);
    double ppqPos_ = 0.0;
};

struct Cost {
    std::string name;
    double all, oscillators, filters, distortions, inserts, master;
};

// Each part is what its switching off saves.
Cost measure(Player& player, const std::string& name) {
    Cost cost{name, player.cost(), 0, 0, 0, 0, 0};
    const auto saved = [&](std::initializer_list<int> numbers) {
        return std::max(0.0, cost.all - player.costWith(numbers, 0.0f));
    };
    cost.oscillators = saved({par::On1, par::On1 + 1, par::On1 + 2});
    cost.filters = saved({par::FilType1, par::FilType1 + 1});
    cost.distortions = saved({par::DisType1, par::DisType1 + 1});
    cost.inserts = saved({par::FxInType, par::FxIn2Type});
    cost.master = saved({par::FxMaType});
    return cost;
}

std::vector<fs::path> patchesBelow(const fs::path& folder, const std::string& text) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".fxp" && entry.path().string().find(text) != std::string::npos)
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

void print(const Cost& cost) {
    std::printf("%6.2f %%  %6.2f %6.2f %6.2f %6.2f %6.2f %6.2f  %s\n", 100 * cost.all, 100 * cost.oscillators, 100 * cost.filters,
                100 * cost.distortions, 100 * cost.inserts, 100 * cost.master,
                100 * (cost.all - cost.oscillators - cost.filters - cost.distortions - cost.inserts - cost.master),
                cost.name.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    platform::setDataFolder(argc > 1 ? argv[1] : platform::moduleFolder() + "dist-data/");
    platform::setSettingsFolder(platform::moduleFolder() + "bench-settings");
    const fs::path sounds = platform::soundsFolder();
    if (!fs::is_directory(sounds)) {
        std::fprintf(stderr, "There are no patches at %s: build the target \"patches\", or name their folder.\n", sounds.c_str());
        return 1;
    }
    Player player;
    std::vector<Cost> costs;
    std::printf(
        "A chord of four at 48 kHz, share of one core. The parts are what switching them off saves; the rest is ticks,\n"
        "gains, decimator, and what the parts share.\n\n");
    std::printf("%8s  %6s %6s %6s %6s %6s %6s\n", "all", "osc", "filter", "drive", "insert", "master", "rest");
    for (const fs::path& path : patchesBelow(sounds, argc > 2 ? argv[2] : "")) {
        if (!player.load(path.string())) continue;
        costs.push_back(measure(player, fs::relative(path, sounds).replace_extension().string()));
        print(costs.back());
        std::fflush(stdout);
    }
    if (costs.empty()) return 1;
    std::sort(costs.begin(), costs.end(), [](const Cost& a, const Cost& b) { return a.all < b.all; });
    std::printf("\n%zu patches: median %.2f %% (aim: below 2), dearest %.2f %% (aim: at most 8), %s\n", costs.size(),
                100 * costs[costs.size() / 2].all, 100 * costs.back().all, costs.back().name.c_str());
    return 0;
}
