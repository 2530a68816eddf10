#include "sound/filter_rack.h"

#include <algorithm>

namespace vantoric {

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
    loop.run({runs_.data(), runs}, count);
    for (std::size_t k = 0; k < runs; ++k) placeOf[k]->bank->silence(placeOf[k]->buffer, count, runs_[k].broken);
}

}  // namespace vantoric
