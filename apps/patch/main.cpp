// vantoric-patch: compiles readable patches, turns patch files into such texts, compares and describes them, and
// brings wave and SFZ files into patches.
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/patch/compare.h"
#include "apps/patch/sample_commands.h"
#include "apps/patch/storage.h"
#include "base/version.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric;
using namespace vantoric::patch;

int compileFile(const fs::path& from, const fs::path& to, const std::string& samples, bool forBrowser) {
    try {
        Patch patch;
        load(from, patch, samples);
        savePatchFile(to, patch);
        if (forBrowser) saveNotes(to, patch);
        return done;
    } catch (const PatchError& error) {
        return complain(from, error);
    }
}

// Every text below a folder goes to the same place below the other one.
int compileFolder(const fs::path& from, const fs::path& to, const std::string& samples) {
    std::vector<fs::path> texts;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(from, error), end; !error && entry != end; entry.increment(error))
        if (isText(entry->path()) && entry->is_regular_file()) texts.push_back(entry->path());
    if (error) return complain(from, PatchError("", "this folder cannot be read"));
    std::sort(texts.begin(), texts.end());
    const bool terminal = isatty(STDERR_FILENO) != 0;
    int code = done;
    std::size_t good = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const fs::path below = texts[i].lexically_relative(from);
        if (terminal) std::fprintf(stderr, "\r\033[K%zu of %zu: %s", i + 1, texts.size(), below.c_str());
        if (terminal && i + 1 == texts.size()) std::fprintf(stderr, "\r\033[K");
        const int result =
            compileFile(texts[i], to / fs::path(below).replace_extension(".fxp"), samples, below.has_parent_path());
        good += result == done;
        code = std::max(code, result);
    }
    std::printf("%zu of %zu patches compiled to %s\n", good, texts.size(), to.c_str());
    return code;
}

struct Options {
    std::string in, out, samples;
    bool noSamples = false;
};

int compile(const Options& options) {
    if (fs::is_directory(options.in)) return compileFolder(options.in, options.out, options.samples);
    return compileFile(options.in, options.out, options.samples, false);
}

int decompile(const Options& options) {
    try {
        Patch patch;
        load(options.in, patch);
        if (options.out.empty())
            printText(patch, !options.noSamples);
        else
            saveText(options.out, patch, !options.noSamples);
        return done;
    } catch (const PatchError& error) {
        return complain(options.in, error);
    }
}

int compare(const Options& options) {
    Patch patches[2];
    const std::string* paths[2] = {&options.in, &options.out};
    for (int i = 0; i < 2; ++i) {
        try {
            load(*paths[i], patches[i]);
        } catch (const PatchError& error) {
            return complain(*paths[i], error);
        }
    }
    const std::vector<std::string> lines = differences(patches[0], patches[1]);
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
    return lines.empty() ? done : different;
}

int info(const Options& options) {
    try {
        Patch patch;
        const std::size_t size = load(options.in, patch);
        std::fputs(describe(patch, size).c_str(), stdout);
        return done;
    } catch (const PatchError& error) {
        return complain(options.in, error);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Turns readable patches (.json) into patch files (.fxp) and back, and brings samples into them.",
                 "vantoric-patch");
    app.set_version_flag("--version", std::string("vantoric-patch ") + versionText);
    app.require_subcommand(1);
    app.footer(exitCodes);
    Options options;
    CLI::App* compiling = app.add_subcommand("compile", "compile a text, or all texts of a folder with its folders");
    compiling->add_option("IN", options.in, "patch text or folder")->required();
    compiling->add_option("OUT", options.out, "patch file or folder")->required();
    compiling->add_option("--samples", options.samples, "folder of the sample files that do not stand beside their text");
    CLI::App* decompiling = app.add_subcommand("decompile", "write a patch file as text; samples become WAV files beside it");
    decompiling->add_option("IN", options.in, "patch file")->required();
    decompiling->add_option("OUT", options.out, "patch text (default: standard output)");
    decompiling->add_flag("--no-samples", options.noSamples, "leave the samples out");
    CLI::App* comparing = app.add_subcommand("compare", "list what differs between two patches, files or texts");
    comparing->add_option("A", options.in, "patch file or text")->required();
    comparing->add_option("B", options.out, "patch file or text")->required();
    CLI::App* describing = app.add_subcommand("info", "tell what a patch is made of");
    describing->add_option("IN", options.in, "patch file or text")->required();
    SampleCommands samples(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? done : wrongUse;
    }
    if (samples.parsed()) return samples.run();
    if (compiling->parsed()) return compile(options);
    if (decompiling->parsed()) return decompile(options);
    return comparing->parsed() ? compare(options) : info(options);
}
