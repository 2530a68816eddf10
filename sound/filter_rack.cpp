#include "sound/filter_rack.h"

#include <algorithm>

namespace vantoric {

namespace {

constexpr LaneMask wholeGroup = (1 << laneGroup) - 1;

LaneMask voicesOf(LaneMask mask, int first) { return static_cast<LaneMask>(mask >> first & wholeGroup); }

// How many pairs of half-empty registers to make one of, of `registers` in all: as many as save a round of the loop.
// Three go in two rounds (of two and one), two in one.
int pairsToSeat(int registers, int halfEmpty) {
    const int pairs = halfEmpty / 2;
    if (registers == 3) return pairs;
    const int rounds = (registers - pairs + filters::maxChains - 1) / filters::maxChains;
    return std::clamp(registers - rounds * filters::maxChains, 0, pairs);
}

// The samples of a group of voices.
void copyGroup(const float* from, float* to, int count) {
    for (int i = 0; i < count * voiceCount; i += voiceCount)
        Lanes<float, laneGroup>(from + i, stdx::element_aligned).copy_to(to + i, stdx::element_aligned);
}

}  // namespace

// All draws are dealt out before anything runs, so the order of the runs does not matter.
void FilterRack::run(std::span<const FilterPlace> places, int count) {
    unsigned rest = 0;
    for (unsigned k = 0; k < places.size(); ++k) {
        if (places[k].mask == 0) continue;
        starts_[k] = places[k].bank->takeDraws(count, places[k].mask);
        rest |= 1u << k;
    }
    while (rest != 0) {
        const auto first = static_cast<std::size_t>(std::countr_zero(rest));
        const FilterPlace& place = places[first];
        const Loop* loop = place.bank->commonLoop(place.mask);
        unsigned same = 1u << first;
        if (loop == nullptr) {
            place.bank->run(starts_[first], place.buffer, count, place.mask);
        } else {
            for (std::size_t k = first + 1; k < places.size(); ++k)
                if ((rest >> k & 1) != 0 && places[k].bank->commonLoop(places[k].mask) == loop) same |= 1u << k;
            runSame(*loop, places, same, count);
        }
        rest &= ~same;
    }
}

void FilterRack::runSame(const Loop& loop, std::span<const FilterPlace> places, unsigned which, int count) {
    std::array<const FilterPlace*, maxPlaces> placeOf{};
    std::size_t runs = 0;
    for (unsigned rest = which; rest != 0; rest &= rest - 1) {
        const auto k = static_cast<std::size_t>(std::countr_zero(rest));
        placeOf[runs] = &places[k];
        runs_[runs++] = {&places[k].bank->memory_, &starts_[k], places[k].buffer, places[k].mask};
    }
    runAlike(placeOf[0]->bank->typeOf(placeOf[0]->mask), loop, {runs_.data(), runs}, count);
    for (std::size_t k = 0; k < runs; ++k) placeOf[k]->bank->silence(placeOf[k]->buffer, count, runs_[k].broken);
}

// A register of eight voices that is half empty takes as long as a full one. Where that makes a round of the loop too
// many, groups of several places share registers as guests of a shelf.
void FilterRack::runAlike(const Type& type, const Loop& loop, std::span<Run> runs, int count) {
    Guests guests = guestsOf(loop, runs);
    const std::span<Run> shelves = seat(type, guests.all(), runs.data() + runs.size(), count);
    loop.run({runs.data(), runs.size() + shelves.size()}, count);
    sendHome(type, guests.all(), count);
}

FilterRack::Guests FilterRack::guestsOf(const Loop& loop, std::span<Run> runs) {
    Guests guests;
    if (loop.width <= laneGroup) return guests;
    int registers = 0, halfEmpty = 0;
    std::array<Guest, 2 * maxPlaces> found;
    for (Run& run : runs)
        for (int first = 0; first < voiceCount; first += loop.width) {
            const bool low = voicesOf(run.mask, first) != 0, high = voicesOf(run.mask, first + laneGroup) != 0;
            registers += low || high ? 1 : 0;
            if (low != high && run.starts->hashSeed == runs[0].starts->hashSeed)
                found[static_cast<std::size_t>(halfEmpty++)] = {&run, low ? first : first + laneGroup};
        }
    guests.count = std::min(2 * pairsToSeat(registers, halfEmpty), shelfCount * groupsOfShelf);
    std::copy_n(found.begin(), guests.count, guests.list.begin());
    return guests;
}

// Moves the guests to the shelves, whose runs begin at `shelves`; returns those in use.
std::span<FilterRack::Run> FilterRack::seat(const Type& type, std::span<Guest> guests, Run* shelves, int count) {
    const std::size_t used = (guests.size() + groupsOfShelf - 1) / groupsOfShelf;
    for (std::size_t s = 0; s < used; ++s) shelves[s] = {&shelves_[s].memory, &shelves_[s].starts, shelves_[s].buffer, 0};
    for (std::size_t k = 0; k < guests.size(); ++k) {
        Guest& guest = guests[k];
        Shelf& shelf = shelves_[k / groupsOfShelf];
        guest.shelf = &shelves[k / groupsOfShelf];
        guest.seat = static_cast<int>(k % groupsOfShelf) * laneGroup;
        guest.voices = voicesOf(guest.run->mask, guest.first);
        type.copyGroup(*guest.run->memory, guest.first, shelf.memory, guest.seat, guest.voices);
        copyGroup(guest.run->buffer + guest.first, shelf.buffer + guest.seat, count);
        std::copy_n(guest.run->starts->congruence.begin() + guest.first, laneGroup, shelf.starts.congruence.begin() + guest.seat);
        std::copy_n(guest.run->starts->hash.begin() + guest.first, laneGroup, shelf.starts.hash.begin() + guest.seat);
        shelf.starts.hashSeed = guest.run->starts->hashSeed;
        guest.shelf->mask |= static_cast<LaneMask>(guest.voices << guest.seat);
        guest.run->mask &= static_cast<LaneMask>(~(wholeGroup << guest.first));
    }
    return {shelves, used};
}

void FilterRack::sendHome(const Type& type, std::span<const Guest> guests, int count) {
    for (const Guest& guest : guests) {
        type.copyGroup(*guest.shelf->memory, guest.seat, *guest.run->memory, guest.first, guest.voices);
        copyGroup(guest.shelf->buffer + guest.seat, guest.run->buffer + guest.first, count);
        guest.run->broken |= static_cast<LaneMask>(voicesOf(guest.shelf->broken, guest.seat) << guest.first);
    }
}

}  // namespace vantoric
