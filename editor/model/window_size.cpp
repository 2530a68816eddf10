#include "editor/model/window_size.h"

#include <array>
#include <cmath>
#include <iterator>

#include "base/number_text.h"
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

constexpr int firstNormalSize = 3, firstZoomedSize = 6;

constexpr double exactZooms[] = {0.5, 2.0 / 3.0, 0.75, 1.0, 1.25, 4.0 / 3.0, 1.5, 5.0 / 3.0, 1.75, 2.0};

bool fitsScreen(int index, Screen screen) {
    const SizeRow& size = sizeRow(index);
    const double zoom = zoomOfSize(index);
    return screen.width > static_cast<int>(size.width * zoom) && screen.height > static_cast<int>(size.height * zoom);
}

}  // namespace

const SizeRow& sizeRow(int index) { return sizes[clampTo(index, 0, editorSizeCount - 1)]; }

LabelList sizeLabels() { return labels; }

double zoomOfSize(int index) {
    const double rounded = sizeRow(index).zoom;
    for (const double exact : exactZooms)
        if (std::fabs(rounded - exact) <= 0.01) return exact;
    return rounded;
}

WindowSize::WindowSize(platform::Dialogs& dialogs, std::string_view hostProduct) : dialogs_(dialogs), hostProduct_(hostProduct) {}

bool WindowSize::largeSkin() const { return sizeIndex_ >= firstNormalSize; }

int WindowSize::percent() const {
    const int smallest = 0;  // of the small layout; the low sizes have no percentage of their own
    const int told = sizeIndex_ >= firstZoomedSize ? sizeIndex_ : largeSkin() ? firstNormalSize : smallest;
    const std::string_view label = sizeRow(told).label;
    const std::size_t end = label.find('%'), begin = label.find_last_of(' ', end) + 1;
    const auto amount = numberAtStart(label.substr(begin));
    return amount ? static_cast<int>(amount->number) : 100;
}

bool WindowSize::isForbidden(int index) const { return hostProduct_ == "Orion" && index >= firstZoomedSize; }

void WindowSize::loadSize(Screen screen) { applySize(startSizeIndex(screen.width, screen.height, hostProduct_.c_str())); }

void WindowSize::applySize(int index) {
    sizeIndex_ = isForbidden(index) ? firstNormalSize : clampTo(index, 0, editorSizeCount - 1);
}

void WindowSize::chooseSize(int index, Screen screen, std::function<void(bool)> then) {
    if (hostProduct_ != "Glaigail")
        dialogs_.message(
            "Info", "This feature is not supported by all DAWs.\nIt can require a restart of the plugin to operate properly.");
    if (fitsScreen(index, screen)) return takeSize(index, then);
    dialogs_.question("Warning", "The size that you have selected seems to be too large for your screen.\nAre you sure?",
                      [this, index, then = std::move(then)](bool yes) {
                          if (yes) takeSize(index, then);
                      });
}

void WindowSize::takeSize(int index, const std::function<void(bool)>& then) {
    if (isForbidden(index)) {
        dialogs_.message("Info", "Synapse Audio's Orion does not support hardware zooming with Direct2D.");
        index = firstNormalSize;
    }
    writeSizeIndex(index, dialogs_);
    const double before = zoom();
    applySize(index);
    then(zoom() != before);
}

}  // namespace vantoric
