// An engine with the made wave banks, on which patches are played and measured.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/instrument.h"
#include "platform/scratch_folder.h"

namespace vantoric::factory {

inline constexpr int studioRate = 44100;  // Hz

// A build with sanitizers is slower than the music.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool isCheckedBuild = true;
#else
inline constexpr bool isCheckedBuild = false;
#endif

struct Take {
    double peak = 0.0;         // of full scale, over all
    double loudness = -100.0;  // LUFS of the loudest 0.4 s
    double offset = 0.0;       // mean while the keys are held, the larger of the two channels
    double tailSeconds = 0.0;  // from the release to the last sample above -72 dBFS
    double endPeak = 0.0;      // of the last half second
    double spent = 0.0;        // processor seconds for making it
    bool finite = true;
    std::vector<float> left, right;
};

// Plays an instance of the instrument a patch; installs nothing and leaves nothing behind.
class Studio {
public:
    Studio();
    ~Studio();

    // Loads a patch file into a new instance, so that nothing runs on that earlier patches left, and waits until its waves are
    // made. False if it was not taken.
    bool load(const std::string& path);

    // The phases and random numbers that each take begins with: 0 after a load, and another for any other number.
    void setChance(std::uint32_t number);

    // Holds the keys for `held` seconds, then lets go and listens until it is silent, at most `tail` seconds. Starts
    // from silence and with the chance that is set, and a song at 120 quarter notes a minute starts with it.
    Take play(const std::vector<int>& keys, int velocity, double held, double tail);

    // Sends a MIDI message, taken up by the next rendering.
    void send(int status, int data1, int data2);

    // Where the modulation wheel stands in the takes to come, 0 to 127; at first, and after a load, 0.
    void setWheel(int place) { wheel_ = place; }

    // Turns a knob of the loaded patch, `index` as a host counts them, to 0 to 1.
    void turn(int index, float value);

    // The value of a parameter of the loaded patch.
    const ParameterModel& parameters() { return engine_->parameters(); }

    // What the instrument has had to tell since the last call.
    std::vector<Message> takeMessages() { return engine_->messages().take(); }

private:
    void makeInstrument();
    void render(Take& take, double seconds);
    void renderTail(Take& take, double seconds);
    void waitForWaves();

    platform::ScratchFolder folder_;
    std::unique_ptr<Instrument> engine_;
    RandomSources chance_;
    int wheel_ = 0;
    double ppqPos_ = 0.0;  // the song runs while a studio renders, so that what follows its position moves
};

// Powers of third octaves from 50 Hz on over the first `seconds` of a take, both channels added: `columns` points of time, of
// each `bandsOfColumn` from the lowest up; none is 0.
inline constexpr int bandsOfColumn = 25;
std::vector<double> thirdOctaves(const Take& take, int columns, double seconds);

// How far two sets of third octaves are apart: the mean in dB over what stands less than 40 dB below the loudest of both.
double apart(const std::vector<double>& one, const std::vector<double>& other);

// Hz of the strongest fundamental near `expected` (within a semitone) in the recording from `start` seconds on,
// to a cent or so; 0 if there is no such tone.
double fundamental(const std::vector<float>& samples, double start, double seconds, double expected);

}  // namespace vantoric::factory
