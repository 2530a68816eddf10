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
    constexpr int beforeFirst = -1;
    // A load target waits for the patch that the user means: a category on the way there loads nothing.
    const bool isOnTheWay = onShow_.loadTarget != 0;
    library_.select({row, isOnTheWay ? beforeFirst : 0});
    return !isOnTheWay && library_.loadSelectedPatch();
}

bool PatchBrowser::clickPatch(int row) {
    if (!isRow(row, library_.patchNames().size())) return false;
    library_.selectPatch(row);
    return library_.loadSelectedPatch();
}

void PatchBrowser::clickStar(int row, int star) {
    if (!isRow(row, ratings().size())) return;
    ratings_[static_cast<std::size_t>(row)] = static_cast<std::uint8_t>(clampTo(star, fewestStars, mostStars));
    // A list that is full may not show all that lies in the folder.
    if (library_.patchNames().size() < PatchLibrary::mostPatches)
        saveRanks(listedName(), library_.patchNames(), ratings_);
    else
        ratePatch(listedName(), library_.patchNames()[static_cast<std::size_t>(row)], star);
}

bool PatchBrowser::clickNext() { return library_.nextPatch(); }
bool PatchBrowser::clickPrevious() { return library_.previousPatch(); }

CategoryHint PatchBrowser::hint() const { return categoryHint(listedName(), onShow_.loadTarget); }

}  // namespace vantoric
