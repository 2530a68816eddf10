// A library as large as anybody's, with names as people give them.
#pragma once

#include <string>
#include <vector>

#include "base/random.h"
#include "library/patch_catalogue.h"

namespace vantoric::test {

inline std::vector<CataloguedPatch> largeLibrary(int count) {
    static constexpr const char* adjectives[] = {"Glass", "Soft",   "Deep", "Warm",   "Broken", "Silver",  "Lost",   "Analog",
                                                 "Dark",  "Bright", "Slow", "Velvet", "Frozen", "Distant", "Hollow", "Electric"};
    static constexpr const char* nouns[] = {"Harbour", "Bass",  "Brass",  "Bell",   "Choir", "Pad",    "Strings", "Lead",
                                            "Keys",    "River", "Motion", "Engine", "Dream", "Forest", "Machine", "Garden"};
    static constexpr const char* syllables[] = {"ka", "ro", "mi", "ten", "sol", "ver", "an", "dis", "ul", "che", "bor", "la"};
    LinearCongruence random{1};
    const auto below = [&](unsigned n) { return (random.next() >> 16) % n; };
    std::vector<CataloguedPatch> patches;
    for (int i = 0; i < count; ++i) {
        CataloguedPatch patch;
        patch.name = std::string(adjectives[below(16)]) + " " + nouns[below(16)] + " ";
        for (unsigned k = 2 + below(3); k > 0; --k) patch.name += syllables[below(12)];
        patch.name += std::to_string(i);
        patch.category = "Category " + std::to_string(below(40));
        patch.stars = static_cast<std::uint8_t>(1 + below(5));
        patch.tags = {adjectives[below(16)], nouns[below(16)]};
        patch.author = std::string(syllables[below(12)]) + syllables[below(12)];
        patches.push_back(std::move(patch));
    }
    return patches;
}

}  // namespace vantoric::test
