#include "engine/wave_worker.h"

#include <chrono>
#include <new>
#include <utility>

#include "base/heard_while_written.h"
#include "base/parameters.h"
#include "base/thread_check.h"
#include "parameters/parameter_model.h"
#include "platform/module_folder.h"
#include "platform/thread.h"
#include "samples/sample_levels.h"
#include "sound/kernels.h"

namespace vantoric {

namespace {

constexpr int releaseTries = 100;  // of 1 ms that a block may take to end

BankPart stackPart(int ssWave) {
    if (ssWave >= stackWaveEnd) return {};
    const StackWave& stack = stackWaves[static_cast<std::size_t>(ssWave - stackWaveFirst)];
    return stack.wave == StackWave::computed ? BankPart{} : BankPart{stack.wave, false, stack.frame};
}

BankPart analogPart(int row) {
    if (row >= analogRowCount) return {};
    return {analogRows[static_cast<std::size_t>(row)].wave, false, analogRows[static_cast<std::size_t>(row)].frame};
}

}  // namespace

BanksInUse banksInUse(const ParameterModel& parameters) {
    BanksInUse parts;
    for (int i = 0; i < layerCount * oscillatorCount; ++i) {
        const auto listOf = [&](int first) {
            return parameters.getListIndex(hostIndex(first + i % oscillatorCount, i / oscillatorCount));
        };
        BankPart& part = parts[static_cast<std::size_t>(i)];
        const int ssWave = listOf(parameter::SSWave1);
        switch (listOf(parameter::SynType1)) {
            case wavetableType: part = {listOf(parameter::WTWave1), false}; break;
            case hypersawType: part = ssWave < stackWaveFirst ? BankPart{ssWave, true} : stackPart(ssWave); break;
            case analogType: part = analogPart(listOf(parameter::AnaWave1)); break;
            default: break;
        }
    }
    return parts;
}

bool choosesWave(int index) {
    if (index < 0 || index >= parameterCount) return false;
    const int number =
        index < globalParameterCount ? index : globalParameterCount + (index - globalParameterCount) % layerParameterStride;
    for (const int first : {parameter::SynType1, parameter::WTWave1, parameter::SSWave1, parameter::AnaWave1})
        if (number >= first && number < first + oscillatorCount) return true;
    return false;
}

WaveWorker::WaveWorker(EngineFlags& flags, WaveLibrary& library, Messages& messages, const ParameterModel& parameters,
                       const AllOscillators& oscillators)
    : flags_(flags), library_(library), messages_(messages), parameters_(parameters), oscillators_(oscillators) {}

WaveWorker::~WaveWorker() { stop(); }

// ---- the thread ---------------------------------------------------------------------------------------------

void WaveWorker::start() {
    flags_.rebuildRequested.clear();
    flags_.rebuildOwed.clear();
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
    flags_.workerBell.ring();
}

void WaveWorker::stop() {
    if (!thread_.joinable()) return;
    askToStop();
    thread_.join();
}

void WaveWorker::run() noexcept {
    flags_.bootPending.clear();
    guarded([this] { boot(); });
    tellWaiters();
    while (!flags_.workerStop.isSet()) {
        poll();
        if (!flags_.workerStop.isSet()) flags_.workerBell.wait();
    }
    flags_.workerStopped.set();
}

// Everybody waits for the banks; what comes later nobody does.
void WaveWorker::boot() {
    if (library_.load(platform::bankFolder(), messages_, flags_.workerStop)) {
        guarded([this] { touchBanks(); });
        flags_.audioMuted.clear();
    }
    isBooted_.store(true, std::memory_order_release);
    platform::setLowPriority();
    library_.prefetch();
}

// Nothing that goes wrong in the thread ends it. What is thrown here is thrown for want of memory.
template <class Work>
void WaveWorker::guarded(Work&& work) noexcept {
    try {
        work();
    } catch (...) {
        messages_.post("Error WtoOs", notEnoughMemory);
    }
}

void WaveWorker::poll() noexcept {
    if (banksChosen_.isSet()) {
        banksChosen_.clear();  // before the work, so that a choice made during it is not lost
        guarded([this] { touchBanks(); });
    }
    // A cancel that met no rebuild must not stop the next one.
    if (!flags_.rebuildRequested.isSet()) flags_.rebuildCancel.clear();
    if (!isAsked()) return;
    const Passes::Scope reading(flags_.workerPasses);
    flags_.rebuildRunning.set();
    // Looked at again: whoever took the request back in between may be freeing the waves by now.
    const bool isStillAsked = isAsked();
    flags_.rebuildRequested.clear();  // before the work, so that a request made during it is not lost
    if (isStillAsked) {
        flags_.rebuildOwed.clear();
        guarded([this] { rebuild(); });
    }
    flags_.rebuildCancel.clear();
    flags_.rebuildRunning.clear();
    tellWaiters();
    releaseReplaced();
}

// ---- those who wait for it ----------------------------------------------------------------------------------

// While a load holds the engine it may be writing the very cycles: it rings when it has done.
bool WaveWorker::isAsked() const {
    return (flags_.rebuildRequested.isSet() || flags_.rebuildOwed.isSet()) && !flags_.engineLocked.isSet();
}

bool WaveWorker::isIdle() const {
    return isBooted_.load(std::memory_order_acquire) && !isAsked() && !flags_.rebuildRunning.isSet();
}

void WaveWorker::tellWaiters() {
    {
        const std::lock_guard guard(finishing_);
    }  // none is between its look and its sleep
    finished_.notify_all();
}

bool WaveWorker::waitForWaves(int maxMilliseconds) {
    notInsideAnyBlock();
    if (isIdle()) return true;
    std::unique_lock lock(finishing_);
    return finished_.wait_for(lock, std::chrono::milliseconds(maxMilliseconds), [this] { return isIdle(); });
}

// ---- banks --------------------------------------------------------------------------------------------------

void WaveWorker::touchBanks() { library_.touch(banksInUse(parameters_)); }

void WaveWorker::wavesChosen() {
    banksChosen_.set();
    flags_.workerBell.ring();
}

// ---- custom waves and samples -------------------------------------------------------------------------------

// A new request cancels the rebuild that runs: all begins anew at the next poll.
bool WaveWorker::isCancelled() {
    if (flags_.rebuildRequested.isSet()) flags_.rebuildCancel.set();
    return flags_.rebuildCancel.isSet();
}

void WaveWorker::rebuild() {
    if (!rebuildCustomWaves()) return;
    // Voices play on: a sample whose levels were there before may be heard half old and half new.
    const HeardWhileWritten voicesPlayOn;
    for (std::size_t i = 0; i < oscillators_.size(); ++i) {
        if (isCancelled()) return;
        Sample& sample = *oscillators_[i].sample;
        if (!buildLevels(sample, isLooped(static_cast<int>(i)), &flags_.rebuildCancel)) return;
        sample.levelsPending.clear();
    }
}

// Makes the waves of all cycles that have none. False when it was cancelled.
bool WaveWorker::rebuildCustomWaves() {
    for (std::size_t i = 0; i < oscillators_.size(); ++i) {
        if (isCancelled()) return false;
        CustomWaveSlot& slot = *oscillators_[i].customWave;
        if (slot.isBuilt()) continue;
        const unsigned generation = slot.generation();
        const CustomCycle cycle = copyOf(slot.cycle);
        // Cycles are compared as they were given: making a wave changes its frame 0.
        CustomWaveSlot* const before = i > 0 ? oscillators_[i - 1].customWave : nullptr;
        const bool isLikeBefore = before != nullptr && before->isBuilt() && sameCycle(before->given().data(), cycle.data());
        auto wave = isLikeBefore ? before->wave() : makeWave(cycle);
        if (wave == nullptr) return false;
        // Patches are saved meanwhile: they take the cycle as it was or as it is now.
        const HeardWhileWritten saversReadOn;
        replaced_.reserve(replaced_.size() + 1);
        if (auto old = slot.publish(std::move(wave), generation))
            replaced_.push_back({std::move(old), flags_.blockPasses.entered()});
    }
    return true;
}

// A load that has waited too long for this thread, which a busy system may not let run, writes the cycle all the same: what
// is made of it is dropped then, by its generation.
CustomCycle WaveWorker::copyOf(const CustomCycle& cycle) {
    const HeardWhileWritten loadsWriteOn;
    return cycle;
}

// Null when it was cancelled.
std::shared_ptr<const CustomWave> WaveWorker::makeWave(const CustomCycle& cycle) {
    if (auto wave = library_.customWaves().find(cycle)) return wave;
    const auto wave = std::make_shared<CustomWave>();
    std::copy(cycle.begin(), cycle.end(), wave->frame(0, 0));
    if (!makeCustomMips(*wave, flags_.rebuildCancel)) return nullptr;
    library_.customWaves().add(cycle, wave);
    return wave;
}

// Once all blocks are out that had begun when a wave was replaced, none reads it. The mark of a block that runs says less:
// a load that has waited too long clears it by force. What a block keeps for longer goes with a later request.
void WaveWorker::releaseReplaced() {
    for (int i = 0; !replaced_.empty(); ++i) {
        std::erase_if(replaced_, [this](const Replaced& old) { return flags_.blockPasses.left() >= old.blocks; });
        if (replaced_.empty() || i == releaseTries) return;
        platform::sleepMilliseconds(1);
    }
}

bool WaveWorker::isLooped(int oscillator) const {
    const int number = parameter::LoopMod1 + oscillator % oscillatorCount;
    return parameters_.getListIndex(hostIndex(number, oscillator / oscillatorCount)) == loopModeLoop;
}

}  // namespace vantoric
