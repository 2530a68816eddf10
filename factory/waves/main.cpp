// vantoric-waves OUTDIR [--pictures DIR]: makes the wave banks of the instrument.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/version.h"
#include "factory/waves/bank.h"
#include "factory/waves/pictures.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric::waves;

// The banks are shared out to the threads one by one.
class Factory {
public:
    Factory(fs::path output, fs::path pictures) : output_(std::move(output)), pictures_(std::move(pictures)) {}

    // True if every file was written.
    bool run(unsigned threadCount) {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < threadCount; ++i) threads.emplace_back([this] { work(); });
        for (std::thread& thread : threads) thread.join();
        if (isatty(STDERR_FILENO)) std::fprintf(stderr, "\r%40s\r", "");
        return !failed_;
    }

    std::size_t bytes() const { return bytes_; }

private:
    void work() {
        Workshop workshop;
        for (std::size_t i; (i = next_++) < recipes().size();) {
            const Recipe& recipe = recipes()[i];
            const Bank bank = makeBank(recipe, workshop);
            const fs::path path = output_ / (std::string(recipe.stem) + ".va");
            bool good = writeBank(bank, path);
            if (good && !pictures_.empty()) good = drawBank(bank, pictures_ / (std::string(recipe.stem) + ".png"));
            report(recipe, good);
            bytes_ += bank.samples.size() * 2;
        }
    }

    void report(const Recipe& recipe, bool good) {
        const std::lock_guard lock(mutex_);
        ++done_;
        if (!good) {
            failed_ = true;
            std::fprintf(stderr, "%s: cannot be written\n", recipe.stem);
        } else if (isatty(STDERR_FILENO)) {
            std::fprintf(stderr, "\r%2zu of %zu  %-24s", done_, recipes().size(), recipe.stem);
        }
    }

    fs::path output_, pictures_;
    std::atomic<std::size_t> next_ = 0, bytes_ = 0;
    std::atomic<bool> failed_ = false;
    std::mutex mutex_;
    std::size_t done_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes the wave banks of Vantoric.", "vantoric-waves");
    std::string output, pictures;
    app.set_version_flag("--version", std::string("vantoric-waves ") + vantoric::versionText);
    app.add_option("OUTDIR", output, "folder for the bank files")->required();
    app.add_option("--pictures", pictures, "folder for a picture of every bank");
    app.footer("Exit codes: 0 done, 2 wrong use, 3 a file that cannot be written.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    const auto start = std::chrono::steady_clock::now();
    std::error_code trouble;
    for (const std::string& folder : {output, pictures}) {
        if (folder.empty()) continue;
        fs::create_directories(folder, trouble);
        if (!fs::is_directory(folder)) {
            std::fprintf(stderr, "%s: cannot make this folder\n", folder.c_str());
            return 3;
        }
    }
    Factory factory(output, pictures);
    const bool good = factory.run(std::max(1u, std::thread::hardware_concurrency()));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (good)
        std::printf("%zu wave banks, %.0f MB, in %.1f s: %s\n", recipes().size(), static_cast<double>(factory.bytes()) / 1e6,
                    seconds, output.c_str());
    return good ? 0 : 3;
}
