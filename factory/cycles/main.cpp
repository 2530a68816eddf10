// vantoric-cycles OUTDIR [--sheet FILE]: makes the single cycles for the custom waves.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "base/version.h"
#include "factory/cycles/sheet.h"
#include "platform/files.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric;
using namespace vantoric::cycles;

enum Exit { done = 0, wrongUse = 2, fileTrouble = 3 };

int complain(const fs::path& path, const char* what) {
    std::fprintf(stderr, "vantoric-cycles: %s: %s\n", path.c_str(), what);
    return fileTrouble;
}

int makeAll(const fs::path& folder, const fs::path& sheet) {
    if (!platform::makeFolder(folder.string())) return complain(folder, "this folder cannot be made");
    Workshop workshop;
    std::vector<NamedCycle> made;
    for (const Recipe& recipe : recipes()) {
        made.push_back({recipe.name, finish(recipe.make(workshop), workshop)});
        const fs::path path = folder / (recipe.name + ".wav");
        if (!writeCycle(made.back().cycle, path)) return complain(path, "cannot be written");
    }
    if (!sheet.empty() && !drawSheet(made, sheet)) return complain(sheet, "cannot be written");
    std::printf("%zu single cycles: %s\n", made.size(), folder.c_str());
    return done;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes the single cycles of Vantoric: wave files of 2048 samples for its custom waves.", "vantoric-cycles");
    std::string folder, sheet;
    app.set_version_flag("--version", std::string("vantoric-cycles ") + versionText);
    app.add_option("OUTDIR", folder, "folder for the wave files")->required();
    app.add_option("--sheet", sheet, "SVG file for a picture of all cycles with their harmonics");
    app.footer("Exit codes: 0 done, 2 wrong use, 3 a file that cannot be written.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? done : wrongUse;
    }
    return makeAll(folder, sheet);
}
