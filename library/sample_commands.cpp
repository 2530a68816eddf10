#include "library/sample_commands.h"

#include <memory>
#include <utility>

#include "base/outcome.h"
#include "library/beside.h"
#include "library/show_messages.h"
#include "platform/module_folder.h"
#include "samples/wave_file.h"

namespace vantoric {

bool SampleCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

template <class Act>
bool SampleCommands::run(const std::string& name, Act&& act) {
    bool isDone = false;
    {
        const CommandLog::Running running(log_, name);
        isDone = act();
    }
    return told(isDone);
}

void SampleCommands::loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped, Done done) {
    const Target target{layerOf(layer), oscillator, wasDropped};
    const auto reading = std::make_shared<WaveReading>();
    beside(
        dialogs_, "Loading", fileNameOf(path),
        [&loader = loader_, path, reading](Progress& progress) { *reading = loader.readWave(path, 0, &progress); },
        [this, target, reading, done = std::move(done)](bool isRead) {
            if (!isRead) return done(false);
            messages_.post(reading->refused);
            if (!reading->wave) return done(told(false));
            askTuning(target, std::move(*reading), done);
        });
}

void SampleCommands::askTuning(const Target& target, WaveReading&& reading, Done done) {
    if (!reading.wave) return done(false);
    loader_.tellLoop(*reading.wave);
    told(true);
    dialogs_.choice(
        "Autotune",
        target.wasDropped ? "Autotune the sample?" : "Should the sample be tuned automatically (YES) or be tuned to C (NO)?",
        [this, target, wave = std::make_shared<PreparedWave>(std::move(*reading.wave)),
         done = std::move(done)](std::optional<bool> tune) { done(tune && placeChosen(target, std::move(*wave), *tune)); });
}

bool SampleCommands::placeChosen(const Target& target, PreparedWave&& wave, bool tune) {
    const std::string name = patchNameOfPath(wave.path);
    return run("Load sample '" + name + "'", [&] {
        try {
            loader_.place(target.layer, target.oscillator, std::move(wave));
        } catch (...) {
            messages_.post("Error", notEnoughMemory);  // for its parameters: it is in its place
        }
        if (tune) loader_.autotune(target.layer, target.oscillator);
        if (target.wasDropped) loader_.selectSample(target.layer, target.oscillator);
        return true;
    });
}

void SampleCommands::loadSampleDialog(int oscillator, Done done) {
    chooser_.ask([this, layer = layerOf(-1), oscillator, done = std::move(done)](const auto& path) {
        path ? loadChosen(layer, oscillator, *path, false, done) : done(false);
    });
}

void SampleCommands::editSample(int layer, int oscillator, int command, Done done) {
    layer = layerOf(layer);
    if (command < 0 || command >= editCommandCount) return done(false);
    if (command == exportCommand) return exportSample(layer, oscillator, std::move(done));
    std::optional<SampleEdit> begun = editor_.beginEdit(layer, oscillator, command);
    if (!begun) return done(told(false));
    const std::string name = editCommands[static_cast<std::size_t>(command)].label;
    const auto edit = std::make_shared<SampleEdit>(std::move(*begun));
    beside(
        dialogs_, "Editing", name, [edit](Progress& progress) { SampleEditor::makeEdit(*edit, progress.cancelled()); },
        [this, name, edit, done = std::move(done)](bool isMade) {
            done(isMade && run(name, [&] { return editor_.finishEdit(std::move(*edit)); }));
        });
}

void SampleCommands::exportSample(int layer, int oscillator, Done done) {
    if (!editor_.hasSample(layer, oscillator)) return done(told(false));
    platform::askFilePath(dialogs_, "", true, platform::FileKind::Wave,
                          [this, layer, oscillator, done = std::move(done)](const auto& path) {
                              path ? writeSample(layer, oscillator, *path, done) : done(told(false));
                          });
}

void SampleCommands::writeSample(int layer, int oscillator, const std::string& path, Done done) {
    struct Writing {
        std::vector<std::int16_t> samples;
        Outcome told;
    };
    const auto writing = std::make_shared<Writing>();
    try {
        writing->samples = editor_.samplesOf(layer, oscillator);
    } catch (...) {
        messages_.post("Error", notEnoughMemory);
    }
    if (writing->samples.empty()) return done(told(false));
    beside(
        dialogs_, "Saving", fileNameOf(path),
        [writing, path](Progress& progress) {
            if (!progress.isCancelled()) writing->told = writeWave(writing->samples, path);
        },
        [this, writing, done = std::move(done)](bool isWritten) {
            if (isWritten) messages_.post(writing->told);
            done(told(false));
        });
}

bool SampleCommands::resynthesize(int layer, int oscillator, const std::string& path) {
    return run("Load wave '" + patchNameOfPath(path) + "'", [&] { return customWaves_.resynthesize(layer, oscillator, path); });
}

void SampleCommands::resynthesizeDialog(int layer, int oscillator, Done done) {
    platform::askFilePath(dialogs_, platform::wavetableFolder(), false, platform::FileKind::Wave,
                          [this, layer = layerOf(layer), oscillator, done = std::move(done)](const auto& path) {
                              done(path && resynthesize(layer, oscillator, *path));
                          });
}

void SampleCommands::saveWaveDialog(int layer, int oscillator, Done done) {
    platform::askFilePath(dialogs_, "", true, platform::FileKind::Wave,
                          [this, layer = layerOf(layer), oscillator, done = std::move(done)](const auto& path) {
                              done(path && told(customWaves_.saveWave(layer, oscillator, *path)));
                          });
}

}  // namespace vantoric
