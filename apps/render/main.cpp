// vantoric-render SONG [OUT.wav]: plays a MIDI file into a VST 2.4 instrument, or a mix into several, and writes what
// comes out.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/render/mastering.h"
#include "apps/render/mix.h"
#include "apps/render/patch_file.h"
#include "apps/render/patch_library.h"
#include "apps/render/render.h"
#include "apps/render/report.h"
#include "apps/render/settings.h"
#include "apps/render/settle.h"
#include "apps/render/wave_output.h"
#include "base/real_option.h"
#include "base/version.h"

namespace {

namespace fs = std::filesystem;
using namespace vantoric;
using namespace vantoric::render;

enum Exit { done = 0, renderTrouble = 1, wrongUse = 2, fileTrouble = 3 };

struct Options {
    std::string song, output, plugin, patch, sounds, block = "512", format = "16";
    std::vector<std::string> settings;
    RenderSettings render;
    int rate = 44100;
    double gainDecibels = 0.0, settle = 20.0, truePeak = -1.0;
    std::optional<double> loudness;
    bool listParameters = false, failOnSilence = false, quiet = false;
};

int complain(Exit code, const std::string& what, const std::string& why) {
    std::fprintf(stderr, "vantoric-render: %s: %s\n", what.c_str(), why.c_str());
    return code;
}

void describe(CLI::App& app, Options& options) {
    app.add_option("SONG", options.song, "Standard MIDI File (.mid), or mix of several instruments (.mix), to play");
    app.add_option("OUT", options.output, "WAV file to write (default: the song's name with .wav, in the current folder)");
    app.add_option("--plugin", options.plugin,
                   "plug-in module (default: Vantoric.so beside this program, in ../Vantoric or in ../lib/vantoric)");
    app.add_option("--patch", options.patch, "patch to load: a file (.fxp), or CATEGORY/NAME of the library");
    app.add_option("--sounds", options.sounds,
                   "folder of the patches that a mix names (default: the library, your own patches first)");
    app.add_option("--set", options.settings,
                   "set a parameter: [LAYER:]NAME=VALUE, value 0..1, #row of a list or what its display shows")
        ->allow_extra_args(false)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--list-parameters", options.listParameters, "print index, name, display and label of every parameter");
    app.add_option("--rate", options.rate, "sample rate in Hz")->check(CLI::Range(8000, 192000))->capture_default_str();
    app.add_option("--block", options.block, "frames a block, 1 to 32768, or \"random\"")->capture_default_str();
    app.add_option("--format", options.format, "samples of the WAV file")
        ->check(CLI::IsMember({"16", "24", "32f"}))
        ->capture_default_str();
    holdToReal(app.add_option("--gain", options.gainDecibels, "gain in dB"), -120, 60);
    holdToReal(app.add_option("--loudness", options.loudness,
                              "bring the recording to this integrated loudness in LUFS (ITU-R BS.1770; default: what the mix "
                              "says)"),
               -60, 0);
    holdToReal(app.add_option("--true-peak", options.truePeak,
                              "highest true peak in dB of a recording that is brought to a loudness; where plain gain would "
                              "pass it, a limiter that looks ahead holds it"),
               -20, 0)
        ->capture_default_str();
    holdToReal(app.add_option("--start", options.render.start, "begin at this second of the song"), 0, 1e6);
    holdToReal(app.add_option("--end", options.render.end, "let go of all notes at this second of the song"), 0, 1e6);
    holdToReal(app.add_option("--tail", options.render.tail,
                              "seconds to render after the last note (default: until it is silent, at most 10)"),
               0, 600);
    holdToReal(app.add_option("--settle", options.settle, "seconds to wait at most until the plug-in has loaded its data"), 0,
               600)
        ->capture_default_str();
    app.add_flag("--fail-on-silence", options.failOnSilence, "fail if nothing louder than -80 dB comes out");
    app.add_flag("--quiet", options.quiet, "print nothing but problems");
}

bool isMix(const Options& options) { return fs::path(options.song).extension() == ".mix"; }

// What the option parser cannot test by itself. Empty if all is well.
std::string completeOptions(Options& options) {
    if (options.block == "random") {
        options.render.randomBlocks = true;
        options.render.block = 4096;
    } else {
        char* end = nullptr;
        const long frames = std::strtol(options.block.c_str(), &end, 10);
        if (options.block.empty() || *end || frames < 1 || frames > 32768) return "--block: should be 1 to 32768 or \"random\"";
        options.render.block = static_cast<int>(frames);
    }
    if (options.song.empty() && !options.listParameters) return "which song? Give a MIDI file, or --help";
    if (options.render.end <= options.render.start) return "--end: should be after --start";
    if (isMix(options) && (!options.patch.empty() || !options.settings.empty() || options.listParameters))
        return "a mix names its patches and settings itself: --patch, --set and --list-parameters go with a MIDI file";
    if (options.output.empty()) options.output = fs::path(options.song).stem().string() + ".wav";
    options.render.rate = options.rate;
    options.render.gain = std::pow(10.0, options.gainDecibels / 20.0);
    return "";
}

std::string defaultPlugin() {
    std::error_code ignored;
    const fs::path here = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    for (const fs::path& folder : {here, here / "../Vantoric", here / "../lib/vantoric"})
        if (fs::exists(folder / "Vantoric.so", ignored)) return (folder / "Vantoric.so").lexically_normal();
    return here / "Vantoric.so";
}

void listParameters(PluginHost& plugin) {
    for (int i = 0; i < plugin.parameters(); ++i)
        std::printf("%5d  %-10s %-12s %s\n", i, plugin.parameterName(i).c_str(), plugin.parameterDisplay(i).c_str(),
                    plugin.parameterLabel(i).c_str());
}

// Loads patch and settings. Returns an exit code, `done` if all went well.
int dress(PluginHost& plugin, const Options& options) {
    std::string problem;
    if (!options.patch.empty()) {
        std::vector<std::uint8_t> chunk;
        if (!plugin.takesChunks()) return complain(renderTrouble, options.patch, "the plug-in takes no chunks");
        if (!loadPatch(options.patch, plugin.uniqueId(), chunk, problem)) return complain(fileTrouble, options.patch, problem);
        // A plug-in that is still loading its data may overwrite a chunk that comes too early.
        ProgressLine line(!options.quiet);
        waitUntilSettled(options.settle, [&line] { line.loading(); });
        if (!plugin.setChunk(chunk)) return complain(fileTrouble, options.patch, "the plug-in refuses it");
    }
    for (const std::string& setting : options.settings)
        if (!applySetting(plugin, setting, problem)) return complain(wrongUse, "--set " + setting, problem);
    return done;
}

void report(const Options& options, const Song& song, const RenderResult& result, const Meter& meter) {
    const double seconds = static_cast<double>(result.frames) / options.render.rate;
    std::printf("%s\n", options.output.c_str());
    std::printf("  length    %s at %d Hz (%d notes)\n", clockText(seconds).c_str(), options.rate, song.notes());
    std::printf("  peak      %s\n", levelText(meter.peakDecibels(), "dBFS").c_str());
    std::printf("  loudness  %s\n", levelText(meter.loudness(), "LUFS").c_str());
    std::printf("  speed     %.1f times real time\n", seconds / std::max(1e-9, result.seconds));
}

SampleFormat formatOf(const Options& options) {
    return options.format == "16" ? SampleFormat::pcm16 : options.format == "24" ? SampleFormat::pcm24 : SampleFormat::float32;
}

// What is wrong with a recording that has been written. An exit code.
int judge(const Options& options, const RenderResult& result, const Meter& meter) {
    if (result.badSamples > 0)
        return complain(renderTrouble, options.output, std::to_string(result.badSamples) + " samples were not finite");
    if (options.failOnSilence && meter.peak() < silence) return complain(renderTrouble, options.output, "silence");
    if (meter.peak() > 1.0 && options.format != "32f" && !options.quiet)
        std::fprintf(stderr, "vantoric-render: %s: clipped; try --gain %.0f\n", options.output.c_str(),
                     std::floor(options.gainDecibels - meter.peakDecibels()));
    return done;
}

int play(PluginHost& plugin, const Song& song, const Options& options) {
    std::string problem;
    const auto output = WaveOutput::create(options.output, options.rate, formatOf(options), problem);
    if (!output) return complain(fileTrouble, options.output, problem);
    Meter meter(options.render.rate);
    RenderResult result;
    {
        ProgressLine line(!options.quiet);
        result = render::render(
            plugin, song, options.render, options.settle,
            [&](const float* samples, int frames) {
                meter.hear(samples, frames);
                return output->write(samples, frames);
            },
            [&line](std::int64_t position, std::int64_t expected) { line.update(position, expected); },
            [&line] { line.loading(); });
    }
    if (!output->close() || !result.written) return complain(fileTrouble, options.output, "cannot be written whole");
    if (!options.quiet) report(options, song, result, meter);
    return judge(options, result, meter);
}

// Plays all instruments of a song, one after the other, into one recording.
class MixPlayer {
public:
    MixPlayer(const Options& options, const midi::File& file) : options_(options), file_(file) {}

    // Adds an instrument that is dressed. All of them are there before the first one plays.
    void take(std::unique_ptr<PluginHost> plugin, const MixInstrument& part) { players_.push_back({std::move(plugin), part}); }

    // An exit code.
    int run(std::optional<double> loudness) {
        for (Player& player : players_) play(player);
        Mastered mastered;
        if (loudness) mastered = master(mix_.samples(), options_.render.rate, *loudness, options_.truePeak);
        const Measures measures = measure(mix_.samples(), options_.render.rate);
        Meter meter(options_.render.rate);
        if (const int code = write(meter)) return code;
        if (!options_.quiet) {
            report(options_, Song(file_), result_, meter);
            std::printf("  true peak %s\n", levelText(measures.truePeak, "dBTP").c_str());
            if (loudness) std::printf("  mastering %+.1f dB, limited by %.1f dB\n", mastered.gain, mastered.reduction);
        }
        if (loudness && !std::isfinite(measures.loudness))
            return complain(renderTrouble, options_.output, "too short or too quiet to have a loudness");
        return judge(options_, result_, meter);
    }

private:
    struct Player {
        std::unique_ptr<PluginHost> plugin;
        MixInstrument part;
    };

    void play(Player& player) {
        ProgressLine line(!options_.quiet);
        std::size_t at = 0;
        const RenderResult result = render::render(
            *player.plugin, Song(withTracks(file_, player.part.tracks)), options_.render, options_.settle,
            [&](const float* samples, int frames) {
                mix_.add(at, samples, frames, player.part.level, player.part.pan);
                at += static_cast<std::size_t>(frames);
                return true;
            },
            [&line](std::int64_t position, std::int64_t expected) { line.update(position, expected); },
            [&line] { line.loading(); });
        result_.frames = std::max(result_.frames, result.frames);
        result_.badSamples += result.badSamples;
        result_.seconds += result.seconds;
    }

    int write(Meter& meter) {
        std::string problem;
        const auto output = WaveOutput::create(options_.output, options_.rate, formatOf(options_), problem);
        if (!output) return complain(fileTrouble, options_.output, problem);
        const std::vector<float> samples(mix_.samples().begin(), mix_.samples().end());
        const int frames = static_cast<int>(mix_.frames());
        meter.hear(samples.data(), frames);
        const bool written = output->write(samples.data(), frames);
        return output->close() && written ? done : complain(fileTrouble, options_.output, "cannot be written whole");
    }

    const Options& options_;
    const midi::File& file_;
    std::vector<Player> players_;
    MixBuffer mix_;
    RenderResult result_;
};

int loadSong(const std::string& path, midi::File& file) {
    std::string problem;
    if (!midi::load(path, file, problem)) return complain(fileTrouble, path, problem);
    if (!problem.empty()) complain(done, path, problem);
    return done;
}

int runMix(Options options) {
    std::string problem;
    std::ifstream stream(options.song, std::ios::binary);
    if (!stream) return complain(fileTrouble, options.song, "cannot be opened");
    Mix mix;
    if (!parseMix({std::istreambuf_iterator<char>(stream), {}}, mix, problem))
        return complain(fileTrouble, options.song, problem);
    midi::File file;
    if (const int code = loadSong(fs::path(options.song).parent_path() / mix.song, file)) return code;
    MixPlayer player(options, file);
    for (const MixInstrument& part : mix.instruments) {
        auto plugin = PluginHost::load(options.plugin, problem);
        if (!plugin) return complain(fileTrouble, options.plugin, problem);
        Options own = options;
        own.patch =
            options.sounds.empty() ? libraryPatch(part.patch) : std::string(fs::path(options.sounds) / (part.patch + ".fxp"));
        own.settings = part.settings;
        if (const int code = dress(*plugin, own)) return code;
        player.take(std::move(plugin), part);
    }
    return player.run(options.loudness ? options.loudness : mix.loudness);
}

int run(Options& options) {
    std::string problem;
    midi::File file;
    if (options.plugin.empty()) options.plugin = defaultPlugin();
    chooseLibrary(options.plugin, options.song);
    if (isMix(options)) return runMix(options);
    if (!options.patch.empty()) options.patch = patchPath(options.patch);
    if (!options.song.empty())
        if (const int code = loadSong(options.song, file)) return code;
    auto plugin = PluginHost::load(options.plugin, problem);
    if (!plugin) return complain(fileTrouble, options.plugin, problem);
    if (const int code = dress(*plugin, options)) return code;
    if (options.listParameters) listParameters(*plugin);
    if (options.song.empty()) return done;
    if (!options.loudness) return play(*plugin, Song(std::move(file)), options);
    MixPlayer player(options, file);
    player.take(std::move(plugin), {});
    return player.run(options.loudness);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Plays a MIDI file into a VST 2.4 instrument, or a mix into several instances of it, and writes a WAV file.",
                 "vantoric-render");
    app.set_version_flag("--version", std::string("vantoric-render ") + versionText);
    app.footer(
        "A mix is text: \"song FILE.mid\", \"loudness LUFS\" and a line \"instrument level=DECIBELS pan=-100..100 track=N\n"
        "set=NAME=VALUE CATEGORY/PATCH\" for every instance of the plug-in; vantoric-song makes one of a score.\n"
        "Exit codes: 0 done, 1 the sound is not as it should be, 2 wrong use, 3 a file that cannot be read or written.");
    describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? done : wrongUse;
    }
    if (const std::string wrong = completeOptions(options); !wrong.empty()) {
        std::fprintf(stderr, "vantoric-render: %s\n", wrong.c_str());
        return wrongUse;
    }
    return run(options);
}
