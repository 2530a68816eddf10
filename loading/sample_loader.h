// Loading wave files into the oscillators' samples, with what it does to the parameters and says to the user.
#pragma once

#include <string>

#include "loading/sample_exchange.h"
#include "parameters/parameter_model.h"
#include "platform/dialogs.h"
#include "samples/wave_file.h"

namespace vantoric {

// Called by one thread at a time that is not the audio thread; voices may play and the worker may rebuild
// meanwhile. Layers are 0 to 3, or -1 for the one the window shows; oscillators 0 to 2; others load nothing.
class SampleLoader {
public:
    SampleLoader(EngineFlags& flags, ParameterModel& parameters, const SampleHolders& holders, platform::Dialogs& dialogs,
                 SleepFunction sleep);

    // Loads a wave file, of a stereo file the left channel, into a sample: data, rate and loop go to the
    // holder, `LoopMod` follows the file's loop, `Start` becomes 0, and a note in the file name tunes `Oct`
    // and `Semi`. False, with a box unless `silent` or the file cannot be opened, if it was refused: a file
    // that is missing or above 10000000 bytes leaves the earlier sample, any other leaves the oscillator
    // without one. A loop that the sound does not hold is forgotten with a box.
    bool loadSample(int layer, int oscillator, const std::string& path, bool silent = false);

    // The same for channel 0 (left) or 1 (right) of a stereo file, with boxes. keepTuning: the file name does not tune.
    bool loadSampleChannel(int layer, int oscillator, const std::string& path, bool keepTuning, int channel);

    // Loads a file that the user chose in a dialog or dropped, and asks whether it is to be tuned.
    bool loadChosen(int layer, int oscillator, const std::string& path, bool wasDropped);

    // Lets the user choose a wave file and loads it into the layer that the window shows. False if none
    // was chosen or it was refused. The dialog starts in the folder that was used last.
    bool loadSampleDialog(int oscillator);
    // The dialog alone: false, with `path` as it was, if none was chosen.
    bool askWaveFile(std::string& path);

    // Sets the rate of a sample so that its pitch plays as the note C. An empty one is left alone.
    void autotune(int layer, int oscillator);

    // The layer that the window shows, 0 to 3.
    int currentLayer = 0;

private:
    struct Task {
        int layer, oscillator;
        const std::string& path;
        int channel;
        bool silent, keepTuning;
    };

    bool load(const Task& task);
    WaveError read(const Task& task, std::span<const std::uint8_t> file, WaveSound& sound) const;
    bool publish(const Task& task, const WaveSound& sound);
    void writeParameters(const Task& task, bool loopOn);
    void setParameter(const Task& task, int number, float value);
    bool refuse(const Task& task, const char* title, const char* text);
    int layerOf(int layer) const { return layer == -1 ? currentLayer : layer; }

    EngineFlags& flags_;
    ParameterModel& parameters_;
    SampleHolders holders_;
    platform::Dialogs& dialogs_;
    SleepFunction sleep_;
    std::string lastFolder_;
};

}  // namespace vantoric
