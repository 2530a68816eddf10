// The commands on samples and custom waves that ask the user something.
#pragma once

#include <string>

#include "library/command_log.h"
#include "library/done.h"
#include "library/wave_chooser.h"
#include "loading/custom_wave_loader.h"
#include "loading/sample_editor.h"
#include "loading/sample_loader.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Every command shows what there is to tell and ends with `done`. Layers and oscillators as the
// loaders take them; a layer is the one on show at the time of the call, whichever is when the user answers. Outlives its
// questions.
class SampleCommands {
public:
    SampleCommands(SampleLoader& loader, SampleEditor& editor, CustomWaveLoader& customWaves, WaveChooser& chooser,
                   Messages& messages, platform::Dialogs& dialogs, CommandLog& log)
        : loader_(loader),
          editor_(editor),
          customWaves_(customWaves),
          chooser_(chooser),
          messages_(messages),
          dialogs_(dialogs),
          log_(log) {}

    // Loads a file that the user chose in a dialog or dropped: reads it beside the window, asks whether it is to be tuned and
    // puts it in its place, one command. Of a dropped one the oscillator plays it then. False, with the earlier sample in its
    // place, if it was refused or called off, which closing the window over the question does.
    void loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped, Done done);
    // Lets the user choose a wave file and does so with the layer that the window shows. False if none was chosen or it was
    // refused.
    void loadSampleDialog(int oscillator, Done done);

    // Runs a row of the "Edit" menu, see SampleEditor; "Export as wav" lets the user choose a path if there is a sample. A
    // long sample is worked on beside the window and can be cancelled. True if the patch is another.
    void editSample(int layer, int oscillator, int command, Done done);

    // Makes the custom wave of a file. False, with the wave as it was, if it was refused.
    bool resynthesize(int layer, int oscillator, const std::string& path);
    // Lets the user choose a file, from the folder of cycles on, and makes the custom wave of it. False if none was chosen or
    // it was refused.
    void resynthesizeDialog(int layer, int oscillator, Done done);
    // Lets the user choose a path and saves the custom wave there. False if none was chosen or it cannot be written.
    void saveWaveDialog(int layer, int oscillator, Done done);

private:
    // Where a wave goes.
    struct Target {
        int layer, oscillator;
        bool wasDropped;
    };
    void askTuning(const Target& target, WaveReading&& reading, Done done);
    bool placeChosen(const Target& target, PreparedWave&& wave, bool tune);
    void exportSample(int layer, int oscillator, Done done);
    void writeSample(int layer, int oscillator, const std::string& path, Done done);
    bool told(bool result);
    // Runs a part that changes the patch as a command, and tells.
    template <class Act>
    bool run(const std::string& name, Act&& act);
    int layerOf(int layer) const { return layer == -1 ? loader_.currentLayer : layer; }

    SampleLoader& loader_;
    SampleEditor& editor_;
    CustomWaveLoader& customWaves_;
    WaveChooser& chooser_;
    Messages& messages_;
    platform::Dialogs& dialogs_;
    CommandLog& log_;
};

}  // namespace vantoric
