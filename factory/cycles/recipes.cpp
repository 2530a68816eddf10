// The list of all cycles.
#include <iterator>

#include "factory/cycles/cycle.h"

namespace vantoric::cycles {

namespace {

std::vector<Recipe> makeRecipes() {
    std::vector<Recipe> all;
    all.push_back({"2048", [](Workshop&) { return waves::sines([](int k) { return k == 1 ? 1.0 : 0.0; }); }});
    for (auto family : {analogCycles, bentCycles, modulatedCycles, instrumentCycles, voiceCycles, spectralCycles}) {
        std::vector<Recipe> members = family();
        std::move(members.begin(), members.end(), std::back_inserter(all));
    }
    return all;
}

}  // namespace

const std::vector<Recipe>& recipes() {
    static const std::vector<Recipe> all = makeRecipes();
    return all;
}

}  // namespace vantoric::cycles
