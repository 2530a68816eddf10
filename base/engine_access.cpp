#include "base/engine_access.h"

#include <utility>

namespace vantoric {

namespace {
constexpr int lockTries = 1000;  // of 1 ms
constexpr int workerTries = 51, workerPause = 100;
}  // namespace

bool EngineAccess::isOut(const Retired& retired) const {
    return flags_.blockPasses.left() >= retired.blocks && flags_.workerPasses.left() >= retired.steps;
}

void EngineAccess::retire(std::unique_ptr<std::int16_t[]> memory) noexcept {
    if (!memory) return;
    Retired retired{std::move(memory), flags_.blockPasses.entered(), flags_.workerPasses.entered()};
    if (isOut(retired)) return;
    try {
        retired_.push_back(std::move(retired));
    } catch (...) {
        static_cast<void>(retired.memory.release());  // lost is better than freed under a reader
    }
}

void EngineAccess::freeUnread() {
    std::erase_if(retired_, [this](const Retired& retired) { return isOut(retired); });
}

EngineTurn::EngineTurn(EngineAccess& access) {
    access.audioThread().notInsideBlock();
    lock_ = std::unique_lock(access.turn_);
    access.freeUnread();
}

EngineHold::EngineHold(EngineAccess& access, HoldFor purpose)
    : turn_(access), access_(access), flags_(access.flags()), isOuter_(!std::exchange(access.isHeld_, true)) {
    if (purpose == HoldFor::waves) makeWorkerGiveWay();  // the long wait comes before the silence
    if (isOuter_) {
        staysLocked_ = purpose == HoldFor::settings && flags_.engineLocked.isSet();
        if (!staysLocked_ && !access.isLeftLocked()) waitUntilClear(flags_.engineLocked, lockTries, 1, access.sleepFunction());
        flags_.engineLocked.set();
        waitUntilClear(flags_.audioRunning, lockTries, 1, access.sleepFunction());
    }
    if (purpose == HoldFor::waves) {
        makeWorkerGiveWay();
        flags_.rebuildCancel.clear();  // a load that failed may have left it
    }
}

EngineHold::~EngineHold() {
    if (isOuter_) {
        access_.isHeld_ = false;
        access_.isLeftLocked_ = staysLocked_;
        if (!staysLocked_) flags_.engineLocked.clear();
    }
    if (rebuildWasDue_) flags_.rebuildRequested.set();
    if (isOuter_ && !staysLocked_) flags_.workerBell.ring();  // the worker builds nothing while the engine is held
}

void EngineHold::makeWorkerGiveWay() {
    if (!flags_.rebuildRequested.isSet() && !flags_.rebuildRunning.isSet()) return;
    rebuildWasDue_ = true;
    flags_.rebuildCancel.set();
    flags_.rebuildRequested.clear();
    waitUntilClear(flags_.rebuildRunning, workerTries, workerPause, access_.sleepFunction());
    flags_.rebuildCancel.clear();
}

void EngineHold::endRebuild() {
    if (!flags_.rebuildRunning.isSet()) return;
    flags_.rebuildCancel.set();
    flags_.rebuildRequested.clear();
    waitUntilClear(flags_.rebuildRunning, lockTries, 1, access_.sleepFunction());
}

}  // namespace vantoric
