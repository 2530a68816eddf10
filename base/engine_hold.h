// Exclusive hold of samples and custom waves, for the short time in which their memory changes hands.
#pragma once

#include "base/engine_state.h"

namespace vantoric {

// While it stands, the audio block is silent and the wave worker leaves the waves alone. Each wait of the
// constructor is bounded and clears its flag by force at its end: 51 sleeps of 100 ms for the worker, 1000
// of 1 ms each for another loader and for the block. A rebuild that had to give way is asked for again when
// the hold ends; a cancel that is left over from a load that failed is taken back. One at a time a thread; not on the audio
// thread.
class EngineHold {
public:
    EngineHold(EngineFlags& flags, SleepFunction sleep);
    ~EngineHold();
    EngineHold(const EngineHold&) = delete;
    EngineHold& operator=(const EngineHold&) = delete;

private:
    void stopWorker();

    EngineFlags& flags_;
    SleepFunction sleep_;
    bool rebuildWasDue_ = false;
};

}  // namespace vantoric
