// The line that tells how a category is meant to be played.
#pragma once

#include <string>

namespace vantoric {

// What a hint is about.
enum class HintKind { knownCategory = 0, otherCategory = 1, loadToLayer = 4 };

struct CategoryHint {
    std::string text;
    HintKind kind;
};

// Of a category by its exact name. `loadTarget` 1 to 4 (see OnShow) tells the layer instead. Any thread.
CategoryHint categoryHint(const std::string& category, int loadTarget);

}  // namespace vantoric
