#include "library/sample_commands.h"

#include "library/show_messages.h"
#include "platform/module_folder.h"

namespace vantoric {

bool SampleCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

void SampleCommands::loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped, Done done) {
    layer = layerOf(layer);
    if (!told(loader_.loadSample(layer, oscillator, path, false, Refusal::leavesEarlier))) return done(false);
    dialogs_.question(
        "Autotune", wasDropped ? "Autotune the sample?" : "Should the sample be tuned automatically (YES) or be tuned to C (NO)?",
        [this, layer, oscillator, done = std::move(done)](bool tune) {
            if (tune) loader_.autotune(layer, oscillator);
            done(told(true));
        });
}

void SampleCommands::loadSampleDialog(int oscillator, Done done) {
    chooser_.ask([this, layer = layerOf(-1), oscillator, done = std::move(done)](const auto& path) {
        path ? loadChosen(layer, oscillator, *path, false, done) : done(false);
    });
}

void SampleCommands::editSample(int layer, int oscillator, int command, Done done) {
    layer = layerOf(layer);
    if (command != exportCommand) return done(told(editor_.editSample(layer, oscillator, command)));
    if (!editor_.hasSample(layer, oscillator)) return done(told(false));
    platform::askFilePath(dialogs_, "", true, platform::FileKind::Wave,
                          [this, layer, oscillator, done = std::move(done)](const auto& path) {
                              if (path) editor_.exportWave(layer, oscillator, *path);
                              done(told(false));
                          });
}

void SampleCommands::resynthesizeDialog(int layer, int oscillator, Done done) {
    platform::askFilePath(dialogs_, platform::wavetableFolder(), false, platform::FileKind::Wave,
                          [this, layer = layerOf(layer), oscillator, done = std::move(done)](const auto& path) {
                              done(path && told(customWaves_.resynthesize(layer, oscillator, *path)));
                          });
}

void SampleCommands::saveWaveDialog(int layer, int oscillator, Done done) {
    platform::askFilePath(dialogs_, "", true, platform::FileKind::Wave,
                          [this, layer = layerOf(layer), oscillator, done = std::move(done)](const auto& path) {
                              done(path && told(customWaves_.saveWave(layer, oscillator, *path)));
                          });
}

}  // namespace vantoric
