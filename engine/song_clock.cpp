#include "engine/song_clock.h"

namespace vantoric {

void SongClock::tick(EngineState& state, const Transport* answer) {
    state.tempoBpm = 120.0;
    if (answer == nullptr) return;
    if (answer->tempo > 0.0 && answer->tempo <= 10000.0) state.tempoBpm = answer->tempo;
    if (answer->ppqPos == lastPpqPos_) {
        state.songPosition += state.tempoBpm / 60 / state.ticksPerSecond;
    } else {
        state.songPosition = answer->ppqPos;
    }
    lastPpqPos_ = answer->ppqPos;
    if (!(state.songPosition >= 0.0 && state.songPosition <= 1000000.0)) state.songPosition = 0.0;
}

void SongClock::reset(EngineState& state) {
    state.songPosition = 0.0;
    lastPpqPos_ = 0.0;
}

}  // namespace vantoric
