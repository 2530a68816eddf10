// A sample's holder takes over another's contents while voices may be playing it.
#pragma once

#include <utility>

#include "base/engine_access.h"
#include "samples/sample.h"

namespace vantoric {

// Gives `holder` the buffers, length, loop and rate of `fresh`. What it had is freed once nobody can be reading it. Under an
// EngineHold.
inline void exchangeContents(EngineAccess& access, Sample& holder, Sample&& fresh) noexcept {
    holder.length = 0;  // a block that is late plays nothing rather than beyond a buffer
    std::swap(holder.levels, fresh.levels);
    holder.loopStart = fresh.loopStart;
    holder.loopEnd = fresh.loopEnd;
    holder.sampleRate = fresh.sampleRate;
    holder.length = fresh.length;
    for (auto& level : fresh.levels) access.retire(std::move(level));
}

}  // namespace vantoric
