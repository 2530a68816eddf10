#include "library/patch_browser.h"

#include "base/numbers.h"

namespace vantoric {

namespace {

bool isRow(int row, std::size_t count) { return row >= 0 && static_cast<std::size_t>(row) < count; }

}  // namespace

std::string PatchBrowser::listedName() const {
    const int listed = library_.listedCategory();
    return isRow(listed, library_.categoryNames().size()) ? library_.categoryNames()[static_cast<std::size_t>(listed)]
                                                          : std::string(customCategory);
}

void PatchBrowser::open() {
    ratings_ = loadRanks(listedName(), library_.patchNames());
    scanRated_ = library_.patchScans();
}

// The library may have scanned the patches for somebody else.
const Ratings& PatchBrowser::ratings() {
    if (scanRated_ != library_.patchScans()) open();
    return ratings_;
}

void PatchBrowser::clickCategory(int row) {
    if (!isRow(row, library_.categoryNames().size())) return;
    constexpr int beforeFirst = -1;
    // A load target waits for the patch that the user means: a category on the way there loads nothing.
    const bool isOnTheWay = onShow_.loadTarget != 0;
    library_.select({row, isOnTheWay ? beforeFirst : 0});
    if (!isOnTheWay) library_.loadSelectedPatch();
}

void PatchBrowser::clickPatch(int row) {
    if (!isRow(row, library_.patchNames().size())) return;
    library_.selectPatch(row);
    library_.loadSelectedPatch();
}

void PatchBrowser::clickStar(int row, int star) {
    if (!isRow(row, ratings().size())) return;
    ratings_[static_cast<std::size_t>(row)] = static_cast<std::uint8_t>(clampTo(star, fewestStars, mostStars));
    saveRanks(listedName(), library_.patchNames(), ratings_);
}

void PatchBrowser::clickNext() { library_.nextPatch(); }
void PatchBrowser::clickPrevious() { library_.previousPatch(); }

CategoryHint PatchBrowser::hint() const { return categoryHint(listedName(), onShow_.loadTarget); }

}  // namespace vantoric
