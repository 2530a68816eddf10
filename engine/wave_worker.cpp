#include "engine/wave_worker.h"

#include "base/heard_while_written.h"
#include "base/parameters.h"
#include "engine/wave_library.h"
#include "parameters/parameter_model.h"
#include "platform/module_folder.h"
#include "platform/thread.h"
#include "samples/sample_levels.h"

namespace vantoric {

namespace {
constexpr int pollMilliseconds = 10;
constexpr int stopTries = 350, stopPause = 100;
}  // namespace

WaveWorker::WaveWorker(EngineFlags& flags, WaveLibrary& library, platform::Dialogs& dialogs, const ParameterModel& parameters,
                       const AllOscillators& oscillators)
    : flags_(flags), library_(library), dialogs_(dialogs), parameters_(parameters), oscillators_(oscillators) {}

WaveWorker::~WaveWorker() { stop(); }

void WaveWorker::start() {
    flags_.rebuildRequested.clear();
    flags_.rebuildCancel.clear();
    flags_.rebuildRunning.clear();
    flags_.workerStop.clear();
    flags_.workerStopped.clear();
    flags_.bootPending.set();
    thread_ = std::thread([this] { run(); });
}

void WaveWorker::askToStop() {
    flags_.workerStop.set();
    flags_.rebuildCancel.set();
    flags_.rebuildRequested.clear();
}

void WaveWorker::stop() {
    if (!thread_.joinable()) return;
    askToStop();
    for (int i = 0; i < stopTries && !flags_.workerStopped.isSet(); ++i) platform::sleepMilliseconds(i < 20 ? 5 : stopPause);
    thread_.join();
}

void WaveWorker::run() {
    flags_.bootPending.clear();
    // Everybody waits for the banks; what comes later nobody does.
    if (library_.load(platform::bankFolder(), dialogs_, flags_.workerStop)) flags_.audioMuted.clear();
    platform::setLowestPriority();
    while (!flags_.workerStop.isSet()) {
        poll();
        platform::sleepMilliseconds(pollMilliseconds);
    }
    flags_.workerStopped.set();
}

void WaveWorker::poll() {
    // A cancel that met no rebuild must not stop the next one.
    if (!flags_.rebuildRequested.isSet()) return flags_.rebuildCancel.clear();
    flags_.rebuildRunning.set();
    // Asked again: whoever took the request back in between may be freeing the waves by now.
    const bool stillRequested = flags_.rebuildRequested.isSet();
    flags_.rebuildRequested.clear();  // before the work, so that a request made during it is not lost
    if (stillRequested) rebuild();
    flags_.rebuildCancel.clear();
    flags_.rebuildRunning.clear();
}

// A new request cancels the rebuild that runs: all begins anew at the next poll.
bool WaveWorker::isCancelled() {
    if (flags_.rebuildRequested.isSet()) flags_.rebuildCancel.set();
    return flags_.rebuildCancel.isSet();
}

void WaveWorker::rebuild() {
    const HeardWhileWritten voicesPlayOn;
    const Flag& cancel = flags_.rebuildCancel;
    // Frame 0 is compared as it was given: rebuilding levels rewrites it.
    for (const OscillatorMemory& oscillator : oscillators_) {
        if (isCancelled()) return;
        spreadFirstFrame(*oscillator.customWave);
    }
    const CustomWave* before = nullptr;
    bool copyOfBefore[layerCount * oscillatorCount] = {};
    for (std::size_t i = 0; i < oscillators_.size(); ++i) {
        copyOfBefore[i] = before != nullptr && sameFirstFrame(*before, *oscillators_[i].customWave);
        before = oscillators_[i].customWave;
    }
    for (std::size_t i = 0; i < oscillators_.size(); ++i) {
        if (isCancelled()) return;
        if (copyOfBefore[i])
            copyMips(*oscillators_[i - 1].customWave, *oscillators_[i].customWave);
        else if (!makeCustomMips(*oscillators_[i].customWave, cancel))
            return;
        if (!buildLevels(*oscillators_[i].sample, isLooped(static_cast<int>(i)), &cancel)) return;
    }
}

bool WaveWorker::isLooped(int oscillator) const {
    const int number = parameter::LoopMod1 + oscillator % oscillatorCount;
    return parameters_.getListIndex(hostIndex(number, oscillator / oscillatorCount)) == loopModeLoop;
}

}  // namespace vantoric
