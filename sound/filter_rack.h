// The filter places of several layers at once: where few voices sound, a filter spends its time waiting for itself, and
// the filters of other places run in that time.
#pragma once

#include <array>
#include <span>

#include "sound/filter_bank.h"

namespace vantoric {

// What one filter place has to do in a tick.
struct FilterPlace {
    FilterBank* bank;
    float* buffer;  // as for FilterBank::run
    LaneMask mask;
};

// One thread at a time. Nothing here allocates after construction.
class FilterRack {
public:
    static constexpr int maxPlaces = 8;  // both of four layers

    // Filters `count` samples (up to maxTickSamples) of each place, with the result of FilterBank::run for one after the
    // other in this order, random numbers included. Places whose voices all have the same loop go side by side. Up to
    // maxPlaces of them, each bank once; a place may have no voices.
    void run(std::span<const FilterPlace> places, int count);

private:
    using Run = filters::LoopRun<voiceCount>;
    using Loop = filters::Loop<voiceCount>;

    void runSame(const Loop& loop, std::span<const FilterPlace> places, unsigned which, int count);

    std::array<filters::DrawStarts, maxPlaces> starts_;
    std::array<Run, maxPlaces> runs_;
};

}  // namespace vantoric
