#include "library/sample_commands.h"

#include "library/show_messages.h"
#include "platform/module_folder.h"

namespace vantoric {

bool SampleCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

bool SampleCommands::loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped) {
    if (!told(loader_.loadSample(layer, oscillator, path, false, Refusal::leavesEarlier))) return false;
    const bool tune =
        dialogs_.question("Autotune", wasDropped ? "Autotune the sample?"
                                                 : "Should the sample be tuned automatically (YES) or be tuned to C (NO)?");
    if (tune) loader_.autotune(layer, oscillator);
    return told(true);
}

bool SampleCommands::loadSampleDialog(int oscillator) {
    std::string path;
    return chooser_.ask(path) && loadChosen(-1, oscillator, path, false);
}

bool SampleCommands::editSample(int layer, int oscillator, int command) {
    if (command != exportCommand) return told(editor_.editSample(layer, oscillator, command));
    std::string path;
    if (editor_.hasSample(layer, oscillator) && platform::askFilePath(dialogs_, path, "", true, platform::FileKind::Wave))
        editor_.exportWave(layer, oscillator, path);
    return told(false);
}

bool SampleCommands::resynthesizeDialog(int layer, int oscillator) {
    std::string path;
    return platform::askFilePath(dialogs_, path, platform::wavetableFolder(), false, platform::FileKind::Wave) &&
           told(customWaves_.resynthesize(layer, oscillator, path));
}

bool SampleCommands::saveWaveDialog(int layer, int oscillator) {
    std::string path;
    return platform::askFilePath(dialogs_, path, "", true, platform::FileKind::Wave) &&
           told(customWaves_.saveWave(layer, oscillator, path));
}

}  // namespace vantoric
