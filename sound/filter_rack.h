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
    using Type = filters::FilterType<voiceCount>;
    using Loop = filters::Loop<voiceCount>;

    static constexpr int groupsOfShelf = voiceCount / laneGroup, shelfCount = 2;
    // Groups of several places side by side, for the time of a run.
    struct Shelf {
        filters::FilterMemory<voiceCount> memory{filters::FilterMemory<voiceCount>::WithoutLines{}};
        filters::DrawStarts starts;
        alignas(64) LaneBuffer buffer;
    };
    // A group of neighbouring voices, at home in a run and as the guest of a shelf.
    struct Guest {
        Run* run = nullptr;
        int first = 0;
        Run* shelf = nullptr;
        int seat = 0;
        LaneMask voices = 0;
    };
    struct Guests {
        std::array<Guest, shelfCount * groupsOfShelf> list;
        int count = 0;
        std::span<Guest> all() { return {list.data(), static_cast<std::size_t>(count)}; }
    };

    void runSame(const Loop& loop, std::span<const FilterPlace> places, unsigned which, int count);
    void runAlike(const Type& type, const Loop& loop, std::span<Run> runs, int count);
    static Guests guestsOf(const Loop& loop, std::span<Run> runs);
    std::span<Run> seat(const Type& type, std::span<Guest> guests, Run* shelves, int count);
    static void sendHome(const Type& type, std::span<const Guest> guests, int count);

    std::array<filters::DrawStarts, maxPlaces> starts_;
    std::array<Shelf, shelfCount> shelves_;
    std::array<Run, maxPlaces + shelfCount> runs_;  // those of the places, then those of the shelves
};

}  // namespace vantoric
