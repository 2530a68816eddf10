// Tempo and song position, tick by tick.
#pragma once

#include "base/engine_state.h"
#include "engine/transport.h"

namespace vantoric {

class SongClock {
public:
    // One tick: sets `tempoBpm` and `songPosition` of `state` from the host's answer, or from none (null).
    // While the host's position stays exactly the same the song runs on at its tempo; without an answer
    // tempo is 120 and the position stands. A tempo not above 0 or above 10000 reads as 120; a position
    // below 0, above a million or not a number becomes 0. Audio thread only.
    void tick(EngineState& state, const Transport* answer);

    // Position and the host's last position go to 0.
    void reset(EngineState& state);

    double lastPpqPos() const { return lastPpqPos_; }

private:
    double lastPpqPos_ = 0.0;
};

}  // namespace vantoric
