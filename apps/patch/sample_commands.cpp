#include "apps/patch/sample_commands.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "apps/patch/compare.h"
#include "apps/patch/patch_text.h"
#include "apps/patch/storage.h"
#include "apps/patch/value_text.h"
#include "base/text.h"
#include "platform/files.h"
#include "platform/module_folder.h"

namespace vantoric::patch {

namespace fs = std::filesystem;

namespace {

constexpr char patchHelp[] = "patch file or text, or the word init for an empty patch";
constexpr char outHelp[] = "patch to write, .fxp or .json; may be the same as PATCH";

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// "START:END" as an option takes it.
struct Markers {
    std::int32_t start, end;
};
std::optional<Markers> markersIn(const std::string& text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    const auto start = numberIn<std::int32_t>(std::string_view(text).substr(0, colon));
    const auto end = numberIn<std::int32_t>(std::string_view(text).substr(std::min(colon + 1, text.size())));
    if (!start || !end) return std::nullopt;
    return Markers{*start, *end};
}
std::string checkMarkers(const std::string& text) {
    return markersIn(text) ? std::string() : "should be START:END in samples, and is " + text;
}

std::string editHelp() {
    std::string help = "Commands, by name or number:\n";
    for (int i = 0; i < editCommandCount; ++i) {
        const EditCommand& command = editCommands[static_cast<std::size_t>(i)];
        if (command.role != EditRole::separator)
            help += "  " + std::to_string(i) + (i < 10 ? "   " : "  ") + command.label + "\n";
    }
    return help + "\n" + exitCodes;
}

}  // namespace

int editCommandOf(const std::string& text) {
    const std::optional<int> number = numberIn<int>(text);
    std::vector<std::string> labels;
    for (int i = 0; i < editCommandCount; ++i) {
        const EditCommand& command = editCommands[static_cast<std::size_t>(i)];
        if (command.role == EditRole::separator) continue;
        if (number ? *number == i : lowered(command.label) == lowered(text)) return i;
        labels.push_back(command.label);
    }
    if (number) throw PatchError("", "there is no edit command " + text);
    throw PatchError("", "there is no edit command \"" + text + "\"; did you mean \"" + nearestText(text, labels) + "\"?");
}

SampleCommands::SampleCommands(CLI::App& app) {
    addLoadWave(app);
    addResynthesize(app);
    addEdit(app);
    addImportSfz(app);
    addQuickImport(app);
}

void SampleCommands::addPlace(CLI::App& command) {
    command.add_option("--layer", options_.layer, "layer, 1 to 4 (default 1)")->check(CLI::Range(1, layerCount));
    command.add_option("--osc", options_.oscillator, "oscillator, 1 to 3 (default 1)")->check(CLI::Range(1, oscillatorCount));
}

void SampleCommands::addLoadWave(CLI::App& app) {
    loadWave_ = app.add_subcommand("load-wave", "put a wave file into an oscillator as its sample; it then plays it");
    loadWave_->add_option("PATCH", options_.patch, patchHelp)->required();
    loadWave_->add_option("WAVE", options_.in, "wave file: 8, 16, 24 or 32 bits, mono or stereo, up to 10000000 bytes")
        ->required();
    loadWave_->add_option("OUT", options_.out, outHelp)->required();
    addPlace(*loadWave_);
    loadWave_->add_option("--channel", options_.channel, "of a stereo file: left or right (default left)")
        ->check(CLI::IsMember({"left", "right"}));
    loadWave_->add_flag("--keep-tuning", options_.keepTuning, "a note in the file's name (\"Lead C3.wav\") tunes nothing");
    loadWave_->add_flag("--autotune", options_.autotune, "measure the pitch, so that the key C plays a C");
    loadWave_->footer(exitCodes);
}

void SampleCommands::addResynthesize(CLI::App& app) {
    resynthesize_ = app.add_subcommand(
        "resynthesize", "make the custom wave of an oscillator from a wave file: all of it up to 4096 samples, else one period");
    resynthesize_->add_option("PATCH", options_.patch, patchHelp)->required();
    resynthesize_->add_option("WAVE", options_.in, "wave file, up to 1000000 bytes")->required();
    resynthesize_->add_option("OUT", options_.out, outHelp)->required();
    addPlace(*resynthesize_);
    resynthesize_->footer(exitCodes);
}

void SampleCommands::addEdit(CLI::App& app) {
    edit_ = app.add_subcommand("edit", "run commands of the sample's \"Edit\" menu, one after the other");
    edit_->add_option("PATCH", options_.patch, "patch file or text")->required();
    edit_->add_option("OUT", options_.out, outHelp)->required();
    edit_->add_option("COMMANDS", options_.commands, "their names or numbers, see below");
    addPlace(*edit_);
    edit_->add_option("--range", options_.range, "START:END, samples: sets the loop markers, which are the selection, before")
        ->check(checkMarkers);
    edit_->add_option("--loop", options_.loop, "START:END, samples: sets the loop markers afterwards")->check(checkMarkers);
    edit_->add_option("--export", options_.exportTo, "wave file that \"Export as wav\" writes; without that command at the end");
    edit_->footer(editHelp());
}

void SampleCommands::addImportSfz(CLI::App& app) {
    importSfz_ = app.add_subcommand("import-sfz", "turn an SFZ instrument into a patch: up to twelve of its regions");
    importSfz_->add_option("SFZ", options_.in, "SFZ file")->required();
    importSfz_->add_option("OUT", options_.out, "patch to write, .fxp or .json")->required();
    importSfz_->add_option("--groups", options_.groups, "all: merge the groups (default); first: only the first one")
        ->check(CLI::IsMember({"all", "first"}));
    importSfz_->footer(exitCodes);
}

void SampleCommands::addQuickImport(CLI::App& app) {
    quickImport_ = app.add_subcommand("quick-import", "make a patch of one wave file, mono or stereo, after a template");
    quickImport_->add_option("WAVE", options_.in, "wave file")->required();
    quickImport_->add_option("OUT", options_.out, "patch to write, .fxp or .json")->required();
    quickImport_->add_flag("--vocoder", options_.vocoder, "the file modulates a vocoder");
    quickImport_->add_option("--data", options_.data,
                             "folder with Vantoric_data and its templates (default: that of the instrument)");
    quickImport_->footer(exitCodes);
}

bool SampleCommands::parsed() const {
    return loadWave_->parsed() || resynthesize_->parsed() || edit_->parsed() || importSfz_->parsed() || quickImport_->parsed();
}

int SampleCommands::run() try {
    if (loadWave_->parsed()) return loadWave();
    if (resynthesize_->parsed()) return resynthesize();
    if (edit_->parsed()) return edit();
    return importSfz_->parsed() ? importSfz() : quickImport();
} catch (const PatchError& error) {
    return complain(options_.patch.empty() ? options_.in : options_.patch, error);
}

void SampleCommands::begin(Patch& patch) const {
    if (options_.patch == "init" && !platform::exists(options_.patch))
        patch.name = cutText(fs::path(options_.out).stem().string(), longestName);
    else
        load(options_.patch, patch);
}

// A file that cannot be opened gives no box.
int SampleCommands::refused() const {
    const char* reason = console_.messages() == 0 ? "cannot be read" : "refused; no patch is written";
    return complain(options_.in, PatchError("", reason));
}

int SampleCommands::loadWave() {
    Patch patch;
    begin(patch);
    SampleBench bench(patch, console_);
    {
        const Busy busy(console_, "loading " + options_.in);
        const WaveOrder order{options_.in, options_.channel == "right" ? 1 : 0, options_.keepTuning, options_.autotune};
        if (!bench.loadWave(wave(), order)) return refused();
    }
    save(options_.out, patch);
    std::printf("%s: %s\n", placeText(wave()).c_str(), sampleText(patch.samples[static_cast<std::size_t>(wave())]).c_str());
    return console_.messages() == 0 ? done : incomplete;
}

int SampleCommands::resynthesize() {
    Patch patch;
    begin(patch);
    SampleBench bench(patch, console_);
    {
        const Busy busy(console_, "resynthesizing " + options_.in);
        if (!bench.resynthesize(wave(), options_.in)) return refused();
    }
    save(options_.out, patch);
    std::printf("%s: custom wave of %s\n", placeText(wave()).c_str(), fs::path(options_.in).filename().c_str());
    return done;
}

int SampleCommands::edit() {
    std::vector<int> commands;
    for (const std::string& text : options_.commands) commands.push_back(editCommandOf(text));
    const bool exports = std::find(commands.begin(), commands.end(), exportCommand) != commands.end();
    if (exports && options_.exportTo.empty()) {
        std::fprintf(stderr, "vantoric-patch: \"Export as wav\" needs --export and the name of a file\n");
        return wrongUse;
    }
    if (!exports && !options_.exportTo.empty()) commands.push_back(exportCommand);
    Patch patch;
    load(options_.patch, patch);
    SampleBench bench(patch, console_);
    runEdits(bench, commands);
    if (console_.messages() > 0) return fileTrouble;
    save(options_.out, patch);
    std::printf("%s: %s\n", placeText(wave()).c_str(), sampleText(patch.samples[static_cast<std::size_t>(wave())]).c_str());
    return done;
}

void SampleCommands::runEdits(SampleBench& bench, const std::vector<int>& commands) {
    if (!options_.range.empty()) {
        const Markers markers = *markersIn(options_.range);
        bench.mark(wave(), markers.start, markers.end);
    }
    for (const int command : commands) {
        const Busy busy(console_, editCommands[static_cast<std::size_t>(command)].label);
        if (command == exportCommand)
            bench.exportWave(wave(), options_.exportTo);
        else
            bench.edit(wave(), command);
    }
    if (!options_.loop.empty()) {
        const Markers markers = *markersIn(options_.loop);
        bench.mark(wave(), markers.start, markers.end);
    }
}

int SampleCommands::importSfz() {
    Patch patch;
    SampleBench bench(patch, console_);
    console_.yes = options_.groups == "all";
    {
        const Busy busy(console_, "importing " + options_.in);
        if (!bench.importSfz(options_.in)) return refused();
    }
    return reportImport(patch);
}

int SampleCommands::quickImport() {
    const fs::path beside = fs::path(platform::moduleFolder()) / ".." / "Vantoric";  // as dist/ is laid out
    if (!options_.data.empty())
        platform::setDataFolder(options_.data);
    else if (platform::isFolder(beside.string()))
        platform::setDataFolder(beside.string());
    const std::string name = options_.vocoder ? "Quick_Vocoder.fxp" : "Quick_Sample.fxp";
    if (!platform::exists(platform::bankFolder() + name))
        throw PatchError("", "the template " + platform::bankFolder() + name + " is missing");
    Patch patch;
    SampleBench bench(patch, console_);
    {
        const Busy busy(console_, "importing " + options_.in);
        if (!bench.quickImport(options_.in, options_.vocoder)) return refused();
    }
    return reportImport(patch);
}

int SampleCommands::reportImport(Patch& patch) const {
    save(options_.out, patch);
    std::error_code error;
    const std::uintmax_t size = fs::file_size(options_.out, error);
    std::fputs(describe(patch, error ? 0 : static_cast<std::size_t>(size)).c_str(), stdout);
    return console_.messages() == 0 ? done : incomplete;
}

}  // namespace vantoric::patch
