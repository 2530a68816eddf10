#include "loading/sample_exchange.h"

#include <algorithm>
#include <utility>

#include "patch/exchange_contents.h"
#include "samples/sample_kernels.h"
#include "samples/sample_levels.h"

namespace vantoric {

bool prepareSample(PreparedSample& prepared, const SampleContent& content, bool wrap, bool isLooped, const Flag& cancel) {
    Sample& fresh = prepared.sample;
    const auto length = static_cast<std::int32_t>(content.samples.size());
    if (length > 0 && !fresh.allocate(length)) return false;
    fresh.length = length;
    fresh.loopStart = content.loopStart;
    fresh.loopEnd = content.loopEnd;
    fresh.sampleRate = content.sampleRate;
    if (length > 0) {
        for (auto& level : fresh.levels) std::copy(content.samples.begin(), content.samples.end(), level.get());
        prepared.isBuilt = buildLevels(fresh, wrap, &cancel);
        writeSampleGuards(fresh, isLooped);
    }
    return true;
}

void exchangeSample(EngineAccess& access, Sample& holder, PreparedSample&& prepared) {
    const EngineTurn turn(access);
    {
        const EngineHold hold(access, HoldFor::waves);
        exchangeContents(access, holder, std::move(prepared.sample));
        if (prepared.isBuilt)
            holder.levelsPending.clear();
        else
            holder.levelsPending.set();
    }
    if (!prepared.isBuilt) access.flags().rebuildRequested.set();
}

bool exchangeSample(EngineAccess& access, Sample& holder, const SampleContent& content, bool wrap, bool isLooped) {
    PreparedSample prepared;
    if (!prepareSample(prepared, content, wrap, isLooped, access.flags().rebuildCancel)) return false;
    exchangeSample(access, holder, std::move(prepared));
    return true;
}

}  // namespace vantoric
