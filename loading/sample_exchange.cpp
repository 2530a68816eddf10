#include "loading/sample_exchange.h"

#include <algorithm>
#include <utility>

#include "base/engine_hold.h"
#include "samples/sample_kernels.h"
#include "samples/sample_levels.h"

namespace vantoric {

bool exchangeSample(Sample& holder, const SampleContent& content, bool wrap, bool isLooped, EngineFlags& flags,
                    SleepFunction sleep) {
    Sample fresh;
    const auto length = static_cast<std::int32_t>(content.samples.size());
    if (length > 0 && !fresh.allocate(length)) return false;
    fresh.length = length;
    fresh.loopStart = content.loopStart;
    fresh.loopEnd = content.loopEnd;
    bool isBuilt = true;
    if (length > 0) {
        for (auto& level : fresh.levels) std::copy(content.samples.begin(), content.samples.end(), level.get());
        isBuilt = buildLevels(fresh, wrap, &flags.rebuildCancel);
        writeSampleGuards(fresh, isLooped);
    }
    {
        const EngineHold hold(flags, sleep);
        std::swap(holder.levels, fresh.levels);
        holder.length = length;
        holder.loopStart = content.loopStart;
        holder.loopEnd = content.loopEnd;
        holder.sampleRate = content.sampleRate;
    }
    if (!isBuilt) flags.rebuildRequested.set();  // another's load came between: the worker does the rest
    return true;
}

}  // namespace vantoric
