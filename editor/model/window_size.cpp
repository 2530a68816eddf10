#include "editor/model/window_size.h"

#include <array>
#include <iterator>

#include "base/numbers.h"
#include "editor/model/window_files.h"

namespace vantoric {

namespace {

constexpr SizeRow sizes[] = {
    {"Size small, 66% (1200 x 660)", 1200, 660, 1.0},
    {"Size small, hide layers (1200 x 128)", 1200, 128, 1.0},
    {"Size small, hide layers and FX (802 x 128)", 802, 128, 1.0},
    {"Size normal, 100% (1800 x 990) - Full HD", 1800, 990, 1.0},
    {"Size normal, hide layers (1800 x 192)", 1800, 192, 1.0},
    {"Size normal, hide layers and FX (1203 x 192)", 1203, 192, 1.0},
    {"Size zoom 125% (2250 x 1237) - WHQD", 1800, 990, 1.25},
    {"Size zoom 133% (2400 x 1320) - WHQD", 1800, 990, 1.3333},
    {"Size zoom 150% (2700 x 1485) - 4K", 1800, 990, 1.5},
    {"Size zoom 166% (3000 x 1320) - 4K", 1800, 990, 1.6667},  // 1650 high; the label is known as it is
    {"Size zoom 175% (3150 x 1732) - 4K", 1800, 990, 1.75},
    {"Size zoom 200% (3600 x 1980) - 4K", 1800, 990, 2.0},
    {"Size zoom 250% (4500 x 2475) - 5K", 1800, 990, 2.5},
    {"Size zoom 300% (5400 x 2970) - 8K UHD", 1800, 990, 3.0},
    {"Size zoom 50% (900 x 495)", 1800, 990, 0.5},
    {"Size zoom 75% (1350 x 742)", 1800, 990, 0.75},
    {"Size zoom 83% (1500 x 825)", 1800, 990, 0.8333},
    {"Size zoom 88% (1575 x 866)", 1800, 990, 0.875},
};
static_assert(std::size(sizes) == editorSizeCount);

constexpr auto labels = [] {
    std::array<const char*, editorSizeCount> made{};
    for (std::size_t i = 0; i < made.size(); ++i) made[i] = sizes[i].label;
    return made;
}();

}  // namespace

const SizeRow& sizeRow(int index) { return sizes[clampTo(index, 0, editorSizeCount - 1)]; }

LabelList sizeLabels() { return labels; }

}  // namespace vantoric
