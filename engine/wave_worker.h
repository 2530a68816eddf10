// The thread of an instance that does all slow work on waves: it loads the banks as the instance starts and
// rebuilds the levels of samples and custom waves when asked.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "base/engine_state.h"
#include "base/messages.h"
#include "engine/wave_library.h"
#include "samples/sample.h"
#include "sound/custom_wave.h"

namespace vantoric {

class ParameterModel;

// What the worker rebuilds: the twelve oscillators in the order of layers, then oscillators.
struct OscillatorMemory {
    Sample* sample;
    CustomWaveSlot* customWave;
};
using AllOscillators = std::array<OscillatorMemory, layerCount * oscillatorCount>;

// The part of a bank that each oscillator reads with the parameters as they are, whether it is switched on or not.
using BanksInUse = std::array<BankPart, layerCount * oscillatorCount>;
BanksInUse banksInUse(const ParameterModel& parameters);

// Whether a parameter of the host's numbering (any index) decides which bank an oscillator reads.
bool choosesWave(int index);

class WaveWorker {
public:
    // `parameters` tell which samples loop and which banks are played.
    WaveWorker(EngineFlags& flags, WaveLibrary& library, Messages& messages, const ParameterModel& parameters,
               const AllOscillators& oscillators);
    ~WaveWorker();

    // Starts the thread. `bootPending` is set before and falls with its first step; `audioMuted` falls when the
    // banks are there. From then on it has a low priority and sleeps at `workerBell` until it is rung.
    void start();
    // Asks it to end, without waiting.
    void askToStop();
    // Asks, then waits for `workerStopped` in up to 350 sleeps of at most 100 ms, and for the thread itself.
    void stop();

    // One look at the flags, as the thread takes it each time the bell rings: fetches the banks in use if wavesChosen()
    // was called, and runs the rebuild that is asked for, if any. If memory is short a box says so, what is not built
    // stays silent, and the next request tries again. Nothing is thrown.
    void poll() noexcept;

    // One rebuild of all levels, as the thread does it; gives up when `rebuildCancel` is set, and sets it itself
    // when a new request comes. For tests also without a thread. Throws std::bad_alloc.
    void rebuild();

    // Fetches the banks in use into memory at once, for a load that is about to let its patch sound. Waits for the disk
    // if need be. Any thread but the audio thread.
    void touchBanks();
    // Asks the thread to do so, after a parameter was changed that chooses a wave. Any thread but the audio thread.
    void wavesChosen();

    // Waits until the banks are loaded and everything that was asked for is built, at most so long: true if it is. For a
    // host that renders faster than time, before each block, so that a bounce is the same each time. It must not be
    // called by the worker, nor by a thread that has to keep time.
    bool waitForWaves(int maxMilliseconds);

private:
    void run() noexcept;
    void boot();
    bool isAsked() const;
    bool isCancelled();
    bool isIdle() const;
    void tellWaiters();
    bool rebuildCustomWaves();
    static CustomCycle copyOf(const CustomCycle& cycle);
    std::shared_ptr<const CustomWave> makeWave(const CustomCycle& cycle);
    void releaseReplaced();
    bool isLooped(int oscillator) const;
    template <class Work>
    void guarded(Work&& work) noexcept;

    EngineFlags& flags_;
    WaveLibrary& library_;
    Messages& messages_;
    const ParameterModel& parameters_;
    AllOscillators oscillators_;
    Flag banksChosen_;
    std::atomic<bool> isBooted_{false};
    struct Replaced {
        std::shared_ptr<const CustomWave> wave;
        std::uint64_t blocks;  // that had begun when it was replaced, one of which may still be reading it
    };
    std::vector<Replaced> replaced_;
    std::mutex finishing_;
    std::condition_variable finished_;
    std::thread thread_;
};

}  // namespace vantoric
