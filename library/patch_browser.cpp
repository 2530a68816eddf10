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

bool PatchBrowser::clickCategory(int row) {
    if (!isRow(row, library_.categoryNames().size())) return false;
    library_.select({row, 0});
    return library_.loadSelectedPatch();
}

bool PatchBrowser::clickPatch(int row) {
    if (!isRow(row, library_.patchNames().size())) return false;
    library_.selectPatch(row);
    return library_.loadSelectedPatch();
}

void PatchBrowser::clickStar(int row, int star) {
    if (!isRow(row, ratings().size())) return;
    ratings_[static_cast<std::size_t>(row)] = static_cast<std::uint8_t>(clampTo(star, fewestStars, mostStars));
    // By what the file says now: this list may have been read while it could not be, and may not show all of the folder.
    ratePatch(listedName(), library_.patchNames()[static_cast<std::size_t>(row)], star);
}

bool PatchBrowser::clickNext() { return library_.nextPatch(); }
bool PatchBrowser::clickPrevious() { return library_.previousPatch(); }

CategoryHint PatchBrowser::hint() const { return categoryHint(listedName(), onShow_.loadTarget); }

}  // namespace vantoric
