// Loading wave files into the oscillators' samples, with what it does to the parameters and says to the user.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/messages.h"
#include "base/outcome.h"
#include "base/progress.h"
#include "loading/sample_exchange.h"
#include "parameters/parameter_model.h"
#include "samples/wave_file.h"

namespace vantoric {

// What a refused file leaves in an oscillator: no sample, or the one that was there.
enum class Refusal : unsigned char { leavesNone, leavesEarlier };

// A wave file on its way into an oscillator: all that can fail has been done.
struct PreparedWave {
    std::string path;
    PreparedSample sample;
    bool loopOn = false;
    bool loopWasSound = true;  // else the loop of the file was forgotten, which nobody has been told
};

// What came of reading a wave file.
struct WaveReading {
    std::optional<PreparedWave> wave;
    Outcome refused;       // why there is none; nothing to tell if the file cannot be opened or the reading was cancelled
    bool wasRead = false;  // the bytes were there
};

// Any thread but the audio thread: each call takes its turn; voices may play and the worker may rebuild meanwhile. What there
// is to tell goes to the messages. Throws nothing. Layers are 0 to 3, or -1 for the one the window shows; oscillators 0 to 2;
// others load nothing.
class SampleLoader {
public:
    SampleLoader(EngineAccess& access, ParameterModel& parameters, const SampleHolders& holders, Messages& messages);

    // Loads a wave file, of a stereo file the left channel, into a sample: data, rate and loop go to the
    // holder, `LoopMod` follows the file's loop, `Start` becomes 0, and a note in the file name tunes `Oct`
    // and `Semi`. False, with a message unless `silent` or the file cannot be opened, if it was refused: a file
    // that is missing or above 10000000 bytes leaves the earlier sample, any other what `refusal` says. A loop that the
    // sound does not hold is forgotten with a message.
    bool loadSample(int layer, int oscillator, const std::string& path, bool silent = false,
                    Refusal refusal = Refusal::leavesNone);

    // The same for channel 0 (left) or 1 (right) of a stereo file, never silent. keepTuning: the file name does not tune.
    bool loadSampleChannel(int layer, int oscillator, const std::string& path, bool keepTuning, int channel,
                           Refusal refusal = Refusal::leavesNone);

    // The two halves of a load. The first reads, converts and builds beside everything, without a turn, and tells nobody;
    // `progress` may be null. The second tells of a loop that was forgotten and puts the wave in its place as
    // loadSampleChannel does; it does nothing for an oscillator that there is none of and may throw std::bad_alloc, with the
    // sample in its place.
    WaveReading readWave(const std::string& path, int channel = 0, Progress* progress = nullptr) const;
    void place(int layer, int oscillator, PreparedWave&& wave, bool keepTuning = false, bool silent = false);
    // Tells of a loop that was forgotten, once.
    void tellLoop(PreparedWave& wave, bool silent = false);

    // Has the oscillator play its sample.
    void selectSample(int layer, int oscillator);

    // Sets the rate of a sample so that its pitch plays as the note C. An empty one is left alone.
    void autotune(int layer, int oscillator);

    // The layer that the window shows, 0 to 3. Set by the thread that loads.
    int currentLayer = 0;

private:
    struct Task {
        int layer, oscillator;
        const std::string& path;
        int channel;
        bool silent, keepTuning;
        Refusal refusal;
    };

    bool load(const Task& task);
    void read(const std::string& path, int channel, Progress* progress, WaveReading& reading) const;
    void prepare(std::span<const std::uint8_t> file, int channel, Progress* progress, WaveReading& reading) const;
    void writeParameters(int layer, int oscillator, const PreparedWave& wave, bool keepTuning);
    int layerOf(int layer) const { return layer == -1 ? currentLayer : layer; }

    EngineAccess& access_;
    ParameterModel& parameters_;
    SampleHolders holders_;
    Messages& messages_;
};

}  // namespace vantoric
