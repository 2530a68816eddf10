// What finding a patch costs: scanning a library of 20,000 patches in the background, and each keystroke of a search in it.
// bench-library [PATCHES].
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "library/patch_index.h"
#include "platform/module_folder.h"
#include "platform/scratch_folder.h"
#include "platform/thread.h"
#include "platform/user_state.h"
#include "tests/library/large_library.h"

#include "thread_time.h"

namespace {

using namespace vantoric;

double now() { return bench::seconds(CLOCK_MONOTONIC); }
double busy() { return bench::seconds(CLOCK_THREAD_CPUTIME_ID); }

double scanSeconds(PatchIndex& index) {
    const double began = now();
    index.rescan();
    while (index.isScanning()) platform::sleepMilliseconds(1);
    return now() - began;
}

// As it is typed: the words before the last are known already.
void typed(const PatchCatalogue& all, const std::string& text) {
    double slowest = 0.0, sum = 0.0;
    for (std::size_t letters = 1; letters <= text.size(); ++letters) {
        const double began = busy();
        all.search(text.substr(0, letters), {});
        const double took = busy() - began;
        slowest = std::max(slowest, took);
        sum += took;
    }
    std::printf("typing \"%s\": %.0f us a keystroke, %.0f us the slowest; %zu found\n", text.c_str(),
                1e6 * sum / static_cast<double>(text.size()), 1e6 * slowest, all.search(text, {}).size());
}

}  // namespace

int main(int count, char** arguments) {
    const int patches = count > 1 ? std::atoi(arguments[1]) : 20000;
    const platform::ScratchFolder folder;
    platform::setDataFolder(folder.path());
    platform::setStateFolder(folder / "state");
    const auto library = test::largeLibrary(patches);
    for (const CataloguedPatch& patch : library) {
        std::filesystem::create_directories(platform::soundsFolder() + patch.category);
        std::ofstream(platform::soundsFolder() + patch.category + "/" + patch.name + ".fxp");
    }
    Messages messages;
    PatchIndex index(messages);
    scanSeconds(index);
    double best = 1e9;
    for (int i = 0; i < 5; ++i) best = std::min(best, scanSeconds(index));
    std::printf("scan of %zu patches: %.0f ms\n", index.catalogue()->patches().size(), 1e3 * best);
    const PatchCatalogue withTags(library);
    for (const char* text : {"glass harbour", "bass", "soft glass harbour", "warm pad solmi", "xqzkw"}) typed(withTags, text);
    const double began = busy();
    const std::string completed = withTags.complete("glass h");
    std::printf("completing \"glass h\" to \"%s\": %.0f us\n", completed.c_str(), 1e6 * (busy() - began));
}
