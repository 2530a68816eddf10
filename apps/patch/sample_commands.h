// The commands that bring wave and SFZ files into patches and edit samples.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "apps/patch/console.h"
#include "apps/patch/sample_bench.h"

namespace vantoric::patch {

class SampleCommands {
public:
    // Adds the commands to the program.
    explicit SampleCommands(CLI::App& app);

    // Whether the command line asks for one of them; then `run` gives the exit code.
    bool parsed() const;
    int run();

private:
    struct Options {
        std::string patch, in, out, channel = "left", groups = "all", range, loop, exportTo, data;
        std::vector<std::string> commands;
        int layer = 1, oscillator = 1;
        bool keepTuning = false, autotune = false, vocoder = false;
    };

    void addPlace(CLI::App& command);
    void addLoadWave(CLI::App& app);
    void addResynthesize(CLI::App& app);
    void addEdit(CLI::App& app);
    void addImportSfz(CLI::App& app);
    void addQuickImport(CLI::App& app);

    int loadWave();
    int resynthesize();
    int edit();
    int importSfz();
    int quickImport();

    int wave() const { return (options_.layer - 1) * oscillatorCount + options_.oscillator - 1; }
    void runEdits(SampleBench& bench, const std::vector<int>& commands);
    void begin(Patch& patch) const;
    int refused() const;
    int reportImport(Patch& patch) const;

    Options options_;
    Console console_{"vantoric-patch"};
    CLI::App *loadWave_, *resynthesize_, *edit_, *importSfz_, *quickImport_;
};

// The number of an edit command by its label, letter case aside, or by the number itself. Throws PatchError.
int editCommandOf(const std::string& text);

}  // namespace vantoric::patch
