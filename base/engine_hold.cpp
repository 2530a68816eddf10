#include "base/engine_hold.h"

namespace vantoric {

namespace {
constexpr int lockTries = 1000;  // of 1 ms
constexpr int workerTries = 51, workerPause = 100;
}  // namespace

EngineHold::EngineHold(EngineFlags& flags, SleepFunction sleep) : flags_(flags), sleep_(sleep) {
    stopWorker();  // the long wait comes before the silence
    waitUntilClear(flags.engineLocked, lockTries, 1, sleep);
    flags.engineLocked.set();
    waitUntilClear(flags.audioRunning, lockTries, 1, sleep);
    stopWorker();
    flags.rebuildCancel.clear();  // a load that failed may have left it, and nobody else is at work now
}

EngineHold::~EngineHold() {
    flags_.engineLocked.clear();
    if (rebuildWasDue_) flags_.rebuildRequested.set();
}

void EngineHold::stopWorker() {
    if (!flags_.rebuildRequested.isSet() && !flags_.rebuildRunning.isSet()) return;
    rebuildWasDue_ = true;
    flags_.rebuildCancel.set();
    flags_.rebuildRequested.clear();
    waitUntilClear(flags_.rebuildRunning, workerTries, workerPause, sleep_);
    flags_.rebuildCancel.clear();
}

}  // namespace vantoric
