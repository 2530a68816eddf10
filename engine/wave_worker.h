// The thread of an instance that does all slow work on waves: it loads the banks as the instance starts and
// rebuilds the levels of samples and custom waves when asked.
#pragma once

#include <array>
#include <thread>

#include "base/engine_state.h"
#include "base/messages.h"
#include "samples/sample.h"
#include "sound/custom_wave.h"

namespace vantoric {

class ParameterModel;
class WaveLibrary;

// What the worker rebuilds: the twelve oscillators in the order of layers, then oscillators.
struct OscillatorMemory {
    Sample* sample;
    CustomWave* customWave;
};
using AllOscillators = std::array<OscillatorMemory, layerCount * oscillatorCount>;

class WaveWorker {
public:
    // `parameters` tell which samples loop.
    WaveWorker(EngineFlags& flags, WaveLibrary& library, Messages& messages, const ParameterModel& parameters,
               const AllOscillators& oscillators);
    ~WaveWorker();

    // Starts the thread. `bootPending` is set before and falls with its first step; `audioMuted` falls when the
    // banks are there. From then on it has the lowest priority.
    void start();
    // Asks it to end, without waiting.
    void askToStop();
    // Asks, then waits for `workerStopped` in up to 350 sleeps of at most 100 ms, and for the thread itself.
    void stop();

    // One look at the flags, as the thread takes it every 10 ms: runs the rebuild that is asked for, if any.
    void poll();

    // One rebuild of all levels, as the thread does it; gives up when `rebuildCancel` is set, and sets it itself
    // when a new request comes. For tests also without a thread.
    void rebuild();

private:
    void run();
    bool isCancelled();
    bool isLooped(int oscillator) const;

    EngineFlags& flags_;
    WaveLibrary& library_;
    Messages& messages_;
    const ParameterModel& parameters_;
    AllOscillators oscillators_;
    std::thread thread_;
};

}  // namespace vantoric
